#include "KVX3dsBaseObject.h"

#include "host/db/KVXSaveLoadXml.h"
#include "host/rx/PfRxClass.h"

PFRX_DEFINE_HOST_MEMBERS(KVX3dsBaseObject, PfDbElement, &PfRxCreateInstance<KVX3dsBaseObject>)

namespace {
const QString kSourcePathKey = QStringLiteral("Mesh_SourcePath");
const QString kPositionKey = QStringLiteral("Mesh_Position");
} // namespace

Pfad::Error KVX3dsBaseObject::Save(KVXSaveLoadXml& archive)
{
    PfDbElement::Save(archive);
    archive.setWString(kSourcePathKey, m_sourcePath);
    archive.setVector(kPositionKey, m_position);
    return Pfad::eOk;
}

Pfad::Error KVX3dsBaseObject::Load(KVXSaveLoadXml& archive)
{
    PfDbElement::Load(archive);
    m_sourcePath = archive.getWString(kSourcePathKey);
    m_position = archive.getVector(kPositionKey);
    return Pfad::eOk;
}
