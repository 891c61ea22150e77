#include "animation/KVXAnimation.h"
#include "animation/KVXEntryPoint.h"
#include "animation/KVXTowerAnimation.h"
#include "host/db/PfDbObjContainer.h"
#include "host/rx/PfEdCommandStack.h"
#include "host/rx/PfRxClass.h"
#include "host/rx/PfRxDictionary.h"
#include "keyframe/KVXCameraKeyFrame.h"
#include "keyframe/KVXCameraKeyFramesTrack.h"
#include "keyframe/KVXDateKeyFrame.h"
#include "keyframe/KVXDateKeyFramesTrack.h"

#include <QString>

#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <string>
#include <vector>

// The cases of this file share the process-wide class registry and run in
// the order written: first before any load, then load, unload and load again.

namespace {

struct ModuleClass {
    const wchar_t* name;
    const wchar_t* parent;
    PfRxClass* (*desc)();
};

// In load order; the parents are what the host's class tree must show.
const ModuleClass kModuleClasses[] = {
    {L"KVXAnimation", L"KVXBaseObject", &KVXAnimation::Desc},
    {L"KVXTowerAnimation", L"KVXAnimation", &KVXTowerAnimation::Desc},
    {L"KVXKeyFrame", L"KVXBaseObject", &KVXKeyFrame::Desc},
    {L"KVXCameraKeyFrame", L"KVXKeyFrame", &KVXCameraKeyFrame::Desc},
    {L"KVXDateKeyFrame", L"KVXKeyFrame", &KVXDateKeyFrame::Desc},
    {L"KVXKeyFramesTrack", L"PfDbObjContainer", &KVXKeyFramesTrack::Desc},
    {L"KVXCameraKeyFramesTrack", L"KVXKeyFramesTrack", &KVXCameraKeyFramesTrack::Desc},
    {L"KVXDateKeyFramesTrack", L"KVXKeyFramesTrack", &KVXDateKeyFramesTrack::Desc},
};

const wchar_t* const kGroupName = L"KVXElement";

PfRxDictionary* classDictionary()
{
    return static_cast<PfRxDictionary*>(PfRxSysRegistry()->GetAt(kPfRxClassDictionaryName));
}

PfEdCommandStack* commandStack()
{
    return PfEdCommandStack::Cast(PfRxSysRegistry()->GetAt(kPfRxRegisteredCommandsName));
}

std::string traceOf(const wchar_t* name) { return QString::fromWCharArray(name).toStdString(); }

void expectNoModuleClassRegistered()
{
    for (const ModuleClass& c : kModuleClasses) {
        SCOPED_TRACE(traceOf(c.name));
        EXPECT_EQ(classDictionary()->GetAt(c.name), nullptr);
    }
}

// Every module class is in the dictionary, is what Desc() answers, hangs
// under its parent and makes instances of itself.
void expectEveryModuleClassRegistered()
{
    for (const ModuleClass& c : kModuleClasses) {
        SCOPED_TRACE(traceOf(c.name));
        auto* cls = static_cast<PfRxClass*>(classDictionary()->GetAt(c.name));
        ASSERT_NE(cls, nullptr);
        EXPECT_EQ(c.desc(), cls);
        EXPECT_EQ(cls->ParentName(), c.parent);
        ASSERT_NE(cls->Parent(), nullptr);
        EXPECT_EQ(cls->Parent(), classDictionary()->GetAt(c.parent));
        std::unique_ptr<PfRxObject> instance(cls->Create());
        ASSERT_NE(instance, nullptr);
        EXPECT_EQ(instance->IsA(), cls);
    }
}

TEST(EntryPointDeathTest, aForeignDescriptorUnderAModuleClassNameAborts)
{
    // Everything happens in the child, so the registry of this process stays
    // untouched for the cases below.
    EXPECT_DEATH(
        {
            PfRxEntryPoint(1, nullptr);
            NewPfRxClass(L"KVXAnimation", L"KVXBaseObject", 0, nullptr, nullptr, nullptr);
            PfRxEntryPoint(1, nullptr);
        },
        "Class mismatch");
}

TEST(EntryPoint, unloadBeforeAnyLoadDoesNothing)
{
    PfEdCommandStack* commands = commandStack();
    ASSERT_NE(commands, nullptr);
    ASSERT_EQ(commands->AddCommand(kGroupName, L"Probe", [] {}), Pfad::eOk);

    EXPECT_EQ(PfRxEntryPoint(2, nullptr), 0);

    EXPECT_TRUE(commands->HasGroup(kGroupName));
    commands->RemoveGroup(kGroupName);
    expectNoModuleClassRegistered();
}

TEST(EntryPoint, unknownMessagesAreAnsweredWithZeroAndIgnored)
{
    for (int message : {0, 3, 4, -1, 100}) {
        SCOPED_TRACE(message);
        EXPECT_EQ(PfRxEntryPoint(message, nullptr), 0);
    }
    expectNoModuleClassRegistered();
}

TEST(EntryPoint, loadRegistersEveryClassUnderItsParent)
{
    const std::size_t before = classDictionary()->Size();
    EXPECT_EQ(PfRxEntryPoint(1, nullptr), 0);
    EXPECT_EQ(classDictionary()->Size(), before + std::size(kModuleClasses));
    expectEveryModuleClassRegistered();
}

TEST(EntryPoint, secondLoadKeepsTheRegisteredDescriptors)
{
    std::vector<PfRxObject*> descriptors;
    for (const ModuleClass& c : kModuleClasses)
        descriptors.push_back(classDictionary()->GetAt(c.name));
    const std::size_t before = classDictionary()->Size();

    EXPECT_EQ(PfRxEntryPoint(1, nullptr), 0);

    EXPECT_EQ(classDictionary()->Size(), before);
    for (std::size_t i = 0; i < descriptors.size(); ++i) {
        SCOPED_TRACE(traceOf(kModuleClasses[i].name));
        EXPECT_EQ(classDictionary()->GetAt(kModuleClasses[i].name), descriptors[i]);
        EXPECT_EQ(kModuleClasses[i].desc(), descriptors[i]);
    }
}

TEST(EntryPoint, castAcceptsTheClassAndItsDescendantsOnly)
{
    KVXBaseObject base;
    KVXAnimation animation;
    KVXTowerAnimation tower;
    KVXKeyFrame keyFrame;
    KVXDateKeyFrame dateKeyFrame;
    KVXCameraKeyFrame cameraKeyFrame;
    PfDbObjContainer container;
    KVXKeyFramesTrack track;
    KVXCameraKeyFramesTrack cameraTrack;

    EXPECT_EQ(KVXAnimation::Cast(nullptr), nullptr);
    EXPECT_EQ(KVXKeyFrame::Cast(nullptr), nullptr);
    EXPECT_EQ(KVXKeyFramesTrack::Cast(nullptr), nullptr);

    EXPECT_EQ(KVXAnimation::Cast(&base), nullptr);
    EXPECT_EQ(KVXTowerAnimation::Cast(&animation), nullptr);
    EXPECT_EQ(KVXDateKeyFrame::Cast(&keyFrame), nullptr);
    EXPECT_EQ(KVXKeyFramesTrack::Cast(&container), nullptr);
    EXPECT_EQ(KVXDateKeyFramesTrack::Cast(&track), nullptr);

    // Siblings are no kin of each other.
    EXPECT_EQ(KVXDateKeyFrame::Cast(&cameraKeyFrame), nullptr);
    EXPECT_EQ(KVXDateKeyFramesTrack::Cast(&cameraTrack), nullptr);
    EXPECT_EQ(KVXAnimation::Cast(&keyFrame), nullptr);

    EXPECT_EQ(KVXAnimation::Cast(&tower), &tower);
    EXPECT_EQ(KVXTowerAnimation::Cast(&tower), &tower);
    EXPECT_EQ(KVXKeyFrame::Cast(&dateKeyFrame), &dateKeyFrame);
    EXPECT_EQ(KVXKeyFramesTrack::Cast(&cameraTrack), &cameraTrack);
    EXPECT_EQ(KVXBaseObject::Cast(&cameraKeyFrame), &cameraKeyFrame);
}

TEST(EntryPoint, unloadRemovesTheCommandGroupAndTheClasses)
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
    // The host's own classes stay.
    EXPECT_NE(classDictionary()->GetAt(L"KVXBaseObject"), nullptr);
    EXPECT_NE(classDictionary()->GetAt(L"PfDbObjContainer"), nullptr);
}

TEST(EntryPoint, aSecondUnloadFindsNothingToRemove)
{
    PfRxClass* retired = KVXAnimation::Desc();
    EXPECT_EQ(PfRxEntryPoint(2, nullptr), 0);
    expectNoModuleClassRegistered();
    EXPECT_EQ(KVXAnimation::Desc(), retired);
}

TEST(EntryPoint, loadAfterUnloadRegistersAgain)
{
    PfRxClass* retired = KVXAnimation::Desc();
    EXPECT_EQ(PfRxEntryPoint(1, nullptr), 0);
    EXPECT_NE(KVXAnimation::Desc(), retired);
    expectEveryModuleClassRegistered();

    KVXTowerAnimation tower;
    KVXCameraKeyFramesTrack cameraTrack;
    EXPECT_EQ(KVXAnimation::Cast(&tower), &tower);
    EXPECT_EQ(KVXKeyFramesTrack::Cast(&cameraTrack), &cameraTrack);
    EXPECT_EQ(KVXDateKeyFramesTrack::Cast(&cameraTrack), nullptr);
}

} // namespace
