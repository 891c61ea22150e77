#include "PfDbEntity.h"

#include "KVXSaveLoadXml.h"
#include "host/rx/PfRxClass.h"

PFRX_DEFINE_HOST_MEMBERS(PfDbEntity, PfDbObject, &PfRxCreateInstance<PfDbEntity>)

namespace {
const QString kVisibleKey = QStringLiteral("Visible");
}

Pfad::Error PfDbEntity::Save(KVXSaveLoadXml& archive)
{
    PfDbObject::Save(archive);
    archive.setBool(kVisibleKey, m_visible);
    return Pfad::eOk;
}

Pfad::Error PfDbEntity::Load(KVXSaveLoadXml& archive)
{
    PfDbObject::Load(archive);
    m_visible = archive.getBool(kVisibleKey, true);
    return Pfad::eOk;
}

void PfDbEntity::SetPolygonOffset(float factor, float units)
{
    m_polygonOffsetFactor = factor;
    m_polygonOffsetUnits = units;
}
