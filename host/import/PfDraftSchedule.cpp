#include "PfDraftSchedule.h"

#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbElement.h"
#include "host/db/PfDbObjContainer.h"
#include "host/model/PfModelElements.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <tuple>

namespace {

constexpr int kElementsADay = 50;
constexpr int kLongestTask = 5;
constexpr int kFoundations = 0;
constexpr int kRoofs = 100;

// Where a type comes in the building's order.
int rankOf(const QString& type)
{
    static const std::pair<int, QStringList> ranks[] = {
        {kFoundations, {"footing", "pile", "foundation", "基础", "桩"}},
        {kRoofs, {"roof", "屋面", "屋顶"}},
        {1, {"column", "柱"}},
        {2, {"wall", "墙"}},
        {3, {"beam", "梁"}},
        {4, {"slab", "floor", "板"}},
        {5, {"stair", "ramp", "楼梯"}},
        {6, {"railing", "栏杆"}},
        {7, {"window", "door", "窗", "门"}},
        {8, {"covering", "ceiling"}},
    };
    for (const auto& [rank, words] : ranks)
        for (const QString& word : words)
            if (type.contains(word, Qt::CaseInsensitive))
                return rank;
    return 9;
}

struct Group {
    QString storey, type;
    std::vector<quint64> elements;
};

// Sorts foundations first, roofs last, between them storey by storey.
using Order = std::tuple<int, double, QString, int, QString>;

Order orderOf(const PfDbElement* element, const QString& type)
{
    const QString storey = element->Property(PfDbElement::kStoreyProperty);
    bool known = false;
    const double elevation = element->Property(PfDbElement::kElevationProperty).toDouble(&known);
    const double level = known ? elevation : std::numeric_limits<double>::max();
    const int rank = rankOf(type);
    const int phase = rank == kFoundations ? 0 : rank == kRoofs ? 2 : 1;
    return {phase, level, storey, rank, type};
}

} // namespace

const QString PfDraftSchedule::kProject = QStringLiteral("草稿进度");

PfSchedule PfDraftSchedule::Make(const PfDbDatabase* database, const QDate& firstDay)
{
    std::map<Order, Group> groups;
    for (PfDbObject* object : *database->GetModelSpace()) {
        const PfDbElement* element = PfModelElements::Of(object);
        if (!element || object->IsErased())
            continue;
        const QString type = PfModelElements::KindOf(element);
        Group& group = groups[orderOf(element, type)];
        group.storey = element->Property(PfDbElement::kStoreyProperty);
        group.type = type;
        group.elements.push_back(object->GetHandle());
    }
    PfSchedule schedule;
    schedule.projects << kProject;
    QDate day = firstDay;
    for (auto& [order, group] : groups) {
        PfScheduleTask task;
        task.code = QStringLiteral("D%1").arg(schedule.tasks.size() + 1, 3, 10, QLatin1Char('0'));
        task.id = task.code;
        task.name = QStringLiteral("草稿：%1 %2").arg(group.storey.isEmpty() ? QStringLiteral("无楼层") : group.storey,
                                                    group.type);
        task.project = kProject;
        task.wbsPath = QStringList{kProject, group.storey};
        task.wbsPath.removeAll(QString());
        const int days = std::clamp(static_cast<int>(group.elements.size() + kElementsADay - 1) / kElementsADay, 1,
                                    kLongestTask);
        task.plannedStart = day;
        task.plannedFinish = day.addDays(days - 1);
        day = day.addDays(days);
        task.elementHandles = std::move(group.elements);
        schedule.tasks.push_back(std::move(task));
    }
    return schedule;
}
