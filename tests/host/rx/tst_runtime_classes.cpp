#include "host/db/PfDbObjContainer.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/model/PfDbBuildingInstance.h"
#include "host/rx/PfRxClass.h"
#include "host/rx/PfRxDictionary.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

// A class registered by hand the way a module registers its own.
class Probe : public KVXBaseObject {
    PFRX_DECLARE_MEMBERS(Probe)
};
PFRX_DEFINE_MEMBERS(Probe, KVXBaseObject, &PfRxCreateInstance<Probe>)

class ProbeChild : public Probe {
    PFRX_DECLARE_MEMBERS(ProbeChild)
};
PFRX_DEFINE_MEMBERS(ProbeChild, Probe, &PfRxCreateInstance<ProbeChild>)

PfRxDictionary* classes()
{
    return static_cast<PfRxDictionary*>(PfRxSysRegistry()->GetAt(kPfRxClassDictionaryName));
}

class RuntimeClasses : public ::testing::Test {
protected:
    void TearDown() override
    {
        ProbeChild::RxUninit();
        Probe::RxUninit();
        Probe::gpDesc = nullptr;
        ProbeChild::gpDesc = nullptr;
    }
};

TEST_F(RuntimeClasses, registryHoldsClassDictionaryAndCommandStack)
{
    EXPECT_NE(classes(), nullptr);
    EXPECT_NE(PfRxSysRegistry()->GetAt(kPfRxRegisteredCommandsName), nullptr);
}

TEST_F(RuntimeClasses, descBeforeRegistrationIsNullAndCastFails)
{
    EXPECT_EQ(Probe::Desc(), nullptr);
    Probe probe;
    EXPECT_EQ(Probe::Cast(&probe), nullptr);
}

TEST_F(RuntimeClasses, isKindOfAcceptsAncestorsOnly)
{
    Probe::RxInit();
    ProbeChild::RxInit();
    ProbeChild child;
    Probe parent;
    KVXTowerCraneObject crane;
    EXPECT_TRUE(child.IsKindOf(ProbeChild::Desc()));
    EXPECT_TRUE(child.IsKindOf(Probe::Desc()));
    EXPECT_TRUE(child.IsKindOf(KVXBaseObject::Desc()));
    EXPECT_TRUE(child.IsKindOf(PfDbObject::Desc()));
    EXPECT_TRUE(child.IsKindOf(PfRxObject::Desc()));
    EXPECT_FALSE(parent.IsKindOf(ProbeChild::Desc()));
    EXPECT_FALSE(crane.IsKindOf(Probe::Desc()));
    EXPECT_FALSE(child.IsKindOf(nullptr));

    EXPECT_EQ(Probe::Cast(&child), &child);
    EXPECT_EQ(ProbeChild::Cast(&parent), nullptr);
    EXPECT_EQ(Probe::Cast(nullptr), nullptr);
    EXPECT_EQ(KVX3DElementObject::Cast(&crane), &crane);
    EXPECT_EQ(PfDbBuildingInstance::Cast(&crane), nullptr);
}

TEST_F(RuntimeClasses, rxInitTwiceKeepsOneDescriptor)
{
    Probe::RxInit();
    PfRxClass* first = Probe::Desc();
    Probe::RxInit();
    EXPECT_EQ(Probe::Desc(), first);
    EXPECT_EQ(PfRxLookupClass(L"Probe"), first);
    EXPECT_EQ(Probe().IsA(), first);
}

TEST_F(RuntimeClasses, factoryMakesInstancesByName)
{
    Probe::RxInit();
    std::unique_ptr<PfRxObject> made(PfRxLookupClass(L"Probe")->Create());
    ASSERT_NE(made, nullptr);
    EXPECT_NE(Probe::Cast(made.get()), nullptr);
    std::unique_ptr<PfRxObject> container(PfRxLookupClass(L"PfDbObjContainer")->Create());
    EXPECT_NE(PfDbObjContainer::Cast(container.get()), nullptr);
}

TEST_F(RuntimeClasses, parentRegisteredLaterIsLinkedByBuildHierarchy)
{
    ProbeChild::RxInit();
    EXPECT_EQ(ProbeChild::Desc()->Parent(), nullptr);
    Probe::RxInit();
    PfRxBuildClassHierarchy();
    EXPECT_EQ(ProbeChild::Desc()->Parent(), Probe::Desc());
    EXPECT_TRUE(ProbeChild().IsKindOf(KVXBaseObject::Desc()));
}

TEST_F(RuntimeClasses, deletingAClassUnlinksItsChildren)
{
    Probe::RxInit();
    ProbeChild::RxInit();
    Probe::RxUninit();
    Probe::gpDesc = nullptr;
    EXPECT_EQ(PfRxLookupClass(L"Probe"), nullptr);
    ASSERT_NE(ProbeChild::Desc(), nullptr);
    EXPECT_EQ(ProbeChild::Desc()->Parent(), nullptr);
    EXPECT_FALSE(ProbeChild().IsKindOf(KVXBaseObject::Desc()));
}

TEST_F(RuntimeClasses, foreignDescriptorUnderTheNameAborts)
{
    Probe::RxInit();
    EXPECT_DEATH(
        {
            // Another descriptor takes the name while the cached one lives on.
            classes()->Remove(L"Probe");
            NewPfRxClass(L"Probe", L"KVXBaseObject", 0, nullptr, nullptr, nullptr);
            Probe::RxInit();
        },
        "Class mismatch");
}

TEST_F(RuntimeClasses, hostClassesKnowTheirAncestry)
{
    struct Row {
        const wchar_t* name;
        const wchar_t* parent;
    };
    const Row rows[] = {
        {L"PfDbObject", L"PfRxObject"},           {L"PfDbEntity", L"PfDbObject"},
        {L"PfDbElement", L"PfDbEntity"},          {L"KVXElementObject", L"PfDbElement"},
        {L"KVXBaseObject", L"KVXElementObject"}, {L"KVX3DElementObject", L"KVXBaseObject"},
        {L"KVXTowerCraneObject", L"KVX3DElementObject"}, {L"KVX3dsBaseObject", L"PfDbElement"},
        {L"PfDbBuildingInstance", L"PfDbElement"}, {L"PfDbObjContainer", L"PfDbObject"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(QString::fromWCharArray(row.name).toStdString());
        PfRxClass* cls = PfRxLookupClass(row.name);
        ASSERT_NE(cls, nullptr);
        ASSERT_NE(cls->Parent(), nullptr);
        EXPECT_EQ(cls->Parent()->Name(), row.parent);
    }
}

} // namespace
