#include "PfGsModelView.h"

#include "KVXElementObject.h"
#include "PfGiWorldDraw.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/rx/PfRxClass.h"
#include "host/vpe/render/CViewer.h"

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
    m_viewer->SetDirty();
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
