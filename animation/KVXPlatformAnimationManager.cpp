#include "KVXPlatformAnimationManager.h"

#include "KVXTowerPlatformCallback.h"

#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfGsView.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/model/PfGsUtility.h"
#include "host/vpe/animation/CAnimation.h"
#include "host/vpe/animation/CAnimationManager.h"
#include "host/vpe/animation/CAnimator.h"
#include "host/vpe/render/CViewer.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

KVXPlatformAnimationManager* KVXPlatformAnimationManager::m_instance = nullptr;

namespace {
// Six days: a live animation never runs out in practice.
constexpr double kLiveLength = 518400.0;
} // namespace

KVXPlatformAnimationManager* KVXPlatformAnimationManager::getInstance()
{
    if (!m_instance)
        m_instance = new KVXPlatformAnimationManager;
    return m_instance;
}

KVXPlatformAnimationManager::KVXPlatformAnimationManager()
{
    m_timer.setInterval(kRequestInterval);
    connect(&m_timer, SIGNAL(timeout()), this, SLOT(onTimer()));
}

KVXPlatformAnimationManager::~KVXPlatformAnimationManager() { stop(); }

std::string KVXPlatformAnimationManager::nameOf(const KVXTowerCraneObject* crane)
{
    return std::to_string(static_cast<unsigned long long>(crane->GetHandle()));
}

void KVXPlatformAnimationManager::onTimer() { emit requestData(); }

void KVXPlatformAnimationManager::play()
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer)
        return;
    const PlayingState before = m_state;
    if (before == Stopped)
        initAnimationData();
    for (const auto& tower : m_towers) {
        vpe::CAnimator* animator = viewer->GetAnimationManager()->FindAnimator(nameOf(tower.first));
        if (!animator)
            continue;
        if (before == Stopped)
            animator->Enable();
        else if (before == Playing)
            animator->Pause();
    }
    m_timer.start();
    m_state = Playing;
    emit isPalyingSignal(true);
}

void KVXPlatformAnimationManager::pause()
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer)
        return;
    for (const auto& tower : m_towers) {
        vpe::CAnimator* animator = viewer->GetAnimationManager()->FindAnimator(nameOf(tower.first));
        if (!animator)
            continue;
        if (m_state == Playing)
            animator->Pause();
        else if (m_state == Paused)
            animator->Resume();
    }
    if (m_state == Playing) {
        m_state = Paused;
        m_timer.stop();
        emit isPalyingSignal(false);
    } else if (m_state == Paused) {
        m_state = Playing;
        m_timer.start();
        emit isPalyingSignal(true);
    }
}

void KVXPlatformAnimationManager::stop()
{
    m_timer.stop();
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer)
        return;
    for (const auto& tower : m_towers)
        if (vpe::CAnimator* animator = viewer->GetAnimationManager()->FindAnimator(nameOf(tower.first)))
            animator->Disable();
    unInitAnimationData();
    m_state = Stopped;
    viewer->SetDirty();
    emit isPalyingSignal(false);
}

void KVXPlatformAnimationManager::setPlatformTowerData(const QByteArray& reply)
{
    const QJsonObject root = QJsonDocument::fromJson(reply).object();
    const QJsonObject result = root.value(QStringLiteral("result")).toObject();
    if (root.value(QStringLiteral("returnCode")).toInt(-1) != 0 || result.isEmpty())
        return;
    const QJsonObject attributes = result.value(QStringLiteral("attributeMap")).toObject();
    const auto valueOf = [&attributes](const char* key) {
        return attributes.value(QLatin1String(key)).toObject().value(QStringLiteral("value")).toDouble();
    };
    const double rotation = valueOf("rotation");
    const double height = valueOf("height");
    // No crane slews a million degrees or stands a kilometre tall: such a
    // value is a damaged reply, and would not fit the reading's floats.
    if (!(std::abs(rotation) <= 1.0e6) || !(std::abs(height) <= 1000.0))
        return;
    m_current.deviceId =
        result.value(QStringLiteral("status")).toObject().value(QStringLiteral("deviceId")).toString();
    m_current.previousRotation = m_current.rotation;
    m_current.rotation = static_cast<float>(rotation);
    // The platform reports metres.
    m_current.height = static_cast<float>(height * 1000.0);
    m_current.stamp = m_time;
    for (auto& tower : m_towers)
        tower.second = m_current;
}

KVXPlatformTowerAnimationData KVXPlatformAnimationManager::getAnimationDataFromTower(KVXTowerCraneObject* crane) const
{
    auto it = m_towers.find(crane);
    return it == m_towers.end() ? KVXPlatformTowerAnimationData() : it->second;
}

void KVXPlatformAnimationManager::initAnimationData()
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    PfDbDocument* document = PfDocManagerPtr()->CurrentDocument();
    if (!viewer)
        return;
    m_time = 0.0f;
    emit requestData();
    if (!document)
        return;
    vpe::CAnimationManager* animations = viewer->GetAnimationManager();
    for (PfDbObject* object : *document->GetDatabase()->GetModelSpace()) {
        auto* crane = KVXTowerCraneObject::Cast(object);
        if (!crane)
            continue;
        m_towers[crane] = m_current;
        const std::string name = nameOf(crane);
        vpe::CAnimation* animation = animations->CreateAnimation(name, kLiveLength);
        vpe::CAnimator* animator = animations->CreateAnimator(name, animation);
        PfGsView* view = PfGsUtility::ActiveView();
        animation->SetFrameCallback(view ? view->GetSceneNode(crane->GetHandle()) : nullptr,
                                    new KVXTowerPlatformCallback(crane, view, this));
        animator->SetLoop(false);
        animator->Enable();
    }
}

void KVXPlatformAnimationManager::unInitAnimationData()
{
    if (vpe::CViewer* viewer = PfGsUtility::CurrentViewer()) {
        for (const auto& tower : m_towers) {
            viewer->GetAnimationManager()->DestroyAnimator(nameOf(tower.first));
            viewer->GetAnimationManager()->DestroyAnimation(nameOf(tower.first));
        }
    }
    m_towers.clear();
}
