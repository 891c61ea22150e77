#pragma once

#include "host/model/ZUpdater.h"

class KVXAnimationSequenceForm;

// Hooks the animation sequence into the host's selection notifications:
// a selection change (kind 1) refreshes the list; other kinds are ignored.
class KVXSelectedChangeForAnimateList : public ZUpdater {
public:
    explicit KVXSelectedChangeForAnimateList(KVXAnimationSequenceForm* form) : m_form(form) {}

    void Update(const ZUpdateMessage& message) override;

private:
    KVXAnimationSequenceForm* m_form;
};
