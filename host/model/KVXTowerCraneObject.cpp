#include "KVXTowerCraneObject.h"

#include "host/db/KVXSaveLoadXml.h"
#include "host/rx/PfRxClass.h"

PFRX_DEFINE_HOST_MEMBERS(KVXTowerCraneObject, KVX3DElementObject, &PfRxCreateInstance<KVXTowerCraneObject>)

namespace {
const QString kPositionKey = QStringLiteral("TowerCrane_Position");
const QString kTowerHeightKey = QStringLiteral("TowerCrane_TowerHeight");
const QString kJibLengthKey = QStringLiteral("TowerCrane_JibLength");
} // namespace

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
    m_position = xml.getVector(kPositionKey);
    m_towerHeight = xml.getInt(kTowerHeightKey);
    m_jibLength = xml.getDouble(kJibLengthKey);
}
