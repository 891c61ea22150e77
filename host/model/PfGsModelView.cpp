#include "PfGsModelView.h"

#include "KVXElementObject.h"
#include "PfGiWorldDraw.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/rx/PfRxClass.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CCamera.h"

#include <osg/Material>
#include <osgUtil/IntersectionVisitor>
#include <osgUtil/LineSegmentIntersector>

#include <algorithm>

PFRX_DEFINE_HOST_MEMBERS(PfGsModelView, PfDbDatabaseReactor, nullptr)

PfGsModelView::PfGsModelView(PfDbDocument* document)
    : m_document(document), m_database(document->GetDatabase()), m_viewer(new vpe::CViewer)
{
    m_database->AddReactor(this);
}

PfGsModelView::~PfGsModelView()
{
    if (m_database)
        m_database->RemoveReactor(this);
}

PfGsModelView* PfGsModelView::Attach(PfDbDocument* document)
{
    if (!document)
        return nullptr;
    auto view = std::make_unique<PfGsModelView>(document);
    PfGsModelView* attached = view.get();
    document->SetActiveView(std::move(view));
    attached->Regenerate();
    return attached;
}

vpe::CViewer* PfGsModelView::GetViewer() const { return m_viewer.get(); }

vpe::CSceneNode* PfGsModelView::GetSceneNode(PfDbHandle handle) const
{
    auto it = m_nodes.find(handle);
    return it == m_nodes.end() ? nullptr : it->second.get();
}

void PfGsModelView::Regenerate()
{
    if (!m_database)
        return;
    for (auto& entry : m_nodes)
        m_viewer->GetScene()->GetRootNode()->removeChild(entry.second);
    m_nodes.clear();
    for (PfDbObject* object : m_database->AllObjects()) {
        if (!object->IsErased())
            Redraw(object);
    }
}

void PfGsModelView::removeNode(PfDbHandle handle)
{
    auto it = m_nodes.find(handle);
    if (it == m_nodes.end())
        return;
    // The node may hang under a node put between it and the root (a route
    // node while a path animation plays): take it from wherever it is.
    osg::ref_ptr<osg::Node> node = it->second;
    while (node->getNumParents() > 0)
        node->getParent(0)->removeChild(node);
    m_nodes.erase(it);
    m_viewer->SetDirty();
}

void PfGsModelView::Redraw(PfDbObject* object)
{
    removeNode(object->GetHandle());
    auto* element = KVXElementObject::Cast(object);
    if (!element || object->IsErased())
        return;
    PfGiWorldDraw draw(PfGiWorldDraw::kModel3d);
    vpe::CSceneNode* drawn = nullptr;
    if (!element->draw3d(&draw, drawn) || !drawn)
        return;
    osg::ref_ptr<osg::Node> node = drawn;
    node->setName(QString::fromStdWString(element->GetName()).toStdString());
    m_viewer->GetScene()->GetRootNode()->addChild(node);
    m_nodes.emplace(object->GetHandle(), node);
    if (std::find(m_highlighted.begin(), m_highlighted.end(), object->GetHandle()) != m_highlighted.end())
        highlight(node.get(), true);
    m_viewer->SetDirty();
}

bool PfGsModelView::lineOfSight(const QPointF& pixel, const QSize& size, osg::Vec3d& from, osg::Vec3d& to) const
{
    if (size.isEmpty())
        return false;
    const vpe::CCamera* camera = m_viewer->GetCamera();
    const osg::Matrixd toWorld = osg::Matrixd::inverse(
        camera->GetViewMatrix() * camera->GetProjectionMatrix(double(size.width()) / double(size.height())));
    // From the near plane to the far one.
    const double x = 2.0 * pixel.x() / size.width() - 1.0;
    const double y = 1.0 - 2.0 * pixel.y() / size.height();
    from = osg::Vec3d(x, y, -1.0) * toWorld;
    to = osg::Vec3d(x, y, 1.0) * toWorld;
    return true;
}

osg::ref_ptr<osgUtil::LineSegmentIntersector> PfGsModelView::intersect(const QPointF& pixel, const QSize& size) const
{
    osg::Vec3d from, to;
    if (!lineOfSight(pixel, size, from, to))
        return nullptr;
    osg::ref_ptr<osgUtil::LineSegmentIntersector> line = new osgUtil::LineSegmentIntersector(from, to);
    osgUtil::IntersectionVisitor visit(line.get());
    m_viewer->GetScene()->GetRootNode()->accept(visit);
    return line->containsIntersections() ? line : nullptr;
}

PfDbHandle PfGsModelView::PickAt(const QPointF& pixel, const QSize& size) const
{
    const osg::ref_ptr<osgUtil::LineSegmentIntersector> line = intersect(pixel, size);
    if (!line)
        return kPfDbNullHandle;
    // The nearest hit, filed under the object whose node holds it.
    const osg::NodePath& path = line->getFirstIntersection().nodePath;
    for (auto node = path.rbegin(); node != path.rend(); ++node)
        for (const auto& drawn : m_nodes)
            if (drawn.second.get() == *node)
                return drawn.first;
    return kPfDbNullHandle;
}

bool PfGsModelView::PointAt(const QPointF& pixel, const QSize& size, osg::Vec3d& point) const
{
    if (const osg::ref_ptr<osgUtil::LineSegmentIntersector> line = intersect(pixel, size)) {
        point = line->getFirstIntersection().getWorldIntersectPoint();
        return true;
    }
    osg::Vec3d from, to;
    if (!lineOfSight(pixel, size, from, to) || from.z() == to.z())
        return false;
    // Off the model: where the line of sight meets the ground, in front.
    const double along = from.z() / (from.z() - to.z());
    if (along < 0.0)
        return false;
    point = from + (to - from) * along;
    return true;
}

void PfGsModelView::SetHighlighted(const std::vector<PfDbHandle>& handles)
{
    for (PfDbHandle handle : m_highlighted)
        if (auto it = m_nodes.find(handle); it != m_nodes.end())
            highlight(it->second.get(), false);
    m_highlighted = handles;
    for (PfDbHandle handle : m_highlighted)
        if (auto it = m_nodes.find(handle); it != m_nodes.end())
            highlight(it->second.get(), true);
    m_viewer->SetDirty();
}

void PfGsModelView::highlight(osg::Node* node, bool on)
{
    // The selection's blue over the element's own colours.
    static const osg::ref_ptr<osg::Material> selected = [] {
        osg::ref_ptr<osg::Material> material = new osg::Material;
        material->setDiffuse(osg::Material::FRONT_AND_BACK, osg::Vec4(0.32f, 0.56f, 0.92f, 1.0f));
        material->setAmbient(osg::Material::FRONT_AND_BACK, osg::Vec4(0.32f, 0.56f, 0.92f, 1.0f));
        return material;
    }();
    if (on)
        node->getOrCreateStateSet()->setAttributeAndModes(selected.get(),
                                                          osg::StateAttribute::ON | osg::StateAttribute::OVERRIDE);
    else if (node->getStateSet())
        node->getStateSet()->removeAttribute(osg::StateAttribute::MATERIAL);
}

void PfGsModelView::objectAppended(const PfDbDatabase*, const PfDbObject* object)
{
    Redraw(const_cast<PfDbObject*>(object));
}

void PfGsModelView::objectErased(const PfDbDatabase*, const PfDbObject* object, bool erasing)
{
    if (erasing)
        removeNode(object->GetHandle());
    else
        Redraw(const_cast<PfDbObject*>(object));
}

void PfGsModelView::objectModified(const PfDbDatabase*, const PfDbObject* object)
{
    Redraw(const_cast<PfDbObject*>(object));
}

void PfGsModelView::goodbye(const PfDbDatabase*) { m_database = nullptr; }
