#include "PfDbElement.h"

#include "KVXSaveLoadXml.h"
#include "host/rx/PfRxClass.h"

#include <algorithm>
#include <cstdint>

PFRX_DEFINE_HOST_MEMBERS(PfDbElement, PfDbEntity, &PfRxCreateInstance<PfDbElement>)

const QString PfDbElement::kGlobalIdProperty = QStringLiteral("GlobalId");
const QString PfDbElement::kTypeProperty = QStringLiteral("Type");
const QString PfDbElement::kStoreyProperty = QStringLiteral("Storey");
const QString PfDbElement::kElevationProperty = QStringLiteral("Elevation");

namespace {
const QString kNameKey = QStringLiteral("Name");
const QString kPropertyCountKey = QStringLiteral("PropertyCount");
// Each property as two archive entries, numbered from 1.
QString propertyKeyKey(std::size_t i) { return QStringLiteral("Property%1Key").arg(i + 1); }
QString propertyValueKey(std::size_t i) { return QStringLiteral("Property%1Value").arg(i + 1); }
// Far more than any model gives an element; a larger count is a damaged file.
constexpr int kMostProperties = 10000;
} // namespace

Pfad::Error PfDbElement::Save(KVXSaveLoadXml& archive)
{
    PfDbEntity::Save(archive);
    archive.setWString(kNameKey, m_name);
    if (!m_properties.empty()) {
        archive.setInt(kPropertyCountKey, static_cast<int>(m_properties.size()));
        for (std::size_t i = 0; i < m_properties.size(); ++i) {
            archive.setString(propertyKeyKey(i), m_properties[i].first);
            archive.setString(propertyValueKey(i), m_properties[i].second);
        }
    }
    return Pfad::eOk;
}

Pfad::Error PfDbElement::Load(KVXSaveLoadXml& archive)
{
    PfDbEntity::Load(archive);
    m_name = archive.getWString(kNameKey);
    m_properties.clear();
    const int count = archive.getIntIn(kPropertyCountKey, 0, kMostProperties, 0);
    for (int i = 0; i < count; ++i) {
        const QString key = archive.getString(propertyKeyKey(i));
        const QString value = archive.getString(propertyValueKey(i));
        if (!key.isEmpty())
            SetProperty(key, value);
    }
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

void PfDbElement::SetProperty(const QString& key, const QString& value)
{
    auto it = std::find_if(m_properties.begin(), m_properties.end(),
                           [&key](const auto& property) { return property.first == key; });
    if (value.isEmpty()) {
        if (it != m_properties.end())
            m_properties.erase(it);
    } else if (it != m_properties.end()) {
        it->second = value;
    } else {
        m_properties.emplace_back(key, value);
    }
}

QString PfDbElement::Property(const QString& key) const
{
    for (const auto& property : m_properties)
        if (property.first == key)
            return property.second;
    return QString();
}
