#include "PfDbDocumentReader.h"

#include "PfDbDatabase.h"
#include "PfDbDocumentFile.h"
#include "PfDbLoadReport.h"
#include "PfDbObjContainer.h"
#include "PfDbObject.h"
#include "host/rx/PfRxClass.h"

#include <charconv>
#include <cmath>

namespace {

// Numbers are ASCII; anything else is not a number.
bool toLatin1(const QStringRef& text, char* buffer, std::size_t capacity, std::size_t& length)
{
    if (static_cast<std::size_t>(text.size()) >= capacity)
        return false;
    length = 0;
    for (const QChar c : text) {
        if (c.unicode() >= 0x80)
            return false;
        buffer[length++] = static_cast<char>(c.unicode());
    }
    return true;
}

bool parseInteger(const QStringRef& text, qint64& value)
{
    char buffer[32];
    std::size_t length = 0;
    if (!toLatin1(text.trimmed(), buffer, sizeof buffer, length) || length == 0)
        return false;
    const auto result = std::from_chars(buffer, buffer + length, value);
    return result.ec == std::errc() && result.ptr == buffer + length;
}

// Parses count doubles separated by blanks.
bool parseDoubles(const QStringRef& text, double* values, int count)
{
    char buffer[128];
    std::size_t length = 0;
    if (!toLatin1(text, buffer, sizeof buffer, length))
        return false;
    const char* p = buffer;
    const char* end = buffer + length;
    for (int i = 0; i < count; ++i) {
        while (p < end && (*p == ' ' || *p == '\n' || *p == '\t'))
            ++p;
        const auto result = std::from_chars(p, end, values[i]);
        if (result.ec != std::errc())
            return false;
        p = result.ptr;
    }
    while (p < end && (*p == ' ' || *p == '\n' || *p == '\t'))
        ++p;
    return p == end;
}

bool typeOfTag(const QStringRef& tag, KVXSaveLoadXml::Type& type)
{
    using T = KVXSaveLoadXml::Type;
    if (tag.size() != 1)
        return false;
    switch (tag.at(0).unicode()) {
    case 'i': type = T::Int; return true;
    case 'l': type = T::Int64; return true;
    case 'b': type = T::Bool; return true;
    case 'd': type = T::Double; return true;
    case 'v': type = T::Vector; return true;
    case 's': type = T::String; return true;
    case 'h': type = T::Handles; return true;
    default: return false;
    }
}

} // namespace

PfDbDocumentReader::PfDbDocumentReader(QIODevice& device, PfDbLoadReport* report) : m_xml(&device), m_report(report)
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
    if (!m_xml.readNextStartElement()) {
        if (m_xml.hasError())
            return fail(QStringLiteral("not a KVX document: %1").arg(m_xml.errorString()));
        return fail(QStringLiteral("not a KVX document: the file is empty"));
    }
    if (m_xml.name() != QLatin1String("kvx-document"))
        return fail(QStringLiteral("not a KVX document: the root element is <%1>").arg(m_xml.name()));
    const QXmlStreamAttributes attributes = m_xml.attributes();
    qint64 version = 0;
    if (!parseInteger(attributes.value(QLatin1String("version")), version) || version < 1)
        return fail(QStringLiteral("the document has no valid format version"));
    if (version > PfDbDocumentFile::kFormatVersion)
        return fail(QStringLiteral("the document was written in format %1, newer than this program reads (%2)")
                        .arg(version)
                        .arg(PfDbDocumentFile::kFormatVersion));
    PfDbHandle next = kPfDbNullHandle;
    if (!parseHandle(attributes.value(QLatin1String("next-handle")), next))
        return fail(QStringLiteral("the document has no valid next-handle"));
    if (!parseHandle(attributes.value(QLatin1String("model-space")), m_modelSpace))
        return fail(QStringLiteral("the document names no valid model space"));
    m_database->SetNextHandle(next);
    return true;
}

bool PfDbDocumentReader::readBody()
{
    while (m_xml.readNextStartElement()) {
        const QStringRef name = m_xml.name();
        if (name == QLatin1String("object")) {
            if (!readObject())
                return false;
        } else if (name == QLatin1String("manager")) {
            if (!readManager())
                return false;
        } else {
            report(QStringLiteral("skipped unknown element <%1>").arg(name));
            m_xml.skipCurrentElement();
        }
    }
    if (m_xml.hasError())
        return fail(QStringLiteral("the file is damaged: %1").arg(m_xml.errorString()));
    // The root must close, and nothing but whitespace and comments follow it.
    while (!m_xml.atEnd())
        m_xml.readNext();
    if (m_xml.hasError())
        return fail(QStringLiteral("the file is damaged: %1").arg(m_xml.errorString()));
    return true;
}

PfRxClass* PfDbDocumentReader::lookupClass(const QStringRef& name)
{
    if (name != m_lastClassName) {
        m_lastClassName = name.toString();
        m_lastClass = PfRxLookupClass(m_lastClassName.toStdWString().c_str());
    }
    return m_lastClass;
}

bool PfDbDocumentReader::parseHandle(const QStringRef& text, PfDbHandle& handle)
{
    qint64 value = 0;
    if (!parseInteger(text, value) || value <= 0)
        return false;
    handle = static_cast<PfDbHandle>(value);
    return true;
}

bool PfDbDocumentReader::readObject()
{
    const QXmlStreamAttributes attributes = m_xml.attributes();
    const QStringRef className = attributes.value(QLatin1String("class"));
    PfDbHandle handle = kPfDbNullHandle;
    if (!parseHandle(attributes.value(QLatin1String("handle")), handle))
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

    PfRxClass* cls = lookupClass(className);
    PfRxObject* created = cls ? cls->Create() : nullptr;
    auto* object = dynamic_cast<PfDbObject*>(created);
    if (!object) {
        delete created;
        report(PfDbLoadReport::UnknownClassMessage(className.toString()));
        return true;
    }
    object->Load(m_properties);
    m_database->AddObjectWithHandle(object, handle);
    if (m_report) {
        for (const QString& key : m_properties.unconsumedKeys())
            m_report->AddUnknownKey(m_lastClassName, key);
    }
    return true;
}

bool PfDbDocumentReader::readProperty(int index)
{
    KVXSaveLoadXml::Type type;
    if (!typeOfTag(m_xml.name(), type)) {
        report(QStringLiteral("skipped property of unknown type <%1>").arg(m_xml.name()));
        m_xml.skipCurrentElement();
        return true;
    }
    const QStringRef key = m_xml.attributes().value(QLatin1String("k"));
    if (key.isEmpty())
        return fail(QStringLiteral("a property has no key"));

    auto& properties = m_properties.properties();
    properties.emplace_back();
    KVXSaveLoadXml::Property& property = properties.back();
    // Objects of one class repeat the same keys in the same order: share them.
    if (index < static_cast<int>(m_keyCache.size()) && m_keyCache[index] == key) {
        property.key = m_keyCache[index];
    } else {
        property.key = key.toString();
        if (index >= static_cast<int>(m_keyCache.size()))
            m_keyCache.resize(index + 1);
        m_keyCache[index] = property.key;
    }
    property.type = type;

    if (!readText())
        return false;
    return parseValue(property, QStringRef(&m_text));
}

bool PfDbDocumentReader::readText()
{
    // The reader's text is only valid until its next token: gather it in a
    // buffer that keeps its capacity from one property to the next.
    m_text.resize(0);
    while (!m_xml.atEnd()) {
        switch (m_xml.readNext()) {
        case QXmlStreamReader::Characters: m_text.append(m_xml.text()); break;
        case QXmlStreamReader::EndElement: return true;
        case QXmlStreamReader::StartElement: return fail(QStringLiteral("a property holds an element"));
        default: break;
        }
    }
    return fail(QStringLiteral("the file is damaged: %1").arg(m_xml.errorString()));
}

bool PfDbDocumentReader::parseValue(KVXSaveLoadXml::Property& property, QStringRef text)
{
    using T = KVXSaveLoadXml::Type;
    auto bad = [&](const char* what) {
        return fail(QStringLiteral("\"%1\" is not %2 (key \"%3\")").arg(text.left(40), QLatin1String(what), property.key));
    };
    switch (property.type) {
    case T::Int:
        if (!parseInteger(text, property.integer) || property.integer != static_cast<int>(property.integer))
            return bad("a 32-bit integer");
        return true;
    case T::Int64:
        return parseInteger(text, property.integer) || bad("a 64-bit integer");
    case T::Bool:
        if (!parseInteger(text, property.integer) || (property.integer != 0 && property.integer != 1))
            return bad("a boolean (0 or 1)");
        return true;
    case T::Double:
        return parseDoubles(text, property.number, 1) || bad("a number");
    case T::Vector:
        return parseDoubles(text, property.number, 3) || bad("three numbers");
    case T::String:
        property.text = m_text;
        return true;
    case T::Handles:
        for (const QStringRef& piece : text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            PfDbHandle handle = kPfDbNullHandle;
            if (!parseHandle(piece.trimmed(), handle))
                return bad("a list of handles");
            property.handles.push_back(handle);
        }
        return true;
    }
    return true;
}

bool PfDbDocumentReader::readManager()
{
    const QXmlStreamAttributes attributes = m_xml.attributes();
    const QString name = attributes.value(QLatin1String("name")).toString();
    PfDbHandle handle = kPfDbNullHandle;
    if (name.isEmpty() || !parseHandle(attributes.value(QLatin1String("handle")), handle))
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
