#include "KVXRegisters.h"

#include "KVXAnimation.h"
#include "KVXDemoSchedule.h"
#include "KVXTaskRecords.h"
#include "KVXLiveCraneFilm.h"
#include "KVXScheduleCheck.h"
#include "KVXScheduleVideo.h"
#include "KVXTowerAnimation.h"
#include "host/rx/PfEdCommandStack.h"
#include "host/rx/PfRxClass.h"
#include "host/rx/PfRxDictionary.h"
#include "keyframe/KVXCameraKeyFrame.h"
#include "keyframe/KVXCameraKeyFramesTrack.h"
#include "keyframe/KVXDateKeyFrame.h"
#include "keyframe/KVXDateKeyFramesTrack.h"
#include "keyframe/KVXKeyFrame.h"
#include "keyframe/KVXKeyFrameAnimationManager.h"
#include "keyframe/KVXKeyFrameAnimationTransactionReactor.h"
#include "keyframe/KVXKeyFramesCommand.h"
#include "keyframe/KVXKeyFramesTrack.h"

KVXRegisters::KVXRegisters() : m_groupName(L"KVXElement"), m_version(L"2.0"), m_loaded(false)
{
    m_secondName = m_groupName;
}

KVXRegisters::~KVXRegisters() = default;

int KVXRegisters::Load()
{
    KVXAnimation::RxInit();
    KVXTowerAnimation::RxInit();
    KVXKeyFrame::RxInit();
    KVXCameraKeyFrame::RxInit();
    KVXDateKeyFrame::RxInit();
    KVXKeyFramesTrack::RxInit();
    KVXCameraKeyFramesTrack::RxInit();
    KVXDateKeyFramesTrack::RxInit();
    PfRxBuildClassHierarchy();
    addCommands();
    KVXKeyFrameAnimationTransactionReactor::Attach();
    m_loaded = true;
    return 0;
}

void KVXRegisters::addCommands()
{
    PfRxObject* entry = PfRxSysRegistry()->GetAt(kPfRxRegisteredCommandsName);
    PfEdCommandStack* commands = PfEdCommandStack::Cast(entry);
    if (!commands)
        return;
    // A second load finds the command there already (eDuplicateKey).
    commands->AddCommand(m_groupName, KVXScheduleVideo::kCommandName,
                         PfEdCommandStack::ArgumentCommand(&KVXScheduleVideo::RunCommand));
    commands->AddCommand(m_groupName, KVXScheduleVideo::kShowDateCommandName,
                         PfEdCommandStack::ArgumentCommand(&KVXScheduleVideo::RunShowDateCommand));
    commands->AddCommand(m_groupName, KVXScheduleCheck::kCommandName,
                         PfEdCommandStack::ArgumentCommand(&KVXScheduleCheck::RunCommand));
    commands->AddCommand(m_groupName, KVXScheduleCheck::kListCommandName,
                         PfEdCommandStack::ArgumentCommand(&KVXScheduleCheck::RunListCommand));
    commands->AddCommand(m_groupName, KVXLiveCraneFilm::kCommandName,
                         PfEdCommandStack::ArgumentCommand(&KVXLiveCraneFilm::RunCommand));
    commands->AddCommand(m_groupName, KVXDemoSchedule::kCommandName,
                         PfEdCommandStack::ArgumentCommand(&KVXDemoSchedule::RunCommand));
    commands->AddCommand(m_groupName, KVXTaskRecords::kCommandName,
                         PfEdCommandStack::ArgumentCommand(&KVXTaskRecords::RunCommand));
    commands->AddCommand(m_groupName, KVXKeyFramesCommand::kCommandName,
                         PfEdCommandStack::ArgumentCommand(&KVXKeyFramesCommand::RunCommand));
    commands->AddCommand(m_groupName, KVXKeyFramesCommand::kExportCommandName,
                         PfEdCommandStack::ArgumentCommand(&KVXKeyFramesCommand::RunExportCommand));
    commands->AddCommand(m_groupName, KVXKeyFrameAnimationManager::kPlayPauseActionName.toStdWString(),
                         [] { KVXKeyFrameAnimationManager::GetInstance()->PlayOrPauseAnimation(); });
}

int KVXRegisters::Unload()
{
    if (!m_loaded)
        return 0;
    PfRxObject* entry = PfRxSysRegistry()->GetAt(kPfRxRegisteredCommandsName);
    if (PfEdCommandStack* commands = PfEdCommandStack::Cast(entry))
        commands->RemoveGroup(m_groupName);
    KVXKeyFrameAnimationTransactionReactor::Detach();
    // Parents before children, in load order: the host tolerates it.
    KVXAnimation::RxUninit();
    KVXTowerAnimation::RxUninit();
    KVXKeyFrame::RxUninit();
    KVXCameraKeyFrame::RxUninit();
    KVXDateKeyFrame::RxUninit();
    KVXKeyFramesTrack::RxUninit();
    KVXCameraKeyFramesTrack::RxUninit();
    KVXDateKeyFramesTrack::RxUninit();
    return 0;
}
