#include "PfScheduleLinker.h"

#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbElement.h"
#include "host/db/PfDbObjContainer.h"
#include "host/model/PfModelElements.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <unordered_map>

namespace {

using Rules = PfScheduleLinkRules;

// The names a report lists of each kind, before "and N more".
constexpr int kListedNames = 5;

struct Element {
    PfDbHandle handle = kPfDbNullHandle;
    const PfDbElement* source = nullptr;
    QString name, storey, type, globalId;
};

// The element values of one field, folded to lower case and sorted, so that
// equal and prefix lookups are binary searches however many elements.
struct FieldIndex {
    std::vector<std::pair<QString, int>> sorted;
};

QString fieldValue(const Element& element, const Rules::Condition& condition)
{
    switch (condition.field) {
    case Rules::Field::Storey: return element.storey;
    case Rules::Field::Name: return element.name;
    case Rules::Field::Type: return element.type;
    case Rules::Field::GlobalId: return element.globalId;
    case Rules::Field::Property: return element.source->Property(condition.property);
    }
    return QString();
}

QString fieldKey(const Rules::Condition& condition)
{
    return condition.field == Rules::Field::Property ? QStringLiteral("property:") + condition.property
                                                     : QString::number(static_cast<int>(condition.field));
}

QStringList nonEmpty(QStringList values)
{
    values.removeAll(QString());
    return values;
}

QStringList taskValues(const PfScheduleTask& task, Rules::Source source)
{
    switch (source) {
    case Rules::Source::Name: return nonEmpty({task.name.toLower()});
    case Rules::Source::Code: return nonEmpty({task.code.toLower()});
    case Rules::Source::Id: return nonEmpty({task.id.toLower()});
    case Rules::Source::Activity: return nonEmpty({task.activityType.toLower()});
    case Rules::Source::Wbs: {
        QStringList levels;
        for (const QString& level : task.wbsPath)
            levels << level.toLower();
        return nonEmpty(levels);
    }
    case Rules::Source::Template: break;
    }
    return {};
}

// The rule's pattern with the task's values put in; a placeholder the task
// has no value for drops the pattern rather than matching everything.
QStringList expandPattern(const QString& pattern, const PfScheduleTask& task)
{
    QStringList patterns{pattern.toLower()};
    const std::pair<const char*, Rules::Source> placeholders[] = {{"{name}", Rules::Source::Name},
                                                                  {"{code}", Rules::Source::Code},
                                                                  {"{id}", Rules::Source::Id},
                                                                  {"{activity}", Rules::Source::Activity},
                                                                  {"{wbs}", Rules::Source::Wbs}};
    for (const auto& [placeholder, source] : placeholders) {
        const QString key = QLatin1String(placeholder);
        if (!pattern.contains(key, Qt::CaseInsensitive))
            continue;
        QStringList expanded;
        for (const QString& value : taskValues(task, source))
            for (QString p : patterns)
                expanded << p.replace(key, value);
        patterns = expanded;
    }
    return patterns;
}

QRegularExpression wildcard(const QString& pattern)
{
    return QRegularExpression(QRegularExpression::wildcardToRegularExpression(pattern),
                              QRegularExpression::CaseInsensitiveOption);
}

// What comes before the first wildcard: the part a prefix lookup can use.
QString literalPrefix(const QString& pattern)
{
    const int wild = pattern.indexOf(QRegularExpression(QStringLiteral("[*?\\[]")));
    return wild < 0 ? pattern : pattern.left(wild);
}

QString describe(const PfScheduleTask& task)
{
    return task.code.isEmpty() || task.code == task.name ? task.name : task.code + u' ' + task.name;
}

void listNames(QString& text, const QString& title, const QStringList& names)
{
    text += QStringLiteral("\n%1: %2").arg(title).arg(names.size());
    if (names.isEmpty())
        return;
    text += QStringLiteral(": ") + names.mid(0, kListedNames).join(QStringLiteral("; "));
    if (names.size() > kListedNames)
        text += QStringLiteral("; and %1 more").arg(names.size() - kListedNames);
}

enum class Role { Build, Demolish, Emphasise };

Role roleOf(PfTaskRecord::Kind kind)
{
    return kind == PfTaskRecord::Demolition ? Role::Demolish
           : kind == PfTaskRecord::Emphasis ? Role::Emphasise
                                            : Role::Build;
}

struct Claim {
    int task = 0;
    int element = 0;
    int priority = 0; // 0 for explicit links, then the rule's place
    PfTaskRecord::Kind kind = PfTaskRecord::Construction;
};

} // namespace

struct PfScheduleLinker::Elements {
    std::vector<Element> list;
    QHash<QString, int> byGlobalId;
    std::unordered_map<PfDbHandle, int> byHandle;
    mutable std::map<QString, FieldIndex> indexes;

    const FieldIndex& index(const Rules::Condition& condition) const;
    bool holds(const Rules::Condition& condition, const PfScheduleTask& task, const Element& element) const;
    std::set<int> candidates(const Rules::Condition& condition, const PfScheduleTask& task) const;
    std::set<int> byPattern(const Rules::Condition& condition, const QString& pattern) const;
    std::set<int> ruleElements(const Rules::Rule& rule, const PfScheduleTask& task) const;
    std::set<int> explicitElements(const PfScheduleTask& task, const Rules& rules) const;
};

const FieldIndex& PfScheduleLinker::Elements::index(const Rules::Condition& condition) const
{
    const QString key = fieldKey(condition);
    auto found = indexes.find(key);
    if (found != indexes.end())
        return found->second;
    FieldIndex& built = indexes[key];
    for (int i = 0; i < static_cast<int>(list.size()); ++i) {
        const QString value = fieldValue(list[i], condition).toLower();
        if (!value.isEmpty())
            built.sorted.emplace_back(value, i);
    }
    std::sort(built.sorted.begin(), built.sorted.end());
    return built;
}

bool PfScheduleLinker::Elements::holds(const Rules::Condition& condition, const PfScheduleTask& task,
                                       const Element& element) const
{
    const QString value = fieldValue(element, condition).toLower();
    if (value.isEmpty())
        return false;
    if (condition.match == Rules::Match::Pattern) {
        const QStringList patterns = expandPattern(condition.pattern, task);
        return std::any_of(patterns.begin(), patterns.end(),
                           [&value](const QString& p) { return wildcard(p).match(value).hasMatch(); });
    }
    const QStringList values = taskValues(task, condition.source);
    return std::any_of(values.begin(), values.end(), [&](const QString& taskValue) {
        switch (condition.match) {
        case Rules::Match::Exact: return value == taskValue;
        case Rules::Match::Prefix: return value.startsWith(taskValue);
        case Rules::Match::Within: return taskValue.contains(value);
        case Rules::Match::Pattern: break;
        }
        return false;
    });
}

std::set<int> PfScheduleLinker::Elements::byPattern(const Rules::Condition& condition, const QString& pattern) const
{
    const FieldIndex& field = index(condition);
    const QString prefix = literalPrefix(pattern);
    const QRegularExpression expression = wildcard(pattern);
    std::set<int> found;
    auto it = std::lower_bound(field.sorted.begin(), field.sorted.end(), std::make_pair(prefix, -1));
    for (; it != field.sorted.end() && it->first.startsWith(prefix); ++it)
        if (expression.match(it->first).hasMatch())
            found.insert(it->second);
    return found;
}

std::set<int> PfScheduleLinker::Elements::candidates(const Rules::Condition& condition,
                                                     const PfScheduleTask& task) const
{
    std::set<int> found;
    if (condition.match == Rules::Match::Pattern) {
        for (const QString& pattern : expandPattern(condition.pattern, task))
            for (int i : byPattern(condition, pattern))
                found.insert(i);
        return found;
    }
    const FieldIndex& field = index(condition);
    const QStringList values = taskValues(task, condition.source);
    if (condition.match == Rules::Match::Within) {
        // Few distinct values (storeys, types) against each task's text.
        for (const auto& [value, element] : field.sorted)
            if (std::any_of(values.begin(), values.end(), [&](const QString& v) { return v.contains(value); }))
                found.insert(element);
        return found;
    }
    for (const QString& value : values) {
        auto it = std::lower_bound(field.sorted.begin(), field.sorted.end(), std::make_pair(value, -1));
        for (; it != field.sorted.end(); ++it) {
            const bool matches =
                condition.match == Rules::Match::Exact ? it->first == value : it->first.startsWith(value);
            if (!matches)
                break;
            found.insert(it->second);
        }
    }
    return found;
}

std::set<int> PfScheduleLinker::Elements::ruleElements(const Rules::Rule& rule, const PfScheduleTask& task) const
{
    std::set<int> found = candidates(rule.conditions.front(), task);
    for (std::size_t c = 1; c < rule.conditions.size() && !found.empty(); ++c)
        for (auto it = found.begin(); it != found.end();)
            it = holds(rule.conditions[c], task, list[*it]) ? std::next(it) : found.erase(it);
    return found;
}

std::set<int> PfScheduleLinker::Elements::explicitElements(const PfScheduleTask& task, const Rules& rules) const
{
    std::set<int> found;
    const auto addGlobalIds = [&](const QStringList& ids) {
        for (const QString& id : ids)
            if (auto it = byGlobalId.find(id); it != byGlobalId.end())
                found.insert(*it);
    };
    addGlobalIds(task.elementGlobalIds);
    for (const QString& key : {task.code, task.id, task.name})
        if (auto row = rules.table.find(key.toLower()); !key.isEmpty() && row != rules.table.end())
            addGlobalIds(row->second);
    for (quint64 handle : task.elementHandles)
        if (auto it = byHandle.find(handle); it != byHandle.end())
            found.insert(it->second);
    // A filter written in the schedule itself: wildcard patterns separated by
    // ';' or '|', each tried on the element's name, storey, type and GlobalId.
    static const QRegularExpression separators(QStringLiteral("[;|]"));
    for (const QString& part : task.elementFilter.split(separators, Qt::SkipEmptyParts)) {
        const QString pattern = part.trimmed().toLower();
        for (Rules::Field field : {Rules::Field::Name, Rules::Field::Storey, Rules::Field::Type,
                                   Rules::Field::GlobalId}) {
            Rules::Condition condition;
            condition.field = field;
            for (int i : byPattern(condition, pattern))
                found.insert(i);
        }
    }
    return found;
}

PfScheduleLinker::PfScheduleLinker(const PfDbDatabase* database) : m_elements(std::make_unique<Elements>())
{
    for (PfDbObject* object : *database->GetModelSpace()) {
        const PfDbElement* source = PfModelElements::Of(object);
        if (!source || object->IsErased())
            continue;
        Element element;
        element.handle = object->GetHandle();
        element.source = source;
        element.name = QString::fromStdWString(source->GetName());
        element.storey = source->Property(PfDbElement::kStoreyProperty);
        element.type = PfModelElements::KindOf(source);
        element.globalId = source->Property(PfDbElement::kGlobalIdProperty);
        const int at = static_cast<int>(m_elements->list.size());
        if (!element.globalId.isEmpty())
            m_elements->byGlobalId.insert(element.globalId, at);
        m_elements->byHandle.emplace(element.handle, at);
        m_elements->list.push_back(std::move(element));
    }
}

PfScheduleLinker::~PfScheduleLinker() = default;

namespace {

bool mentions(const QString& text, const QStringList& words)
{
    return std::any_of(words.begin(), words.end(),
                       [&text](const QString& word) { return text.contains(word, Qt::CaseInsensitive); });
}

PfTaskRecord::Kind kindOf(const PfScheduleTask& task, const Element& element, const Rules& rules)
{
    if (task.milestone)
        return PfTaskRecord::Emphasis;
    if (mentions(task.name, rules.demolitionWords) || mentions(task.activityType, rules.demolitionWords))
        return PfTaskRecord::Demolition;
    const bool layered = std::any_of(rules.layeredTypes.begin(), rules.layeredTypes.end(), [&](const QString& t) {
        return element.type.startsWith(t, Qt::CaseInsensitive);
    });
    return layered ? PfTaskRecord::Layered : PfTaskRecord::Construction;
}

PfTaskRecord recordOf(const Claim& claim, const PfScheduleTask& task, const Element& element, const Rules& rules)
{
    PfTaskRecord record;
    record.element = element.handle;
    record.kind = claim.kind;
    record.start = task.Start();
    record.finish = std::max(task.Start(), task.Finish());
    record.layerHeight = claim.kind == PfTaskRecord::Layered ? rules.layerHeight : 0.0;
    record.taskId = task.id.isEmpty() ? task.code : task.id;
    record.taskName = task.name;
    return record;
}

} // namespace

std::vector<PfTaskRecord> PfScheduleLinker::Link(const PfSchedule& schedule, const PfScheduleLinkRules& rules,
                                                 Report& report) const
{
    const Elements& elements = *m_elements;
    report = Report();
    report.elements = static_cast<int>(elements.list.size());
    std::vector<Claim> claims;
    for (int t = 0; t < static_cast<int>(schedule.tasks.size()); ++t) {
        const PfScheduleTask& task = schedule.tasks[t];
        if (task.summary) {
            ++report.summaries;
            continue;
        }
        ++report.tasks;
        if (!task.Start().isValid() || !task.Finish().isValid()) {
            report.tasksWithoutDates << describe(task);
            continue;
        }
        int priority = 0;
        std::set<int> found = elements.explicitElements(task, rules);
        for (std::size_t r = 0; found.empty() && r < rules.rules.size(); ++r) {
            found = elements.ruleElements(rules.rules[r], task);
            priority = static_cast<int>(r) + 1;
        }
        if (found.empty()) {
            report.tasksWithoutElements << describe(task);
            continue;
        }
        ++report.tasksLinked;
        for (int e : found)
            claims.push_back({t, e, priority, kindOf(task, elements.list[e], rules)});
    }

    // Each element's claims of one role, the winner first.
    std::map<std::pair<int, Role>, std::vector<const Claim*>> contested;
    for (const Claim& claim : claims)
        contested[{claim.element, roleOf(claim.kind)}].push_back(&claim);
    std::vector<const Claim*> winners;
    std::set<int> linked;
    for (auto& [key, group] : contested) {
        std::stable_sort(group.begin(), group.end(), [&schedule](const Claim* a, const Claim* b) {
            return std::make_tuple(a->priority, schedule.tasks[a->task].Start(), a->task) <
                   std::make_tuple(b->priority, schedule.tasks[b->task].Start(), b->task);
        });
        winners.push_back(group.front());
        linked.insert(key.first);
        if (group.size() < 2)
            continue;
        Contest contest{elements.list[key.first].name, {}};
        for (const Claim* claim : group)
            contest.tasks << describe(schedule.tasks[claim->task]);
        report.contests.push_back(contest);
    }
    std::sort(winners.begin(), winners.end(), [](const Claim* a, const Claim* b) {
        return std::make_pair(a->task, a->element) < std::make_pair(b->task, b->element);
    });
    std::vector<PfTaskRecord> records;
    records.reserve(winners.size());
    for (const Claim* claim : winners)
        records.push_back(recordOf(*claim, schedule.tasks[claim->task], elements.list[claim->element], rules));
    for (int e = 0; e < report.elements; ++e)
        if (!linked.count(e))
            report.elementsWithoutTask << elements.list[e].name;
    report.elementsLinked = static_cast<int>(linked.size());
    report.records = static_cast<int>(records.size());
    return records;
}

QString PfScheduleLinker::Report::Text() const
{
    QString text = QStringLiteral("tasks: %1 to animate, %2 summaries kept for grouping").arg(tasks).arg(summaries);
    text += QStringLiteral("\nlinked: %1 of %2 tasks, %3 of %4 elements, %5 records")
                .arg(tasksLinked)
                .arg(tasks)
                .arg(elementsLinked)
                .arg(elements)
                .arg(records);
    listNames(text, QStringLiteral("tasks without elements"), tasksWithoutElements);
    listNames(text, QStringLiteral("tasks without dates"), tasksWithoutDates);
    listNames(text, QStringLiteral("elements without a task"), elementsWithoutTask);
    QStringList contestNames;
    for (const Contest& contest : contests)
        contestNames << QStringLiteral("%1 (%2 wins over %3)")
                            .arg(contest.element, contest.tasks.front(), contest.tasks.mid(1).join(QStringLiteral(", ")));
    listNames(text, QStringLiteral("elements claimed by several tasks"), contestNames);
    return text;
}
