#include "KVXScheduleEvents.h"

#include "KVXAnimatorManager.h"
#include "KVXTowerAnimation.h"

#include "host/db/PfDbDocument.h"
#include "host/db/PfDbElement.h"
#include "host/db/PfDocManager.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

struct Event {
    QDate date;
    QString text;
};

QString heightText(int height) { return QString::number(height / 1000.0, 'g', 4); }

// A crane's erection at its first lifting step, its climbs and its
// dismantling.
void craneEvents(const KVXTowerAnimation& crane, const QString& name, std::vector<Event>& events)
{
    QList<KVXTowerLiftingData> steps = crane.GetLiftingData();
    std::sort(steps.begin(), steps.end(),
              [](const KVXTowerLiftingData& a, const KVXTowerLiftingData& b) { return a.date < b.date; });
    for (int i = 0; i < steps.size(); ++i) {
        if (!steps[i].date.isValid())
            continue;
        events.push_back({steps[i].date, i == 0 ? QStringLiteral("%1 安装，高 %2 m").arg(name, heightText(steps[i].height))
                                                : QStringLiteral("%1 顶升至 %2 m").arg(name, heightText(steps[i].height))});
    }
    if (crane.GetIsDismantle() && crane.GetDismantleDate().isValid())
        events.push_back({crane.GetDismantleDate(), QStringLiteral("%1 拆除").arg(name)});
}

} // namespace

QString KVXScheduleEvents::NoteAt(const QDate& date, int days)
{
    PfDbDocument* document = PfDocManagerPtr()->CurrentDocument();
    if (!document || !date.isValid())
        return QString();
    std::vector<Event> events;
    for (KVXAnimation* record : KVXAnimatorManager::getInstance()->getAnimationVector()) {
        const auto* crane = dynamic_cast<const KVXTowerAnimation*>(record);
        if (!crane)
            continue;
        const auto* element = PfDbElement::Cast(document->GetItem(static_cast<PfDbHandle>(record->getObjId())));
        craneEvents(*crane, element ? QString::fromStdWString(element->GetName()) : QStringLiteral("塔吊"), events);
    }
    QDate latest;
    for (const Event& event : events)
        if (event.date <= date && event.date.daysTo(date) < days && (!latest.isValid() || event.date > latest))
            latest = event.date;
    QStringList texts;
    for (const Event& event : events)
        if (event.date == latest)
            texts << event.text;
    return texts.join(QStringLiteral("，"));
}

int KVXScheduleEvents::DaysShown(double secondsPerDay)
{
    constexpr double kReadingSeconds = 2.0;
    const double days = secondsPerDay > 0.0 ? std::ceil(kReadingSeconds / secondsPerDay) : 3.0;
    return static_cast<int>(std::clamp(days, 3.0, 30.0));
}
