#include "animation/KVXAnimation.h"
#include "animation/KVXEntryPoint.h"
#include "animation/KVXTowerAnimation.h"
#include "host/rx/PfEdCommandStack.h"
#include "host/rx/PfRxClass.h"
#include "host/rx/PfRxDictionary.h"
#include "keyframe/KVXCameraKeyFrame.h"
#include "keyframe/KVXCameraKeyFramesTrack.h"
#include "keyframe/KVXDateKeyFrame.h"
#include "keyframe/KVXDateKeyFramesTrack.h"
#include "keyframe/KVXKeyFrameAnimationTransactionReactor.h"

#include <QString>

#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <string>

// The cases of this file share the process-wide class registry and run in
// the order written: first before any load, then load, unload and load again.

namespace {

struct ModuleClass {
    const wchar_t* name;
    const wchar_t* parent;
    PfRxClass* (*desc)();
};

const ModuleClass kModuleClasses[] = {
    {L"KVXAnimation", L"KVXBaseObject", &KVXAnimation::Desc},
    {L"KVXTowerAnimation", L"KVXAnimation", &KVXTowerAnimation::Desc},
    {L"KVXKeyFrame", L"KVXBaseObject", &KVXKeyFrame::Desc},
    {L"KVXCameraKeyFrame", L"KVXKeyFrame", &KVXCameraKeyFrame::Desc},
    {L"KVXDateKeyFrame", L"KVXKeyFrame", &KVXDateKeyFrame::Desc},
    {L"KVXKeyFramesTrack", L"PfDbObjContainer", &KVXKeyFramesTrack::Desc},
    {L"KVXCameraKeyFramesTrack", L"KVXKeyFramesTrack", &KVXCameraKeyFramesTrack::Desc},
    {L"KVXDateKeyFramesTrack", L"KVXKeyFramesTrack", &KVXDateKeyFramesTrack::Desc},
    {L"KVXKeyFrameAnimationTransactionReactor", L"PfDbTransactionReactor",
     &KVXKeyFrameAnimationTransactionReactor::Desc},
};

const wchar_t* const kGroupName = L"KVXElement";

PfRxDictionary* classes() { return static_cast<PfRxDictionary*>(PfRxSysRegistry()->GetAt(kPfRxClassDictionaryName)); }

PfEdCommandStack* commandStack()
{
    return PfEdCommandStack::Cast(PfRxSysRegistry()->GetAt(kPfRxRegisteredCommandsName));
}

std::string traceOf(const wchar_t* name) { return QString::fromWCharArray(name).toStdString(); }

void expectNoModuleClassRegistered()
{
    for (const ModuleClass& c : kModuleClasses)
        EXPECT_EQ(classes()->GetAt(c.name), nullptr) << traceOf(c.name);
}

// Every module class is in the dictionary, is what Desc() answers, hangs
// under its parent and makes instances of itself; Cast follows that tree.
void expectEveryModuleClassRegistered()
{
    for (const ModuleClass& c : kModuleClasses) {
        SCOPED_TRACE(traceOf(c.name));
        auto* cls = static_cast<PfRxClass*>(classes()->GetAt(c.name));
        ASSERT_NE(cls, nullptr);
        EXPECT_EQ(c.desc(), cls);
        EXPECT_EQ(cls->Parent(), classes()->GetAt(c.parent));
        ASSERT_NE(cls->Parent(), nullptr);
        std::unique_ptr<PfRxObject> instance(cls->Create());
        ASSERT_NE(instance, nullptr);
        EXPECT_EQ(instance->IsA(), cls);
    }
    KVXAnimation animation;
    KVXTowerAnimation tower;
    KVXCameraKeyFramesTrack cameraTrack;
    EXPECT_EQ(KVXTowerAnimation::Cast(&animation), nullptr);
    EXPECT_EQ(KVXDateKeyFramesTrack::Cast(&cameraTrack), nullptr);
    EXPECT_EQ(KVXAnimation::Cast(&tower), &tower);
    EXPECT_EQ(KVXKeyFramesTrack::Cast(&cameraTrack), &cameraTrack);
}

TEST(EntryPoint, unloadBeforeAnyLoadAndUnknownMessagesDoNothing)
{
    PfEdCommandStack* commands = commandStack();
    ASSERT_NE(commands, nullptr);
    ASSERT_EQ(commands->AddCommand(kGroupName, L"Probe", [] {}), Pfad::eOk);
    for (int message : {2, 0, 3, -1}) {
        SCOPED_TRACE(message);
        EXPECT_EQ(PfRxEntryPoint(message, nullptr), 0);
    }
    EXPECT_TRUE(commands->HasGroup(kGroupName));
    commands->RemoveGroup(kGroupName);
    expectNoModuleClassRegistered();
}

TEST(EntryPoint, loadRegistersEveryClassOnceAndASecondLoadKeepsThem)
{
    PfDbTransactionReactor::Desc(); // a host class, registered on first use
    const std::size_t before = classes()->Size();
    EXPECT_EQ(PfRxEntryPoint(1, nullptr), 0);
    EXPECT_EQ(classes()->Size(), before + std::size(kModuleClasses));
    expectEveryModuleClassRegistered();

    PfRxClass* animation = KVXAnimation::Desc();
    PfRxClass* dateTrack = KVXDateKeyFramesTrack::Desc();
    EXPECT_EQ(PfRxEntryPoint(1, nullptr), 0);
    EXPECT_EQ(classes()->Size(), before + std::size(kModuleClasses));
    EXPECT_EQ(KVXAnimation::Desc(), animation);
    EXPECT_EQ(classes()->GetAt(L"KVXDateKeyFramesTrack"), dateTrack);
}

TEST(EntryPoint, unloadRemovesItsCommandGroupAndClassesOnly)
{
    PfEdCommandStack* commands = commandStack();
    ASSERT_NE(commands, nullptr);
    ASSERT_EQ(commands->AddCommand(kGroupName, L"Play", [] {}), Pfad::eOk);
    ASSERT_EQ(commands->AddCommand(L"OtherModule", L"Play", [] {}), Pfad::eOk);

    EXPECT_EQ(PfRxEntryPoint(2, nullptr), 0);

    EXPECT_FALSE(commands->HasGroup(kGroupName));
    EXPECT_TRUE(commands->HasGroup(L"OtherModule"));
    commands->RemoveGroup(L"OtherModule");
    expectNoModuleClassRegistered();
    EXPECT_NE(classes()->GetAt(L"KVXBaseObject"), nullptr);
    EXPECT_NE(classes()->GetAt(L"PfDbObjContainer"), nullptr);
}

TEST(EntryPoint, aSecondUnloadIsHarmlessAndLoadRegistersAgain)
{
    PfRxClass* retired = KVXAnimation::Desc();
    EXPECT_EQ(PfRxEntryPoint(2, nullptr), 0);
    expectNoModuleClassRegistered();

    EXPECT_EQ(PfRxEntryPoint(1, nullptr), 0);
    EXPECT_NE(KVXAnimation::Desc(), retired);
    expectEveryModuleClassRegistered();
}

} // namespace
