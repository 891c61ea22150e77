#include "PfDbElement.h"

#include "KVXSaveLoadXml.h"
#include "host/rx/PfRxClass.h"

PFRX_DEFINE_HOST_MEMBERS(PfDbElement, PfDbEntity, &PfRxCreateInstance<PfDbElement>)

namespace {
const QString kNameKey = QStringLiteral("Name");
}

Pfad::Error PfDbElement::Save(KVXSaveLoadXml& archive)
{
    PfDbEntity::Save(archive);
    archive.setWString(kNameKey, m_name);
    return Pfad::eOk;
}

Pfad::Error PfDbElement::Load(KVXSaveLoadXml& archive)
{
    PfDbEntity::Load(archive);
    m_name = archive.getWString(kNameKey);
    return Pfad::eOk;
}
