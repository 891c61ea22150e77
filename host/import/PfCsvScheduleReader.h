#pragma once

#include "PfSchedule.h"

#include <QByteArray>
#include <QString>

// Reads a schedule kept as a spreadsheet saved to CSV: a header row naming
// the columns (name, start, finish, and optionally code, kind and elements;
// in English or Chinese), then one task a row. The delimiter (comma,
// semicolon or tab), the date format and the encoding (UTF-8, else GB18030)
// are found from the file and kept in the schedule, to be reported.
class PfCsvScheduleReader {
public:
    // False with a one-line reason naming the line; the schedule is then
    // left as it was.
    static bool Read(const QByteArray& bytes, PfSchedule& schedule, QString* error);
    static bool ReadFile(const QString& path, PfSchedule& schedule, QString* error);
};
