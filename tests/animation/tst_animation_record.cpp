#include "animation/KVXAnimation.h"
#include "host/db/KVXSaveLoadXml.h"
#include "host/model/PfGiWorldDraw.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QDate>
#include <QString>
#include <QStringList>

#include <osg/Node>
#include <osg/io_utils>

#include <gtest/gtest.h>

#include <iterator>
#include <utility>

namespace {

using Type = KVXSaveLoadXml::Type;

// The record's own keys as the document file holds them, in write order.
const std::pair<const char*, Type> kRecordKeys[] = {
    {"AnimationNumber", Type::Int},          {"AnimationObjId", Type::Int64},
    {"AnimationStartDate", Type::String},    {"AnimationEndDate", Type::String},
    {"AnimationDurationDays", Type::Int},    {"AnimationType", Type::Int},
    {"TranslationType", Type::Int},          {"AnimationLoopPlayback", Type::Bool},
    {"AnimationLoopEndDate", Type::String},  {"AnimationStartPoint", Type::Vector},
    {"AnimationEndPoint", Type::Vector},     {"AnimationStartAngle", Type::Double},
    {"AnimationEndAngle", Type::Double},     {"AnimationPathRotateAngle", Type::Double},
    {"AnimationIsLayering", Type::Bool},     {"AnimationLayerHeight", Type::Double},
};
const int kRecordKeyCount = static_cast<int>(std::size(kRecordKeys));

// Every persisted field away from its default; the doubles need all their
// digits and the object id more than 32 bits.
void populate(KVXAnimation& record)
{
    record.SetColor(QColor(12, 34, 56, 78));
    record.SetPoints({{0.1, 0.2, 0.3}, {1000.0, -2000.0, 0.0}});
    record.setNumber(42);
    record.setObjId(0x123456789ALL);
    record.setStartDate(QDate(2021, 2, 28));
    record.setEndDate(QDate(2021, 3, 15));
    record.setDurationDays(16);
    record.setAnimationType(KVXAnimation::Demolition);
    record.setTranslationType(KVXAnimation::BackToFront);
    record.setLoopPlayback(true);
    record.setLoopEndDate(QDate(2021, 12, 31));
    record.setAnimStartPoint({0.1, -2500.5, 3.0e6});
    record.setAnimEndPoint({-0.3, 1e-9, 42.0});
    record.setStartAngle(-45.5);
    record.setEndAngle(270.25);
    record.setPathRotateAngle(0.7);
    record.setIsLayering(true);
    record.setLayerHeight(2950.5);
}

// What an object writes, one line per property, so that whole sets compare at once.
QStringList describe(KVXBaseObject& object)
{
    KVXSaveLoadXml xml;
    object.setElementPropertys(xml);
    QStringList lines;
    for (const KVXSaveLoadXml::Property& p : xml.properties()) {
        QString line = p.key + ' ' + QString::number(static_cast<int>(p.type)) + ' ' + QString::number(p.integer);
        for (double n : p.number)
            line += ' ' + QString::number(n, 'g', 17);
        lines << line + ' ' + p.text;
    }
    return lines;
}

QStringList recordPart(KVXAnimation& record)
{
    const QStringList all = describe(record);
    return all.mid(all.size() - kRecordKeyCount);
}

TEST(AnimationRecord, typeNameFollowsTypeAndTranslation)
{
    const struct {
        int type, translation;
        const char* expected;
    } rows[] = {
        {KVXAnimation::Construction, KVXAnimation::FrontToBack, "平移推进建造"},
        {KVXAnimation::Construction, KVXAnimation::BottomUp, "自下而上建造"},
        {KVXAnimation::Construction, KVXAnimation::TopDown, "自上而下建造"},
        {KVXAnimation::Demolition, KVXAnimation::BackToFront, "平移推进拆除"},
        {KVXAnimation::Demolition, KVXAnimation::BottomUp, "自下而上拆除"},
        {KVXAnimation::Demolition, KVXAnimation::TopDown, "自上而下拆除"},
        {KVXAnimation::Path, KVXAnimation::TopDown, "路径"},
        {KVXAnimation::Rotation, KVXAnimation::BottomUp, "旋转"},
        {KVXAnimation::Emphasis, KVXAnimation::LeftToRight, "强调"},
        {KVXAnimation::Demolition, 7, ""},
        {5, KVXAnimation::LeftToRight, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::Message() << "type " << row.type << ", translation " << row.translation);
        KVXAnimation record;
        record.setAnimationType(static_cast<KVXAnimation::AnimType>(row.type));
        record.setTranslationType(static_cast<KVXAnimation::TranslationType>(row.translation));
        EXPECT_EQ(record.getAnimationTypeName(), QString::fromUtf8(row.expected));
    }
}

TEST(AnimationRecord, mainConstructorPlansOneVisibleRedDayFromToday)
{
    const QDate today = QDate::currentDate();
    KVXAnimation record(7, 4711, KVXAnimation::Rotation, KVXAnimation::RightToLeft);
    EXPECT_EQ(record.GetColor(), QColor(255, 0, 0, 255));
    EXPECT_TRUE(record.getVisibleFroAnimation());
    EXPECT_EQ(record.getStartDate(), today);
    EXPECT_EQ(record.getEndDate(), today.addDays(1));
    EXPECT_EQ(record.getDurationDays(), 1);
    EXPECT_EQ(record.getLoopEndDate(), today);
    EXPECT_EQ(record.getEndAngle(), 180.0);
    EXPECT_EQ(record.getLayerHeight(), 1000.0);
}

TEST(AnimationRecordCopy, copiesEverythingButVisibilityAndRouteNodes)
{
    for (bool targetVisible : {true, false}) {
        SCOPED_TRACE(targetVisible ? "visible target" : "hidden target");
        KVXAnimation source(1, 2, KVXAnimation::Path, KVXAnimation::LeftToRight);
        populate(source);
        source.setVisibleFroAnimation(!targetVisible);
        source.setPlaying(true);
        source.setPlayed(true);
        // Playback objects are shared, never dereferenced by the record.
        int marker = 0;
        source.setAnimation(reinterpret_cast<vpe::CAnimation*>(&marker));
        source.setAnimator(reinterpret_cast<vpe::CAnimator*>(&marker));
        osg::ref_ptr<osg::Node> node = new osg::Node;
        source.setAntiNode(node.get());
        source.setRouteNode(node.get());
        source.setRouteParentNode(node.get());

        KVXAnimation target(9, 99, KVXAnimation::Rotation, KVXAnimation::TopDown);
        target.setVisibleFroAnimation(targetVisible);
        EXPECT_EQ(target.CopyFrom(&source), Pfad::eOk);
        EXPECT_EQ(describe(target), describe(source));
        EXPECT_EQ(target.getVisibleFroAnimation(), targetVisible);
        EXPECT_TRUE(target.getPlaying() && target.getPlayed());
        EXPECT_EQ(target.getAnimation(), source.getAnimation());
        EXPECT_EQ(target.getAnimator(), source.getAnimator());
        EXPECT_EQ(target.getAntiNode(), node.get());
        EXPECT_EQ(target.getRouteNode(), nullptr);
        EXPECT_EQ(target.getRouteParentNode(), nullptr);
    }
}

TEST(AnimationRecordCopy, foreignClassIsRefusedAfterTheBasePartIsCopied)
{
    KVXBaseObject foreign;
    foreign.SetColor(QColor(0, 0, 255, 128));
    foreign.SetLineType(4);
    foreign.SetClosed(true);
    foreign.SetPoints({{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {1.0, 1.0, 0.0}});
    KVXAnimation target(5, 77, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
    populate(target);
    const QStringList expected = describe(foreign) + recordPart(target);

    EXPECT_EQ(target.CopyFrom(&foreign), Pfad::eInvalidInput);
    EXPECT_EQ(describe(target), expected);
    EXPECT_EQ(target.CopyFrom(nullptr), Pfad::eInvalidInput);
    EXPECT_EQ(describe(target), expected);
}

TEST(AnimationRecordPersistence, writesItsKeysInOrderAfterTheBaseKeysAndReadsThemBack)
{
    KVXAnimation record(1, 2, KVXAnimation::Path, KVXAnimation::LeftToRight);
    populate(record);
    KVXSaveLoadXml xml;
    record.Save(xml);

    KVXBaseObject base;
    ASSERT_EQ(base.CopyFrom(&record), Pfad::eOk);
    const QStringList written = describe(record);
    EXPECT_EQ(written, describe(base) + recordPart(record));
    QStringList keys, expectedKeys;
    for (const QString& line : recordPart(record))
        keys << line.section(' ', 0, 1);
    for (const auto& [key, type] : kRecordKeys)
        expectedKeys << QStringLiteral("%1 %2").arg(key).arg(static_cast<int>(type));
    EXPECT_EQ(keys, expectedKeys);

    KVXAnimation loaded;
    loaded.Load(xml);
    EXPECT_EQ(describe(loaded), written);
    EXPECT_TRUE(xml.unconsumedKeys().isEmpty()) << xml.unconsumedKeys().join(',').toStdString();
}

TEST(AnimationRecordPersistence, missingKeysLoadAsTheZeroesOfAFreshRecord)
{
    KVXAnimation record(1, 2, KVXAnimation::Path, KVXAnimation::LeftToRight);
    populate(record);
    KVXSaveLoadXml empty;
    record.getElementPropertys(empty);
    KVXAnimation fresh;
    EXPECT_EQ(recordPart(record), recordPart(fresh));
    EXPECT_FALSE(record.getStartDate().isValid());
}

TEST(AnimationRecordPersistence, datesAreEightDigitsInvalidOnesEmptyAndMalformedTextReadsInvalid)
{
    for (const auto& [date, text] : {std::pair(QDate(2021, 3, 5), "20210305"), std::pair(QDate(), "")}) {
        SCOPED_TRACE(text);
        KVXAnimation record(1, 2, KVXAnimation::Construction, KVXAnimation::LeftToRight);
        record.setStartDate(date);
        record.setEndDate(date);
        record.setLoopEndDate(date);
        KVXSaveLoadXml xml;
        record.setElementPropertys(xml);
        for (const char* key : {"AnimationStartDate", "AnimationEndDate", "AnimationLoopEndDate"})
            EXPECT_EQ(xml.getString(QString::fromLatin1(key), QStringLiteral("<missing>")), QString::fromLatin1(text));
        xml.rewind();
        KVXAnimation loaded;
        loaded.getElementPropertys(xml);
        EXPECT_EQ(loaded.getStartDate(), date);
        EXPECT_EQ(loaded.getEndDate(), date);
        EXPECT_EQ(loaded.getLoopEndDate(), date);
    }

    for (const char* text : {"2021-02-28", "20210230", "2021022", "abcdefgh"}) {
        KVXSaveLoadXml xml;
        KVXAnimation(1, 2, KVXAnimation::Construction, KVXAnimation::LeftToRight).setElementPropertys(xml);
        for (KVXSaveLoadXml::Property& property : xml.properties()) {
            if (property.key == QStringLiteral("AnimationStartDate"))
                property.text = QString::fromLatin1(text);
        }
        KVXAnimation loaded;
        loaded.getElementPropertys(xml);
        EXPECT_FALSE(loaded.getStartDate().isValid()) << text;
        EXPECT_EQ(loaded.getEndDate(), QDate::currentDate().addDays(1)) << text;
    }
}

TEST(AnimationRecordDrawing, onlyAVisibleRecordDrawsInEitherView)
{
    using Draw = bool (KVXAnimation::*)(PfGiWorldDraw*, vpe::CSceneNode*&);
    for (Draw draw : {&KVXAnimation::draw2d, &KVXAnimation::draw3d}) {
        SCOPED_TRACE(draw == &KVXAnimation::draw2d ? "plan" : "model");
        PfGiWorldDraw context;
        KVXAnimation record(1, 2, KVXAnimation::Path, KVXAnimation::LeftToRight);
        vpe::CSceneNode* node = nullptr;
        // A visible record answers true even where its base draws nothing.
        EXPECT_TRUE((record.*draw)(&context, node));
        EXPECT_EQ(node, nullptr);
        record.SetPoints({{0.0, 0.0, 0.0}, {1000.0, 0.0, 200.0}});
        record.setVisibleFroAnimation(false);
        EXPECT_FALSE((record.*draw)(&context, node));
        EXPECT_EQ(node, nullptr);
        record.setVisibleFroAnimation(true);
        EXPECT_TRUE((record.*draw)(&context, node));
        // The caller takes over the node's reference.
        EXPECT_NE(osg::ref_ptr<osg::Node>(node), nullptr);
    }
}

} // namespace
