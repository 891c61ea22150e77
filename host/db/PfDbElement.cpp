#include "PfDbElement.h"

#include "KVXSaveLoadXml.h"
#include "host/rx/PfRxClass.h"

#include <cstdint>

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

void PfDbElement::SetName(const std::wstring& name)
{
    m_name = name;
    for (wchar_t& c : m_name) {
        const auto code = static_cast<std::uint32_t>(c);
        if (code == 0 || (code >= 0xd800 && code <= 0xdfff) || code > 0x10ffff)
            c = static_cast<wchar_t>(0xfffd);
    }
}
