#include "KVXAnimation.h"

#include "KVXDateFormat.h"
#include "host/db/KVXSaveLoadXml.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDocManager.h"
#include "host/rx/PfRxClass.h"

#include <osg/ComputeBoundsVisitor>
#include <osg/Group>
#include <osg/MatrixTransform>

#include <atomic>

PFRX_DEFINE_MEMBERS(KVXAnimation, KVXBaseObject, &PfRxCreateInstance<KVXAnimation>)

namespace {

const QString kNumberKey = QStringLiteral("AnimationNumber");
const QString kObjIdKey = QStringLiteral("AnimationObjId");
const QString kStartDateKey = QStringLiteral("AnimationStartDate");
const QString kEndDateKey = QStringLiteral("AnimationEndDate");
const QString kDurationDaysKey = QStringLiteral("AnimationDurationDays");
const QString kTypeKey = QStringLiteral("AnimationType");
const QString kTranslationTypeKey = QStringLiteral("TranslationType");
const QString kLoopPlaybackKey = QStringLiteral("AnimationLoopPlayback");
const QString kLoopEndDateKey = QStringLiteral("AnimationLoopEndDate");
const QString kStartPointKey = QStringLiteral("AnimationStartPoint");
const QString kEndPointKey = QStringLiteral("AnimationEndPoint");
const QString kStartAngleKey = QStringLiteral("AnimationStartAngle");
const QString kEndAngleKey = QStringLiteral("AnimationEndAngle");
const QString kPathRotateAngleKey = QStringLiteral("AnimationPathRotateAngle");
const QString kIsLayeringKey = QStringLiteral("AnimationIsLayering");
const QString kLayerHeightKey = QStringLiteral("AnimationLayerHeight");

QString translationName(KVXAnimation::TranslationType type, bool demolition)
{
    switch (type) {
    case KVXAnimation::LeftToRight:
    case KVXAnimation::RightToLeft:
    case KVXAnimation::FrontToBack:
    case KVXAnimation::BackToFront:
        return demolition ? QStringLiteral("平移推进拆除") : QStringLiteral("平移推进建造");
    case KVXAnimation::BottomUp: return demolition ? QStringLiteral("自下而上拆除") : QStringLiteral("自下而上建造");
    case KVXAnimation::TopDown: return demolition ? QStringLiteral("自上而下拆除") : QStringLiteral("自上而下建造");
    }
    return QString();
}

} // namespace

KVXAnimation::KVXAnimation() = default;

KVXAnimation::KVXAnimation(int number, qint64 objId, AnimType type, TranslationType translation)
    : m_number(number), m_objId(objId), m_animationType(type), m_translationType(translation)
{
    SetColor(QColor(255, 0, 0, 255));
    SetLineType(1);
    SetLineWidth(3.0);
    SetClosed(false);
    initData();
}

KVXAnimation::KVXAnimation(const KVXAnimation& other) = default;

KVXAnimation::~KVXAnimation() = default;

void KVXAnimation::initData()
{
    const QDate today = QDate::currentDate();
    m_startDate = today;
    m_endDate = today.addDays(1);
    m_durationDays = 1;
    m_loopPlayback = false;
    m_loopEndDate = today;
    m_pathRotateAngle = 0.0;
    m_isLayering = false;
    m_layerHeight = 1000.0;
    m_routeParentNode = nullptr;
    m_routeNode = nullptr;
    switch (m_animationType) {
    case Construction:
    case Demolition:
        if (m_translationType == BottomUp) {
            m_animStartPoint.z() = getMinimumElevation();
            m_animEndPoint.z() = getMaxmumElevation();
        } else if (m_translationType == TopDown) {
            m_animStartPoint.z() = getMaxmumElevation();
            m_animEndPoint.z() = getMinimumElevation();
        }
        break;
    case Path:
        if (vpe::CSceneNode* node = getNode()) {
            if (node->getNumParents() > 0)
                m_routeParentNode = node->getParent(0);
        }
        break;
    default: break;
    }
    m_startAngle = 0.0;
    m_endAngle = 180.0;
}

QString KVXAnimation::getAnimationTypeName() const
{
    switch (m_animationType) {
    case Construction: return translationName(m_translationType, false);
    case Demolition: return translationName(m_translationType, true);
    case Path: return QStringLiteral("路径");
    case Rotation: return QStringLiteral("旋转");
    case Emphasis: return QStringLiteral("强调");
    }
    return QString();
}

vpe::CSceneNode* KVXAnimation::getNode() const
{
    PfDbDocument* document = PfDocManagerPtr()->CurrentDocument();
    if (!document || !document->GetActiveView())
        return nullptr;
    PfDbObject* element = document->GetItem(static_cast<PfDbHandle>(m_objId));
    return element ? element->GetSceneNode(document->GetActiveView()) : nullptr;
}

bool KVXAnimation::elementBounds(vpe::CVec3<double>& min, vpe::CVec3<double>& max) const
{
    vpe::CSceneNode* node = getNode();
    if (!node)
        return false;
    osg::ComputeBoundsVisitor visitor;
    node->accept(visitor);
    const osg::BoundingBox& box = visitor.getBoundingBox();
    for (int axis = 0; axis < 3; ++axis) {
        if (double(box._max[axis]) + 1e-12 < double(box._min[axis]))
            return false;
    }
    min = vpe::CVec3<double>(box._min);
    max = vpe::CVec3<double>(box._max);
    return true;
}

double KVXAnimation::getMinimumElevation() const
{
    vpe::CVec3<double> min, max;
    return elementBounds(min, max) ? min.z() : 0.0;
}

double KVXAnimation::getMaxmumElevation() const
{
    vpe::CVec3<double> min, max;
    return elementBounds(min, max) ? max.z() : 0.0;
}

vpe::CVec3<double> KVXAnimation::calCenterPt() const
{
    vpe::CVec3<double> min, max;
    if (!elementBounds(min, max))
        return vpe::CVec3<double>(0.0, 0.0, 0.0);
    return (min + max) * 0.5;
}

void KVXAnimation::setRouteParentNode(vpe::CSceneNode* node) { m_routeParentNode = node; }

void KVXAnimation::setRouteNode(vpe::CSceneNode* node) { m_routeNode = node; }

void KVXAnimation::resumeNodeOfRouteAnimation()
{
    vpe::CSceneNode* node = getNode();
    osg::Group* parent = m_routeParentNode ? m_routeParentNode->asGroup() : nullptr;
    osg::Group* route = m_routeNode ? m_routeNode->asGroup() : nullptr;
    if (!node || !parent || !route || parent == route || route->getNumChildren() == 0)
        return;
    // Hold the node: removing the route node may drop its last reference.
    osg::ref_ptr<vpe::CSceneNode> keep = node;
    parent->addChild(node);
    parent->removeChild(route);
    m_routeNode = nullptr;
    if (auto* transform = dynamic_cast<osg::MatrixTransform*>(node))
        transform->setMatrix(osg::Matrix::identity());
}

namespace {
std::atomic<quint64> elementChanges{0};
}

void KVXAnimation::setObjId(qint64 objId)
{
    if (objId == m_objId)
        return;
    m_objId = objId;
    ++elementChanges;
}

quint64 KVXAnimation::ElementChanges() { return elementChanges; }

Pfad::Error KVXAnimation::CopyFrom(const PfRxObject* other)
{
    KVXBaseObject::CopyFrom(other);
    const KVXAnimation* source = KVXAnimation::Cast(other);
    if (!source)
        return Pfad::eInvalidInput;
    m_number = source->m_number;
    setObjId(source->m_objId);
    m_startDate = source->m_startDate;
    m_endDate = source->m_endDate;
    m_durationDays = source->m_durationDays;
    m_animationType = source->m_animationType;
    m_loopPlayback = source->m_loopPlayback;
    m_loopEndDate = source->m_loopEndDate;
    m_animStartPoint = source->m_animStartPoint;
    m_animEndPoint = source->m_animEndPoint;
    m_animation = source->m_animation;
    m_animator = source->m_animator;
    m_startAngle = source->m_startAngle;
    m_endAngle = source->m_endAngle;
    m_translationType = source->m_translationType;
    m_playing = source->m_playing;
    m_antiNode = source->m_antiNode;
    m_played = source->m_played;
    m_pathRotateAngle = source->m_pathRotateAngle;
    m_isLayering = source->m_isLayering;
    m_layerHeight = source->m_layerHeight;
    return Pfad::eOk;
}

void KVXAnimation::setElementPropertys(KVXSaveLoadXml& xml)
{
    KVXBaseObject::setElementPropertys(xml);
    xml.setInt(kNumberKey, m_number);
    xml.setInt64(kObjIdKey, m_objId);
    xml.setString(kStartDateKey, KVXDateFormat::toText(m_startDate));
    xml.setString(kEndDateKey, KVXDateFormat::toText(m_endDate));
    xml.setInt(kDurationDaysKey, m_durationDays);
    xml.setInt(kTypeKey, m_animationType);
    xml.setInt(kTranslationTypeKey, m_translationType);
    xml.setBool(kLoopPlaybackKey, m_loopPlayback);
    xml.setString(kLoopEndDateKey, KVXDateFormat::toText(m_loopEndDate));
    xml.setVector(kStartPointKey, m_animStartPoint);
    xml.setVector(kEndPointKey, m_animEndPoint);
    xml.setDouble(kStartAngleKey, m_startAngle);
    xml.setDouble(kEndAngleKey, m_endAngle);
    xml.setDouble(kPathRotateAngleKey, m_pathRotateAngle);
    xml.setBool(kIsLayeringKey, m_isLayering);
    xml.setDouble(kLayerHeightKey, m_layerHeight);
}

void KVXAnimation::getElementPropertys(KVXSaveLoadXml& xml)
{
    KVXBaseObject::getElementPropertys(xml);
    m_number = xml.getInt(kNumberKey);
    setObjId(xml.getInt64(kObjIdKey));
    m_startDate = KVXDateFormat::fromText(xml.getString(kStartDateKey));
    m_endDate = KVXDateFormat::fromText(xml.getString(kEndDateKey));
    m_durationDays = xml.getInt(kDurationDaysKey);
    // Kinds the module does not have are read as the first one, with a
    // note: a cast of any number would leave playback undefined.
    m_animationType = static_cast<AnimType>(xml.getIntIn(kTypeKey, Construction, Emphasis, Construction));
    m_translationType =
        static_cast<TranslationType>(xml.getIntIn(kTranslationTypeKey, LeftToRight, TopDown, LeftToRight));
    m_loopPlayback = xml.getBool(kLoopPlaybackKey);
    m_loopEndDate = KVXDateFormat::fromText(xml.getString(kLoopEndDateKey));
    m_animStartPoint = xml.getVector(kStartPointKey);
    m_animEndPoint = xml.getVector(kEndPointKey);
    m_startAngle = xml.getDouble(kStartAngleKey);
    m_endAngle = xml.getDouble(kEndAngleKey);
    m_pathRotateAngle = xml.getDouble(kPathRotateAngleKey);
    m_isLayering = xml.getBool(kIsLayeringKey);
    m_layerHeight = xml.getDouble(kLayerHeightKey);
}

bool KVXAnimation::draw2d(PfGiWorldDraw* draw, vpe::CSceneNode*& node)
{
    if (!m_visibleForAnimation)
        return false;
    KVXBaseObject::draw2d(draw, node);
    return true;
}

bool KVXAnimation::draw3d(PfGiWorldDraw* draw, vpe::CSceneNode*& node)
{
    if (!m_visibleForAnimation)
        return false;
    KVXBaseObject::draw3d(draw, node);
    return true;
}
