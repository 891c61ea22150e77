#pragma once

#include "KVXSaveLoadXml.h"

#include <QByteArray>
#include <QString>

#include <unordered_map>
#include <unordered_set>

class PfDbDatabase;
class PfDbObject;
class PfRxClass;
class QIODevice;

// Streams a database as a document file (format in PfDbDocumentFile.h). It
// formats the XML itself: documents of a hundred thousand records are common
// and a general-purpose writer spends most of its time on what this format
// never needs.
class PfDbDocumentWriter {
public:
    explicit PfDbDocumentWriter(QIODevice& device);

    bool Write(PfDbDatabase& database, QString* error);

private:
    void writeObject(PfDbObject* object);
    void writeProperty(const KVXSaveLoadXml::Property& property);
    void writeHandles(const std::vector<PfDbHandle>& handles);
    void appendEscaped(const QString& text);
    void appendInteger(qint64 value);
    void appendDouble(double value);
    const QByteArray& className(const PfRxClass* cls);
    bool flushIfFull();
    bool flush();

    QIODevice& m_device;
    QByteArray m_buffer;
    KVXSaveLoadXml m_properties;
    std::unordered_set<PfDbHandle> m_saved;
    std::unordered_map<const PfRxClass*, QByteArray> m_classNames;
    bool m_failed = false;
};
