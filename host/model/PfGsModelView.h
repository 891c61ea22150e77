#pragma once

#include <QPointF>
#include <QSize>

#include "host/db/PfDbDatabaseReactor.h"
#include "host/db/PfGsView.h"
#include "host/vpe/core/CReferenced.h"

#include <osg/Node>
#include <osg/Vec3d>

#include <unordered_map>
#include <vector>

namespace osgUtil {
class LineSegmentIntersector;
}

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
    // The object drawn nearest the eye at a pixel of a picture of that size
    // from the viewer's camera; the null handle where nothing is drawn.
    PfDbHandle PickAt(const QPointF& pixel, const QSize& size) const;
    // The world point drawn at the pixel: on the nearest surface, else where
    // the line of sight meets the ground (z = 0); false when it meets
    // neither in front of the eye.
    bool PointAt(const QPointF& pixel, const QSize& size, osg::Vec3d& point) const;
    // The objects drawn in the selection's colour; the others as they are.
    void SetHighlighted(const std::vector<PfDbHandle>& handles);

    void objectAppended(const PfDbDatabase* database, const PfDbObject* object) override;
    void objectErased(const PfDbDatabase* database, const PfDbObject* object, bool erasing) override;
    void objectModified(const PfDbDatabase* database, const PfDbObject* object) override;
    void goodbye(const PfDbDatabase* database) override;

private:
    void removeNode(PfDbHandle handle);
    // The pixel's line of sight from the near plane to the far one.
    bool lineOfSight(const QPointF& pixel, const QSize& size, osg::Vec3d& from, osg::Vec3d& to) const;
    // What the line of sight meets; null when nothing.
    osg::ref_ptr<osgUtil::LineSegmentIntersector> intersect(const QPointF& pixel, const QSize& size) const;
    static void highlight(osg::Node* node, bool on);

    PfDbDocument* m_document;
    PfDbDatabase* m_database;
    vpe::CRefPtr<vpe::CViewer> m_viewer;
    std::unordered_map<PfDbHandle, osg::ref_ptr<osg::Node>> m_nodes;
    std::vector<PfDbHandle> m_highlighted;
};
