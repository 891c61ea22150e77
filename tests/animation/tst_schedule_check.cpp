#include "host/db/PfDocManager.h"

#include "tests/support/CommandLineRun.h"
#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// kvxhost check, list and play on the demo site, its schedule edited in the
// saved file as a planner's typo would.
class ScheduleCheck : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(runCommandLine({"demo-site", "--out", site}).code, 0);
        QFile file(site);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        original = QString::fromUtf8(file.readAll());
    }
    void TearDown() override { PfDocManagerPtr()->CloseAll(); }
    // The demo document with one record's value changed.
    QString edited(int record, const QString& key, const QString& value) const
    {
        QString text = original;
        const QRegularExpression field(
            QStringLiteral("(\"AnimationNumber\">%1</i>.*?k=\"%2\">)[^<]*").arg(record).arg(key));
        text.replace(field, QStringLiteral("\\1") + value);
        const QString path = folder.filePath(QStringLiteral("edited.kvx"));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return QString();
        file.write(text.toUtf8());
        return path;
    }

    QTemporaryDir folder;
    const QString site = folder.filePath(QStringLiteral("site.kvx"));
    QString original;
};

TEST_F(ScheduleCheck, typosInTheScheduleAreFoundBeforeAnyFrame)
{
    const struct {
        int record;
        const char* key;
        const char* value;
        const char* finding;
    } cases[] = {
        {1, "AnimationStartDate", "20251399", "problem: record 1 (3号楼 10层, demolition): its start date is missing"},
        {10, "AnimationEndDate", "20250301", "problem: record 10 (3号楼 1层, demolition): it ends on 2025-03-01, "
                                             "before it starts on 2025-03-30"},
        {11, "AnimationObjId", "99999", "problem: record 11 (construction): its element #99999 is not in the"},
        {25, "AnimationEndDate", "20350430", "problem: the film would last 1 h 01 min 52 s, over the limit of 1 h"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.finding);
        const QString document = edited(c.record, QLatin1String(c.key), QLatin1String(c.value));
        const Outcome check = runCommandLine({"check", document});
        EXPECT_TRUE(check.out.contains(QString::fromUtf8(c.finding))) << check.out;
        const bool problem = QString::fromUtf8(c.finding).startsWith(QLatin1String("problem"));
        EXPECT_EQ(check.code, problem ? 1 : 0);
        if (!problem)
            continue;
        const QString video = folder.filePath(QStringLiteral("f.mp4"));
        const Outcome play = runCommandLine({"play", document, "--out", video, "--size", "64x36"});
        EXPECT_EQ(play.code, 1);
        EXPECT_TRUE(play.err.contains(QString::fromUtf8(c.finding))) << play.err;
        EXPECT_TRUE(play.err.endsWith(QLatin1String("or film anyway with --force\n"))) << play.err;
        EXPECT_FALSE(QFile::exists(video));
    }
}

TEST_F(ScheduleCheck, filmLengthLimitsAndForce)
{
    const Outcome clean = runCommandLine({"check", site, "--seconds-per-day", "0.25"});
    EXPECT_EQ(clean.code, 0);
    EXPECT_EQ(clean.out, QStringLiteral("26 records, 58 days from 2025-03-03 to 2025-04-30; at 0.25 s a day a film "
                                        "of 16 s (373 frames)\n"));
    EXPECT_EQ(runCommandLine({"check", site, "--seconds-per-day", "30"}).code, 0) << "29 min: a warning";
    EXPECT_EQ(runCommandLine({"check", site, "--seconds-per-day", "3600"}).code, 1);
    // A year typo: the span is named with the records that open and close it.
    const Outcome typo = runCommandLine({"check", edited(25, "AnimationEndDate", "20350430"), "--seconds-per-day",
                                         "0.1"});
    EXPECT_EQ(typo.code, 0);
    EXPECT_TRUE(typo.out.contains(QString::fromUtf8("warning: the schedule spans 10.2 years, from 2025-03-03 (record "
                                                    "1 (3号楼 10层, demolition)) to 2035-04-30 (record 25 (临时工棚, "
                                                    "demolition)): is a year mistyped?")))
        << typo.out;
    const Outcome tiny = runCommandLine({"play", site, "--out", folder.filePath("t.mp4"), "--seconds-per-day",
                                         "1e-9", "--force"});
    EXPECT_EQ(tiny.code, 1);
    EXPECT_TRUE(tiny.err.contains(QLatin1String("cannot film: at 1e-09 s a day the schedule's 58 days pass in less "
                                                "than a frame")))
        << tiny.err;

    // A record that cannot play, filmed anyway: the problem is then a warning.
    const QString video = folder.filePath(QStringLiteral("forced.mp4"));
    const Outcome forced = runCommandLine({"play", edited(11, "AnimationObjId", "99999"), "--out", video, "--size",
                                           "65x37", "--seconds-per-day", "0.02", "--force"});
    EXPECT_EQ(forced.code, 0) << forced.err;
    EXPECT_TRUE(forced.err.contains(QLatin1String("warning: record 11 (construction): its element #99999"))) << forced.err;
    EXPECT_TRUE(forced.out.contains(QLatin1String("(66x38, 24 frames a second)"))) << forced.out;
    EXPECT_TRUE(QFile::exists(video));
}

TEST_F(ScheduleCheck, listShowsElementsExtentsRecordsAndKeyFrames)
{
    const Outcome listed = runCommandLine({"list", site});
    ASSERT_EQ(listed.code, 0) << listed.err;
    for (const char* line : {"30 elements\n", "KVXTowerCraneObject   TC-1 塔吊\n", "extents: 170.0 x 110.0 x ",
                             "26 records\n", "    26  tower crane   TC-1 塔吊", "2025-03-05 .. 2025-04-28  54 days\n",
                             "0 camera and 0 date key frames"})
        EXPECT_TRUE(listed.out.contains(QString::fromUtf8(line))) << line << '\n' << listed.out;
    EXPECT_FALSE(listed.out.contains(QLatin1String("KVXAnimation"))) << "records are not elements";
}

} // namespace
