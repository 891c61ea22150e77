#pragma once

#include <QString>
#include <QStringList>

#include <ostream>

// Readable Qt strings in test failure messages.
inline void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }

inline std::ostream& operator<<(std::ostream& out, const QString& text) { return out << text.toStdString(); }

inline void PrintTo(const QStringList& list, std::ostream* out)
{
    *out << '[' << list.join(QStringLiteral(", ")).toStdString() << ']';
}

#include <QDate>

inline void PrintTo(const QDate& date, std::ostream* out)
{
    *out << (date.isValid() ? date.toString(Qt::ISODate).toStdString() : std::string("invalid date"));
}
