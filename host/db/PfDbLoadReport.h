#pragma once

#include <QString>
#include <QStringList>

#include <map>

// What a document reader skipped without refusing the file: objects of
// classes nobody registered, and keys that no class read. Each distinct
// problem is listed once with how often it occurred.
class PfDbLoadReport {
public:
    void AddUnknownClass(const QString& className);
    void AddUnknownKey(const QString& className, const QString& key);
    void AddNote(const QString& note);

    bool IsEmpty() const { return m_counts.empty(); }
    QStringList Messages() const;
    int Count(const QString& message) const;

    static QString UnknownClassMessage(const QString& className);
    static QString UnknownKeyMessage(const QString& className, const QString& key);

private:
    std::map<QString, int> m_counts;
    QStringList m_order;
};
