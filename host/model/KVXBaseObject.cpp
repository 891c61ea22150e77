#include "KVXBaseObject.h"

#include "host/db/KVXSaveLoadXml.h"
#include "host/rx/PfRxClass.h"
#include "host/vpe/scene/CStateSet.h"

#include <algorithm>

#include <osg/Geode>
#include <osg/Geometry>

PFRX_DEFINE_HOST_MEMBERS(KVXBaseObject, KVXElementObject, &PfRxCreateInstance<KVXBaseObject>)

namespace {
const QString kColorKey = QStringLiteral("Color");
const QString kLineTypeKey = QStringLiteral("LineType");
const QString kLineWidthKey = QStringLiteral("LineWidth");
const QString kClosedKey = QStringLiteral("Closed");
const QString kPointCountKey = QStringLiteral("PointCount");
const QString kPointKeyPrefix = QStringLiteral("Point_");
} // namespace

Pfad::Error KVXBaseObject::CopyFrom(const PfRxObject* other)
{
    const KVXBaseObject* source = KVXBaseObject::Cast(other);
    if (!source)
        return Pfad::eInvalidInput;
    m_color = source->m_color;
    m_lineType = source->m_lineType;
    m_lineWidth = source->m_lineWidth;
    m_closed = source->m_closed;
    m_points = source->m_points;
    return Pfad::eOk;
}

void KVXBaseObject::setElementPropertys(KVXSaveLoadXml& xml)
{
    KVXElementObject::setElementPropertys(xml);
    xml.setInt64(kColorKey, static_cast<qint64>(m_color.rgba()));
    xml.setInt(kLineTypeKey, m_lineType);
    xml.setDouble(kLineWidthKey, m_lineWidth);
    xml.setBool(kClosedKey, m_closed);
    xml.setInt(kPointCountKey, static_cast<int>(m_points.size()));
    for (std::size_t i = 0; i < m_points.size(); ++i)
        xml.setVector(kPointKeyPrefix + QString::number(i), m_points[i]);
}

void KVXBaseObject::getElementPropertys(KVXSaveLoadXml& xml)
{
    KVXElementObject::getElementPropertys(xml);
    m_color = QColor::fromRgba(static_cast<QRgb>(xml.getInt64(kColorKey, 0xffffffff)));
    m_lineType = xml.getInt(kLineTypeKey);
    m_lineWidth = xml.getDouble(kLineWidthKey, 1.0);
    m_closed = xml.getBool(kClosedKey);
    // A damaged count cannot ask for more points than the archive holds keys.
    const int count = std::clamp(xml.getInt(kPointCountKey), 0, static_cast<int>(xml.size()));
    m_points.clear();
    m_points.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        m_points.push_back(xml.getVector(kPointKeyPrefix + QString::number(i)));
}

bool KVXBaseObject::draw2d(PfGiWorldDraw*, vpe::CSceneNode*& node) { return drawPolyline(true, node); }

bool KVXBaseObject::draw3d(PfGiWorldDraw*, vpe::CSceneNode*& node) { return drawPolyline(false, node); }

bool KVXBaseObject::drawPolyline(bool flatten, vpe::CSceneNode*& node) const
{
    if (!GetVisibility() || m_points.size() < 2)
        return false;
    osg::ref_ptr<osg::Vec3Array> vertices = new osg::Vec3Array;
    for (const vpe::CVec3<double>& p : m_points)
        vertices->push_back(osg::Vec3(p.x(), p.y(), flatten ? 0.0 : p.z()));
    osg::ref_ptr<osg::Vec4Array> colors = new osg::Vec4Array;
    colors->push_back(osg::Vec4(m_color.redF(), m_color.greenF(), m_color.blueF(), m_color.alphaF()));

    osg::ref_ptr<osg::Geometry> geometry = new osg::Geometry;
    geometry->setVertexArray(vertices);
    geometry->setColorArray(colors, osg::Array::BIND_OVERALL);
    const GLenum mode = m_closed ? GL_LINE_LOOP : GL_LINE_STRIP;
    geometry->addPrimitiveSet(new osg::DrawArrays(mode, 0, static_cast<GLsizei>(vertices->size())));

    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(geometry);
    osg::ref_ptr<vpe::CStateSet> state = new vpe::CStateSet;
    state->SetLightingEnabled(false);
    state->SetLineWidth(static_cast<float>(m_lineWidth));
    if (m_color.alpha() < 255)
        state->SetSceneBlending(vpe::CStateSet::AlphaBlending);
    geode->setStateSet(state);
    // The caller takes the reference.
    node = geode.release();
    return true;
}
