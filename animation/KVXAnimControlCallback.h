#pragma once

#include "host/vpe/animation/CFrameCallback.h"

class KVXAnimatorManager;

// The frame callback of the schedule's engine controller. It changes
// nothing: the controller animation exists only to keep the engine's clock
// running while the schedule plays.
class KVXAnimControlCallback : public vpe::CFrameCallback {
public:
    explicit KVXAnimControlCallback(KVXAnimatorManager* manager) : m_manager(manager) {}

    KVXAnimatorManager* GetManager() const { return m_manager; }
    void operator()(vpe::CSceneNode* node, const vpe::CFrameTime& time) override {}

protected:
    ~KVXAnimControlCallback() override = default;

private:
    KVXAnimatorManager* m_manager;
};
