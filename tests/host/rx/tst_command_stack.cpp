#include "host/rx/PfEdCommandStack.h"

#include <QString>

#include <gtest/gtest.h>

namespace {

TEST(CommandStack, runsACommandByItsFullName)
{
    PfEdCommandStack stack;
    int runs = 0;
    ASSERT_EQ(stack.AddCommand(L"Site", L"Play", [&] { ++runs; }), Pfad::eOk);
    EXPECT_EQ(stack.RunCommand(L"Site.Play"), Pfad::eOk);
    EXPECT_EQ(runs, 1);
}

TEST(CommandStack, unknownNamesAreNotFound)
{
    PfEdCommandStack stack;
    stack.AddCommand(L"Site", L"Play", [] {});
    for (const wchar_t* name : {L"Site.Stop", L"Other.Play", L"Play", L"", L"Site."}) {
        SCOPED_TRACE(QString::fromWCharArray(name).toStdString());
        EXPECT_EQ(stack.RunCommand(name), Pfad::eKeyNotFound);
    }
}

TEST(CommandStack, refusesDuplicatesAndMalformedNames)
{
    PfEdCommandStack stack;
    EXPECT_EQ(stack.AddCommand(L"Site", L"Play", [] {}), Pfad::eOk);
    EXPECT_EQ(stack.AddCommand(L"Site", L"Play", [] {}), Pfad::eDuplicateKey);
    EXPECT_EQ(stack.AddCommand(L"A.B", L"Play", [] {}), Pfad::eInvalidInput);
    EXPECT_EQ(stack.AddCommand(L"Site", L"", [] {}), Pfad::eInvalidInput);
    EXPECT_EQ(stack.AddCommand(L"Site", L"Empty", PfEdCommandStack::Command()), Pfad::eInvalidInput);
    EXPECT_EQ(stack.AddCommand(L"Site", L"Empty", PfEdCommandStack::ArgumentCommand()), Pfad::eInvalidInput);
}

TEST(CommandStack, argumentsGoInAndTheAnswerComesBack)
{
    PfEdCommandStack stack;
    QStringList seen;
    stack.AddCommand(L"Site", L"Export", PfEdCommandStack::ArgumentCommand([&](const QStringList& words, QString* why) {
                         seen = words;
                         if (why)
                             *why = QStringLiteral("no view");
                         return Pfad::eInvalidInput;
                     }));
    QString message;
    EXPECT_EQ(stack.RunCommand(L"Site.Export", {"out=a.mp4", "size=64x48"}, &message), Pfad::eInvalidInput);
    EXPECT_EQ(seen, QStringList({"out=a.mp4", "size=64x48"}));
    EXPECT_EQ(message, "no view");
    EXPECT_EQ(stack.RunCommand(L"Site.Export"), Pfad::eInvalidInput) << "no words, no message wanted";
}

TEST(CommandStack, removingAGroupRemovesOnlyItsCommands)
{
    PfEdCommandStack stack;
    stack.AddCommand(L"KVXElement", L"Play", [] {});
    stack.AddCommand(L"KVXElement", L"Stop", [] {});
    stack.AddCommand(L"Other", L"Play", [] {});
    EXPECT_EQ(stack.RemoveGroup(L"KVXElement"), Pfad::eOk);
    EXPECT_FALSE(stack.HasGroup(L"KVXElement"));
    EXPECT_EQ(stack.RunCommand(L"KVXElement.Play"), Pfad::eKeyNotFound);
    EXPECT_EQ(stack.RunCommand(L"Other.Play"), Pfad::eOk);
    EXPECT_EQ(stack.RemoveGroup(L"KVXElement"), Pfad::eKeyNotFound);
}

TEST(CommandStack, aCommandMayRemoveItsOwnGroup)
{
    PfEdCommandStack stack;
    bool ran = false;
    stack.AddCommand(L"Temp", L"Close", [&] {
        stack.RemoveGroup(L"Temp");
        ran = true;
    });
    EXPECT_EQ(stack.RunCommand(L"Temp.Close"), Pfad::eOk);
    EXPECT_TRUE(ran);
    EXPECT_FALSE(stack.HasGroup(L"Temp"));
}

} // namespace
