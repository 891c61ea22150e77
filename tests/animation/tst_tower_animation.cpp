#include "animation/KVXTowerAnimation.h"
#include "host/db/KVXSaveLoadXml.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QDate>
#include <QList>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string>

namespace {

KVXTowerLiftingData step(const QDate& date, int height)
{
    KVXTowerLiftingData data;
    data.date = date;
    data.height = height;
    return data;
}

// Not in date order on purpose: the record keeps the order it was given.
QList<KVXTowerLiftingData> threeSteps()
{
    return {step(QDate(2021, 3, 1), 30000), step(QDate(2021, 1, 15), 45000), step(QDate(2021, 6, 30), 60000)};
}

void expectSameSteps(const QList<KVXTowerLiftingData>& actual, const QList<KVXTowerLiftingData>& expected)
{
    ASSERT_EQ(actual.size(), expected.size());
    for (int i = 0; i < actual.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(actual[i].date, expected[i].date);
        EXPECT_EQ(actual[i].height, expected[i].height);
    }
}

QStringList keysAfter(const KVXSaveLoadXml& xml, const QString& lastRecordKey)
{
    const auto& properties = xml.properties();
    auto it = std::find_if(properties.begin(), properties.end(),
                           [&](const KVXSaveLoadXml::Property& p) { return p.key == lastRecordKey; });
    QStringList keys;
    if (it == properties.end())
        return keys;
    for (++it; it != properties.end(); ++it)
        keys << it->key;
    return keys;
}

void removeKey(KVXSaveLoadXml& xml, const QString& key)
{
    auto& properties = xml.properties();
    properties.erase(std::remove_if(properties.begin(), properties.end(),
                                    [&](const KVXSaveLoadXml::Property& p) { return p.key == key; }),
                     properties.end());
}

TEST(TowerAnimation, mainConstructorStartsWithoutScheduleAndDismantlesToday)
{
    KVXTowerAnimation record(3, 812, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
    EXPECT_EQ(record.getNumber(), 3);
    EXPECT_EQ(record.getObjId(), 812);
    EXPECT_EQ(record.getEndAngle(), 180.0);
    EXPECT_TRUE(record.GetLiftingData().isEmpty());
    EXPECT_FALSE(record.GetIsDismantle());
    EXPECT_EQ(record.GetDismantleDate(), QDate::currentDate());
}

TEST(TowerAnimationPersistence, liftingStepsAndDismantlingSurviveInOrder)
{
    KVXTowerAnimation record(3, 812, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
    record.setStartDate(QDate(2021, 1, 1));
    record.SetLiftingData(threeSteps());
    record.SetIsDismantle(true);
    record.SetDismantleDate(QDate(2021, 12, 20));

    KVXSaveLoadXml xml;
    record.Save(xml);
    EXPECT_EQ(keysAfter(xml, QStringLiteral("AnimationLayerHeight")),
              QStringList({"TowerAnimation_LiftingData_Size", "TowerAnimation_Date_0", "TowerAnimation_Height_0",
                           "TowerAnimation_Date_1", "TowerAnimation_Height_1", "TowerAnimation_Date_2",
                           "TowerAnimation_Height_2", "TowerAnimation_Dismantle", "TowerAnimation_Dismantle_Date"}));

    KVXTowerAnimation loaded;
    loaded.Load(xml);
    expectSameSteps(loaded.GetLiftingData(), threeSteps());
    EXPECT_TRUE(loaded.GetIsDismantle());
    EXPECT_EQ(loaded.GetDismantleDate(), QDate(2021, 12, 20));
    EXPECT_EQ(loaded.getStartDate(), QDate(2021, 1, 1));
    EXPECT_EQ(loaded.getAnimationType(), KVXAnimation::Rotation);
    EXPECT_TRUE(xml.unconsumedKeys().isEmpty()) << xml.unconsumedKeys().join(',').toStdString();
}

TEST(TowerAnimationPersistence, stepsAreWrittenAsDateTextAndIntegerHeight)
{
    KVXTowerAnimation record(1, 2, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
    record.SetLiftingData({step(QDate(2022, 7, 4), 51000), step(QDate(), 0)});
    KVXSaveLoadXml xml;
    record.setElementPropertys(xml);

    EXPECT_EQ(xml.getInt(QStringLiteral("TowerAnimation_LiftingData_Size")), 2);
    EXPECT_EQ(xml.getString(QStringLiteral("TowerAnimation_Date_0")), QStringLiteral("20220704"));
    EXPECT_EQ(xml.getInt(QStringLiteral("TowerAnimation_Height_0")), 51000);
    EXPECT_EQ(xml.getString(QStringLiteral("TowerAnimation_Date_1"), QStringLiteral("<missing>")), QString());

    xml.rewind();
    KVXTowerAnimation loaded;
    loaded.getElementPropertys(xml);
    ASSERT_EQ(loaded.GetLiftingData().size(), 2);
    EXPECT_FALSE(loaded.GetLiftingData()[1].date.isValid());
}

TEST(TowerAnimationPersistence, emptyScheduleWritesOnlyItsCount)
{
    KVXTowerAnimation record(1, 2, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
    KVXSaveLoadXml xml;
    record.setElementPropertys(xml);
    EXPECT_EQ(keysAfter(xml, QStringLiteral("AnimationLayerHeight")),
              QStringList({"TowerAnimation_LiftingData_Size", "TowerAnimation_Dismantle",
                           "TowerAnimation_Dismantle_Date"}));
}

TEST(TowerAnimationPersistence, missingDismantleDateLoadsAsTodayWhateverTheFlag)
{
    struct Row {
        const char* name;
        bool dismantle;
        bool removeKey;
    };
    const Row rows[] = {
        {"keyMissingWhileDismantling", true, true},
        {"keyMissingWithoutDismantling", false, true},
        {"emptyTextWhileDismantling", true, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        KVXTowerAnimation record(1, 2, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
        record.SetIsDismantle(row.dismantle);
        // An invalid date is written as the empty text.
        record.SetDismantleDate(row.removeKey ? QDate(2020, 5, 5) : QDate());
        KVXSaveLoadXml xml;
        record.setElementPropertys(xml);
        if (row.removeKey)
            removeKey(xml, QStringLiteral("TowerAnimation_Dismantle_Date"));

        KVXTowerAnimation loaded;
        loaded.SetDismantleDate(QDate(1999, 1, 1));
        loaded.getElementPropertys(xml);
        EXPECT_EQ(loaded.GetIsDismantle(), row.dismantle);
        EXPECT_EQ(loaded.GetDismantleDate(), QDate::currentDate());
    }
}

TEST(TowerAnimationPersistence, missingKeysClearTheSchedule)
{
    KVXTowerAnimation record(1, 2, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
    record.SetLiftingData(threeSteps());
    record.SetIsDismantle(true);
    KVXSaveLoadXml empty;
    record.getElementPropertys(empty);
    EXPECT_TRUE(record.GetLiftingData().isEmpty());
    EXPECT_FALSE(record.GetIsDismantle());
    EXPECT_EQ(record.GetDismantleDate(), QDate::currentDate());
}

TEST(TowerAnimationPersistence, loadingAgainReplacesTheSchedule)
{
    // Undo and redo load a record that already holds its schedule.
    KVXTowerAnimation record(1, 2, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
    record.SetLiftingData(threeSteps());
    KVXSaveLoadXml xml;
    record.Save(xml);

    KVXTowerAnimation loaded;
    loaded.Load(xml);
    xml.rewind();
    loaded.Load(xml);
    expectSameSteps(loaded.GetLiftingData(), threeSteps());
}

TEST(TowerAnimationCopy, copiesRecordFieldsButKeepsTheTargetsScheduleAndDismantling)
{
    KVXTowerAnimation source(4, 1001, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
    source.setStartDate(QDate(2021, 4, 1));
    source.setEndDate(QDate(2021, 9, 30));
    source.setDurationDays(183);
    source.setStartAngle(15.0);
    source.SetLiftingData(threeSteps());
    source.SetIsDismantle(true);
    source.SetDismantleDate(QDate(2021, 10, 15));

    const QList<KVXTowerLiftingData> targetSteps = {step(QDate(2020, 1, 1), 20000)};
    KVXTowerAnimation target(8, 2002, KVXAnimation::Construction, KVXAnimation::BottomUp);
    target.SetLiftingData(targetSteps);
    target.SetIsDismantle(false);
    target.SetDismantleDate(QDate(2020, 2, 2));

    EXPECT_EQ(target.CopyFrom(&source), Pfad::eOk);
    EXPECT_EQ(target.getNumber(), 4);
    EXPECT_EQ(target.getObjId(), 1001);
    EXPECT_EQ(target.getAnimationType(), KVXAnimation::Rotation);
    EXPECT_EQ(target.getTranslationType(), KVXAnimation::LeftToRight);
    EXPECT_EQ(target.getStartDate(), QDate(2021, 4, 1));
    EXPECT_EQ(target.getEndDate(), QDate(2021, 9, 30));
    EXPECT_EQ(target.getDurationDays(), 183);
    EXPECT_EQ(target.getStartAngle(), 15.0);
    expectSameSteps(target.GetLiftingData(), targetSteps);
    EXPECT_FALSE(target.GetIsDismantle());
    EXPECT_EQ(target.GetDismantleDate(), QDate(2020, 2, 2));
}

TEST(TowerAnimationCopy, plainAndTowerRecordsCopyIntoEachOther)
{
    KVXTowerAnimation tower(4, 1001, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
    tower.SetLiftingData(threeSteps());
    KVXAnimation plain(6, 3003, KVXAnimation::Emphasis, KVXAnimation::LeftToRight);

    EXPECT_EQ(plain.CopyFrom(&tower), Pfad::eOk);
    EXPECT_EQ(plain.getNumber(), 4);
    EXPECT_EQ(plain.getAnimationType(), KVXAnimation::Rotation);

    plain.setNumber(6);
    EXPECT_EQ(tower.CopyFrom(&plain), Pfad::eOk);
    EXPECT_EQ(tower.getNumber(), 6);
    expectSameSteps(tower.GetLiftingData(), threeSteps());
}

} // namespace
