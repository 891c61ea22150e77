#pragma once

#include <QtGlobal>

#include <vector>

class KVXAnimation;

// The schedule's records as its helpers look them up (the labels, for one):
// the animator manager answers, and the helpers need not know it.
class KVXRecordIndex {
public:
    virtual KVXAnimation* findKVXAnimation(int number) const = 0;
    // Appends the element's records in list order; out is not cleared.
    virtual void GetALlAnimationByObjId(qint64 objId, std::vector<KVXAnimation*>& out) const = 0;
    virtual std::vector<KVXAnimation*> getAnimationVector() const = 0;

protected:
    ~KVXRecordIndex() = default;
};
