#include "KVX3DElementObject.h"

#include "KVXDrawHelper.h"
#include "host/db/KVXSaveLoadXml.h"
#include "host/rx/PfRxClass.h"

#include <algorithm>
#include <cmath>

#include "host/vpe/scene/CGroupNode.h"

PFRX_DEFINE_HOST_MEMBERS(KVX3DElementObject, KVXBaseObject, &PfRxCreateInstance<KVX3DElementObject>)

namespace {
const QString kBodyColorKey = QStringLiteral("Element3D_BodyColor");
const QString kTransparencyKey = QStringLiteral("Element3D_Transparency");
const QString kBodyCountKey = QStringLiteral("Element3D_BodyCount");
const QString kBodyKeyPrefix = QStringLiteral("Element3D_Body_");

QString bodyKey(int index, const char* part) { return kBodyKeyPrefix + QString::number(index) + QLatin1String(part); }

void saveBody(KVXSaveLoadXml& xml, int index, const vpe::CBody& body)
{
    std::vector<double> vertices, triangles;
    vertices.reserve(body.GetVertices().size() * 3);
    for (const osg::Vec3d& v : body.GetVertices())
        vertices.insert(vertices.end(), {v.x(), v.y(), v.z()});
    triangles.reserve(body.GetTriangles().size() * 3);
    for (const vpe::CBody::Triangle& t : body.GetTriangles())
        triangles.insert(triangles.end(), {double(t[0]), double(t[1]), double(t[2])});
    xml.setNumbers(bodyKey(index, "_Vertices"), vertices);
    xml.setNumbers(bodyKey(index, "_Triangles"), triangles);
}

// Null for a damaged body: coordinates not in threes, an index out of range.
vpe::CBody* loadBody(KVXSaveLoadXml& xml, int index)
{
    const std::vector<double> coordinates = xml.getNumbers(bodyKey(index, "_Vertices"));
    const std::vector<double> indices = xml.getNumbers(bodyKey(index, "_Triangles"));
    if (coordinates.size() % 3 || indices.size() % 3)
        return nullptr;
    for (double coordinate : coordinates) {
        if (!(std::abs(coordinate) <= KVX3DElementObject::kFarthest)) {
            xml.addProblem(QStringLiteral("%1 holds the coordinate %2, farther than %3 mm: the body is left out")
                               .arg(bodyKey(index, "_Vertices"))
                               .arg(coordinate)
                               .arg(KVX3DElementObject::kFarthest));
            return nullptr;
        }
    }
    std::vector<osg::Vec3d> vertices;
    for (std::size_t i = 0; i < coordinates.size(); i += 3)
        vertices.emplace_back(coordinates[i], coordinates[i + 1], coordinates[i + 2]);
    std::vector<vpe::CBody::Triangle> triangles;
    for (std::size_t i = 0; i < indices.size(); i += 3) {
        vpe::CBody::Triangle t;
        for (int k = 0; k < 3; ++k) {
            const double value = indices[i + k];
            if (!(value >= 0.0 && value < double(vertices.size())) || value != std::floor(value))
                return nullptr;
            t[k] = static_cast<std::uint32_t>(value);
        }
        triangles.push_back(t);
    }
    return new vpe::CBody(std::move(vertices), std::move(triangles));
}
} // namespace

void KVX3DElementObject::AddBody(vpe::CBody* body)
{
    if (body)
        m_bodies.emplace_back(body);
}

QColor KVX3DElementObject::GetDrawColor() const
{
    QColor color = m_bodyColor;
    color.setAlpha(255 - m_transparency * 255 / 100);
    return color;
}

QColor KVX3DElementObject::EntityColor() const
{
    return m_bodies.empty() ? KVXBaseObject::EntityColor() : KVXDrawHelper::EdgeColor(GetDrawColor());
}

bool KVX3DElementObject::draw3d(PfGiWorldDraw* draw, vpe::CSceneNode*& node)
{
    if (m_bodies.empty())
        return KVXBaseObject::draw3d(draw, node);
    if (!GetVisibility())
        return false;
    if (m_bodies.size() == 1) {
        node = KVXDrawHelper::CreateBodyNode(*m_bodies.front(), GetDrawColor());
        return true;
    }
    osg::ref_ptr<vpe::CGroupNode> group = new vpe::CGroupNode;
    for (const auto& body : m_bodies)
        group->addChild(KVXDrawHelper::CreateBodyNode(*body, GetDrawColor()));
    node = group.release();
    return true;
}

void KVX3DElementObject::SetTransparency(int percent) { m_transparency = std::clamp(percent, 0, 100); }

Pfad::Error KVX3DElementObject::CopyFrom(const PfRxObject* other)
{
    const Pfad::Error result = KVXBaseObject::CopyFrom(other);
    if (const KVX3DElementObject* source = KVX3DElementObject::Cast(other)) {
        m_bodyColor = source->m_bodyColor;
        m_transparency = source->m_transparency;
        m_bodies = source->m_bodies;
    }
    return result;
}

void KVX3DElementObject::setElementPropertys(KVXSaveLoadXml& xml)
{
    KVXBaseObject::setElementPropertys(xml);
    xml.setInt64(kBodyColorKey, static_cast<qint64>(m_bodyColor.rgba()));
    xml.setInt(kTransparencyKey, m_transparency);
    xml.setInt(kBodyCountKey, static_cast<int>(m_bodies.size()));
    for (std::size_t i = 0; i < m_bodies.size(); ++i)
        saveBody(xml, static_cast<int>(i), *m_bodies[i]);
}

void KVX3DElementObject::getElementPropertys(KVXSaveLoadXml& xml)
{
    KVXBaseObject::getElementPropertys(xml);
    m_bodyColor = QColor::fromRgba(static_cast<QRgb>(xml.getInt64(kBodyColorKey, 0xffc8c8c8)));
    SetTransparency(xml.getInt(kTransparencyKey));
    m_bodies.clear();
    // A damaged count cannot ask for more bodies than the archive holds keys.
    const int count = std::clamp(xml.getInt(kBodyCountKey), 0, static_cast<int>(xml.size()));
    for (int i = 0; i < count; ++i)
        AddBody(loadBody(xml, i));
}
