#include "PfDbBuildingInstance.h"

#include "host/db/KVXSaveLoadXml.h"
#include "host/rx/PfRxClass.h"

PFRX_DEFINE_HOST_MEMBERS(PfDbBuildingInstance, PfDbElement, &PfRxCreateInstance<PfDbBuildingInstance>)

namespace {
const QString kPositionKey = QStringLiteral("Building_Position");
const QString kRotationKey = QStringLiteral("Building_Rotation");
} // namespace

Pfad::Error PfDbBuildingInstance::Save(KVXSaveLoadXml& archive)
{
    PfDbElement::Save(archive);
    archive.setVector(kPositionKey, m_position);
    archive.setDouble(kRotationKey, m_rotation);
    return Pfad::eOk;
}

Pfad::Error PfDbBuildingInstance::Load(KVXSaveLoadXml& archive)
{
    PfDbElement::Load(archive);
    m_position = archive.getVector(kPositionKey);
    m_rotation = archive.getDouble(kRotationKey);
    return Pfad::eOk;
}
