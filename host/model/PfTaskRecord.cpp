#include "PfTaskRecord.h"

#include <QStringList>

namespace {
const QChar kSeparator(u'\t');
const char* const kKindNames[] = {"construction", "demolition", "emphasis", "layered"};
constexpr int kFields = 7;

QString clean(QString text)
{
    // The separator and line breaks cannot travel inside a field.
    for (QChar& c : text)
        if (c == kSeparator || c == u'\n' || c == u'\r')
            c = u' ';
    return text;
}
} // namespace

const QString PfTaskRecord::kTaskIdProperty = QStringLiteral("TaskId");
const QString PfTaskRecord::kTaskNameProperty = QStringLiteral("TaskName");

QString PfTaskRecord::KindName(Kind kind) { return QLatin1String(kKindNames[kind]); }

QString PfTaskRecord::ToWord() const
{
    return QStringList{QString::number(element),
                       KindName(kind),
                       start.toString(Qt::ISODate),
                       finish.toString(Qt::ISODate),
                       QString::number(layerHeight, 'g', 10),
                       clean(taskId),
                       clean(taskName)}
        .join(kSeparator);
}

bool PfTaskRecord::FromWord(const QString& word, PfTaskRecord& record)
{
    const QStringList fields = word.split(kSeparator);
    if (fields.size() != kFields)
        return false;
    PfTaskRecord read;
    bool ok = false;
    read.element = fields[0].toULongLong(&ok);
    if (!ok)
        return false;
    const int kind = QStringList{kKindNames[0], kKindNames[1], kKindNames[2], kKindNames[3]}.indexOf(fields[1]);
    if (kind < 0)
        return false;
    read.kind = static_cast<Kind>(kind);
    read.start = QDate::fromString(fields[2], Qt::ISODate);
    read.finish = QDate::fromString(fields[3], Qt::ISODate);
    read.layerHeight = fields[4].toDouble(&ok);
    if (!ok || !read.start.isValid() || !read.finish.isValid() || read.finish < read.start || read.layerHeight < 0.0)
        return false;
    read.taskId = fields[5];
    read.taskName = fields[6];
    record = read;
    return true;
}
