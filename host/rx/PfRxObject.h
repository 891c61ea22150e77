#pragma once

#include "PfRxMembers.h"
#include "PfadError.h"

// Root of every run-time class of the host and of its modules. A class tells
// its descriptor through IsA(); IsKindOf walks the descriptor's parents, so a
// derived class is also "of the kind" of each of its ancestors.
class PfRxObject {
public:
    virtual ~PfRxObject() = default;

    static PfRxClass* gpDesc;
    static PfRxClass* Desc();
    virtual PfRxClass* IsA() const;
    static PfRxObject* Cast(const PfRxObject* obj);
    static void RxInit();
    static void RxUninit();

    bool IsKindOf(const PfRxClass* cls) const;

    // Copies what this class and the other object have in common;
    // eInvalidInput when the other object is of an unrelated class.
    virtual Pfad::Error CopyFrom(const PfRxObject* other);
};
