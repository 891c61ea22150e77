#include "PfMspdiReader.h"

#include <QXmlStreamReader>

namespace {

// "2003-01-07T08:00:00"; the time of day is not kept.
bool readDate(const QString& text, QDate& date)
{
    date = QDate::fromString(text.left(10), QStringLiteral("yyyy-MM-dd"));
    return date.isValid();
}

struct TaskInProgress {
    PfScheduleTask task;
    int level = 0;
};

} // namespace

bool PfMspdiReader::ReadFile(const QString& path, PfSchedule& schedule, QString* error)
{
    return PfScheduleText::ReadFile(path, &PfMspdiReader::Read, schedule, error);
}

bool PfMspdiReader::Read(const QByteArray& bytes, PfSchedule& schedule, QString* error)
{
    PfSchedule read;
    read.encoding = QStringLiteral("UTF-8");
    QXmlStreamReader xml(bytes);
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("Project"))
        return PfScheduleText::Fail(error, xml.lineNumber(), QStringLiteral("not a Microsoft Project XML file (no Project element)"));
    // The names of the summary tasks above the one read, by outline level.
    QStringList outline;
    QStringList path{QStringLiteral("Project")};
    TaskInProgress current;
    while (!xml.atEnd()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            path << xml.name().toString();
            const QString where = path.mid(1).join(QLatin1Char('/'));
            if (where == QLatin1String("Tasks/Task")) {
                current = TaskInProgress();
                continue;
            }
            if (where == QLatin1String("Name") || where == QLatin1String("Title")) {
                const QString name = xml.readElementText();
                path.removeLast();
                if (read.projects.isEmpty() && !name.isEmpty())
                    read.projects << name;
                continue;
            }
            if (!where.startsWith(QLatin1String("Tasks/Task/")))
                continue;
            const QString field = where.mid(11);
            const qint64 line = xml.lineNumber();
            const bool dated = field.endsWith(QLatin1String("Start")) || field.endsWith(QLatin1String("Finish"));
            const bool known = dated || field == QLatin1String("UID") || field == QLatin1String("Name") ||
                               field == QLatin1String("WBS") || field == QLatin1String("OutlineLevel") ||
                               field == QLatin1String("Summary") || field == QLatin1String("Milestone") ||
                               field == QLatin1String("PredecessorLink/PredecessorUID");
            if (!known)
                continue;
            const QString text = xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
            path.removeLast();
            PfScheduleTask& task = current.task;
            const struct {
                const char* field;
                QDate* date;
            } dates[] = {{"Start", &task.earlyStart},          {"Finish", &task.earlyFinish},
                         {"ActualStart", &task.actualStart},    {"ActualFinish", &task.actualFinish},
                         {"Baseline/Start", &task.plannedStart}, {"Baseline/Finish", &task.plannedFinish}};
            for (const auto& d : dates)
                if (field == QLatin1String(d.field) && !text.isEmpty() && !readDate(text, *d.date))
                    return PfScheduleText::Fail(error, line, QStringLiteral("%1 of task %2 is no date: \"%3\"")
                                                 .arg(field, task.name.isEmpty() ? task.id : task.name, text));
            if (field == QLatin1String("UID"))
                task.id = text;
            else if (field == QLatin1String("Name"))
                task.name = text;
            else if (field == QLatin1String("WBS"))
                task.code = text;
            else if (field == QLatin1String("OutlineLevel"))
                current.level = text.toInt();
            else if (field == QLatin1String("Summary"))
                task.summary = text == QLatin1String("1");
            else if (field == QLatin1String("Milestone"))
                task.milestone = text == QLatin1String("1");
            else if (field == QLatin1String("PredecessorLink/PredecessorUID"))
                task.predecessors << text;
        } else if (token == QXmlStreamReader::EndElement) {
            if (path.mid(1).join(QLatin1Char('/')) == QLatin1String("Tasks/Task")) {
                // Level 0 is the project's own summary: above every path.
                const int level = std::max(0, current.level);
                while (outline.size() > std::max(0, level - 1))
                    outline.removeLast();
                current.task.wbsPath = outline;
                if (current.task.summary && level > 0)
                    outline << current.task.name;
                current.task.project = read.projects.value(0);
                read.tasks.push_back(std::move(current.task));
            }
            if (path.size() > 1)
                path.removeLast();
        }
    }
    if (xml.hasError())
        return PfScheduleText::Fail(error, xml.lineNumber(), xml.errorString());
    if (read.tasks.empty())
        return PfScheduleText::Fail(error, 0, QStringLiteral("no tasks"));
    schedule = std::move(read);
    return true;
}
