#include "PfCsvScheduleReader.h"

namespace {

// One row's cells: quoted cells may hold the delimiter, and "" stands for a
// quote.
QStringList cellsOf(const QString& line, QChar delimiter)
{
    QStringList cells;
    QString cell;
    bool quoted = false;
    for (int i = 0; i < line.size(); ++i) {
        const QChar c = line[i];
        if (quoted) {
            if (c == QLatin1Char('"') && i + 1 < line.size() && line[i + 1] == QLatin1Char('"')) {
                cell += c;
                ++i;
            } else if (c == QLatin1Char('"')) {
                quoted = false;
            } else {
                cell += c;
            }
        } else if (c == QLatin1Char('"')) {
            quoted = true;
        } else if (c == delimiter) {
            cells << cell.trimmed();
            cell.clear();
        } else {
            cell += c;
        }
    }
    cells << cell.trimmed();
    return cells;
}

enum Column { Name, Start, Finish, Code, Kind, Elements, ColumnCount };

int columnOf(const QString& header)
{
    static const QStringList names[ColumnCount] = {
        {"name", "task", "task name", "名称", "任务", "任务名称"},
        {"start", "start date", "开始", "开始日期", "开始时间"},
        {"finish", "end", "finish date", "end date", "结束", "完成", "结束日期", "完成日期", "结束时间"},
        {"code", "id", "task code", "编码", "编号", "代码"},
        {"kind", "type", "类型", "动画类型"},
        {"elements", "element", "element filter", "构件", "构件筛选"},
    };
    for (int column = 0; column < ColumnCount; ++column)
        if (names[column].contains(header.trimmed().toLower()))
            return column;
    return -1;
}

// The formats tried, in order; the first that reads every date is taken
// (day-first and month-first differ only where a day is past 12).
const char* const kDateFormats[] = {"yyyy-MM-dd", "yyyy/M/d", "yyyy.M.d", "yyyy年M月d日",
                                    "d.M.yyyy",   "d/M/yyyy", "M/d/yyyy", "yyyyMMdd"};

QDate dateOf(const QString& text, const QString& format)
{
    // A time of day after the date is not kept.
    return QDate::fromString(text.section(QLatin1Char(' '), 0, 0), format);
}

} // namespace

bool PfCsvScheduleReader::ReadFile(const QString& path, PfSchedule& schedule, QString* error)
{
    return PfScheduleText::ReadFile(path, &PfCsvScheduleReader::Read, schedule, error);
}

bool PfCsvScheduleReader::Read(const QByteArray& bytes, PfSchedule& schedule, QString* error)
{
    PfSchedule read;
    QStringList lines = PfScheduleText::Decode(bytes, "GB18030", read.encoding).split(QLatin1Char('\n'));
    for (QString& line : lines)
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
    if (lines.isEmpty() || lines.front().trimmed().isEmpty())
        return PfScheduleText::Fail(error, 1, QStringLiteral("no header row naming the columns"));
    // The delimiter that names the most known columns in the header.
    int best = 0;
    for (const QChar delimiter : {QLatin1Char(','), QLatin1Char(';'), QLatin1Char('\t')}) {
        int known = 0;
        for (const QString& header : cellsOf(lines.front(), delimiter))
            known += columnOf(header) >= 0;
        if (known > best) {
            best = known;
            read.delimiter = delimiter;
        }
    }
    int at[ColumnCount];
    std::fill(std::begin(at), std::end(at), -1);
    const QStringList headers = cellsOf(lines.front(), read.delimiter);
    for (int i = 0; i < headers.size(); ++i)
        if (const int column = columnOf(headers[i]); column >= 0 && at[column] < 0)
            at[column] = i;
    for (const Column needed : {Name, Start, Finish})
        if (at[needed] < 0)
            return PfScheduleText::Fail(error, 1,
                        QStringLiteral("the header names no %1 column")
                            .arg(needed == Name ? QStringLiteral("name") : needed == Start ? QStringLiteral("start")
                                                                                           : QStringLiteral("finish")));
    std::vector<std::pair<QStringList, int>> rows;
    for (int i = 1; i < lines.size(); ++i)
        if (!lines[i].trimmed().isEmpty())
            rows.emplace_back(cellsOf(lines[i], read.delimiter), i + 1);
    if (rows.empty())
        return PfScheduleText::Fail(error, 0, QStringLiteral("no tasks"));
    for (const char* format : kDateFormats) {
        bool all = true;
        for (const auto& [cells, line] : rows)
            all = all && dateOf(cells.value(at[Start]), QLatin1String(format)).isValid() &&
                  dateOf(cells.value(at[Finish]), QLatin1String(format)).isValid();
        if (all) {
            read.dateFormat = QLatin1String(format);
            break;
        }
    }
    if (read.dateFormat.isEmpty()) {
        // Tell the first row whose dates no format reads.
        for (const auto& [cells, line] : rows) {
            bool readable = false;
            for (const char* format : kDateFormats)
                readable = readable || (dateOf(cells.value(at[Start]), QLatin1String(format)).isValid() &&
                                        dateOf(cells.value(at[Finish]), QLatin1String(format)).isValid());
            if (!readable)
                return PfScheduleText::Fail(error, line, QStringLiteral("no date in \"%1\" or \"%2\"")
                                             .arg(cells.value(at[Start]), cells.value(at[Finish])));
        }
        return PfScheduleText::Fail(error, 0, QStringLiteral("the rows' dates are written in different formats"));
    }
    for (const auto& [cells, line] : rows) {
        PfScheduleTask task;
        task.name = cells.value(at[Name]);
        task.code = at[Code] >= 0 ? cells.value(at[Code]) : QString();
        task.id = task.code.isEmpty() ? QString::number(line) : task.code;
        task.activityType = at[Kind] >= 0 ? cells.value(at[Kind]) : QString();
        task.elementFilter = at[Elements] >= 0 ? cells.value(at[Elements]) : QString();
        task.plannedStart = dateOf(cells.value(at[Start]), read.dateFormat);
        task.plannedFinish = dateOf(cells.value(at[Finish]), read.dateFormat);
        if (task.plannedFinish < task.plannedStart)
            return PfScheduleText::Fail(error, line, QStringLiteral("%1 finishes before it starts").arg(task.name));
        task.milestone = task.plannedStart == task.plannedFinish &&
                         task.activityType.contains(QLatin1String("milestone"), Qt::CaseInsensitive);
        read.tasks.push_back(std::move(task));
    }
    schedule = std::move(read);
    return true;
}
