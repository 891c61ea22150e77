#include "PfDbLoadReport.h"

void PfDbLoadReport::AddNote(const QString& note)
{
    auto it = m_counts.find(note);
    if (it == m_counts.end()) {
        m_counts.emplace(note, 1);
        m_order << note;
    } else {
        ++it->second;
    }
}

void PfDbLoadReport::AddUnknownClass(const QString& className) { AddNote(UnknownClassMessage(className)); }

void PfDbLoadReport::AddUnknownKey(const QString& className, const QString& key)
{
    AddNote(UnknownKeyMessage(className, key));
}

QString PfDbLoadReport::UnknownClassMessage(const QString& className)
{
    return QStringLiteral("skipped objects of unknown class %1").arg(className);
}

QString PfDbLoadReport::UnknownKeyMessage(const QString& className, const QString& key)
{
    return QStringLiteral("ignored unknown key \"%1\" of class %2").arg(key, className);
}

int PfDbLoadReport::Count(const QString& message) const
{
    auto it = m_counts.find(message);
    return it == m_counts.end() ? 0 : it->second;
}

QStringList PfDbLoadReport::Messages() const
{
    QStringList messages;
    for (const QString& message : m_order) {
        const int count = m_counts.at(message);
        messages << (count == 1 ? message : QStringLiteral("%1 (%2 times)").arg(message).arg(count));
    }
    return messages;
}
