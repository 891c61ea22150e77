#pragma once

#include "KVXSaveLoadXml.h"

#include <QString>
#include <QXmlStreamReader>

#include <map>
#include <memory>
#include <string>
#include <vector>

class PfDbDatabase;
class PfDbLoadReport;
class PfRxClass;
class QIODevice;

// Reads a document file (format in PfDbDocumentFile.h) into a new database.
// Any fault of the file itself (not XML, another root, a truncated file, a
// value that is not a number, a handle used twice) refuses the whole file with
// a message that names the line; objects of unknown classes and unknown keys
// are skipped and reported instead.
class PfDbDocumentReader {
public:
    PfDbDocumentReader(QIODevice& device, PfDbLoadReport* report);
    ~PfDbDocumentReader();

    std::unique_ptr<PfDbDatabase> Read(QString* error);

private:
    bool readRoot();
    bool readBody();
    bool readObject();
    bool readProperty(int index);
    bool readText();
    bool parseValue(KVXSaveLoadXml::Property& property, QStringRef text);
    bool readManager();
    bool resolveReferences();
    PfRxClass* lookupClass(const QStringRef& name);
    bool parseHandle(const QStringRef& text, PfDbHandle& handle);
    bool fail(const QString& message);
    void report(const QString& note);

    QXmlStreamReader m_xml;
    PfDbLoadReport* m_report;
    std::unique_ptr<PfDbDatabase> m_database;
    QString m_error;
    PfDbHandle m_modelSpace = kPfDbNullHandle;
    KVXSaveLoadXml m_properties;
    std::vector<QString> m_keyCache;
    QString m_text;
    QString m_lastClassName;
    PfRxClass* m_lastClass = nullptr;
    std::map<std::wstring, PfDbHandle> m_managers;
};
