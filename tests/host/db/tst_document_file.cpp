#include "host/db/KVXSaveLoadXml.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbDocumentFile.h"
#include "host/db/PfDbLoadReport.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/db/PfDocManagerReactor.h"
#include "host/model/KVX3dsBaseObject.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/model/PfDbBuildingInstance.h"
#include "host/rx/PfRxClass.h"
#include "host/vpe/core/CAtomicFile.h"

#include "tests/support/QtPrinters.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <osg/Node>

#include <gtest/gtest.h>

#include <csignal>
#include <limits>
#include <random>

#include <sys/wait.h>
#include <unistd.h>

namespace {

std::unique_ptr<PfDbDatabase> readText(const QByteArray& text, PfDbLoadReport* report, QString* error)
{
    QBuffer buffer;
    buffer.setData(text);
    buffer.open(QIODevice::ReadOnly);
    return PfDbDocumentFile::Read(buffer, report, error);
}

QByteArray writeText(PfDbDatabase& database)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(PfDbDocumentFile::Write(database, buffer));
    return buffer.data();
}

void fillSite(PfDbDatabase& database)
{
    auto* crane = new KVXTowerCraneObject();
    crane->SetName(L"塔吊 & <TC-1> \"north\"");
    crane->SetPosition({12345.678, -0.1, 1e-300});
    crane->SetTowerHeight(42000);
    crane->SetJibLength(std::numeric_limits<double>::max());
    crane->SetColor(QColor(1, 2, 3, 4));
    crane->SetTransparency(35);
    crane->SetPoints({{0, 0, 0}, {1, 2, 3}, {0.1, 0.2, 0.3}});
    crane->SetClosed(true);
    database.GetModelSpace()->Add(crane);
    auto* truck = new KVX3dsBaseObject();
    truck->SetName(L"truck");
    truck->SetSourcePath(L"/models/truck\r\n.3ds");
    database.GetModelSpace()->Add(truck);
    auto* building = new PfDbBuildingInstance();
    building->SetName(L"B1");
    building->SetRotation(-90.0);
    database.GetModelSpace()->Add(building);
    auto* hidden = new KVX3DElementObject();
    hidden->SetVisibility(false);
    database.GetModelSpace()->Add(hidden);
    auto* gone = new KVX3DElementObject();
    database.GetModelSpace()->Add(gone);
    gone->Erase();
    auto* manager = new PfDbObjContainer();
    database.AddObjManager(L"SITE_NOTES", manager);
    manager->Add(new PfDbBuildingInstance());
}

// Every live object by handle with everything it saves.
std::map<PfDbHandle, QStringList> contents(PfDbDatabase& database)
{
    std::map<PfDbHandle, QStringList> all;
    for (PfDbObject* object : database.AllObjects()) {
        if (object->IsErased())
            continue;
        KVXSaveLoadXml xml;
        object->Save(xml);
        QStringList& lines = all[object->GetHandle()];
        lines << QString::fromStdWString(object->IsA()->Name());
        for (const auto& p : xml.properties()) {
            QString line = QStringLiteral("%1=%2|%3,%4,%5|%6").arg(p.key).arg(p.integer).arg(p.number[0], 0, 'g', 17)
                               .arg(p.number[1], 0, 'g', 17).arg(p.number[2], 0, 'g', 17).arg(p.text);
            // Erased items stay listed in memory but are not part of the file.
            for (PfDbHandle h : p.handles) {
                if (database.OpenObject(h))
                    line += QStringLiteral(" %1").arg(h);
            }
            lines << line;
        }
    }
    return all;
}

TEST(DocumentFile, roundTripKeepsEveryObjectAndKey)
{
    PfDbDatabase original;
    fillSite(original);
    PfDbLoadReport report;
    QString error;
    auto loaded = readText(writeText(original), &report, &error);
    ASSERT_NE(loaded, nullptr) << error.toStdString();
    EXPECT_TRUE(report.IsEmpty()) << report.Messages().join('\n').toStdString();

    auto expected = contents(original);
    // The erased element is not part of the file, nor listed in the model space.
    EXPECT_EQ(contents(*loaded), expected);
    EXPECT_EQ(loaded->GetModelSpace()->Size(), 4u);
    ASSERT_NE(loaded->GetObjManager(L"SITE_NOTES"), nullptr);
    EXPECT_EQ(loaded->GetObjManager(L"SITE_NOTES")->Size(), 1u);
    EXPECT_EQ(loaded->NextHandle(), original.NextHandle());
}

TEST(DocumentFile, newObjectsAfterLoadingGetFreshHandles)
{
    PfDbDatabase original;
    fillSite(original);
    auto loaded = readText(writeText(original), nullptr, nullptr);
    ASSERT_NE(loaded, nullptr);
    // The erased element's handle was not written but is still not reused.
    EXPECT_GE(loaded->AddObject(new KVX3DElementObject()), original.NextHandle());
}

struct DamagedFile {
    const char* name;
    QByteArray text;
    const char* problem;
};

class DamagedFiles : public ::testing::TestWithParam<DamagedFile> {};

TEST_P(DamagedFiles, areRefusedWithTheProblemNamed)
{
    QString error;
    PfDbLoadReport report;
    EXPECT_EQ(readText(GetParam().text, &report, &error), nullptr);
    EXPECT_TRUE(error.contains(QLatin1String(GetParam().problem))) << error.toStdString();
    EXPECT_TRUE(error.startsWith(QLatin1String("line "))) << error.toStdString();
}

const QByteArray kHead = "<kvx-document version=\"1\" next-handle=\"9\" model-space=\"1\">"
                         "<object class=\"PfDbObjContainer\" handle=\"1\"><h k=\"Container_Items\">2</h></object>";

QByteArray withCrane(const QByteArray& property)
{
    return kHead + "<object class=\"KVXTowerCraneObject\" handle=\"2\">" + property + "</object></kvx-document>";
}

INSTANTIATE_TEST_SUITE_P(
    DocumentFile, DamagedFiles,
    ::testing::Values(
        DamagedFile{"empty", "", "not a KVX document"},
        DamagedFile{"notXml", "this is not xml at all", "not a KVX document"},
        DamagedFile{"wrongRoot", "<project version=\"1\"/>", "root element is <project>"},
        DamagedFile{"truncated", withCrane("<i k=\"TowerCrane_TowerHeight\">4200").left(150), "damaged"},
        DamagedFile{"badInteger", withCrane("<i k=\"TowerCrane_TowerHeight\">forty</i>"), "\"forty\" is not a 32-bit integer"},
        DamagedFile{"integerOverflow", withCrane("<i k=\"TowerCrane_TowerHeight\">99999999999</i>"), "32-bit"},
        DamagedFile{"badDouble", withCrane("<d k=\"TowerCrane_JibLength\">1.5.2</d>"), "is not a number"},
        DamagedFile{"shortVector", withCrane("<v k=\"TowerCrane_Position\">1 2</v>"), "three numbers"},
        DamagedFile{"badBool", withCrane("<b k=\"Visible\">yes</b>"), "boolean"},
        DamagedFile{"keyless", withCrane("<i>3</i>"), "no key"},
        DamagedFile{"sameHandleTwice",
                    kHead + "<object class=\"KVX3DElementObject\" handle=\"1\"/></kvx-document>", "used by two objects"},
        DamagedFile{"noModelSpace", "<kvx-document version=\"1\" next-handle=\"9\" model-space=\"4\"/>",
                    "model space (handle 4) is missing"},
        DamagedFile{"newerFormat", "<kvx-document version=\"7\" next-handle=\"9\" model-space=\"1\"/>", "format 7"},
        DamagedFile{"trailingGarbage", kHead + "</kvx-document><extra/>", "damaged"}),
    [](const ::testing::TestParamInfo<DamagedFile>& info) { return std::string(info.param.name); });

TEST(DocumentFile, everyTruncatedCopyIsRefused)
{
    PfDbDatabase original;
    fillSite(original);
    const QByteArray whole = writeText(original);
    // The root's end tag is the last thing written: any shorter copy lacks it.
    const int lastTag = whole.lastIndexOf("</kvx-document>");
    for (int length = 0; length <= lastTag; ++length) {
        QString error;
        ASSERT_EQ(readText(whole.left(length), nullptr, &error), nullptr) << "accepted a copy cut at " << length;
        ASSERT_FALSE(error.isEmpty());
    }
}

TEST(DocumentFile, unknownClassesAndKeysAreSkippedAndReported)
{
    const QByteArray text = kHead +
                            "<object class=\"FutureThing\" handle=\"3\"><i k=\"x\">1</i></object>"
                            "<object class=\"FutureThing\" handle=\"4\"/>"
                            "<object class=\"KVXTowerCraneObject\" handle=\"2\">"
                            "<i k=\"TowerCrane_TowerHeight\">4200</i><s k=\"TowerCrane_Brand\">x</s></object>"
                            "<gadget/></kvx-document>";
    PfDbLoadReport report;
    QString error;
    auto database = readText(text, &report, &error);
    ASSERT_NE(database, nullptr) << error.toStdString();
    auto* crane = KVXTowerCraneObject::Cast(database->OpenObject(2));
    ASSERT_NE(crane, nullptr);
    EXPECT_EQ(crane->GetTowerHeight(), 4200);
    EXPECT_EQ(database->OpenObject(3), nullptr);
    EXPECT_EQ(report.Count(PfDbLoadReport::UnknownClassMessage(QStringLiteral("FutureThing"))), 2);
    EXPECT_EQ(report.Count(PfDbLoadReport::UnknownKeyMessage(QStringLiteral("KVXTowerCraneObject"),
                                                             QStringLiteral("TowerCrane_Brand"))),
              1);
    EXPECT_EQ(report.Messages().size(), 3);
}

TEST(DocumentFile, wildCraneValuesAreBoundedAndNamed)
{
    // A crane 2147 km tall or with a 10,000 km jib took all memory to draw.
    const struct {
        const char* property;
        const char* note;
    } cases[] = {
        {"<i k=\"TowerCrane_TowerHeight\">2147483647</i>",
         "KVXTowerCraneObject #2: TowerCrane_TowerHeight 2147483647 is not between 3000 and 400000: read as 40000"},
        {"<d k=\"TowerCrane_JibLength\">1e10</d>",
         "KVXTowerCraneObject #2: TowerCrane_JibLength 1e+10 is not between 5000 and 120000: read as 120000"},
        {"<d k=\"TowerCrane_JibLength\">nan</d>", "TowerCrane_JibLength nan is not between"},
        {"<v k=\"TowerCrane_Position\">1e308 0 0</v>", "is farther than 1e+09 mm from the origin: read as (1e+09, 0, 0)"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.property);
        PfDbLoadReport report;
        QString error;
        auto database = readText(withCrane(c.property), &report, &error);
        ASSERT_NE(database, nullptr) << error.toStdString();
        EXPECT_TRUE(report.Messages().join('\n').contains(QString::fromUtf8(c.note)))
            << report.Messages().join('\n').toStdString();
        auto* crane = KVXTowerCraneObject::Cast(database->OpenObject(2));
        ASSERT_NE(crane, nullptr);
        EXPECT_LE(crane->GetTowerHeight(), KVXTowerCraneObject::kHighestTower);
        EXPECT_LE(crane->GetJibLength(), KVXTowerCraneObject::kLongestJib);
        vpe::CSceneNode* node = nullptr;
        ASSERT_TRUE(crane->draw3d(nullptr, node));
        osg::ref_ptr<osg::Node> drawn = node;
    }
    // One element with a point at 1e308 blanked the whole picture.
    PfDbLoadReport report;
    QString error;
    auto far = readText(kHead + "<object class=\"KVX3DElementObject\" handle=\"2\"><i k=\"Element3D_BodyCount\">1</i>"
                                "<n k=\"Element3D_Body_0_Vertices\">0 0 0 1e308 0 0 0 1 0</n>"
                                "<n k=\"Element3D_Body_0_Triangles\">0 1 2</n></object></kvx-document>",
                        &report, &error);
    ASSERT_NE(far, nullptr) << error.toStdString();
    EXPECT_EQ(KVX3DElementObject::Cast(far->OpenObject(2))->GetFirstBody(), nullptr);
    EXPECT_TRUE(report.Messages().join('\n').contains(
        QLatin1String("Element3D_Body_0_Vertices holds the coordinate 1e+308, farther than 1e+09 mm")))
        << report.Messages().join('\n').toStdString();

    KVXTowerCraneObject crane;
    crane.SetTowerHeight(-5);
    crane.SetJibLength(1e300);
    EXPECT_EQ(crane.GetTowerHeight(), KVXTowerCraneObject::kLowestTower);
    EXPECT_EQ(crane.GetJibLength(), KVXTowerCraneObject::kLongestJib);
}

TEST(DocumentFile, namesWithControlCharactersComeBackAsTheyWere)
{
    // A control character pasted into a name was written raw, and the whole
    // file was then refused; a lone surrogate was changed on save.
    const std::wstring names[] = {L"a\x01" L"b", L"bell\x07", L"\x1f" L"first", L"tab\tand\nline\rend",
                                  std::wstring(L"x") + wchar_t(0xd800) + L"y"};
    PfDbDatabase database;
    std::vector<PfDbHandle> handles;
    for (const std::wstring& name : names) {
        auto* element = new KVX3DElementObject();
        element->SetName(name);
        database.GetModelSpace()->Add(element);
        handles.push_back(element->GetHandle());
    }
    EXPECT_EQ(KVX3DElementObject::Cast(database.OpenObject(handles.back()))->GetName(), L"x\xfffdy")
        << "what cannot be saved is replaced when set, not when saved";
    QString error;
    auto reopened = readText(writeText(database), nullptr, &error);
    ASSERT_NE(reopened, nullptr) << error.toStdString();
    for (PfDbHandle handle : handles)
        EXPECT_EQ(KVX3DElementObject::Cast(reopened->OpenObject(handle))->GetName(),
                  KVX3DElementObject::Cast(database.OpenObject(handle))->GetName());
}

TEST(DocumentFile, savesKilledAtAnyMomentNeverLoseTheDocument)
{
    // A site of a few thousand elements takes long enough to save that the
    // kills fall before, during and after the rename.
    PfDbDatabase database;
    for (int i = 0; i < 3000; ++i) {
        auto* element = new KVX3DElementObject();
        element->SetName(L"element " + std::to_wstring(i));
        element->SetPoints({{double(i), 0, 0}, {double(i), 1000, 0}});
        database.GetModelSpace()->Add(element);
    }
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("site.kvx"));
    ASSERT_TRUE(PfDbDocumentFile::Write(database, path));
    std::mt19937 random(20261123);
    for (int kill = 0; kill < 30; ++kill) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            for (;;)
                PfDbDocumentFile::Write(database, path);
        }
        ::usleep(std::uniform_int_distribution<unsigned>(1000, 40000)(random));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        QString error;
        auto reopened = PfDbDocumentFile::Read(path, nullptr, &error);
        ASSERT_NE(reopened, nullptr) << "after kill " << kill << ": " << error.toStdString();
        EXPECT_EQ(reopened->GetModelSpace()->Size(), 3000u);
    }
    // The next save clears what the killed ones left.
    ASSERT_TRUE(PfDbDocumentFile::Write(database, path));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"site.kvx"});
}

TEST(AtomicFile, refusesFoldersAndDevicesAndKeepsTheTargetUntilCommitted)
{
    QTemporaryDir folder;
    const struct {
        QString target;
        const char* reason;
    } refused[] = {{folder.path(), "it is a folder"}, {QStringLiteral("/dev/full"), "it is not a plain file"}};
    for (const auto& r : refused) {
        vpe::CAtomicFile file(r.target);
        QString error;
        EXPECT_FALSE(file.Open(&error));
        EXPECT_EQ(error, QStringLiteral("cannot write %1: %2").arg(r.target, QLatin1String(r.reason)));
    }
    EXPECT_FALSE(QFile::exists(vpe::CAtomicFile::PartialPathFor(QStringLiteral("/dev/full"))));

    const QString path = folder.filePath(QStringLiteral("a.txt"));
    {
        vpe::CAtomicFile first(path);
        ASSERT_TRUE(first.Open());
        first.Device().write("first");
        ASSERT_TRUE(first.Commit());
    }
    {
        vpe::CAtomicFile dropped(path);
        ASSERT_TRUE(dropped.Open());
        dropped.Device().write("second, never committed");
    }
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), QByteArray("first"));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"a.txt"});
}

TEST(DocumentFile, itemsOfSkippedObjectsAreDropped)
{
    const QByteArray text = "<kvx-document version=\"1\" next-handle=\"9\" model-space=\"1\">"
                            "<object class=\"PfDbObjContainer\" handle=\"1\"><h k=\"Container_Items\">2 3</h></object>"
                            "<object class=\"FutureThing\" handle=\"3\"/>"
                            "<object class=\"KVX3DElementObject\" handle=\"2\"/></kvx-document>";
    PfDbLoadReport report;
    auto database = readText(text, &report, nullptr);
    ASSERT_NE(database, nullptr);
    EXPECT_EQ(database->GetModelSpace()->ItemHandles(), std::vector<PfDbHandle>{2});
}

class FailingDevice : public QIODevice {
protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char*, qint64) override
    {
        setErrorString(QStringLiteral("disk full"));
        return -1;
    }
};

TEST(DocumentFile, aFailingWriteIsReported)
{
    PfDbDatabase database;
    fillSite(database);
    FailingDevice device;
    device.open(QIODevice::WriteOnly);
    QString error;
    EXPECT_FALSE(PfDbDocumentFile::Write(database, device, &error));
    EXPECT_TRUE(error.contains(QLatin1String("disk full"))) << error.toStdString();
}

TEST(DocumentFile, savingWhereNothingCanBeWrittenKeepsTheOldFile)
{
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("site.kvx"));
    PfDbDocument document;
    fillSite(*document.GetDatabase());
    ASSERT_TRUE(document.Save(path));
    const QByteArray saved = [&] {
        QFile f(path);
        f.open(QIODevice::ReadOnly);
        return f.readAll();
    }();

    QString error;
    EXPECT_FALSE(document.Save(path + QStringLiteral("/inside-a-file.kvx"), &error));
    EXPECT_TRUE(error.contains(QLatin1String("cannot write"))) << error.toStdString();
    EXPECT_EQ(document.FilePath(), path);
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    EXPECT_EQ(f.readAll(), saved);
}

TEST(DocumentFile, aRefusedFileLeavesTheOpenDocumentsAlone)
{
    QTemporaryDir directory;
    const QString good = directory.filePath(QStringLiteral("good.kvx"));
    const QString bad = directory.filePath(QStringLiteral("bad.kvx"));
    {
        PfDbDocument document;
        fillSite(*document.GetDatabase());
        ASSERT_TRUE(document.Save(good));
    }
    QFile badFile(bad);
    ASSERT_TRUE(badFile.open(QIODevice::WriteOnly));
    badFile.write(withCrane("<i k=\"TowerCrane_TowerHeight\">oops</i>"));
    badFile.close();

    PfDocManager* manager = PfDocManagerPtr();
    PfDbDocument* current = manager->OpenDocument(good);
    ASSERT_NE(current, nullptr);
    const auto before = contents(*current->GetDatabase());
    QString error;
    EXPECT_EQ(manager->OpenDocument(bad, nullptr, &error), nullptr);
    EXPECT_TRUE(error.contains(QLatin1String("bad.kvx"))) << error.toStdString();
    EXPECT_TRUE(error.contains(QLatin1String("oops"))) << error.toStdString();
    EXPECT_EQ(manager->OpenDocument(directory.filePath(QStringLiteral("missing.kvx")), nullptr, &error), nullptr);
    EXPECT_TRUE(error.contains(QLatin1String("cannot open"))) << error.toStdString();
    EXPECT_EQ(manager->CurrentDocument(), current);
    EXPECT_EQ(manager->Documents().size(), 1u);
    EXPECT_EQ(contents(*current->GetDatabase()), before);
    manager->CloseAll();
}

// The process's manager goes last, at exit, when a module that listened may
// be gone already: its documents go without a word to anyone.
TEST(DocumentManager, goesWithoutTellingItsReactors)
{
    struct Probe : PfDocManagerReactor {
        int calls = 0;
        void documentActivated(PfDbDocument*) override { ++calls; }
        void documentToBeDestroyed(PfDbDocument*) override { ++calls; }
    } probe;
    {
        PfDocManager manager;
        manager.NewDocument();
        manager.AddReactor(&probe);
    }
    EXPECT_EQ(probe.calls, 0);
}

} // namespace
