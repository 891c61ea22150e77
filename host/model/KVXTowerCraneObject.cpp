#include "KVXTowerCraneObject.h"

#include "KVXDrawHelper.h"
#include "KVXMeshBuilder.h"
#include "host/db/KVXSaveLoadXml.h"
#include "host/rx/PfRxClass.h"
#include "host/vpe/scene/CGroupNode.h"

#include <algorithm>
#include <cmath>

PFRX_DEFINE_HOST_MEMBERS(KVXTowerCraneObject, KVX3DElementObject, &PfRxCreateInstance<KVXTowerCraneObject>)

namespace {
const QString kPositionKey = QStringLiteral("TowerCrane_Position");
const QString kTowerHeightKey = QStringLiteral("TowerCrane_TowerHeight");
const QString kJibLengthKey = QStringLiteral("TowerCrane_JibLength");
// Sizes of the parametric crane, in millimetres.
constexpr double kMastWidth = 1600.0;
constexpr double kChord = 160.0;
constexpr double kSection = 3000.0;
constexpr double kJibDepth = 1400.0;
constexpr double kTieLength = 4000.0;

osg::Node* partNode(KVXMeshBuilder& builder, const QColor& color)
{
    vpe::CRefPtr<vpe::CBody> body = builder.Take();
    return KVXDrawHelper::CreateBodyNode(*body, color);
}

void buildMast(KVXMeshBuilder& b, const osg::Vec3d& foot, double height)
{
    const double h = kMastWidth * 0.5;
    const osg::Vec3d corners[4] = {{-h, -h, 0}, {h, -h, 0}, {h, h, 0}, {-h, h, 0}};
    for (const osg::Vec3d& c : corners)
        b.AddBar(foot + c, foot + c + osg::Vec3d(0, 0, height), kChord);
    for (double z = 0.0; z + 1.0 < height; z += kSection) {
        const double top = std::min(z + kSection, height);
        for (int i = 0; i < 4; ++i) {
            const osg::Vec3d a = foot + corners[i] + osg::Vec3d(0, 0, z);
            const osg::Vec3d c = foot + corners[(i + 1) % 4] + osg::Vec3d(0, 0, z);
            b.AddBar(a, c, kChord * 0.6);
            b.AddBar(a, c + osg::Vec3d(0, 0, top - z), kChord * 0.5);
        }
    }
}

void buildUpperWorks(KVXMeshBuilder& steel, KVXMeshBuilder& cab, const osg::Vec3d& top)
{
    steel.AddBox(top + osg::Vec3d(-1300, -1300, 0), top + osg::Vec3d(1300, 1300, 1000));
    steel.AddBar(top + osg::Vec3d(0, 0, 1000), top + osg::Vec3d(0, 0, 8000), 900);
    cab.AddBox(top + osg::Vec3d(400, 1350, 200), top + osg::Vec3d(2400, 3100, 2600));
}

void buildJib(KVXMeshBuilder& steel, KVXMeshBuilder& weight, const osg::Vec3d& top, double length)
{
    const double z = 1000.0;
    const double w = 600.0;
    for (double y : {-w, w}) {
        steel.AddBar(top + osg::Vec3d(-length * 0.3, y, z), top + osg::Vec3d(length, y, z), 200);
        steel.AddBar(top + osg::Vec3d(0, y, z + kJibDepth), top + osg::Vec3d(length * 0.95, y, z + kJibDepth * 0.4),
                     160);
    }
    for (double x = 0.0; x < length; x += kSection) {
        steel.AddBar(top + osg::Vec3d(x, -w, z), top + osg::Vec3d(x, w, z), 120);
        steel.AddBar(top + osg::Vec3d(x, 0, z), top + osg::Vec3d(x + kSection * 0.5, 0, z + kJibDepth * 0.8), 100);
    }
    // Pendants from the tower head to the jib and the counter-jib.
    steel.AddBar(top + osg::Vec3d(0, 0, 8000), top + osg::Vec3d(length * 0.6, 0, z + kJibDepth), 60);
    steel.AddBar(top + osg::Vec3d(0, 0, 8000), top + osg::Vec3d(-length * 0.28, 0, z), 60);
    steel.AddBox(top + osg::Vec3d(length * 0.55, -700, z - 900), top + osg::Vec3d(length * 0.55 + 1400, 700, z));
    weight.AddBox(top + osg::Vec3d(-length * 0.3, -1100, z - 2200), top + osg::Vec3d(-length * 0.3 + 3000, 1100, z));
}

osg::Node* buildTies(const osg::Vec3d& foot, double height, const QColor& color)
{
    osg::ref_ptr<vpe::CGroupNode> ties = new vpe::CGroupNode;
    KVXMeshBuilder b;
    const double h = kMastWidth * 0.5;
    for (double z = KVXTowerCraneObject::kTieSpacing; z + 10000.0 < height; z += KVXTowerCraneObject::kTieSpacing) {
        const osg::Vec3d level = foot + osg::Vec3d(0, 0, z);
        b.AddBar(level + osg::Vec3d(-h, -h, 0), level + osg::Vec3d(-h - 800, -h - kTieLength, 0), 200);
        b.AddBar(level + osg::Vec3d(h, -h, 0), level + osg::Vec3d(h + 800, -h - kTieLength, 0), 200);
        b.AddBar(level + osg::Vec3d(-h, -h, 0), level + osg::Vec3d(h + 800, -h - kTieLength, 0), 140);
        ties->addChild(partNode(b, color));
    }
    return ties.release();
}

} // namespace

KVXTowerCraneObject::KVXTowerCraneObject() { SetBodyColor(QColor(242, 184, 0)); }

bool KVXTowerCraneObject::draw3d(PfGiWorldDraw*, vpe::CSceneNode*& node)
{
    if (!GetVisibility())
        return false;
    const QColor steel = GetDrawColor();
    const osg::Vec3d foot = m_position;
    const double height = std::max(m_towerHeight, 1);
    const osg::Vec3d top = foot + osg::Vec3d(0, 0, height);
    KVXMeshBuilder steelBuilder, extraBuilder;
    osg::ref_ptr<vpe::CGroupNode> crane = new vpe::CGroupNode;
    buildJib(steelBuilder, extraBuilder, top, std::max(m_jibLength, 5000.0));
    osg::ref_ptr<vpe::CGroupNode> jib = new vpe::CGroupNode;
    jib->addChild(partNode(steelBuilder, steel));
    jib->addChild(partNode(extraBuilder, QColor(120, 120, 120, steel.alpha())));
    buildUpperWorks(steelBuilder, extraBuilder, top);
    osg::ref_ptr<vpe::CGroupNode> upper = new vpe::CGroupNode;
    upper->addChild(partNode(steelBuilder, steel));
    upper->addChild(partNode(extraBuilder, QColor(235, 235, 230, steel.alpha())));
    buildMast(steelBuilder, foot, height);
    crane->addChild(jib);
    crane->addChild(upper);
    crane->addChild(partNode(steelBuilder, steel));
    crane->addChild(buildTies(foot, height, QColor(150, 150, 150, steel.alpha())));
    node = crane.release();
    return true;
}

Pfad::Error KVXTowerCraneObject::CopyFrom(const PfRxObject* other)
{
    const Pfad::Error result = KVX3DElementObject::CopyFrom(other);
    if (const KVXTowerCraneObject* source = KVXTowerCraneObject::Cast(other)) {
        m_position = source->m_position;
        m_towerHeight = source->m_towerHeight;
        m_jibLength = source->m_jibLength;
    }
    return result;
}

void KVXTowerCraneObject::setElementPropertys(KVXSaveLoadXml& xml)
{
    KVX3DElementObject::setElementPropertys(xml);
    xml.setVector(kPositionKey, m_position);
    xml.setInt(kTowerHeightKey, m_towerHeight);
    xml.setDouble(kJibLengthKey, m_jibLength);
}

void KVXTowerCraneObject::getElementPropertys(KVXSaveLoadXml& xml)
{
    KVX3DElementObject::getElementPropertys(xml);
    const vpe::CVec3<double> position = xml.getVector(kPositionKey);
    SetPosition(position);
    if (!(m_position == position))
        xml.addProblem(QStringLiteral("%1 (%2, %3, %4) is farther than %5 mm from the origin: read as (%6, %7, %8)")
                           .arg(kPositionKey)
                           .arg(position.x())
                           .arg(position.y())
                           .arg(position.z())
                           .arg(kFarthest)
                           .arg(m_position.x())
                           .arg(m_position.y())
                           .arg(m_position.z()));
    m_towerHeight = xml.getIntIn(kTowerHeightKey, kLowestTower, kHighestTower, 40000);
    m_jibLength = xml.getDoubleIn(kJibLengthKey, kShortestJib, kLongestJib, 50000.0);
}

void KVXTowerCraneObject::SetPosition(const vpe::CVec3<double>& position)
{
    const auto kept = [](double value) { return std::isnan(value) ? 0.0 : std::clamp(value, -kFarthest, kFarthest); };
    m_position.set(kept(position.x()), kept(position.y()), kept(position.z()));
}

void KVXTowerCraneObject::SetTowerHeight(int height) { m_towerHeight = std::clamp(height, kLowestTower, kHighestTower); }

void KVXTowerCraneObject::SetJibLength(double length)
{
    m_jibLength = std::isnan(length) ? kShortestJib : std::clamp(length, kShortestJib, kLongestJib);
}
