#include "PfDbDocumentWriter.h"

#include "PfDbDatabase.h"
#include "PfDbDocumentFile.h"
#include "PfDbObjContainer.h"
#include "PfDbObject.h"
#include "host/rx/PfRxClass.h"

#include <QIODevice>

#include <algorithm>
#include <charconv>

namespace {

constexpr int kFlushSize = 1 << 20;

char typeTag(KVXSaveLoadXml::Type type)
{
    using T = KVXSaveLoadXml::Type;
    switch (type) {
    case T::Int: return 'i';
    case T::Int64: return 'l';
    case T::Bool: return 'b';
    case T::Double: return 'd';
    case T::Vector: return 'v';
    case T::String: return 's';
    case T::Handles: return 'h';
    case T::Numbers: return 'n';
    }
    return 's';
}

} // namespace

PfDbDocumentWriter::PfDbDocumentWriter(QIODevice& device) : m_device(device)
{
    m_buffer.reserve(kFlushSize + 4096);
}

bool PfDbDocumentWriter::Write(PfDbDatabase& database, QString* error)
{
    for (PfDbObject* object : database.AllObjects()) {
        if (!object->IsErased() && object->IsA())
            m_saved.insert(object->GetHandle());
    }
    m_buffer += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<kvx-document version=\"";
    appendInteger(PfDbDocumentFile::kFormatVersion);
    m_buffer += "\" next-handle=\"";
    appendInteger(static_cast<qint64>(database.NextHandle()));
    m_buffer += "\" model-space=\"";
    appendInteger(static_cast<qint64>(database.GetModelSpace()->GetHandle()));
    m_buffer += "\">\n";
    for (PfDbObject* object : database.AllObjects()) {
        if (m_saved.count(object->GetHandle()))
            writeObject(object);
        if (!flushIfFull())
            break;
    }
    for (const auto& manager : database.ObjManagers()) {
        if (!m_saved.count(manager.second))
            continue;
        m_buffer += "<manager name=\"";
        appendEscaped(QString::fromStdWString(manager.first));
        m_buffer += "\" handle=\"";
        appendInteger(static_cast<qint64>(manager.second));
        m_buffer += "\"/>\n";
    }
    m_buffer += "</kvx-document>\n";
    if (!flush() && error)
        *error = QStringLiteral("cannot write the document: %1").arg(m_device.errorString());
    return !m_failed;
}

void PfDbDocumentWriter::writeObject(PfDbObject* object)
{
    m_properties.clear();
    object->Save(m_properties);
    m_buffer += "<object class=\"";
    m_buffer += className(object->IsA());
    m_buffer += "\" handle=\"";
    appendInteger(static_cast<qint64>(object->GetHandle()));
    m_buffer += "\">";
    for (const KVXSaveLoadXml::Property& property : m_properties.properties())
        writeProperty(property);
    m_buffer += "</object>\n";
}

void PfDbDocumentWriter::writeProperty(const KVXSaveLoadXml::Property& property)
{
    using T = KVXSaveLoadXml::Type;
    const char tag = typeTag(property.type);
    m_buffer += '<';
    m_buffer += tag;
    m_buffer += " k=\"";
    appendEscaped(property.key);
    m_buffer += "\">";
    switch (property.type) {
    case T::Int:
    case T::Int64:
    case T::Bool: appendInteger(property.integer); break;
    case T::Double: appendDouble(property.number[0]); break;
    case T::Vector:
        appendDouble(property.number[0]);
        m_buffer += ' ';
        appendDouble(property.number[1]);
        m_buffer += ' ';
        appendDouble(property.number[2]);
        break;
    case T::String: appendEscaped(property.text); break;
    case T::Handles: writeHandles(property.handles); break;
    case T::Numbers:
        for (std::size_t i = 0; i < property.numbers.size(); ++i) {
            if (i)
                m_buffer += ' ';
            appendDouble(property.numbers[i]);
        }
        break;
    }
    m_buffer += "</";
    m_buffer += tag;
    m_buffer += '>';
}

void PfDbDocumentWriter::writeHandles(const std::vector<PfDbHandle>& handles)
{
    // Only objects that are written: an erased item is not part of the file.
    bool first = true;
    for (PfDbHandle handle : handles) {
        if (!m_saved.count(handle))
            continue;
        if (!first)
            m_buffer += ' ';
        first = false;
        appendInteger(static_cast<qint64>(handle));
    }
}

void PfDbDocumentWriter::appendEscaped(const QString& text)
{
    auto append = [this](char b) {
        switch (b) {
        case '&': m_buffer += "&amp;"; break;
        case '<': m_buffer += "&lt;"; break;
        case '>': m_buffer += "&gt;"; break;
        case '"': m_buffer += "&quot;"; break;
        case '\t':
        case '\n': m_buffer += b; break;
        default:
            // Control characters (a carriage return, or one pasted into a
            // name) as references: raw, they would make the file unreadable.
            if (static_cast<unsigned char>(b) < 0x20) {
                m_buffer += "&#";
                appendInteger(static_cast<unsigned char>(b));
                m_buffer += ';';
            } else {
                m_buffer += b;
            }
        }
    };
    // Keys and most values are ASCII: write them without converting.
    const bool ascii = std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; });
    if (ascii) {
        for (const QChar c : text)
            append(static_cast<char>(c.unicode()));
        return;
    }
    for (const char b : text.toUtf8())
        append(b);
}

void PfDbDocumentWriter::appendInteger(qint64 value)
{
    char digits[24];
    const auto result = std::to_chars(digits, digits + sizeof digits, value);
    m_buffer.append(digits, static_cast<int>(result.ptr - digits));
}

void PfDbDocumentWriter::appendDouble(double value)
{
    // The shortest text that reads back to exactly the same double.
    char digits[32];
    const auto result = std::to_chars(digits, digits + sizeof digits, value);
    m_buffer.append(digits, static_cast<int>(result.ptr - digits));
}

const QByteArray& PfDbDocumentWriter::className(const PfRxClass* cls)
{
    auto it = m_classNames.find(cls);
    if (it == m_classNames.end()) {
        QByteArray name;
        std::swap(name, m_buffer);
        appendEscaped(QString::fromStdWString(cls->Name()));
        std::swap(name, m_buffer);
        it = m_classNames.emplace(cls, name).first;
    }
    return it->second;
}

bool PfDbDocumentWriter::flushIfFull() { return m_buffer.size() < kFlushSize || flush(); }

bool PfDbDocumentWriter::flush()
{
    if (m_failed)
        return false;
    if (!m_buffer.isEmpty() && m_device.write(m_buffer) != m_buffer.size())
        m_failed = true;
    m_buffer.resize(0);
    return !m_failed;
}
