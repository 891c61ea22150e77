#include "PfXerReader.h"

#include <QHash>

#include <map>

namespace {

struct Table {
    QStringList fields;
    // Each row's values and the line it came from.
    std::vector<std::pair<QStringList, int>> rows;

    QString value(const QStringList& row, const char* field) const
    {
        const int at = fields.indexOf(QLatin1String(field));
        return at >= 0 && at < row.size() ? row.at(at) : QString();
    }
};

// "2015-02-24 08:00" (the time of day is not kept); empty is no date.
bool readDate(const QString& text, QDate& date)
{
    if (text.isEmpty())
        return true;
    // Read by hand: a format string is parsed anew on every call, which was
    // most of the time a large export took.
    const auto number = [&text](int from, int digits) {
        int value = 0;
        for (int i = from; i < from + digits; ++i) {
            if (i >= text.size() || !text[i].isDigit())
                return -1;
            value = value * 10 + text[i].digitValue();
        }
        return value;
    };
    const bool dashes = text.size() >= 10 && text[4] == u'-' && text[7] == u'-';
    const int year = number(0, 4), month = number(5, 2), day = number(8, 2);
    date = dashes && year >= 0 && month >= 0 && day >= 0 ? QDate(year, month, day) : QDate();
    return date.isValid() && (text.size() == 10 || text[10] == u' ' || text[10] == u'T');
}

} // namespace

bool PfXerReader::ReadFile(const QString& path, PfSchedule& schedule, QString* error)
{
    return PfScheduleText::ReadFile(path, &PfXerReader::Read, schedule, error);
}

bool PfXerReader::Read(const QByteArray& bytes, PfSchedule& schedule, QString* error)
{
    PfSchedule read;
    const QStringList lines = PfScheduleText::Decode(bytes, "Windows-1252", read.encoding).split(QLatin1Char('\n'));
    if (lines.isEmpty() || !lines.front().startsWith(QLatin1String("ERMHDR")))
        return PfScheduleText::Fail(error, 1, QStringLiteral("not a P6 XER file (it does not start with ERMHDR)"));
    std::map<QString, Table> tables;
    Table* current = nullptr;
    bool ended = false;
    for (int i = 1; i < lines.size() && !ended; ++i) {
        QString line = lines.at(i);
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
        const QStringList cells = line.split(QLatin1Char('\t'));
        const QString& mark = cells.front();
        if (mark == QLatin1String("%T")) {
            current = &tables[cells.value(1)];
        } else if (mark == QLatin1String("%F")) {
            if (!current)
                return PfScheduleText::Fail(error, i + 1, QStringLiteral("fields before any table"));
            current->fields = cells.mid(1);
        } else if (mark == QLatin1String("%R")) {
            if (!current || current->fields.isEmpty())
                return PfScheduleText::Fail(error, i + 1, QStringLiteral("a row before its table's fields"));
            current->rows.emplace_back(cells.mid(1), i + 1);
        } else if (mark == QLatin1String("%E")) {
            ended = true;
        } else if (!line.isEmpty()) {
            return PfScheduleText::Fail(error, i + 1, QStringLiteral("a line that is no table, field or row"));
        }
    }
    if (!ended)
        return PfScheduleText::Fail(error, lines.size(), QStringLiteral("the file is cut short (no %E at its end)"));
    const auto taskTable = tables.find(QStringLiteral("TASK"));
    if (taskTable == tables.end())
        return PfScheduleText::Fail(error, 0, QStringLiteral("no TASK table"));

    QHash<QString, QString> projects;
    const Table& projectTable = tables[QStringLiteral("PROJECT")];
    for (const auto& [row, line] : projectTable.rows) {
        projects.insert(projectTable.value(row, "proj_id"), projectTable.value(row, "proj_short_name"));
        read.projects << projectTable.value(row, "proj_short_name");
    }
    // The work breakdown: a name and a parent per node; the project's own
    // node is not part of the path.
    struct Node {
        QString name;
        QString parent;
        bool project;
    };
    QHash<QString, Node> wbs;
    const Table& wbsTable = tables[QStringLiteral("PROJWBS")];
    for (const auto& [row, line] : wbsTable.rows)
        wbs.insert(wbsTable.value(row, "wbs_id"), {wbsTable.value(row, "wbs_name"), wbsTable.value(row, "parent_wbs_id"),
                                                   wbsTable.value(row, "proj_node_flag") == QLatin1String("Y")});
    const auto pathOf = [&wbs](QString id) {
        QStringList path;
        for (int depth = 0; wbs.contains(id) && depth < 1000; ++depth) {
            const Node& node = wbs[id];
            if (!node.project)
                path.prepend(node.name);
            id = node.parent;
        }
        return path;
    };

    const Table& tasks = taskTable->second;
    for (const auto& [row, line] : tasks.rows) {
        PfScheduleTask task;
        task.id = tasks.value(row, "task_id");
        task.code = tasks.value(row, "task_code");
        task.name = tasks.value(row, "task_name");
        task.project = projects.value(tasks.value(row, "proj_id"));
        task.wbsPath = pathOf(tasks.value(row, "wbs_id"));
        task.activityType = tasks.value(row, "task_type");
        task.milestone = task.activityType == QLatin1String("TT_Mile") || task.activityType == QLatin1String("TT_FinMile");
        task.summary = task.activityType == QLatin1String("TT_WBS");
        const struct {
            const char* field;
            QDate* date;
        } dates[] = {{"target_start_date", &task.plannedStart}, {"target_end_date", &task.plannedFinish},
                     {"early_start_date", &task.earlyStart},    {"early_end_date", &task.earlyFinish},
                     {"act_start_date", &task.actualStart},     {"act_end_date", &task.actualFinish}};
        for (const auto& d : dates)
            if (!readDate(tasks.value(row, d.field), *d.date))
                return PfScheduleText::Fail(error, line,
                            QStringLiteral("%1 of task %2 is no date: \"%3\"")
                                .arg(QLatin1String(d.field), task.code, tasks.value(row, d.field)));
        read.tasks.push_back(std::move(task));
    }
    QHash<QString, PfScheduleTask*> byId;
    for (PfScheduleTask& task : read.tasks)
        byId.insert(task.id, &task);
    const Table& links = tables[QStringLiteral("TASKPRED")];
    for (const auto& [row, line] : links.rows)
        if (PfScheduleTask* task = byId.value(links.value(row, "task_id")))
            task->predecessors << links.value(row, "pred_task_id");
    schedule = std::move(read);
    return true;
}
