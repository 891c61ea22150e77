#include "host/db/PfDbDocument.h"
#include "host/model/PfAutoSave.h"
#include "host/model/PfEdInformation.h"
#include "host/model/PfEdPrompt.h"
#include "host/model/PfHostClasses.h"
#include "host/rx/PfEdCommandStack.h"
#include "host/rx/PfRxDictionary.h"
#include "host/model/PfProgressMeter.h"
#include "host/model/PfStatusBarTip.h"
#include "host/model/PfUiActionManager.h"
#include "host/model/ZUpdater.h"

#include "tests/support/QtPrinters.h"

#include <QAction>

#include <gtest/gtest.h>

#include <memory>

namespace {

struct RecordingSink : PfEdInformationSink {
    QStringList shown;
    void Show(const QString& title, const QString& text) override { shown << title + QLatin1Char('|') + text; }
};

TEST(Information, goesToTheInstalledSinkUntilItIsRemoved)
{
    RecordingSink sink;
    PfEdInformationSink* previous = PfEdInformationSink::Install(&sink);
    PfEdInformation(QStringLiteral("当前时间已经存在关键帧！"), QStringLiteral("提示"));
    EXPECT_EQ(sink.shown, QStringList{QStringLiteral("提示|当前时间已经存在关键帧！")});
    PfEdInformationSink::Install(previous);
    EXPECT_NE(PfEdInformationSink::Current(), &sink);
    PfEdInformationSink::Install(nullptr);
    EXPECT_NE(PfEdInformationSink::Current(), nullptr);
}

TEST(UiActions, areFoundByNameWhileTheyLive)
{
    PfUiActionManager* actions = PfUiActionManager::GetInstance();
    auto* first = new QAction(QStringLiteral("预览"));
    QAction second(QStringLiteral("暂停"));
    actions->AddAction(QStringLiteral("PLAY"), first);
    EXPECT_EQ(actions->FindAction(QStringLiteral("PLAY")), first);
    EXPECT_EQ(actions->FindAction(QStringLiteral("play")), nullptr);
    delete first;
    EXPECT_EQ(actions->FindAction(QStringLiteral("PLAY")), nullptr) << "a destroyed action is not handed out";
    actions->AddAction(QStringLiteral("PLAY"), &second);
    EXPECT_EQ(actions->FindAction(QStringLiteral("PLAY")), &second);
    actions->RemoveAction(QStringLiteral("PLAY"));
    EXPECT_EQ(actions->FindAction(QStringLiteral("PLAY")), nullptr);
}

TEST(AutoSave, stopsNestAndTheHostCommandsDriveIt)
{
    PfHostRegisterClasses();
    auto* commands = PfEdCommandStack::Cast(PfRxSysRegistry()->GetAt(kPfRxRegisteredCommandsName));
    ASSERT_NE(commands, nullptr);
    EXPECT_TRUE(PfAutoSave::IsEnabled());
    EXPECT_EQ(commands->RunCommand(L"KVX.KVX_STOP_AUTO_SAVE"), Pfad::eOk);
    PfAutoSave::Stop();
    EXPECT_EQ(commands->RunCommand(L"KVX.KVX_START_AUTO_SAVE"), Pfad::eOk);
    EXPECT_FALSE(PfAutoSave::IsEnabled()) << "two stops want two starts";
    PfAutoSave::Start();
    PfAutoSave::Start();
    EXPECT_TRUE(PfAutoSave::IsEnabled());
    PfAutoSave::Stop();
    EXPECT_FALSE(PfAutoSave::IsEnabled()) << "an extra start is not kept for later";
    PfAutoSave::Start();
}

TEST(Prompt, showsLinesOnTheInstalledDisplayAndKeepsTheLast)
{
    static QStringList shown;
    PfEdPrompt::SetDisplay([](const QString& line) { shown << line; });
    PfEdPrompt::Show(QStringLiteral("导出视频完成"));
    PfEdPrompt::SetDisplay(nullptr);
    EXPECT_EQ(shown, QStringList{QStringLiteral("导出视频完成")});
    EXPECT_EQ(PfEdPrompt::Last(), QStringLiteral("导出视频完成"));
}

struct ProgressLog : PfProgressMeter::Listener {
    std::vector<std::string> calls;
    void started(const QString& caption, int total) override
    {
        calls.push_back("start " + caption.toStdString() + " " + std::to_string(total));
    }
    void progressed(int done, int total) override
    {
        calls.push_back(std::to_string(done) + "/" + std::to_string(total));
    }
    void stopped() override { calls.push_back("stop"); }
};

TEST(ProgressMeter, listenerHearsEveryStepWithinTheTotal)
{
    ProgressLog log;
    PfProgressMeter::InstallListener(&log);
    PfProgressMeter meter;
    meter.Step();
    meter.Start(QStringLiteral("video"), 3);
    meter.Step();
    meter.Step(5);
    meter.Stop();
    meter.Stop();
    PfProgressMeter::InstallListener(nullptr);
    EXPECT_EQ(log.calls, (std::vector<std::string>{"start video 3", "1/3", "3/3", "stop"}));
    EXPECT_FALSE(meter.IsRunning());
}

TEST(StatusBarTip, showsOnTheDisplayAndKeepsTheLastTip)
{
    static QString displayed;
    PfStatusBarTip::SetDisplay([](const QString& tip) { displayed = tip; });
    PfStatusBarTip::Show(QStringLiteral("正在播放"));
    EXPECT_EQ(displayed, QStringLiteral("正在播放"));
    PfStatusBarTip::SetDisplay(nullptr);
    PfStatusBarTip::Clear();
    EXPECT_EQ(displayed, QStringLiteral("正在播放"));
    EXPECT_TRUE(PfStatusBarTip::Current().isEmpty());
}

struct Observer : ZUpdater {
    explicit Observer(std::vector<std::string>& log, std::string name) : log(log), name(std::move(name)) {}
    void Update(const ZUpdateMessage& message) override
    {
        log.push_back(name + ":" + std::to_string(message.kind) + ":" + std::to_string(message.ids.size()));
    }
    bool IsEnabled() const override { return enabled; }
    std::vector<std::string>& log;
    std::string name;
    bool enabled = true;
};

TEST(Updaters, hearSelectionChangesInRegistrationOrder)
{
    std::vector<std::string> log;
    auto first = std::make_unique<Observer>(log, "first");
    auto second = std::make_unique<Observer>(log, "second");
    auto muted = std::make_unique<Observer>(log, "muted");
    muted->enabled = false;
    ZUpdater::updaters_.push_back(second.get());
    ZUpdater::updaters_.push_back(first.get());
    ZUpdater::updaters_.push_back(muted.get());

    PfDbDocument document;
    document.GetSelectionSet().Add(7);
    document.GetSelectionSet().Add(9);
    ZUpdater::SelectionChanged(&document);
    EXPECT_EQ(log, (std::vector<std::string>{"second:1:2", "first:1:2"}));

    second.reset();
    log.clear();
    ZUpdater::SelectionChanged(nullptr);
    EXPECT_EQ(log, (std::vector<std::string>{"first:1:0"}));
    first.reset();
    muted.reset();
    EXPECT_TRUE(ZUpdater::updaters_.empty());
}

} // namespace
