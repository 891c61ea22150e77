#include "PfIfcScheduleReader.h"

#include <QHash>
#include <QTextCodec>

#include <algorithm>
#include <cstring>
#include <numeric>

namespace {

// Deeper lists only come from damaged or hostile files; the limit keeps the
// recursive parser well inside the stack.
constexpr int kMaxDepth = 64;
// A breakdown deeper than this is no planner's; the limit bounds the paths
// kept for a file that nests thousands of tasks in one chain.
constexpr int kMaxLevels = 100;
// A GlobalId is always 22 characters; keeping only first attributes of that
// length spares the memory of every named property in a large model.
constexpr int kGlobalIdLength = 22;
// Instance numbers above this are no file's and would overflow.
constexpr qint64 kMaxInstance = Q_INT64_C(1) << 52;

// One parameter of an instance. Numbers and binaries are not kept: the
// schedule reads none.
struct Value {
    enum Kind { Unset, Ref, Text, Enum, Typed, List, Other } kind = Unset;
    qint64 ref = 0;
    QString text;             // a string, an enumeration or a typed value's type
    std::vector<Value> items; // a list's items or a typed value's one

    const Value& at(size_t i) const
    {
        static const Value none;
        return i < items.size() ? items[i] : none;
    }
};

enum class Entity { Task, TaskTime, Nests, ToProduct, ToProcess, ToControl, Sequence, WorkSchedule };

const QHash<QByteArray, Entity>& keptEntities()
{
    static const QHash<QByteArray, Entity> kept{
        {"IFCTASK", Entity::Task},
        {"IFCTASKTIME", Entity::TaskTime},
        {"IFCTASKTIMERECURRING", Entity::TaskTime},
        {"IFCRELNESTS", Entity::Nests},
        {"IFCRELASSIGNSTOPRODUCT", Entity::ToProduct},
        {"IFCRELASSIGNSTOPROCESS", Entity::ToProcess},
        {"IFCRELASSIGNSTOCONTROL", Entity::ToControl},
        {"IFCRELSEQUENCE", Entity::Sequence},
        {"IFCWORKSCHEDULE", Entity::WorkSchedule},
    };
    return kept;
}

struct Instance {
    qint64 id;
    int line;
    Entity entity;
    Value attributes;
};

struct Failure {
    int line = 0;
    QString reason;

    bool set(int where, const QString& why)
    {
        line = where;
        reason = why;
        return false;
    }
};

bool isWordChar(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' || c == '-' ||
           c == '!';
}

bool isNumberChar(char c) { return (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.' || c == 'E' || c == 'e'; }

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

bool looksLikeStep(const QByteArray& bytes)
{
    QByteArray head = bytes.left(256);
    if (head.startsWith("\xEF\xBB\xBF"))
        head.remove(0, 3);
    return head.trimmed().startsWith("ISO-10303-21");
}

// Checked in slices, so a large model is never held twice as text.
bool isUtf8(const QByteArray& bytes)
{
    constexpr int kSlice = 1 << 20;
    QTextCodec* codec = QTextCodec::codecForName("UTF-8");
    QTextCodec::ConverterState state;
    for (int at = 0; at < bytes.size() && state.invalidChars == 0; at += kSlice)
        codec->toUnicode(bytes.constData() + at, std::min(kSlice, bytes.size() - at), &state);
    return state.invalidChars == 0;
}

// Reads the statements of a STEP file in one pass over its bytes, keeping
// the instances a schedule needs and the GlobalId of every other. Raw bytes
// in strings are decoded in runs; the file's escapes are decoded as met.
class StepScanner {
public:
    StepScanner(const QByteArray& bytes, bool utf8)
        : at_(bytes.constData()), end_(bytes.constData() + bytes.size()), utf8_(utf8)
    {
    }

    bool scan();

    std::vector<Instance> instances;
    QHash<qint64, int> byId; // kept instances by number
    QHash<qint64, QString> globalIds;
    Failure failure;

private:
    enum class Escape { None, Done, Broken };

    char peek() const { return at_ < end_ ? *at_ : '\0'; }
    bool follows(const char* text) const;
    bool fail(const QString& why) { return failure.set(line_, why); }
    QString found() const;
    void skipSpace();
    QByteArray keyword();
    bool number(qint64& n);
    bool expect(char c);
    bool endStatement();
    bool instance();
    bool instanceBody(qint64 id, int line);
    void keepGlobalId(qint64 id, const Value& first);
    bool complexInstance();
    bool list(Value* out, int depth, Value* first = nullptr);
    bool value(Value* out, int depth);
    bool enumeration(Value* out);
    bool string(QString* out);
    Escape escape(QByteArray& raw, QString& text);
    Escape wideEscape(QByteArray& raw, QString& text);
    qint64 hex(const char* from, int digits) const;
    void flush(QByteArray& raw, QString& text) const;

    const char* at_;
    const char* const end_;
    const bool utf8_;
    int line_ = 1;
};

bool StepScanner::scan()
{
    if (follows("\xEF\xBB\xBF"))
        at_ += 3;
    bool inData = false;
    bool sawData = false;
    for (;;) {
        skipSpace();
        if (at_ == end_ || follows("END-ISO-10303-21")) {
            if (inData)
                return fail(QStringLiteral("the file is cut short (no ENDSEC after its data)"));
            return sawData || fail(QStringLiteral("no DATA section"));
        }
        if (peek() == '#') {
            if (!instance())
                return false;
            continue;
        }
        const QByteArray word = keyword();
        if (word.isEmpty())
            return fail(QStringLiteral("unexpected %1").arg(found()));
        sawData = sawData || word == "DATA";
        inData = word == "DATA" || (inData && word != "ENDSEC");
        skipSpace();
        if ((peek() == '(' && !list(nullptr, 0)) || !endStatement())
            return false;
    }
}

bool StepScanner::follows(const char* text) const
{
    const size_t size = std::strlen(text);
    return size_t(end_ - at_) >= size && std::memcmp(at_, text, size) == 0;
}

QString StepScanner::found() const
{
    if (at_ == end_)
        return QStringLiteral("the end of the file");
    const uchar c = uchar(*at_);
    return c > 0x20 && c < 0x7f ? QStringLiteral("'%1'").arg(QLatin1Char(char(c)))
                                : QStringLiteral("byte 0x%1").arg(int(c), 2, 16, QLatin1Char('0'));
}

void StepScanner::skipSpace()
{
    while (at_ < end_) {
        if (*at_ == '\n') {
            ++line_;
            ++at_;
        } else if (*at_ == ' ' || *at_ == '\t' || *at_ == '\r') {
            ++at_;
        } else if (follows("/*")) {
            for (at_ += 2; at_ < end_ && !follows("*/"); ++at_)
                line_ += *at_ == '\n';
            if (at_ < end_)
                at_ += 2;
        } else {
            return;
        }
    }
}

QByteArray StepScanner::keyword()
{
    const char* start = at_;
    while (at_ < end_ && isWordChar(*at_))
        ++at_;
    return QByteArray(start, int(at_ - start));
}

bool StepScanner::number(qint64& n)
{
    n = 0;
    const char* start = at_;
    for (; at_ < end_ && *at_ >= '0' && *at_ <= '9'; ++at_) {
        n = n * 10 + (*at_ - '0');
        if (n > kMaxInstance)
            return fail(QStringLiteral("an instance number too large"));
    }
    return at_ > start || fail(QStringLiteral("'#' without an instance number"));
}

bool StepScanner::expect(char c)
{
    if (peek() != c)
        return fail(QStringLiteral("expected '%1' but found %2").arg(QLatin1Char(c)).arg(found()));
    ++at_;
    return true;
}

bool StepScanner::endStatement()
{
    skipSpace();
    return expect(';');
}

bool StepScanner::instance()
{
    const int line = line_;
    ++at_;
    qint64 id = 0;
    if (!number(id))
        return false;
    if (instanceBody(id, line))
        return true;
    failure.reason = QStringLiteral("in #%1: %2").arg(id).arg(failure.reason);
    return false;
}

bool StepScanner::instanceBody(qint64 id, int line)
{
    skipSpace();
    if (!expect('='))
        return false;
    skipSpace();
    if (peek() == '(')
        return complexInstance() && endStatement();
    const QByteArray type = keyword().toUpper();
    if (type.isEmpty())
        return fail(QStringLiteral("expected an entity name but found %1").arg(found()));
    skipSpace();
    const auto kept = keptEntities().constFind(type);
    if (kept == keptEntities().cend()) {
        Value first;
        if (!list(nullptr, 0, &first) || !endStatement())
            return false;
        keepGlobalId(id, first);
        return true;
    }
    Instance instance{id, line, *kept, {}};
    if (!list(&instance.attributes, 0) || !endStatement())
        return false;
    keepGlobalId(id, instance.attributes.at(0));
    byId.insert(id, int(instances.size()));
    instances.push_back(std::move(instance));
    return true;
}

void StepScanner::keepGlobalId(qint64 id, const Value& first)
{
    if (first.kind == Value::Text && first.text.size() == kGlobalIdLength)
        globalIds.insert(id, first.text);
}

// "(IFCA(...) IFCB(...))": an instance of several entities at once; none of
// them is one a schedule needs.
bool StepScanner::complexInstance()
{
    for (++at_;;) {
        skipSpace();
        if (peek() == ')') {
            ++at_;
            return true;
        }
        if (keyword().isEmpty())
            return fail(QStringLiteral("expected an entity name but found %1").arg(found()));
        skipSpace();
        if (!list(nullptr, 1))
            return false;
    }
}

// Without out, the list is only read past; first then takes its first item
// when that is a string (a GlobalId, maybe).
bool StepScanner::list(Value* out, int depth, Value* first)
{
    if (depth > kMaxDepth)
        return fail(QStringLiteral("lists nested deeper than %1").arg(kMaxDepth));
    if (!expect('('))
        return false;
    if (out)
        out->kind = Value::List;
    skipSpace();
    if (peek() == ')') {
        ++at_;
        return true;
    }
    for (int i = 0;; ++i) {
        Value* item = out ? &out->items.emplace_back() : i == 0 && peek() == '\'' ? first : nullptr;
        if (!value(item, depth))
            return false;
        skipSpace();
        if (peek() == ')') {
            ++at_;
            return true;
        }
        if (peek() != ',')
            return fail(QStringLiteral("expected ',' or ')' but found %1").arg(found()));
        ++at_;
        skipSpace();
    }
}

bool StepScanner::value(Value* out, int depth)
{
    const char c = peek();
    if (c == '\'') {
        if (out)
            out->kind = Value::Text;
        return string(out ? &out->text : nullptr);
    }
    if (c == '(')
        return list(out, depth + 1);
    if (c == '.')
        return enumeration(out);
    if (c == '$' || c == '*') {
        ++at_;
        return true;
    }
    if (c == '#') {
        ++at_;
        qint64 ref = 0;
        if (!number(ref))
            return false;
        if (out) {
            out->kind = Value::Ref;
            out->ref = ref;
        }
        return true;
    }
    if (c == '"') {
        at_ = std::find(at_ + 1, end_, '"');
        return expect('"');
    }
    if (isNumberChar(c) && c != 'E' && c != 'e') {
        while (at_ < end_ && isNumberChar(*at_))
            ++at_;
        if (out)
            out->kind = Value::Other;
        return true;
    }
    if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '!') {
        const QByteArray type = keyword();
        skipSpace();
        if (!list(out, depth + 1))
            return false;
        if (out) {
            out->kind = Value::Typed;
            out->text = QString::fromLatin1(type);
        }
        return true;
    }
    return fail(QStringLiteral("unexpected %1").arg(found()));
}

bool StepScanner::enumeration(Value* out)
{
    const char* start = ++at_;
    while (at_ < end_ && isWordChar(*at_))
        ++at_;
    if (out) {
        out->kind = Value::Enum;
        out->text = QString::fromLatin1(start, int(at_ - start));
    }
    return expect('.');
}

bool StepScanner::string(QString* out)
{
    const int start = line_;
    QString text;
    QByteArray raw; // the file's own bytes since the last escape
    for (++at_;;) {
        if (at_ == end_)
            return failure.set(start, QStringLiteral("a string that never ends"));
        if (*at_ == '\'' && !follows("''"))
            break;
        if (*at_ == '\\') {
            const Escape escaped = escape(raw, text);
            if (escaped == Escape::Broken)
                return false;
            if (escaped == Escape::Done)
                continue;
        }
        if (*at_ == '\'')
            ++at_; // the first of two
        line_ += *at_ == '\n';
        raw += *at_++;
    }
    ++at_;
    if (out) {
        flush(raw, text);
        *out = text;
    }
    return true;
}

// A backslash that starts no known escape is kept as it is: writers put
// plain paths into strings more often than they double the backslash.
StepScanner::Escape StepScanner::escape(QByteArray& raw, QString& text)
{
    if (follows("\\\\")) {
        raw += '\\';
        at_ += 2;
        return Escape::Done;
    }
    if (follows("\\S\\") && end_ - at_ > 3 && at_[3] >= 0x20 && at_[3] < 0x7f && at_[3] != '\'') {
        flush(raw, text);
        text += QChar(uchar(at_[3]) + 0x80);
        at_ += 4;
        return Escape::Done;
    }
    if (follows("\\P") && end_ - at_ > 3 && at_[2] >= 'A' && at_[2] <= 'I' && at_[3] == '\\') {
        at_ += 4; // a code page for \S\; ISO 8859-1 is all we read it in
        return Escape::Done;
    }
    if (follows("\\X\\") && hex(at_ + 3, 2) >= 0) {
        flush(raw, text);
        text += QChar(ushort(hex(at_ + 3, 2)));
        at_ += 5;
        return Escape::Done;
    }
    if (follows("\\X2\\") || follows("\\X4\\"))
        return wideEscape(raw, text);
    return Escape::None;
}

// \X2\ gives UTF-16 units in four hex digits, \X4\ code points in eight,
// both up to \X0\.
StepScanner::Escape StepScanner::wideEscape(QByteArray& raw, QString& text)
{
    const int digits = at_[2] == '2' ? 4 : 8;
    flush(raw, text);
    for (at_ += 4; !follows("\\X0\\"); at_ += digits) {
        const qint64 unit = hex(at_, digits);
        if (unit < 0 || unit > 0x10ffff) {
            fail(QStringLiteral("a broken \\X%1\\ escape in a string").arg(digits / 2));
            return Escape::Broken;
        }
        // Units go in as they are, so that pairs of surrogates stay pairs.
        const uint codePoint = uint(unit);
        text += digits == 4 ? QString(QChar(ushort(unit))) : QString::fromUcs4(&codePoint, 1);
    }
    at_ += 4;
    return Escape::Done;
}

qint64 StepScanner::hex(const char* from, int digits) const
{
    if (end_ - from < digits)
        return -1;
    qint64 n = 0;
    for (int i = 0; i < digits; ++i) {
        const int digit = hexDigit(from[i]);
        if (digit < 0)
            return -1;
        n = n * 16 + digit;
    }
    return n;
}

void StepScanner::flush(QByteArray& raw, QString& text) const
{
    text += utf8_ ? QString::fromUtf8(raw) : QString::fromLatin1(raw);
    raw.clear();
}

QString textOf(const Value& value)
{
    return value.kind == Value::Typed ? textOf(value.at(0)) : value.kind == Value::Text ? value.text : QString();
}

// "2010-09-20T08:00:00" or a date alone; the time of day is not kept.
bool readDate(const Value& value, QDate& date)
{
    if (value.kind == Value::Unset)
        return true;
    const QString text = textOf(value);
    date = QDate::fromString(text.left(10), QStringLiteral("yyyy-MM-dd"));
    return date.isValid() && (text.size() == 10 || text.at(10) == QLatin1Char('T'));
}

// Names and values as a message shows them: on one line and short.
QString shown(const QString& text)
{
    const QString line = text.simplified();
    return line.size() > 60 ? line.left(57) + QStringLiteral("...") : line;
}

void widen(std::pair<QDate, QDate>& span, const QDate& start, const QDate& finish)
{
    if (start.isValid() && (!span.first.isValid() || start < span.first))
        span.first = start;
    if (finish.isValid() && (!span.second.isValid() || finish > span.second))
        span.second = finish;
}

// Turns the kept instances into tasks: first the tasks and their dates,
// then the relations between them, then what follows from the nesting.
class ScheduleBuilder {
public:
    ScheduleBuilder(const StepScanner& step, PfSchedule& schedule) : step_(step), tasks_(schedule.tasks), schedule_(schedule)
    {
    }

    bool build();

    Failure failure;

private:
    bool readTasks();
    bool readTimes(const Instance& instance, PfScheduleTask& task);
    bool readRelations();
    bool nest(const Instance& relation);
    void assign(int task, const Value& object);
    bool readPaths();
    void inherit();
    int taskOf(const Value& value) const { return value.kind == Value::Ref ? taskAt_.value(value.ref, -1) : -1; }

    const StepScanner& step_;
    std::vector<PfScheduleTask>& tasks_;
    PfSchedule& schedule_;
    QHash<qint64, int> taskAt_;
    QHash<qint64, QString> scheduleNames_;
    std::vector<int> lines_;
    std::vector<int> parent_;
};

bool ScheduleBuilder::build()
{
    if (!readTasks() || !readRelations() || !readPaths())
        return false;
    inherit();
    return true;
}

bool ScheduleBuilder::readTasks()
{
    for (const Instance& instance : step_.instances) {
        const Value& a = instance.attributes;
        if (instance.entity == Entity::WorkSchedule && !textOf(a.at(2)).isEmpty()) {
            scheduleNames_.insert(instance.id, textOf(a.at(2)));
            schedule_.projects << textOf(a.at(2));
        }
        if (instance.entity != Entity::Task)
            continue;
        PfScheduleTask task;
        task.id = textOf(a.at(0));
        task.name = textOf(a.at(2));
        task.code = textOf(a.at(5));
        task.milestone = a.at(9).kind == Value::Enum && a.at(9).text == QLatin1String("T");
        const Value& type = a.at(12);
        const bool typed = type.kind == Value::Enum && type.text != QLatin1String("NOTDEFINED") &&
                           type.text != QLatin1String("USERDEFINED");
        task.activityType = typed ? type.text : textOf(a.at(4));
        if (!readTimes(instance, task))
            return false;
        taskAt_.insert(instance.id, int(tasks_.size()));
        lines_.push_back(instance.line);
        tasks_.push_back(std::move(task));
    }
    parent_.assign(tasks_.size(), -1);
    return !tasks_.empty() || failure.set(0, QStringLiteral("no work schedule in the file (it holds no IfcTask)"));
}

bool ScheduleBuilder::readTimes(const Instance& instance, PfScheduleTask& task)
{
    const Value& reference = instance.attributes.at(11);
    if (reference.kind == Value::Unset)
        return true;
    const int at = reference.kind == Value::Ref ? step_.byId.value(reference.ref, -1) : -1;
    if (at < 0 || step_.instances[at].entity != Entity::TaskTime)
        return failure.set(instance.line, QStringLiteral("the TaskTime of task '%1' is no IfcTaskTime").arg(shown(task.name)));
    const Instance& time = step_.instances[at];
    const struct {
        int index;
        const char* name;
        QDate* date;
    } dates[] = {{5, "ScheduleStart", &task.plannedStart}, {6, "ScheduleFinish", &task.plannedFinish},
                 {7, "EarlyStart", &task.earlyStart},      {8, "EarlyFinish", &task.earlyFinish},
                 {16, "ActualStart", &task.actualStart},   {17, "ActualFinish", &task.actualFinish}};
    for (const auto& d : dates)
        if (!readDate(time.attributes.at(d.index), *d.date))
            return failure.set(time.line, QStringLiteral("%1 of task '%2' is no date: \"%3\"")
                                              .arg(QLatin1String(d.name), shown(task.name), shown(textOf(time.attributes.at(d.index)))));
    return true;
}

bool ScheduleBuilder::readRelations()
{
    for (const Instance& relation : step_.instances) {
        const Value& a = relation.attributes;
        switch (relation.entity) {
        case Entity::Nests:
            if (!nest(relation))
                return false;
            break;
        case Entity::Sequence: {
            const int before = taskOf(a.at(4));
            const int after = taskOf(a.at(5));
            if (before >= 0 && after >= 0)
                tasks_[after].predecessors << tasks_[before].id;
            break;
        }
        case Entity::ToProduct:
            for (const Value& object : a.at(4).items)
                assign(taskOf(object), a.at(6));
            break;
        case Entity::ToProcess:
            for (const Value& object : a.at(4).items)
                if (taskOf(object) < 0)
                    assign(taskOf(a.at(6)), object);
            break;
        case Entity::ToControl: {
            // Calendars are controls too; only a schedule's name is a project.
            const QString name = a.at(6).kind == Value::Ref ? scheduleNames_.value(a.at(6).ref) : QString();
            for (const Value& object : a.at(4).items)
                if (taskOf(object) >= 0 && !name.isEmpty())
                    tasks_[taskOf(object)].project = name;
            break;
        }
        default:
            break;
        }
    }
    return true;
}

// A task nested twice keeps its first parent, so only a task nesting itself
// needs telling here; longer circles are found by walking the parents.
bool ScheduleBuilder::nest(const Instance& relation)
{
    const int parent = taskOf(relation.attributes.at(4));
    for (const Value& child : relation.attributes.at(5).items) {
        const int at = taskOf(child);
        if (parent < 0 || at < 0)
            continue;
        if (at == parent)
            return failure.set(relation.line, QStringLiteral("task '%1' nests itself").arg(shown(tasks_[at].name)));
        tasks_[parent].summary = true;
        if (parent_[at] < 0)
            parent_[at] = parent;
    }
    return true;
}

void ScheduleBuilder::assign(int task, const Value& object)
{
    const QString globalId = object.kind == Value::Ref ? step_.globalIds.value(object.ref) : QString();
    if (task >= 0 && !globalId.isEmpty() && !tasks_[task].elementGlobalIds.contains(globalId))
        tasks_[task].elementGlobalIds << globalId;
}

// Walks up from each task only as far as a task whose path is known, so the
// whole breakdown costs one step a task; meeting a task still being walked
// means the nesting runs in a circle.
bool ScheduleBuilder::readPaths()
{
    enum State { Unknown, Walking, Known };
    std::vector<State> state(tasks_.size(), Unknown);
    for (int i = 0; i < int(tasks_.size()); ++i) {
        std::vector<int> walk;
        int at = i;
        for (; at >= 0 && state[at] == Unknown; at = parent_[at]) {
            state[at] = Walking;
            walk.push_back(at);
        }
        if (at >= 0 && state[at] == Walking)
            return failure.set(lines_[at], QStringLiteral("the nesting of task '%1' runs in a circle").arg(shown(tasks_[at].name)));
        for (auto it = walk.rbegin(); it != walk.rend(); ++it) {
            const int up = parent_[*it];
            if (up >= 0)
                tasks_[*it].wbsPath = tasks_[up].wbsPath + QStringList{tasks_[up].name};
            if (tasks_[*it].wbsPath.size() > kMaxLevels)
                return failure.set(lines_[*it], QStringLiteral("tasks nested deeper than %1").arg(kMaxLevels));
            state[*it] = Known;
        }
    }
    return true;
}

// The schedule a task is assigned to holds for the tasks it nests, and a
// summary without dates of its own spans its children; so the tasks are
// visited outermost first for the one and deepest first for the other.
void ScheduleBuilder::inherit()
{
    std::vector<int> order(tasks_.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [this](int a, int b) { return tasks_[a].wbsPath.size() < tasks_[b].wbsPath.size(); });
    for (int at : order)
        if (tasks_[at].project.isEmpty() && parent_[at] >= 0)
            tasks_[at].project = tasks_[parent_[at]].project;
    std::vector<std::pair<QDate, QDate>> spans(tasks_.size());
    for (auto it = order.rbegin(); it != order.rend(); ++it) {
        PfScheduleTask& task = tasks_[*it];
        if (task.summary && !task.Start().isValid() && !task.Finish().isValid()) {
            task.plannedStart = spans[*it].first;
            task.plannedFinish = spans[*it].second;
        }
        if (parent_[*it] >= 0)
            widen(spans[parent_[*it]], task.Start(), task.Finish());
    }
}

} // namespace

bool PfIfcScheduleReader::ReadFile(const QString& path, PfSchedule& schedule, QString* error)
{
    return PfScheduleText::ReadFile(path, &PfIfcScheduleReader::Read, schedule, error);
}

bool PfIfcScheduleReader::Read(const QByteArray& bytes, PfSchedule& schedule, QString* error)
{
    if (!looksLikeStep(bytes))
        return PfScheduleText::Fail(error, 1, QStringLiteral("not a STEP file (it does not start with ISO-10303-21)"));
    const bool utf8 = isUtf8(bytes);
    StepScanner step(bytes, utf8);
    if (!step.scan())
        return PfScheduleText::Fail(error, step.failure.line, step.failure.reason);
    PfSchedule read;
    read.encoding = utf8 ? QStringLiteral("UTF-8") : QStringLiteral("ISO-8859-1");
    ScheduleBuilder builder(step, read);
    if (!builder.build())
        return PfScheduleText::Fail(error, builder.failure.line, builder.failure.reason);
    schedule = std::move(read);
    return true;
}

bool PfIfcScheduleReader::HasSchedule(const QByteArray& bytes)
{
    if (!looksLikeStep(bytes))
        return false;
    // IFCTASKTIME and IFCTASKTYPE share the name's start; only the entity
    // itself is followed by its parameters.
    for (int at = bytes.indexOf("IFCTASK"); at >= 0; at = bytes.indexOf("IFCTASK", at + 1)) {
        int next = at + 7;
        while (next < bytes.size() && (bytes.at(next) == ' ' || bytes.at(next) == '\t'))
            ++next;
        if (next < bytes.size() && bytes.at(next) == '(')
            return true;
    }
    return false;
}
