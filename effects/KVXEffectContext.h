#pragma once

#include "animation/KVXScheduleTimeScale.h"
#include "host/db/PfDbDatabaseReactor.h"
#include "host/db/PfDbHandle.h"
#include "host/vpe/core/CReferenced.h"

#include <osg/observer_ptr>

class PfDbDocument;
class PfGsView;

namespace vpe {
class CViewer;
}

// What the frame callbacks of one schedule play work with, handed to them by
// whoever makes them (the playback builder, a test): the document's view and
// database, the viewer that draws them, and the schedule's time scale. The
// callbacks read it every frame instead of asking the host for the current
// document or viewer, so they keep to the scene they were made for even when
// another document becomes current.
//
// The context lets go of what dies before it: the view and database when the
// document closes (it hears the database's goodbye), the viewer when its last
// reference goes. Callbacks then find null and do nothing.
class KVXEffectContext : public vpe::CReferenced, private PfDbDatabaseReactor {
public:
    KVXEffectContext(PfDbDocument* document, vpe::CViewer* viewer, const KVXScheduleTimeScale* timeScale);

    PfGsView* GetView() const { return m_view; }
    PfDbDatabase* GetDatabase() const { return m_database; }
    vpe::CViewer* GetViewer() const;
    // The object of that handle, null when it is erased or the document
    // has closed.
    PfDbObject* GetItem(PfDbHandle handle) const;

    // The play time of a date on the schedule's time scale.
    float TimeAt(const QDate& date) const { return static_cast<float>(m_timeScale->TimeAt(date)); }

    // The viewer must draw again.
    void MarkViewerDirty() const;
    // The scene's shape changed: the shadows are cast again, and the viewer
    // draws again.
    void MarkSceneChanged() const;

protected:
    ~KVXEffectContext() override;

private:
    void goodbye(const PfDbDatabase* database) override;

    PfGsView* m_view = nullptr;
    PfDbDatabase* m_database = nullptr;
    osg::observer_ptr<vpe::CViewer> m_viewer;
    vpe::CRefPtr<const KVXScheduleTimeScale> m_timeScale;
};
