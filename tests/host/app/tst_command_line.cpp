#include "host/app/KvxHostCommandLine.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVXTowerCraneObject.h"

#include "tests/support/CommandLineRun.h"
#include "tests/support/QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTextStream>

#include <gtest/gtest.h>

namespace {

Outcome run(const QStringList& arguments) { return runCommandLine(arguments); }

class CommandLine : public ::testing::Test {
protected:
    QString path(const char* name) const { return directory.filePath(QLatin1String(name)); }
    void TearDown() override { PfDocManagerPtr()->CloseAll(); }
    QTemporaryDir directory;
};

TEST_F(CommandLine, demoSiteThenRenderMakesAPicture)
{
    const Outcome site = run({"demo-site", "--out", path("site.kvx")});
    ASSERT_EQ(site.code, 0) << site.err;
    PfDbDocument* document = PfDocManagerPtr()->OpenDocument(path("site.kvx"));
    ASSERT_NE(document, nullptr);
    int storeys = 0, cranes = 0;
    for (PfDbObject* object : *document->GetDatabase()->GetModelSpace()) {
        cranes += KVXTowerCraneObject::Cast(object) != nullptr;
        if (auto* element = KVX3DElementObject::Cast(object))
            storeys += QString::fromStdWString(element->GetName()).endsWith(QStringLiteral("层"));
    }
    EXPECT_EQ(cranes, 1);
    EXPECT_GE(storeys, 12);
    PfDocManagerPtr()->CloseAll();

    const Outcome render = run({"render", path("site.kvx"), "--out", path("site.png"), "--size", "320x180"});
    ASSERT_EQ(render.code, 0) << render.err;
    const QImage picture(path("site.png"));
    ASSERT_EQ(picture.size(), QSize(320, 180));
    // The site fills the middle; the sky is in the top corners.
    EXPECT_NE(picture.pixel(160, 110), picture.pixel(5, 5));
    EXPECT_EQ(picture.pixel(5, 5), picture.pixel(314, 5));
}

TEST_F(CommandLine, picturesTakeTheFormatTheirNameSaysAndTheSiteFillsThem)
{
    ASSERT_EQ(run({"demo-site", "--out", path("site.kvx")}).code, 0);
    const struct {
        const char* name;
        QByteArray magic;
    } formats[] = {{"a.png", "\x89PNG"}, {"a.jpg", "\xff\xd8\xff"}, {"a.bmp", "BM"}};
    for (const auto& format : formats) {
        ASSERT_EQ(run({"render", path("site.kvx"), "--out", path(format.name), "--size", "160x90"}).code, 0);
        QFile file(path(format.name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_TRUE(file.read(4).startsWith(format.magic)) << format.name;
    }
    // Nothing left beside them: each was written whole and renamed.
    EXPECT_EQ(QDir(directory.path()).entryList(QDir::Files).size(), 4);

    // Default view: the site reaches close to the picture's top, no band of
    // sky above it; seen from the top it spans the picture's height.
    for (const char* view : {"overview", "top"}) {
        SCOPED_TRACE(view);
        ASSERT_EQ(run({"render", path("site.kvx"), "--out", path("v.png"), "--size", "320x180", "--view", view}).code, 0);
        const QImage picture(path("v.png"));
        const QRgb sky = picture.pixel(0, 0);
        int skyRows = 0;
        for (int y = 0; y < picture.height(); ++y) {
            bool allSky = true;
            for (int x = 0; x < picture.width() && allSky; ++x)
                allSky = picture.pixel(x, y) == sky || picture.pixel(x, y) == picture.pixel(picture.width() - 1, y);
            skyRows += allSky;
        }
        EXPECT_LT(skyRows, picture.height() / 8) << "rows of nothing but background";
    }
}

TEST_F(CommandLine, cameraOptionLooksWhereAsked)
{
    ASSERT_EQ(run({"demo-site", "--out", path("site.kvx")}).code, 0);
    // From far above the shed, looking away into the empty sky.
    const Outcome render = run({"render", path("site.kvx"), "--out", path("sky.png"), "--size", "64x64", "--camera",
                                "0,0,500000,0,-1,900000"});
    ASSERT_EQ(render.code, 0) << render.err;
    const QImage sky(path("sky.png"));
    EXPECT_EQ(sky.pixel(10, 10), sky.pixel(50, 50));
}

TEST_F(CommandLine, faultsGetOneLineAndAFailingCode)
{
    QFile notXml(path("notes.kvx"));
    ASSERT_TRUE(notXml.open(QIODevice::WriteOnly));
    notXml.write("meeting notes, not a document");
    notXml.close();
    struct Row {
        QStringList arguments;
        int code;
        const char* message;
    };
    const QString x = path("x.png"), site = path("notes.kvx"), camera = QStringLiteral("1,2,3,4,5,6");
    const Row rows[] = {
        {{}, 2, "usage"},
        {{"explode"}, 2, "unknown command explode"},
        {{"demo-site", "--out", path("x.kvx"), "--colour", "red"}, 2, "unknown option --colour"},
        {{"demo-site"}, 2, "demo-site wants --out"},
        {{"demo-site", "--out", path("x.kvx"), "--camera", camera}, 2, "demo-site does not take --camera"},
        {{"demo-site", "--out", path("x.txt")}, 2, "documents are written as .kvx"},
        {{"demo-site", site, "--out", path("x.kvx")}, 2, "unexpected argument"},
        {{"demo-site", "--out", path("no/such/folder/site.kvx")}, 1, "cannot write"},
        {{"render", path("missing.kvx"), "--out", x}, 1, "cannot open"},
        {{"render", site, "--out", x}, 1, "not a KVX document"},
        {{"render", site, "--out"}, 2, "--out needs a value"},
        {{"render", site}, 2, "render wants --out"},
        {{"render", "--out", x}, 2, "render wants a document"},
        {{"render", site, "--out", x, "--size", "wide"}, 2, "--size wants WIDTHxHEIGHT"},
        {{"render", site, "--out", x, "--size", "8193x100"}, 2, "pictures are 1 to 8192 pixels a side"},
        {{"render", site, "--out", x, "--camera", "1,2,3"}, 2, "--camera wants six numbers"},
        {{"render", site, "--out", x, "--camera", "1e308,0,0,0,0,0"}, 2, "within 1e9 of the origin"},
        {{"render", site, "--out", x, "--view", "sideways"}, 2, "--view wants one of overview"},
        {{"render", site, "--out", x, "--view", "top", "--camera", camera}, 2, "give one of them"},
        {{"render", site, "--out", x, "--date", "20251399"}, 2, "--date wants a day as yyyy-MM-dd"},
        {{"render", site, "--out", x, "--poster", path("p.png")}, 2, "render does not take --poster"},
        {{"render", site, "--out", path("x.gif")}, 2, "not \".gif\""},
        {{"play", site, "--out", path("x.avi")}, 2, "name it .mp4"},
        {{"play", site, "--out", path("x.mp4"), "--size", "4095x100"}, 2, "videos are 1 to 4094 pixels a side"},
        {{"play", site, "--out", path("x.mp4"), "--seconds-per-day", "0"}, 2, "--seconds-per-day wants"},
        {{"play", site, "--out", path("x.mp4"), "--seconds-per-day", "3601"}, 2, "at most 3600"},
        {{"play", site, "--out", path("x.mp4"), "--poster", path("p.mp4")}, 2, "not \".mp4\""},
        {{"play", site, "--out", path("x.mp4"), "--date", "2025-03-03"}, 2, "play does not take --date"},
        {{"export", site, "--out", path("x.mp4"), "--seconds-per-day", "1"}, 2, "export does not take"},
        {{"keyframes", site, "--poster", x}, 2, "keyframes does not take --poster"},
        {{"keyframes", site, "--out", path("y.kvx")}, 2, "--out goes with --add or --delete"},
        {{"check", site, "--out", x}, 2, "check does not take --out"},
        {{"check"}, 2, "check wants a document"},
        {{"list", site, "--size", "10x10"}, 2, "list does not take --size"},
        {{"list", site, site}, 2, "unexpected argument"},
        {{"crane-sim"}, 2, "crane-sim wants --port"},
        {{"crane-sim", "--port", "70000"}, 2, "--port wants a port"},
        {{"crane-sim", "--port", "0", "--script", path("missing.jsonl")}, 2, "cannot read"},
        {{"crane-sim", "--port", "0", "--fail-every", "0"}, 2, "--fail-every wants a count"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.arguments.join(' ').toStdString());
        const Outcome outcome = run(row.arguments);
        EXPECT_EQ(outcome.code, row.code);
        EXPECT_TRUE(outcome.err.startsWith(QLatin1String("kvxhost: "))) << outcome.err;
        EXPECT_TRUE(outcome.err.contains(QLatin1String(row.message))) << outcome.err;
        EXPECT_EQ(outcome.err.count(QLatin1Char('\n')), 1) << outcome.err;
    }
    EXPECT_FALSE(QFile::exists(path("x.png")));
}

TEST_F(CommandLine, outputsAreCheckedBeforeAnyWorkAndNeverTheInput)
{
    ASSERT_EQ(run({"demo-site", "--out", path("site.kvx")}).code, 0);
    QFile::link(path("site.kvx"), path("alias.kvx"));
    QFile original(path("site.kvx"));
    ASSERT_TRUE(original.open(QIODevice::ReadOnly));
    const QByteArray before = original.readAll();
    original.close();
    struct Row {
        QStringList arguments;
        int code;
        const char* message;
    };
    const Row rows[] = {
        {{"render", path("site.kvx"), "--out", path("site.kvx")}, 2, "is the input document"},
        {{"render", path("site.kvx"), "--out", path("alias.kvx")}, 2, "is the input document"},
        {{"play", path("site.kvx"), "--out", path("site.kvx")}, 2, "is the input document"},
        {{"play", path("site.kvx"), "--out", path("f.mp4"), "--poster", path("alias.kvx")}, 2, "is the input document"},
        {{"export", path("site.kvx"), "--out", path("./site.kvx")}, 2, "is the input document"},
        {{"render", path("site.kvx"), "--out", path("no/such/folder/x.png")}, 1, "cannot write"},
        {{"play", path("site.kvx"), "--out", path("f.mp4"), "--poster", path("no/such/folder/p.png")}, 1,
         "cannot write"},
        {{"export", path("site.kvx"), "--out", path("no/such/folder/f.mp4")}, 1, "cannot write"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.arguments.join(' ').toStdString());
        const Outcome outcome = run(row.arguments);
        EXPECT_EQ(outcome.code, row.code);
        EXPECT_TRUE(outcome.err.contains(QLatin1String(row.message))) << outcome.err;
    }
    ASSERT_TRUE(original.open(QIODevice::ReadOnly));
    EXPECT_EQ(original.readAll(), before);
    EXPECT_FALSE(QFile::exists(path("f.mp4")));
}

TEST_F(CommandLine, helpForTheProgramAndEachCommand)
{
    const Outcome all = run({"--help"});
    EXPECT_EQ(all.code, 0);
    const char* const commands[] = {"demo-site", "render",    "play", "keyframes",
                                    "export",    "check",     "list", "crane-sim", "live", "import"};
    for (const char* command : commands)
        EXPECT_TRUE(all.out.contains(QStringLiteral("kvxhost %1").arg(QLatin1String(command)))) << command;
    for (const char* command : commands) {
        SCOPED_TRACE(command);
        const Outcome help = run({command, "--help"});
        EXPECT_EQ(help.code, 0);
        EXPECT_TRUE(help.out.startsWith(QStringLiteral("usage: kvxhost %1").arg(QLatin1String(command)))) << help.out;
        EXPECT_TRUE(help.out.contains(QLatin1String("example:"))) << help.out;
        EXPECT_TRUE(help.err.isEmpty()) << help.err;
    }
    EXPECT_EQ(run({"explode", "--help"}).code, 2);
    const Outcome bare = run({});
    EXPECT_EQ(bare.code, 2);
    EXPECT_EQ(bare.err.trimmed().count(QLatin1Char('\n')), 0) << "one line";
    EXPECT_LT(bare.err.size(), 200) << "one short line";
}

} // namespace
