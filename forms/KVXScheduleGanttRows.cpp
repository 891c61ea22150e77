#include "KVXScheduleGanttRows.h"

#include "animation/KVXAnimation.h"

#include "host/db/PfDbDocument.h"
#include "host/model/PfTaskRecord.h"

#include <algorithm>
#include <set>
#include <tuple>

namespace {

using Row = KVXScheduleGanttRows::Row;
using State = KVXScheduleGanttRows::State;

QString elementName(const PfDbDocument* document, qint64 objId)
{
    const auto* element =
        document ? PfDbElement::Cast(document->GetItem(static_cast<PfDbHandle>(objId))) : nullptr;
    return element ? QString::fromStdWString(element->GetName()) : QString();
}

bool elementGone(const PfDbDocument* document, qint64 objId)
{
    const PfDbObject* element = document ? document->GetItem(static_cast<PfDbHandle>(objId)) : nullptr;
    return !element || element->IsErased();
}

void widen(Row& row, const KVXAnimation* record)
{
    if (!row.start.isValid() || (record->getStartDate().isValid() && record->getStartDate() < row.start))
        row.start = record->getStartDate();
    if (!row.end.isValid() || record->getEndDate() > row.end)
        row.end = record->getEndDate();
    row.numbers.push_back(record->getNumber());
}

} // namespace

std::vector<Row> KVXScheduleGanttRows::Build(const std::vector<KVXAnimation*>& records,
                                             const std::vector<int>& conflicts, const PfDbDocument* document)
{
    const std::set<int> faulty(conflicts.begin(), conflicts.end());
    std::map<QString, std::size_t> taskRows;
    std::vector<Row> rows;
    for (const KVXAnimation* record : records) {
        const QString task = record->Property(PfTaskRecord::kTaskIdProperty);
        Row* row = nullptr;
        if (!task.isEmpty()) {
            auto [at, added] = taskRows.emplace(task, rows.size());
            if (added) {
                rows.push_back({task, record->Property(PfTaskRecord::kTaskNameProperty), {}, {}, State::Linked, {}});
            }
            row = &rows[at->second];
        } else {
            rows.push_back({QString(),
                            QStringLiteral("[%1] %2").arg(record->getNumber()).arg(elementName(document,
                                                                                                  record->getObjId())),
                            {}, {}, State::ByHand, {}});
            row = &rows.back();
        }
        widen(*row, record);
        // The worst of a row's records shows: a lost element, then a conflict.
        if (elementGone(document, record->getObjId()))
            row->state = State::Unlinked;
        else if (faulty.count(record->getNumber()) && row->state != State::Unlinked)
            row->state = State::Conflict;
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const Row& a, const Row& b) { return std::tie(a.start, a.end) < std::tie(b.start, b.end); });
    return rows;
}

QString KVXScheduleGanttRows::StateText(State state)
{
    switch (state) {
    case State::Linked: return QStringLiteral("已关联");
    case State::ByHand: return QStringLiteral("手动添加");
    case State::Conflict: return QStringLiteral("冲突");
    case State::Unlinked: return QStringLiteral("构件缺失");
    }
    return QString();
}
