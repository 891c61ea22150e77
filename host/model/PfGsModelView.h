#pragma once

#include "host/db/PfDbDatabaseReactor.h"
#include "host/db/PfGsView.h"
#include "host/vpe/core/CReferenced.h"

#include <osg/Node>

#include <unordered_map>

class PfDbDocument;
class PfDbObject;

namespace vpe {
class CViewer;
}

// The 3D view of a document: every element that draws itself has its node
// under the viewer's scene root, kept in step with the database (added,
// erased, un-erased and changed objects are drawn again).
class PfGsModelView : public PfGsView, public PfDbDatabaseReactor {
    PFRX_DECLARE_MEMBERS(PfGsModelView)
public:
    explicit PfGsModelView(PfDbDocument* document);
    ~PfGsModelView() override;

    // Gives the document a new view, draws it and makes it the active view.
    static PfGsModelView* Attach(PfDbDocument* document);

    vpe::CViewer* GetViewer() const override;
    vpe::CSceneNode* GetSceneNode(PfDbHandle handle) const override;
    void Regenerate() override;
    // Draws one object again (or removes its node when it draws nothing).
    void Redraw(PfDbObject* object);

    void objectAppended(const PfDbDatabase* database, const PfDbObject* object) override;
    void objectErased(const PfDbDatabase* database, const PfDbObject* object, bool erasing) override;
    void objectModified(const PfDbDatabase* database, const PfDbObject* object) override;
    void goodbye(const PfDbDatabase* database) override;

private:
    void removeNode(PfDbHandle handle);

    PfDbDocument* m_document;
    PfDbDatabase* m_database;
    vpe::CRefPtr<vpe::CViewer> m_viewer;
    std::unordered_map<PfDbHandle, osg::ref_ptr<osg::Node>> m_nodes;
};
