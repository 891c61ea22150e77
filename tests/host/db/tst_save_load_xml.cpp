#include "host/db/KVXSaveLoadXml.h"

#include <gtest/gtest.h>

namespace {

KVXSaveLoadXml sample()
{
    KVXSaveLoadXml xml;
    xml.setInt(QStringLiteral("int"), -7);
    xml.setInt64(QStringLiteral("int64"), 0x7fffffffffffLL);
    xml.setBool(QStringLiteral("bool"), true);
    xml.setDouble(QStringLiteral("double"), 0.1);
    xml.setVector(QStringLiteral("vector"), {1.5, -2.0, 1e9});
    xml.setString(QStringLiteral("text"), QStringLiteral("塔吊 <1>"));
    xml.setHandles(QStringLiteral("items"), {3, 5});
    return xml;
}

TEST(SaveLoadXml, readsBackEveryTypeInOrder)
{
    KVXSaveLoadXml xml = sample();
    EXPECT_EQ(xml.getInt(QStringLiteral("int")), -7);
    EXPECT_EQ(xml.getInt64(QStringLiteral("int64")), 0x7fffffffffffLL);
    EXPECT_TRUE(xml.getBool(QStringLiteral("bool")));
    EXPECT_EQ(xml.getDouble(QStringLiteral("double")), 0.1);
    EXPECT_EQ(xml.getVector(QStringLiteral("vector")), vpe::CVec3<double>(1.5, -2.0, 1e9));
    EXPECT_EQ(xml.getString(QStringLiteral("text")), QStringLiteral("塔吊 <1>"));
    EXPECT_EQ(xml.getHandles(QStringLiteral("items")), (std::vector<PfDbHandle>{3, 5}));
    EXPECT_TRUE(xml.unconsumedKeys().isEmpty());
}

TEST(SaveLoadXml, readsInAnyOrder)
{
    KVXSaveLoadXml xml = sample();
    EXPECT_EQ(xml.getString(QStringLiteral("text")), QStringLiteral("塔吊 <1>"));
    EXPECT_EQ(xml.getInt(QStringLiteral("int")), -7);
    EXPECT_EQ(xml.getWString(QStringLiteral("text")), L"塔吊 <1>");
    EXPECT_EQ(xml.getDouble(QStringLiteral("double")), 0.1);
}

TEST(SaveLoadXml, missingKeysGiveTheCallersDefault)
{
    KVXSaveLoadXml xml;
    EXPECT_EQ(xml.getInt(QStringLiteral("a")), 0);
    EXPECT_EQ(xml.getInt(QStringLiteral("a"), 42), 42);
    EXPECT_EQ(xml.getInt64(QStringLiteral("a"), -1), -1);
    EXPECT_TRUE(xml.getBool(QStringLiteral("a"), true));
    EXPECT_EQ(xml.getDouble(QStringLiteral("a"), 2.5), 2.5);
    EXPECT_EQ(xml.getVector(QStringLiteral("a")), vpe::CVec3<double>(0, 0, 0));
    EXPECT_EQ(xml.getString(QStringLiteral("a"), QStringLiteral("x")), QStringLiteral("x"));
    EXPECT_TRUE(xml.getHandles(QStringLiteral("a")).empty());
}

TEST(SaveLoadXml, numbersConvertButTextNeverDoes)
{
    KVXSaveLoadXml xml;
    xml.setInt(QStringLiteral("count"), 3);
    xml.setString(QStringLiteral("label"), QStringLiteral("12"));
    xml.setDouble(QStringLiteral("ratio"), 0.5);
    EXPECT_EQ(xml.getDouble(QStringLiteral("count")), 3.0);
    EXPECT_EQ(xml.getInt64(QStringLiteral("count")), 3);
    EXPECT_EQ(xml.getInt(QStringLiteral("label"), -1), -1);
    EXPECT_EQ(xml.getInt(QStringLiteral("ratio"), -1), -1);
    EXPECT_EQ(xml.unconsumedKeys(), QStringList({QStringLiteral("label"), QStringLiteral("ratio")}));
}

TEST(SaveLoadXml, rewindForgetsWhatWasRead)
{
    KVXSaveLoadXml xml = sample();
    xml.getInt(QStringLiteral("int"));
    xml.rewind();
    EXPECT_EQ(xml.unconsumedKeys().size(), 7);
    EXPECT_EQ(xml.getInt(QStringLiteral("int")), -7);
}

} // namespace
