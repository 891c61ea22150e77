#include "KVXDemoSchedule.h"

#include "KVXAnimatorManager.h"
#include "KVXTowerAnimation.h"

#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbElement.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"

#include <QDate>
#include <QString>

#include <map>

namespace {

const QDate kFirstDay(2025, 3, 3);

using Elements = std::map<QString, qint64>;

Elements elementsByName(PfDbDocument* document)
{
    Elements elements;
    for (PfDbObject* object : *document->GetDatabase()->GetModelSpace()) {
        if (const PfDbElement* element = PfDbElement::Cast(object))
            elements.emplace(QString::fromStdWString(element->GetName()), static_cast<qint64>(object->GetHandle()));
    }
    return elements;
}

KVXAnimation* schedule(qint64 element, KVXAnimation::AnimType type, KVXAnimation::TranslationType direction,
                       int firstDay, int days)
{
    KVXAnimation* record = KVXAnimatorManager::getInstance()->addKvxAnimation(element, type, direction);
    if (!record)
        return nullptr;
    record->setStartDate(kFirstDay.addDays(firstDay));
    record->setEndDate(kFirstDay.addDays(firstDay + days));
    record->setDurationDays(days);
    return record;
}

KVXAnimation* loop(KVXAnimation* record, int lastDay)
{
    if (record) {
        record->setLoopPlayback(true);
        record->setLoopEndDate(kFirstDay.addDays(lastDay));
    }
    return record;
}

bool addBuildings(const Elements& elements)
{
    for (int storey = 10; storey >= 1; --storey) {
        auto it = elements.find(QStringLiteral("3号楼 %1层").arg(storey));
        if (it == elements.end())
            return false;
        schedule(it->second, KVXAnimation::Demolition, KVXAnimation::TopDown, (10 - storey) * 3, 3);
    }
    for (int storey = 1; storey <= 6; ++storey) {
        auto it = elements.find(QStringLiteral("1号楼 %1层").arg(storey));
        if (it == elements.end())
            return false;
        schedule(it->second, KVXAnimation::Construction, KVXAnimation::BottomUp, 4 + (storey - 1) * 5, 5);
    }
    for (int storey = 1; storey <= 4; ++storey) {
        auto it = elements.find(QStringLiteral("2号楼 %1层").arg(storey));
        if (it == elements.end())
            return false;
        schedule(it->second, KVXAnimation::Construction, KVXAnimation::LeftToRight, 20 + (storey - 1) * 6, 6);
    }
    return true;
}

bool addSiteWorks(const Elements& elements)
{
    const auto id = [&elements](const char* name) {
        auto it = elements.find(QString::fromUtf8(name));
        return it == elements.end() ? qint64(-1) : it->second;
    };
    const qint64 slab = id("地下室顶板"), truck = id("运输车"), gate = id("大门"), hazard = id("危险区"),
                 shed = id("临时工棚");
    if (slab < 0 || truck < 0 || gate < 0 || hazard < 0 || shed < 0)
        return false;
    KVXAnimation* layers = schedule(slab, KVXAnimation::Construction, KVXAnimation::LeftToRight, 30, 10);
    layers->setIsLayering(true);
    layers->setLayerHeight(100.0);
    KVXAnimation* drive = loop(schedule(truck, KVXAnimation::Path, KVXAnimation::LeftToRight, 10, 8), 50);
    drive->SetPoints({{-14500, -39600, 0}, {20000, -39600, 0}, {35000, -34000, 0}, {66000, -34000, 0}});
    // The gate's leaf pivots open about its middle between its posts and
    // shut again, every other day while the site works.
    KVXAnimation* swing = loop(schedule(gate, KVXAnimation::Rotation, KVXAnimation::LeftToRight, 8, 2), 56);
    swing->setEndAngle(90.0);
    schedule(hazard, KVXAnimation::Emphasis, KVXAnimation::LeftToRight, 0, 30);
    schedule(shed, KVXAnimation::Demolition, KVXAnimation::RightToLeft, 54, 4);
    return true;
}

bool addCrane(const Elements& elements)
{
    auto it = elements.find(QStringLiteral("TC-1 塔吊"));
    if (it == elements.end())
        return false;
    auto* crane = KVXTowerAnimation::Cast(
        schedule(it->second, KVXAnimation::Rotation, KVXAnimation::LeftToRight, 2, 54));
    if (!crane)
        return false;
    crane->setStartAngle(0.0);
    crane->setEndAngle(150.0);
    // Erected 32 m high, then climbing a 6 m section at a time to its full
    // 62 m, as real cranes are jacked.
    crane->SetLiftingData({{kFirstDay.addDays(2), 32000},
                           {kFirstDay.addDays(12), 38000},
                           {kFirstDay.addDays(18), 44000},
                           {kFirstDay.addDays(24), 50000},
                           {kFirstDay.addDays(30), 56000},
                           {kFirstDay.addDays(36), 62000}});
    crane->SetIsDismantle(true);
    crane->SetDismantleDate(kFirstDay.addDays(57));
    return true;
}

} // namespace

const wchar_t* const KVXDemoSchedule::kCommandName = L"KVX_ADD_DEMO_SCHEDULE";

Pfad::Error KVXDemoSchedule::RunCommand(const QStringList& arguments, QString* message)
{
    const auto answer = [message](const QString& text, Pfad::Error code) {
        if (message)
            *message = text;
        return code;
    };
    if (!arguments.isEmpty())
        return answer(QStringLiteral("the demo schedule takes no words"), Pfad::eInvalidInput);
    if (!Add(PfDocManagerPtr()->CurrentDocument()))
        return answer(QStringLiteral("the document is not the demo site: an element of the demo schedule is missing"),
                      Pfad::eNotApplicable);
    return answer(QStringLiteral("added the demo schedule"), Pfad::eOk);
}

bool KVXDemoSchedule::Add(PfDbDocument* document)
{
    if (!document)
        return false;
    const Elements elements = elementsByName(document);
    return addBuildings(elements) && addSiteWorks(elements) && addCrane(elements);
}
