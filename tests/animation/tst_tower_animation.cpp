#include "animation/KVXTowerAnimation.h"
#include "host/db/KVXSaveLoadXml.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QDate>
#include <QList>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <utility>

namespace {

// Not in date order on purpose: the record keeps the order it was given. A
// step without a date is written as empty text.
const QList<KVXTowerLiftingData> kSteps = {{QDate(2021, 3, 1), 30000}, {QDate(), 0},
                                           {QDate(2021, 1, 15), 45000}};

QStringList describe(const QList<KVXTowerLiftingData>& steps)
{
    QStringList lines;
    for (const KVXTowerLiftingData& s : steps)
        lines << s.date.toString(Qt::ISODate) + ' ' + QString::number(s.height);
    return lines;
}

QStringList keysAfterTheRecordKeys(const KVXSaveLoadXml& xml)
{
    QStringList keys;
    for (const KVXSaveLoadXml::Property& p : xml.properties())
        keys << p.key;
    return keys.mid(keys.indexOf(QStringLiteral("AnimationLayerHeight")) + 1);
}

TEST(TowerAnimation, mainConstructorStartsWithoutScheduleAndDismantlesToday)
{
    KVXTowerAnimation record(3, 812, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
    EXPECT_TRUE(record.GetLiftingData().isEmpty());
    EXPECT_FALSE(record.GetIsDismantle());
    EXPECT_EQ(record.GetDismantleDate(), QDate::currentDate());
}

TEST(TowerAnimationPersistence, scheduleAndDismantlingSurviveInOrderAfterTheRecordKeys)
{
    KVXTowerAnimation record(3, 812, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
    KVXSaveLoadXml empty;
    record.setElementPropertys(empty);
    EXPECT_EQ(keysAfterTheRecordKeys(empty),
              QStringList({"TowerAnimation_LiftingData_Size", "TowerAnimation_Dismantle",
                           "TowerAnimation_Dismantle_Date"}));

    record.setStartDate(QDate(2021, 1, 1));
    record.SetLiftingData(kSteps);
    record.SetIsDismantle(true);
    record.SetDismantleDate(QDate(2021, 12, 20));
    KVXSaveLoadXml xml;
    record.Save(xml);
    EXPECT_EQ(keysAfterTheRecordKeys(xml),
              QStringList({"TowerAnimation_LiftingData_Size", "TowerAnimation_Date_0", "TowerAnimation_Height_0",
                           "TowerAnimation_Date_1", "TowerAnimation_Height_1", "TowerAnimation_Date_2",
                           "TowerAnimation_Height_2", "TowerAnimation_Dismantle", "TowerAnimation_Dismantle_Date"}));
    EXPECT_EQ(xml.getString(QStringLiteral("TowerAnimation_Date_0")), QStringLiteral("20210301"));
    EXPECT_EQ(xml.getString(QStringLiteral("TowerAnimation_Date_1"), QStringLiteral("<missing>")), QString());
    EXPECT_EQ(xml.getInt(QStringLiteral("TowerAnimation_Height_2")), 45000);

    xml.rewind();
    KVXTowerAnimation loaded;
    loaded.Load(xml);
    EXPECT_EQ(describe(loaded.GetLiftingData()), describe(kSteps));
    EXPECT_FALSE(loaded.GetLiftingData()[1].date.isValid());
    EXPECT_TRUE(loaded.GetIsDismantle());
    EXPECT_EQ(loaded.GetDismantleDate(), QDate(2021, 12, 20));
    EXPECT_EQ(loaded.getStartDate(), QDate(2021, 1, 1));
    EXPECT_TRUE(xml.unconsumedKeys().isEmpty()) << xml.unconsumedKeys().join(',').toStdString();

    // Undo and redo load records that already hold their schedule.
    xml.rewind();
    loaded.Load(xml);
    EXPECT_EQ(describe(loaded.GetLiftingData()), describe(kSteps));
}

TEST(TowerAnimationPersistence, missingKeysLoadAsNoScheduleAndADismantleDateOfToday)
{
    for (auto [dismantle, emptyText] : {std::pair(true, false), std::pair(false, false), std::pair(true, true)}) {
        SCOPED_TRACE(::testing::Message() << "dismantle " << dismantle << ", empty text " << emptyText);
        // A plain record's keys and the flag make an archive without schedule or date.
        KVXSaveLoadXml xml;
        KVXAnimation(1, 2, KVXAnimation::Rotation, KVXAnimation::LeftToRight).setElementPropertys(xml);
        xml.setBool(QStringLiteral("TowerAnimation_Dismantle"), dismantle);
        if (emptyText)
            xml.setString(QStringLiteral("TowerAnimation_Dismantle_Date"), QString());
        KVXTowerAnimation loaded;
        loaded.SetLiftingData(kSteps);
        loaded.SetDismantleDate(QDate(1999, 1, 1));
        loaded.getElementPropertys(xml);
        EXPECT_TRUE(loaded.GetLiftingData().isEmpty());
        EXPECT_EQ(loaded.GetIsDismantle(), dismantle);
        EXPECT_EQ(loaded.GetDismantleDate(), QDate::currentDate());
    }
}

TEST(TowerAnimationCopy, copiesRecordFieldsButKeepsTheTargetsScheduleAndDismantling)
{
    KVXTowerAnimation source(4, 1001, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
    source.setStartDate(QDate(2021, 4, 1));
    source.setStartAngle(15.0);
    source.SetLiftingData(kSteps);
    source.SetIsDismantle(true);
    source.SetDismantleDate(QDate(2021, 10, 15));

    const QList<KVXTowerLiftingData> targetSteps = {{QDate(2020, 1, 1), 20000}};
    KVXTowerAnimation target(8, 2002, KVXAnimation::Construction, KVXAnimation::BottomUp);
    target.SetLiftingData(targetSteps);
    target.SetDismantleDate(QDate(2020, 2, 2));

    EXPECT_EQ(target.CopyFrom(&source), Pfad::eOk);
    EXPECT_EQ(target.getNumber(), 4);
    EXPECT_EQ(target.getAnimationType(), KVXAnimation::Rotation);
    EXPECT_EQ(target.getStartDate(), QDate(2021, 4, 1));
    EXPECT_EQ(target.getStartAngle(), 15.0);
    EXPECT_EQ(describe(target.GetLiftingData()), describe(targetSteps));
    EXPECT_FALSE(target.GetIsDismantle());
    EXPECT_EQ(target.GetDismantleDate(), QDate(2020, 2, 2));

    // Plain and tower records copy into each other.
    KVXAnimation plain(6, 3003, KVXAnimation::Emphasis, KVXAnimation::LeftToRight);
    EXPECT_EQ(plain.CopyFrom(&source), Pfad::eOk);
    EXPECT_EQ(plain.getNumber(), 4);
    plain.setNumber(6);
    EXPECT_EQ(target.CopyFrom(&plain), Pfad::eOk);
    EXPECT_EQ(target.getNumber(), 6);
    EXPECT_EQ(describe(target.GetLiftingData()), describe(targetSteps));
}

} // namespace
