#include "KVXEffectContext.h"

#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/vpe/render/CViewer.h"

KVXEffectContext::KVXEffectContext(PfDbDocument* document, vpe::CViewer* viewer,
                                   const KVXScheduleTimeScale* timeScale)
    : m_viewer(viewer), m_timeScale(timeScale ? timeScale : new KVXScheduleTimeScale)
{
    if (!document || !document->GetDatabase())
        return;
    m_view = document->GetActiveView();
    m_database = document->GetDatabase();
    m_database->AddReactor(this);
}

KVXEffectContext::~KVXEffectContext()
{
    if (m_database)
        m_database->RemoveReactor(this);
}

void KVXEffectContext::goodbye(const PfDbDatabase* database)
{
    if (database != m_database)
        return;
    // The view went first, with its document.
    m_view = nullptr;
    m_database = nullptr;
}

vpe::CViewer* KVXEffectContext::GetViewer() const
{
    // Frames are drawn on one thread: the viewer cannot go between this
    // answer and its use within the frame.
    return m_viewer.get();
}

PfDbObject* KVXEffectContext::GetItem(PfDbHandle handle) const
{
    return m_database ? m_database->OpenObject(handle) : nullptr;
}

void KVXEffectContext::MarkViewerDirty() const
{
    if (vpe::CViewer* viewer = GetViewer())
        viewer->SetDirty();
}

void KVXEffectContext::MarkSceneChanged() const
{
    vpe::CViewer* viewer = GetViewer();
    if (!viewer)
        return;
    if (vpe::CLight* sun = viewer->GetScene()->FindLight(vpe::CScene::kShadowLightName))
        sun->SetShadowDirty(true);
    viewer->SetDirty();
}
