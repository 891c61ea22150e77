#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDocManager.h"
#include "host/db/PfDbObjContainer.h"
#include "host/model/KVX3DElementObject.h"

#include "tests/support/CommandLineRun.h"
#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// kvxhost keyframes on a saved one-block site.
class KeyFramesCommand : public ::testing::Test {
protected:
    void SetUp() override
    {
        PfDbDocument* document = PfDocManagerPtr()->NewDocument();
        auto* block = new KVX3DElementObject();
        block->AddBody(vpe::CBody::CreateBox({0, 0, 0}, {4000, 4000, 6000}));
        document->GetDatabase()->GetModelSpace()->Add(block);
        ASSERT_TRUE(document->Save(site));
        PfDocManagerPtr()->CloseAll();
    }
    void TearDown() override { PfDocManagerPtr()->CloseAll(); }
    Outcome run(QStringList arguments) const
    {
        arguments.prepend(QStringLiteral("keyframes"));
        return runCommandLine(arguments);
    }
    QByteArray bytes() const
    {
        QFile file(site);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir folder;
    const QString site = folder.filePath(QStringLiteral("site.kvx"));
};

TEST_F(KeyFramesCommand, addsListsAndDeletesKeyFramesInTheSavedDocument)
{
    EXPECT_EQ(run({site}).out, QStringLiteral("0 camera and 0 date key frames, 0 s of fly-through\n"));
    const QString fromSouth = QStringLiteral("-20000,-20000,9000,2000,2000,3000");
    Outcome added = run({site, "--add", "0", "--camera", fromSouth, "--date", "2025-03-01"});
    ASSERT_EQ(added.code, 0) << added.err;
    added = run({site, "--add", "6500", "--camera", "9000,0,3000,9000,1000,3000"});
    ASSERT_EQ(added.code, 0) << added.err;
    EXPECT_TRUE(added.out.endsWith(QStringLiteral("saved %1\n").arg(site))) << added.out;

    const Outcome listed = run({site});
    EXPECT_EQ(listed.out, QStringLiteral("2 camera and 1 date key frames, 6.5 s of fly-through\n"
                                         "0 ms  eye -20000,-20000,9000  target -19306,-19306,8811  date 2025-03-01\n"
                                         "6500 ms  eye 9000,0,3000  target 9000,1000,3000  date -\n"));
    const QString copy = folder.filePath(QStringLiteral("copy.kvx"));
    ASSERT_EQ(run({site, "--add", "100", "--camera", fromSouth, "--out", copy}).code, 0);
    EXPECT_TRUE(run({copy}).out.startsWith(QStringLiteral("3 camera")));
    EXPECT_TRUE(run({site}).out.startsWith(QStringLiteral("2 camera"))) << "--out leaves the document alone";

    const Outcome deleted = run({site, "--delete", "0"});
    ASSERT_EQ(deleted.code, 0) << deleted.err;
    EXPECT_TRUE(run({site}).out.startsWith(QStringLiteral("1 camera and 0 date key frames, 0 s")));
}

TEST_F(KeyFramesCommand, badWordsAndRefusalsFailWithTheirReasonAndLeaveTheFileAlone)
{
    ASSERT_EQ(run({site, "--add", "500", "--camera", "1,2,3,4,5,6"}).code, 0);
    const QByteArray before = bytes();
    const QString camera = QStringLiteral("0,-9000,2000,0,0,2000");
    const struct {
        QStringList arguments;
        int code;
        const char* reason;
    } cases[] = {
        {{"--add", "500", "--camera", camera}, 2, "当前时间已经存在关键帧！"},
        {{"--add", "-5", "--camera", camera}, 2, "whole milliseconds from 0"},
        {{"--add", "1.5", "--camera", camera}, 2, "whole milliseconds from 0"},
        {{"--add", "10", "--camera", "1,2,3"}, 2, "six numbers"},
        {{"--add", "10", "--camera", "1,2,3,1,2,3"}, 2, "eye and target apart"},
        {{"--add", "10", "--camera", camera, "--date", "2025-02-30"}, 2, "yyyy-MM-dd"},
        {{"--add", "10"}, 2, "--add wants --camera"},
        {{"--date", "2025-03-01"}, 2, "--date goes with --add"},
        {{"--add", "10", "--camera", camera, "--delete", "500"}, 2, "not both"},
        {{"--delete", "x"}, 2, "whole milliseconds from 0"},
        {{"--delete", "9999"}, 1, "no key frame at 9999 ms"},
    };
    for (const auto& c : cases) {
        QStringList arguments = c.arguments;
        arguments.prepend(site);
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.code, c.code) << arguments.join(' ');
        EXPECT_TRUE(outcome.err.contains(QString::fromUtf8(c.reason))) << outcome.err;
        EXPECT_EQ(bytes(), before) << arguments.join(' ');
    }
    EXPECT_EQ(run({folder.filePath(QStringLiteral("missing.kvx"))}).code, 1);
}

TEST_F(KeyFramesCommand, theProgramLeavesNoThumbnailFolderBehind)
{
    QTemporaryDir temporary;
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TMPDIR"), temporary.path());
    program.setProcessEnvironment(environment);
    program.start(QStringLiteral(KVX_HOST_PROGRAM),
                  {"keyframes", site, "--add", "0", "--camera", "-9000,-9000,6000,2000,2000,3000"});
    ASSERT_TRUE(program.waitForFinished(120000));
    ASSERT_EQ(program.exitCode(), 0) << program.readAllStandardError().toStdString();
    EXPECT_TRUE(run({site}).out.startsWith(QStringLiteral("1 camera")));
    EXPECT_TRUE(QDir(temporary.path()).isEmpty()) << "the thumbnails' folder goes with the program";
}

} // namespace
