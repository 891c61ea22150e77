#pragma once

#include "KVXSaveLoadXml.h"
#include "PfDbXmlScanner.h"

#include <QByteArray>
#include <QString>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class PfDbDatabase;
class PfDbLoadReport;
class PfRxClass;

// Reads a document file (format in PfDbDocumentFile.h) into a new database.
// Any fault of the file itself (not XML, another root, a truncated file, a
// value that is not a number, a handle used twice) refuses the whole file with
// a message that names the line; objects of unknown classes and unknown keys
// are skipped and reported instead.
class PfDbDocumentReader {
public:
    PfDbDocumentReader(const QByteArray& content, PfDbLoadReport* report);
    ~PfDbDocumentReader();

    std::unique_ptr<PfDbDatabase> Read(QString* error);

private:
    bool readRoot();
    bool readBody();
    bool readObject();
    bool readProperty(int index);
    bool parseValue(KVXSaveLoadXml::Property& property, std::string_view text);
    bool readManager();
    bool resolveReferences();
    PfRxClass* lookupClass(std::string_view name);
    bool fail(const QString& message);
    void report(const QString& note);

    QByteArray m_content;
    PfDbXmlScanner m_xml;
    PfDbLoadReport* m_report;
    std::unique_ptr<PfDbDatabase> m_database;
    QString m_error;
    PfDbHandle m_modelSpace = kPfDbNullHandle;
    KVXSaveLoadXml m_properties;
    std::vector<std::pair<std::string, QString>> m_keyCache;
    std::string m_lastClassName;
    QString m_lastClassText;
    PfRxClass* m_lastClass = nullptr;
    std::map<std::wstring, PfDbHandle> m_managers;
};
