#include "host/rx/PfEdCommandStack.h"
#include "host/rx/PfRxClass.h"
#include "host/rx/PfRxDictionary.h"
#include "host/rx/PfRxModuleLoader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// The loader knows no module class: it only sees what the module registered.
TEST(ModuleLoader, loadRegistersTheModuleAndUnloadRemovesIt)
{
    PfRxModuleLoader loader;
    QString error;
    ASSERT_TRUE(loader.Load(QStringLiteral(KVX_MODULE_PATH), &error)) << error.toStdString();
    EXPECT_TRUE(loader.IsLoaded());
    PfRxClass* record = PfRxLookupClass(L"KVXAnimation");
    ASSERT_NE(record, nullptr);
    ASSERT_NE(record->Parent(), nullptr);
    EXPECT_EQ(record->Parent()->Name(), L"KVXBaseObject");

    auto* commands = PfEdCommandStack::Cast(PfRxSysRegistry()->GetAt(kPfRxRegisteredCommandsName));
    ASSERT_NE(commands, nullptr);
    commands->AddCommand(L"KVXElement", L"Probe", [] {});

    EXPECT_EQ(loader.Unload(), 0);
    EXPECT_FALSE(loader.IsLoaded());
    EXPECT_EQ(PfRxLookupClass(L"KVXAnimation"), nullptr);
    EXPECT_FALSE(commands->HasGroup(L"KVXElement"));
}

TEST(ModuleLoader, reloadingRegistersAgain)
{
    PfRxModuleLoader loader;
    ASSERT_TRUE(loader.Load(QStringLiteral(KVX_MODULE_PATH)));
    loader.Unload();
    ASSERT_TRUE(loader.Load(QStringLiteral(KVX_MODULE_PATH)));
    EXPECT_NE(PfRxLookupClass(L"KVXDateKeyFramesTrack"), nullptr);
}

TEST(ModuleLoader, refusesWhatIsNotAModule)
{
    QTemporaryDir directory;
    const QString garbage = directory.filePath(QStringLiteral("libgarbage.so"));
    QFile file(garbage);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("not a library");
    file.close();

    // A real library without the entry point: the host library itself.
    const QString hostLibrary = QFileInfo(QStringLiteral(KVX_MODULE_PATH)).dir().filePath(QStringLiteral("libkvxhost.so"));
    struct Row {
        QString path;
        const char* expected;
    };
    const Row rows[] = {
        {directory.filePath(QStringLiteral("missing.so")), "cannot open module"},
        {garbage, "cannot open module"},
        {hostLibrary, "has no entry point"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.path.toStdString());
        PfRxModuleLoader loader;
        QString error;
        EXPECT_FALSE(loader.Load(row.path, &error));
        EXPECT_TRUE(error.contains(QLatin1String(row.expected))) << error.toStdString();
        EXPECT_FALSE(loader.IsLoaded());
        EXPECT_EQ(loader.Unload(), 0);
    }
}

} // namespace
