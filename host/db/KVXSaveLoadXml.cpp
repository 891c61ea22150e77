#include "KVXSaveLoadXml.h"

#include <cmath>

#include <QStringList>

namespace {

bool isIntegral(KVXSaveLoadXml::Type type)
{
    using T = KVXSaveLoadXml::Type;
    return type == T::Int || type == T::Int64 || type == T::Bool;
}

bool convertible(KVXSaveLoadXml::Type stored, KVXSaveLoadXml::Type wanted)
{
    using T = KVXSaveLoadXml::Type;
    if (stored == wanted)
        return true;
    if (isIntegral(wanted))
        return isIntegral(stored);
    if (wanted == T::Double)
        return isIntegral(stored);
    return false;
}

double numberOf(const KVXSaveLoadXml::Property& p)
{
    return p.type == KVXSaveLoadXml::Type::Double ? p.number[0] : static_cast<double>(p.integer);
}

} // namespace

KVXSaveLoadXml::Property& KVXSaveLoadXml::append(const QString& key, Type type)
{
    m_properties.emplace_back();
    Property& p = m_properties.back();
    p.key = key;
    p.type = type;
    return p;
}

void KVXSaveLoadXml::setInt(const QString& key, int value) { append(key, Type::Int).integer = value; }

void KVXSaveLoadXml::setInt64(const QString& key, qint64 value) { append(key, Type::Int64).integer = value; }

void KVXSaveLoadXml::setBool(const QString& key, bool value) { append(key, Type::Bool).integer = value ? 1 : 0; }

void KVXSaveLoadXml::setDouble(const QString& key, double value) { append(key, Type::Double).number[0] = value; }

void KVXSaveLoadXml::setVector(const QString& key, const vpe::CVec3<double>& value)
{
    Property& p = append(key, Type::Vector);
    p.number[0] = value.x();
    p.number[1] = value.y();
    p.number[2] = value.z();
}

void KVXSaveLoadXml::setString(const QString& key, const QString& value) { append(key, Type::String).text = value; }

void KVXSaveLoadXml::setWString(const QString& key, const std::wstring& value)
{
    setString(key, QString::fromStdWString(value));
}

void KVXSaveLoadXml::setHandles(const QString& key, const std::vector<PfDbHandle>& handles)
{
    append(key, Type::Handles).handles = handles;
}

void KVXSaveLoadXml::setNumbers(const QString& key, const std::vector<double>& numbers)
{
    append(key, Type::Numbers).numbers = numbers;
}

KVXSaveLoadXml::Property* KVXSaveLoadXml::find(const QString& key, Type wanted)
{
    Property* found = nullptr;
    if (m_cursor < m_properties.size() && m_properties[m_cursor].key == key) {
        found = &m_properties[m_cursor];
    } else {
        for (Property& p : m_properties) {
            if (p.key == key) {
                found = &p;
                break;
            }
        }
    }
    if (!found || !convertible(found->type, wanted))
        return nullptr;
    m_cursor = static_cast<std::size_t>(found - m_properties.data()) + 1;
    found->consumed = true;
    return found;
}

int KVXSaveLoadXml::getInt(const QString& key, int defaultValue)
{
    const Property* p = find(key, Type::Int);
    return p ? static_cast<int>(p->integer) : defaultValue;
}

qint64 KVXSaveLoadXml::getInt64(const QString& key, qint64 defaultValue)
{
    const Property* p = find(key, Type::Int64);
    return p ? p->integer : defaultValue;
}

bool KVXSaveLoadXml::getBool(const QString& key, bool defaultValue)
{
    const Property* p = find(key, Type::Bool);
    return p ? p->integer != 0 : defaultValue;
}

double KVXSaveLoadXml::getDouble(const QString& key, double defaultValue)
{
    const Property* p = find(key, Type::Double);
    return p ? numberOf(*p) : defaultValue;
}

vpe::CVec3<double> KVXSaveLoadXml::getVector(const QString& key, const vpe::CVec3<double>& defaultValue)
{
    const Property* p = find(key, Type::Vector);
    return p ? vpe::CVec3<double>(p->number[0], p->number[1], p->number[2]) : defaultValue;
}

QString KVXSaveLoadXml::getString(const QString& key, const QString& defaultValue)
{
    const Property* p = find(key, Type::String);
    return p ? p->text : defaultValue;
}

std::wstring KVXSaveLoadXml::getWString(const QString& key, const std::wstring& defaultValue)
{
    const Property* p = find(key, Type::String);
    return p ? p->text.toStdWString() : defaultValue;
}

std::vector<PfDbHandle> KVXSaveLoadXml::getHandles(const QString& key)
{
    const Property* p = find(key, Type::Handles);
    return p ? p->handles : std::vector<PfDbHandle>();
}

std::vector<double> KVXSaveLoadXml::getNumbers(const QString& key)
{
    const Property* p = find(key, Type::Numbers);
    return p ? p->numbers : std::vector<double>();
}

bool KVXSaveLoadXml::contains(const QString& key) const
{
    for (const Property& p : m_properties) {
        if (p.key == key)
            return true;
    }
    return false;
}

void KVXSaveLoadXml::clear()
{
    m_properties.clear();
    m_cursor = 0;
    m_problems.clear();
}

int KVXSaveLoadXml::getIntIn(const QString& key, int lowest, int highest, int fallback)
{
    const qint64 value = getInt64(key, fallback);
    if (value >= lowest && value <= highest)
        return static_cast<int>(value);
    addProblem(QStringLiteral("%1 %2 is not between %3 and %4: read as %5")
                   .arg(key)
                   .arg(value)
                   .arg(lowest)
                   .arg(highest)
                   .arg(fallback));
    return fallback;
}

double KVXSaveLoadXml::getDoubleIn(const QString& key, double lowest, double highest, double fallback)
{
    const double value = getDouble(key, fallback);
    if (value >= lowest && value <= highest)
        return value;
    const double read = std::isnan(value) ? fallback : value < lowest ? lowest : highest;
    addProblem(QStringLiteral("%1 %2 is not between %3 and %4: read as %5")
                   .arg(key)
                   .arg(value)
                   .arg(lowest)
                   .arg(highest)
                   .arg(read));
    return read;
}

void KVXSaveLoadXml::rewind()
{
    m_cursor = 0;
    for (Property& p : m_properties)
        p.consumed = false;
}

QStringList KVXSaveLoadXml::unconsumedKeys() const
{
    QStringList keys;
    for (const Property& p : m_properties) {
        if (!p.consumed)
            keys << p.key;
    }
    return keys;
}
