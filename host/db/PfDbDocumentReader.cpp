#include "PfDbDocumentReader.h"

#include "PfDbDatabase.h"
#include "PfDbDocumentFile.h"
#include "PfDbLoadReport.h"
#include "PfDbObjContainer.h"
#include "PfDbObject.h"
#include "host/rx/PfRxClass.h"

#include <charconv>

namespace {

QString text(std::string_view bytes) { return QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size())); }

std::string_view trimmed(std::string_view s)
{
    const auto first = s.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos)
        return std::string_view();
    return s.substr(first, s.find_last_not_of(" \t\r\n") - first + 1);
}

bool parseInteger(std::string_view s, qint64& value)
{
    s = trimmed(s);
    if (s.empty())
        return false;
    const auto result = std::from_chars(s.data(), s.data() + s.size(), value);
    return result.ec == std::errc() && result.ptr == s.data() + s.size();
}

bool parseHandle(std::string_view s, PfDbHandle& handle)
{
    qint64 value = 0;
    if (!parseInteger(s, value) || value <= 0)
        return false;
    handle = static_cast<PfDbHandle>(value);
    return true;
}

// Parses count numbers separated by white space, nothing else.
bool parseDoubles(std::string_view s, double* values, int count)
{
    const char* p = s.data();
    const char* end = p + s.size();
    auto skipSpace = [&] {
        while (p < end && (*p == ' ' || *p == '\n' || *p == '\t' || *p == '\r'))
            ++p;
    };
    for (int i = 0; i < count; ++i) {
        skipSpace();
        const auto result = std::from_chars(p, end, values[i]);
        if (result.ec != std::errc())
            return false;
        p = result.ptr;
    }
    skipSpace();
    return p == end;
}

bool parseNumberList(std::string_view s, std::vector<double>& numbers)
{
    const char* p = s.data();
    const char* end = p + s.size();
    for (;;) {
        while (p < end && (*p == ' ' || *p == '\n' || *p == '\t' || *p == '\r'))
            ++p;
        if (p == end)
            return true;
        double value = 0.0;
        const auto result = std::from_chars(p, end, value);
        if (result.ec != std::errc())
            return false;
        numbers.push_back(value);
        p = result.ptr;
    }
}

bool typeOfTag(std::string_view tag, KVXSaveLoadXml::Type& type)
{
    using T = KVXSaveLoadXml::Type;
    if (tag.size() != 1)
        return false;
    switch (tag[0]) {
    case 'i': type = T::Int; return true;
    case 'l': type = T::Int64; return true;
    case 'b': type = T::Bool; return true;
    case 'd': type = T::Double; return true;
    case 'v': type = T::Vector; return true;
    case 's': type = T::String; return true;
    case 'h': type = T::Handles; return true;
    case 'n': type = T::Numbers; return true;
    default: return false;
    }
}

} // namespace

PfDbDocumentReader::PfDbDocumentReader(const QByteArray& content, PfDbLoadReport* report)
    : m_content(content), m_xml(m_content.constData(), m_content.constData() + m_content.size()), m_report(report)
{
}

PfDbDocumentReader::~PfDbDocumentReader() = default;

std::unique_ptr<PfDbDatabase> PfDbDocumentReader::Read(QString* error)
{
    m_database = std::make_unique<PfDbDatabase>(false);
    if (readRoot() && readBody() && resolveReferences())
        return std::move(m_database);
    if (error)
        *error = m_error;
    m_database.reset();
    return nullptr;
}

bool PfDbDocumentReader::fail(const QString& message)
{
    if (m_error.isEmpty())
        m_error = QStringLiteral("line %1: %2").arg(m_xml.lineNumber()).arg(message);
    return false;
}

void PfDbDocumentReader::report(const QString& note)
{
    if (m_report)
        m_report->AddNote(note);
}

bool PfDbDocumentReader::readRoot()
{
    if (!m_xml.readNextStartElement())
        return fail(QStringLiteral("not a KVX document: %1").arg(m_xml.errorString()));
    if (m_xml.name() != "kvx-document")
        return fail(QStringLiteral("not a KVX document: the root element is <%1>").arg(text(m_xml.name())));
    qint64 version = 0;
    if (!parseInteger(m_xml.attribute("version"), version) || version < 1)
        return fail(QStringLiteral("the document has no valid format version"));
    if (version > PfDbDocumentFile::kFormatVersion)
        return fail(QStringLiteral("the document was written in format %1, newer than this program reads (%2)")
                        .arg(version)
                        .arg(PfDbDocumentFile::kFormatVersion));
    PfDbHandle next = kPfDbNullHandle;
    if (!parseHandle(m_xml.attribute("next-handle"), next))
        return fail(QStringLiteral("the document has no valid next-handle"));
    if (!parseHandle(m_xml.attribute("model-space"), m_modelSpace))
        return fail(QStringLiteral("the document names no valid model space"));
    m_database->SetNextHandle(next);
    return true;
}

bool PfDbDocumentReader::readBody()
{
    while (m_xml.readNextStartElement()) {
        const std::string_view name = m_xml.name();
        if (name == "object") {
            if (!readObject())
                return false;
        } else if (name == "manager") {
            if (!readManager())
                return false;
        } else {
            report(QStringLiteral("skipped unknown element <%1>").arg(text(name)));
            m_xml.skipCurrentElement();
        }
    }
    if (!m_xml.readToEnd())
        return fail(QStringLiteral("the file is damaged: %1").arg(m_xml.errorString()));
    return true;
}

PfRxClass* PfDbDocumentReader::lookupClass(std::string_view name)
{
    if (name != m_lastClassName) {
        m_lastClassName = std::string(name);
        m_lastClassText = text(name);
        m_lastClass = PfRxLookupClass(m_lastClassText.toStdWString().c_str());
    }
    return m_lastClass;
}

bool PfDbDocumentReader::readObject()
{
    PfRxClass* cls = lookupClass(m_xml.attribute("class"));
    const QString className = m_lastClassText;
    PfDbHandle handle = kPfDbNullHandle;
    if (!parseHandle(m_xml.attribute("handle"), handle))
        return fail(QStringLiteral("object of class %1 has no valid handle").arg(className));
    if (m_database->OpenObject(handle, true))
        return fail(QStringLiteral("handle %1 is used by two objects").arg(handle));

    m_properties.clear();
    int index = 0;
    while (m_xml.readNextStartElement()) {
        if (!readProperty(index++))
            return false;
    }
    if (m_xml.hasError())
        return fail(QStringLiteral("the file is damaged: %1").arg(m_xml.errorString()));

    PfRxObject* created = cls ? cls->Create() : nullptr;
    auto* object = dynamic_cast<PfDbObject*>(created);
    if (!object) {
        delete created;
        report(PfDbLoadReport::UnknownClassMessage(className));
        return true;
    }
    object->Load(m_properties);
    m_database->AddObjectWithHandle(object, handle);
    if (m_report) {
        for (const QString& key : m_properties.unconsumedKeys())
            m_report->AddUnknownKey(className, key);
        for (const QString& problem : m_properties.problems())
            m_report->AddNote(QStringLiteral("%1 #%2: %3").arg(className).arg(static_cast<qulonglong>(handle)).arg(problem));
    }
    return true;
}

bool PfDbDocumentReader::readProperty(int index)
{
    KVXSaveLoadXml::Type type;
    if (!typeOfTag(m_xml.name(), type)) {
        report(QStringLiteral("skipped property of unknown type <%1>").arg(text(m_xml.name())));
        m_xml.skipCurrentElement();
        return true;
    }
    const std::string_view key = m_xml.attribute("k");
    if (key.empty())
        return fail(QStringLiteral("a property has no key"));

    auto& properties = m_properties.properties();
    properties.emplace_back();
    KVXSaveLoadXml::Property& property = properties.back();
    // Objects of one class repeat the same keys in the same order: share them.
    if (index >= static_cast<int>(m_keyCache.size()))
        m_keyCache.resize(index + 1);
    auto& cached = m_keyCache[index];
    if (cached.first != key) {
        cached.first = std::string(key);
        cached.second = text(key);
    }
    property.key = cached.second;
    property.type = type;

    std::string_view value;
    if (!m_xml.readElementText(value))
        return fail(QStringLiteral("the file is damaged: %1").arg(m_xml.errorString()));
    return parseValue(property, value);
}

bool PfDbDocumentReader::parseValue(KVXSaveLoadXml::Property& property, std::string_view value)
{
    using T = KVXSaveLoadXml::Type;
    auto bad = [&](const char* what) {
        return fail(QStringLiteral("\"%1\" is not %2 (key \"%3\")")
                        .arg(text(value.substr(0, 40)), QLatin1String(what), property.key));
    };
    switch (property.type) {
    case T::Int:
        if (!parseInteger(value, property.integer) || property.integer != static_cast<int>(property.integer))
            return bad("a 32-bit integer");
        return true;
    case T::Int64: return parseInteger(value, property.integer) || bad("a 64-bit integer");
    case T::Bool:
        if (!parseInteger(value, property.integer) || (property.integer != 0 && property.integer != 1))
            return bad("a boolean (0 or 1)");
        return true;
    case T::Double: return parseDoubles(value, property.number, 1) || bad("a number");
    case T::Vector: return parseDoubles(value, property.number, 3) || bad("three numbers");
    case T::String: property.text = text(value); return true;
    case T::Numbers: return parseNumberList(value, property.numbers) || bad("a list of numbers");
    case T::Handles:
        for (std::size_t start = 0; start < value.size();) {
            const std::size_t space = std::min(value.find(' ', start), value.size());
            const std::string_view piece = value.substr(start, space - start);
            start = space + 1;
            if (trimmed(piece).empty())
                continue;
            PfDbHandle handle = kPfDbNullHandle;
            if (!parseHandle(piece, handle))
                return bad("a list of handles");
            property.handles.push_back(handle);
        }
        return true;
    }
    return true;
}

bool PfDbDocumentReader::readManager()
{
    const QString name = text(m_xml.attribute("name"));
    PfDbHandle handle = kPfDbNullHandle;
    if (name.isEmpty() || !parseHandle(m_xml.attribute("handle"), handle))
        return fail(QStringLiteral("an object manager has no valid name or handle"));
    m_managers[name.toStdWString()] = handle;
    m_xml.skipCurrentElement();
    return true;
}

bool PfDbDocumentReader::resolveReferences()
{
    auto* modelSpace = PfDbObjContainer::Cast(m_database->OpenObject(m_modelSpace));
    if (!modelSpace)
        return fail(QStringLiteral("the model space (handle %1) is missing").arg(m_modelSpace));
    m_database->SetModelSpace(modelSpace);
    for (const auto& manager : m_managers) {
        auto* container = PfDbObjContainer::Cast(m_database->OpenObject(manager.second));
        if (!container) {
            report(QStringLiteral("skipped object manager \"%1\": its object was not read")
                       .arg(QString::fromStdWString(manager.first)));
            continue;
        }
        m_database->AddObjManager(manager.first, container);
    }
    for (PfDbObject* object : m_database->AllObjects()) {
        if (auto* container = PfDbObjContainer::Cast(object)) {
            const std::size_t dropped = container->DropMissingItems();
            if (dropped)
                report(QStringLiteral("dropped %1 items whose objects were not read").arg(dropped));
        }
    }
    return true;
}
