#pragma once

#include <QDate>
#include <QString>

// Dates as records store them: the text "yyyyMMdd". The invalid date is the
// empty text, and any text that is not such a date reads as the invalid
// date. Documents hold several dates per record, hence the direct path for
// eight digits rather than the general date parser.
class KVXDateFormat {
public:
    static QString toText(const QDate& date);
    static QDate fromText(const QString& text);
};
