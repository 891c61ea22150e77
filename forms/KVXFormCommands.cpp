// The module's commands for the application's menus and toolbar,
// registered when the module's library is loaded and taken back when it is
// unloaded.

#include "KVXLiveCranes.h"
#include "KVXRecordCommands.h"
#include "animation/KVXAnimatorManager.h"
#include "host/model/PfEdPolylinePrompt.h"
#include "host/model/PfUiCommands.h"
#include "keyframe/KVXKeyFrameAnimationManager.h"

#include <QApplication>

#include <osg/Vec3d>

namespace {

const QString kMenu = QStringLiteral("动画");
const QString kAddMenu = QStringLiteral("动画/添加动画");

bool addRecords(KVXRecordCommands::Kind kind)
{
    std::vector<osg::Vec3d> path;
    if (kind == KVXRecordCommands::Move &&
        !PfEdPolylinePrompt::Pick(QStringLiteral("在视图中依次点取路径的点，回车结束，Esc 取消"), path))
        return false;
    return !KVXRecordCommands::AddToSelection(kind, path).empty();
}

bool playOrPauseSchedule()
{
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    // Pausing a paused schedule plays it on.
    if (schedule->getPlayState() == 0)
        schedule->play();
    else
        schedule->pause();
    return true;
}

std::vector<QString> names()
{
    std::vector<QString> all = {KVXKeyFrameAnimationManager::kPlayPauseActionName,
                                QStringLiteral("KVX_PLAY_SCHEDULE"), QStringLiteral("KVX_STOP_ANIMATION"),
                                QStringLiteral("KVX_LIVE_CRANES"), QStringLiteral("KVX_LIVE_CRANES_SETTINGS")};
    for (const auto& kind : KVXRecordCommands::Kinds())
        all.push_back(kind.name);
    return all;
}

struct FormCommands {
    FormCommands()
    {
        PfUiCommands::Register({KVXKeyFrameAnimationManager::kPlayPauseActionName, QStringLiteral("预览"), kMenu,
                                QStringLiteral(":/KVX/RoamingVideoPage/Image/RoamingVideoPage/play.png"),
                                QKeySequence(Qt::Key_Space), true, true, [] {
                                    KVXKeyFrameAnimationManager::GetInstance()->PlayOrPauseAnimation();
                                    return true;
                                }});
        PfUiCommands::Register({QStringLiteral("KVX_PLAY_SCHEDULE"), QStringLiteral("播放施工进度"), kMenu,
                                QStringLiteral(":/KVX/Application/play_schedule.png"),
                                QKeySequence(Qt::Key_F5), false, true, &playOrPauseSchedule});
        PfUiCommands::Register({QStringLiteral("KVX_STOP_ANIMATION"), QStringLiteral("停止"), kMenu,
                                QStringLiteral(":/KVX/RoamingVideoPage/Image/RoamingVideoPage/stop.png"),
                                QKeySequence(Qt::Key_Escape), false, true, &KVXRecordCommands::StopAll});
        PfUiCommands::Register({QStringLiteral("KVX_LIVE_CRANES"), QStringLiteral("实时塔吊"), kMenu,
                                QStringLiteral(":/KVX/Application/live_cranes.png"), QKeySequence(), true, true,
                                [] { return KVXLiveCranes::Get()->Toggle(); }});
        PfUiCommands::Register({QStringLiteral("KVX_LIVE_CRANES_SETTINGS"), QStringLiteral("实时塔吊设置…"), kMenu,
                                QString(), QKeySequence(), false, false,
                                [] { return KVXLiveCranes::Get()->EditSettings(QApplication::activeWindow()); }});
        for (const auto& kind : KVXRecordCommands::Kinds())
            PfUiCommands::Register({kind.name, kind.text, kAddMenu, QString(), QKeySequence(), false, false,
                                    [which = kind.kind] { return addRecords(which); }});
    }
    ~FormCommands()
    {
        for (const QString& name : names())
            PfUiCommands::Unregister(name);
    }
};

const FormCommands registered;

} // namespace
