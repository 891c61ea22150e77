#include "KVXAnimationSigns.h"

#include "KVXAnimation.h"
#include "KVXRecordIndex.h"

#include "host/db/PfDocManager.h"
#include "host/model/PfGsUtility.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CVectorText2D.h"
#include "host/vpe/scene/CVisualNode.h"

#include <osg/ComputeBoundsVisitor>

namespace {

// Labels float this far (model units) over the top of their element.
constexpr double kSignHeightOverElement = 10.0;
constexpr float kSignSize = 15.0f;

} // namespace

KVXAnimationSigns::KVXAnimationSigns(const KVXRecordIndex& records) : m_manager(records) {}

KVXAnimationSigns::~KVXAnimationSigns() = default;

vpe::CGroupNode* KVXAnimationSigns::groupNode()
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer)
        return m_group.get();
    vpe::CGroupNode* root = viewer->GetScene()->GetRootNode();
    if (!m_group) {
        m_group = new vpe::CGroupNode;
        m_group->setName("kvx_animation_signs");
    }
    // Asked of the group's own parents: the root holds every element, and a
    // search of its children for each new sign made adding many records
    // quadratic.
    const bool underRoot = m_group->getNumParents() == 1 && m_group->getParent(0) == root;
    if (!underRoot) {
        // The view was replaced: the labels follow to the new one.
        while (m_group->getNumParents() > 0)
            m_group->getParent(0)->removeChild(m_group.get());
        root->addChild(m_group.get());
    }
    return m_group.get();
}

void KVXAnimationSigns::SetVisible(bool visible)
{
    if (m_group)
        m_group->setNodeMask(visible ? ~0u : 0u);
}

bool KVXAnimationSigns::IsVisible() const { return !m_group || m_group->getNodeMask() != 0u; }

QString KVXAnimationSigns::Text(const KVXAnimation* record, bool includeSelf) const
{
    QString text;
    std::vector<KVXAnimation*> records;
    m_manager.GetALlAnimationByObjId(record->getObjId(), records);
    for (const KVXAnimation* other : records) {
        if (!includeSelf && other->getNumber() == record->getNumber())
            continue;
        text += QLatin1Char('[') + QString::number(other->getNumber()) + QLatin1Char(']');
    }
    return text;
}

vpe::CVectorText2D* KVXAnimationSigns::Find(qint64 objId) const
{
    auto it = m_byObjId.find(objId);
    return it == m_byObjId.end() ? nullptr : it->second.get();
}

void KVXAnimationSigns::Add(int number)
{
    KVXAnimation* record = m_manager.findKVXAnimation(number);
    vpe::CGroupNode* group = record ? groupNode() : nullptr;
    vpe::CSceneNode* node = record ? record->getNode() : nullptr;
    if (!group || !node)
        return;
    osg::ComputeBoundsVisitor bounds;
    node->accept(bounds);
    const osg::BoundingBox& box = bounds.getBoundingBox();
    if (!box.valid())
        return;
    const QString text = Text(record, true);
    if (vpe::CVectorText2D* sign = Find(record->getObjId())) {
        sign->SetText(text);
        return;
    }
    vpe::CRefPtr<vpe::CVectorText2D> sign = new vpe::CVectorText2D;
    sign->SetPosition(osg::Vec3d(box.center().x(), box.center().y(), box.zMax() + kSignHeightOverElement));
    sign->SetSizeInPixels(kSignSize);
    sign->SetColor(Qt::white);
    sign->SetAlignmentScheme(vpe::CVectorText2D::CenterBaseLine);
    // The text last: each change of size or alignment lays the glyphs out
    // again, which made most of a sign's cost when thousands are added.
    sign->SetText(text);
    // In a visual node of its own, where the label scaling of anti-aliased
    // renders finds it.
    vpe::CRefPtr<vpe::CVisualNode> holder = new vpe::CVisualNode;
    holder->addDrawable(sign.get());
    group->addChild(holder.get());
    m_byObjId.emplace(record->getObjId(), sign);
}

void KVXAnimationSigns::Delete(int number)
{
    KVXAnimation* record = m_manager.findKVXAnimation(number);
    vpe::CVectorText2D* sign = record ? Find(record->getObjId()) : nullptr;
    if (!sign || !m_group)
        return;
    const QString text = Text(record, false);
    if (text.isEmpty())
        Remove(record->getObjId());
    else
        sign->SetText(text);
    if (vpe::CViewer* viewer = PfGsUtility::CurrentViewer())
        viewer->SetDirty();
}

void KVXAnimationSigns::Remove(qint64 objId)
{
    auto it = m_byObjId.find(objId);
    if (it == m_byObjId.end())
        return;
    const vpe::CRefPtr<vpe::CVectorText2D> sign = it->second;
    m_byObjId.erase(it);
    while (sign->getNumParents() > 0) {
        osg::Node* holder = sign->getParent(0);
        holder->asGeode()->removeDrawable(sign.get());
        if (m_group)
            m_group->removeChild(holder);
    }
}

void KVXAnimationSigns::Drop()
{
    if (m_group) {
        while (m_group->getNumParents() > 0)
            m_group->getParent(0)->removeChild(m_group.get());
    }
    m_group = nullptr;
    m_byObjId.clear();
}

void KVXAnimationSigns::Reset()
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!PfDocManagerPtr()->CurrentDocument() || !viewer)
        return;
    // A fresh group: the old one leaves the scene with every label in it.
    Drop();
    for (const KVXAnimation* record : m_manager.getAnimationVector()) {
        if (!Find(record->getObjId()))
            Add(record->getNumber());
    }
    viewer->SetDirty();
}
