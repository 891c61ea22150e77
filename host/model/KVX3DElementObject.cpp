#include "KVX3DElementObject.h"

#include "host/db/KVXSaveLoadXml.h"
#include "host/rx/PfRxClass.h"

#include <algorithm>

PFRX_DEFINE_HOST_MEMBERS(KVX3DElementObject, KVXBaseObject, &PfRxCreateInstance<KVX3DElementObject>)

namespace {
const QString kBodyColorKey = QStringLiteral("Element3D_BodyColor");
const QString kTransparencyKey = QStringLiteral("Element3D_Transparency");
} // namespace

void KVX3DElementObject::SetTransparency(int percent) { m_transparency = std::clamp(percent, 0, 100); }

Pfad::Error KVX3DElementObject::CopyFrom(const PfRxObject* other)
{
    const Pfad::Error result = KVXBaseObject::CopyFrom(other);
    if (const KVX3DElementObject* source = KVX3DElementObject::Cast(other)) {
        m_bodyColor = source->m_bodyColor;
        m_transparency = source->m_transparency;
    }
    return result;
}

void KVX3DElementObject::setElementPropertys(KVXSaveLoadXml& xml)
{
    KVXBaseObject::setElementPropertys(xml);
    xml.setInt64(kBodyColorKey, static_cast<qint64>(m_bodyColor.rgba()));
    xml.setInt(kTransparencyKey, m_transparency);
}

void KVX3DElementObject::getElementPropertys(KVXSaveLoadXml& xml)
{
    KVXBaseObject::getElementPropertys(xml);
    m_bodyColor = QColor::fromRgba(static_cast<QRgb>(xml.getInt64(kBodyColorKey, 0xffc8c8c8)));
    SetTransparency(xml.getInt(kTransparencyKey));
}
