#include "animation/KVXAnimation.h"
#include "host/db/KVXSaveLoadXml.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfGiWorldDraw.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QDate>
#include <QString>

#include <osg/Node>
#include <osg/io_utils>

#include <gtest/gtest.h>

#include <iterator>
#include <ostream>
#include <string>
#include <utility>

namespace {

using Type = KVXSaveLoadXml::Type;

// The record's own keys as the document file holds them, in write order.
const std::pair<const char*, Type> kRecordKeys[] = {
    {"AnimationNumber", Type::Int},
    {"AnimationObjId", Type::Int64},
    {"AnimationStartDate", Type::String},
    {"AnimationEndDate", Type::String},
    {"AnimationDurationDays", Type::Int},
    {"AnimationType", Type::Int},
    {"TranslationType", Type::Int},
    {"AnimationLoopPlayback", Type::Bool},
    {"AnimationLoopEndDate", Type::String},
    {"AnimationStartPoint", Type::Vector},
    {"AnimationEndPoint", Type::Vector},
    {"AnimationStartAngle", Type::Double},
    {"AnimationEndAngle", Type::Double},
    {"AnimationPathRotateAngle", Type::Double},
    {"AnimationIsLayering", Type::Bool},
    {"AnimationLayerHeight", Type::Double},
};

// Every persisted field away from its default; the doubles need all their
// digits and the object id more than 32 bits.
void populate(KVXAnimation& record)
{
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

void expectSamePersistedFields(const KVXAnimation& actual, const KVXAnimation& expected)
{
    EXPECT_EQ(actual.getNumber(), expected.getNumber());
    EXPECT_EQ(actual.getObjId(), expected.getObjId());
    EXPECT_EQ(actual.getStartDate(), expected.getStartDate());
    EXPECT_EQ(actual.getEndDate(), expected.getEndDate());
    EXPECT_EQ(actual.getDurationDays(), expected.getDurationDays());
    EXPECT_EQ(actual.getAnimationType(), expected.getAnimationType());
    EXPECT_EQ(actual.getTranslationType(), expected.getTranslationType());
    EXPECT_EQ(actual.getLoopPlayback(), expected.getLoopPlayback());
    EXPECT_EQ(actual.getLoopEndDate(), expected.getLoopEndDate());
    EXPECT_EQ(actual.getAnimStartPoint(), expected.getAnimStartPoint());
    EXPECT_EQ(actual.getAnimEndPoint(), expected.getAnimEndPoint());
    EXPECT_EQ(actual.getStartAngle(), expected.getStartAngle());
    EXPECT_EQ(actual.getEndAngle(), expected.getEndAngle());
    EXPECT_EQ(actual.getPathRotateAngel(), expected.getPathRotateAngel());
    EXPECT_EQ(actual.getIsLayering(), expected.getIsLayering());
    EXPECT_EQ(actual.getLayerHeight(), expected.getLayerHeight());
}

void replaceText(KVXSaveLoadXml& xml, const QString& key, const QString& text)
{
    for (KVXSaveLoadXml::Property& property : xml.properties()) {
        if (property.key == key)
            property.text = text;
    }
}

struct TypeNameRow {
    const char* name;
    int type;
    int translation;
    const char* expected;
};

void PrintTo(const TypeNameRow& row, std::ostream* os) { *os << row.name; }

class AnimationTypeName : public ::testing::TestWithParam<TypeNameRow> {};

TEST_P(AnimationTypeName, followsTypeAndTranslation)
{
    const TypeNameRow& row = GetParam();
    KVXAnimation record;
    record.setAnimationType(static_cast<KVXAnimation::AnimType>(row.type));
    record.setTranslationType(static_cast<KVXAnimation::TranslationType>(row.translation));
    EXPECT_EQ(record.getAnimationTypeName(), QString::fromUtf8(row.expected));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, AnimationTypeName,
    ::testing::Values(TypeNameRow{"constructionLeftToRight", KVXAnimation::Construction, 0, "平移推进建造"},
                      TypeNameRow{"constructionFrontToBack", KVXAnimation::Construction, 2, "平移推进建造"},
                      TypeNameRow{"constructionBottomUp", KVXAnimation::Construction, 4, "自下而上建造"},
                      TypeNameRow{"constructionTopDown", KVXAnimation::Construction, 5, "自上而下建造"},
                      TypeNameRow{"demolitionBackToFront", KVXAnimation::Demolition, 3, "平移推进拆除"},
                      TypeNameRow{"demolitionBottomUp", KVXAnimation::Demolition, 4, "自下而上拆除"},
                      TypeNameRow{"demolitionTopDown", KVXAnimation::Demolition, 5, "自上而下拆除"},
                      TypeNameRow{"pathIgnoresTranslation", KVXAnimation::Path, 5, "路径"},
                      TypeNameRow{"rotationIgnoresTranslation", KVXAnimation::Rotation, 4, "旋转"},
                      TypeNameRow{"emphasis", KVXAnimation::Emphasis, 0, "强调"},
                      TypeNameRow{"constructionUnknownTranslation", KVXAnimation::Construction, 6, ""},
                      TypeNameRow{"demolitionUnknownTranslation", KVXAnimation::Demolition, 7, ""},
                      TypeNameRow{"unknownType", 5, 0, ""}),
    [](const ::testing::TestParamInfo<TypeNameRow>& info) { return std::string(info.param.name); });

TEST(AnimationRecordConstruction, mainConstructorSetsTheDocumentedDefaults)
{
    const QDate today = QDate::currentDate();
    KVXAnimation record(7, 4711, KVXAnimation::Rotation, KVXAnimation::RightToLeft);

    EXPECT_EQ(record.getNumber(), 7);
    EXPECT_EQ(record.getObjId(), 4711);
    EXPECT_EQ(record.getAnimationType(), KVXAnimation::Rotation);
    EXPECT_EQ(record.getTranslationType(), KVXAnimation::RightToLeft);
    EXPECT_EQ(record.GetColor(), QColor(255, 0, 0, 255));
    EXPECT_EQ(record.GetLineType(), 1);
    EXPECT_EQ(record.GetLineWidth(), 3.0);
    EXPECT_FALSE(record.IsClosed());
    EXPECT_TRUE(record.getVisibleFroAnimation());
    EXPECT_EQ(record.getStartDate(), today);
    EXPECT_EQ(record.getEndDate(), today.addDays(1));
    EXPECT_EQ(record.getDurationDays(), 1);
    EXPECT_FALSE(record.getLoopPlayback());
    EXPECT_EQ(record.getLoopEndDate(), today);
    EXPECT_EQ(record.getStartAngle(), 0.0);
    EXPECT_EQ(record.getEndAngle(), 180.0);
    EXPECT_EQ(record.getPathRotateAngel(), 0.0);
    EXPECT_FALSE(record.getIsLayering());
    EXPECT_EQ(record.getLayerHeight(), 1000.0);
    EXPECT_FALSE(record.getPlaying());
    EXPECT_FALSE(record.getPlayed());
    EXPECT_EQ(record.getAnimation(), nullptr);
    EXPECT_EQ(record.getAnimator(), nullptr);
    EXPECT_EQ(record.getAntiNode(), nullptr);
    EXPECT_EQ(record.getRouteParentNode(), nullptr);
    EXPECT_EQ(record.getRouteNode(), nullptr);
}

TEST(AnimationRecordConstruction, verticalModesWithoutAViewStartAndEndAtZero)
{
    // The element exists, but no view shows it: every scene query is neutral.
    PfDbDocument* document = PfDocManagerPtr()->NewDocument();
    auto* wall = new KVX3DElementObject();
    wall->SetPoints({{0.0, 0.0, 500.0}, {6000.0, 0.0, 3500.0}});
    ASSERT_EQ(document->GetDatabase()->GetModelSpace()->Add(wall), Pfad::eOk);
    const auto wallId = static_cast<qint64>(wall->GetHandle());

    for (auto type : {KVXAnimation::Construction, KVXAnimation::Demolition}) {
        for (auto translation : {KVXAnimation::BottomUp, KVXAnimation::TopDown}) {
            SCOPED_TRACE(QString("type %1, translation %2").arg(type).arg(translation).toStdString());
            KVXAnimation record(1, wallId, type, translation);
            EXPECT_EQ(record.getAnimStartPoint().z(), 0.0);
            EXPECT_EQ(record.getAnimEndPoint().z(), 0.0);
            EXPECT_EQ(record.getNode(), nullptr);
            EXPECT_EQ(record.getMinimumElevation(), 0.0);
            EXPECT_EQ(record.getMaxmumElevation(), 0.0);
            EXPECT_EQ(record.calCenterPt(), vpe::CVec3<double>(0.0, 0.0, 0.0));
        }
    }
    PfDocManagerPtr()->CloseAll();
}

TEST(AnimationRecordCopy, copiesRecordFieldsButNeitherVisibilityNorRouteNodes)
{
    for (bool targetVisible : {true, false}) {
        SCOPED_TRACE(targetVisible ? "visible target" : "hidden target");
        KVXAnimation source(1, 2, KVXAnimation::Path, KVXAnimation::LeftToRight);
        populate(source);
        source.SetColor(QColor(10, 20, 30, 40));
        source.SetPoints({{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}});
        source.setVisibleFroAnimation(!targetVisible);
        source.setPlaying(true);
        source.setPlayed(true);
        // Playback objects are shared, never dereferenced by the record.
        int animationMarker = 0;
        int animatorMarker = 0;
        source.setAnimation(reinterpret_cast<vpe::CAnimation*>(&animationMarker));
        source.setAnimator(reinterpret_cast<vpe::CAnimator*>(&animatorMarker));
        osg::ref_ptr<osg::Node> antiNode = new osg::Node;
        osg::ref_ptr<osg::Node> routeNode = new osg::Node;
        source.setAntiNode(antiNode.get());
        source.setRouteNode(routeNode.get());
        source.setRouteParentNode(routeNode.get());

        KVXAnimation target(9, 99, KVXAnimation::Rotation, KVXAnimation::TopDown);
        target.setVisibleFroAnimation(targetVisible);

        EXPECT_EQ(target.CopyFrom(&source), Pfad::eOk);
        expectSamePersistedFields(target, source);
        EXPECT_EQ(target.GetColor(), QColor(10, 20, 30, 40));
        EXPECT_EQ(target.GetPoints(), source.GetPoints());
        EXPECT_TRUE(target.getPlaying());
        EXPECT_TRUE(target.getPlayed());
        EXPECT_EQ(target.getAnimation(), source.getAnimation());
        EXPECT_EQ(target.getAnimator(), source.getAnimator());
        EXPECT_EQ(target.getAntiNode(), antiNode.get());
        EXPECT_EQ(target.getVisibleFroAnimation(), targetVisible);
        EXPECT_EQ(target.getRouteNode(), nullptr);
        EXPECT_EQ(target.getRouteParentNode(), nullptr);
    }
}

TEST(AnimationRecordCopy, foreignClassIsRefusedAfterTheBasePartIsCopied)
{
    KVXBaseObject foreign;
    foreign.SetColor(QColor(0, 0, 255, 128));
    foreign.SetLineType(4);
    foreign.SetLineWidth(0.5);
    foreign.SetClosed(true);
    foreign.SetPoints({{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {1.0, 1.0, 0.0}});

    KVXAnimation target(5, 77, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
    populate(target);
    KVXAnimation before(target);

    EXPECT_EQ(target.CopyFrom(&foreign), Pfad::eInvalidInput);
    EXPECT_EQ(target.GetColor(), QColor(0, 0, 255, 128));
    EXPECT_EQ(target.GetLineType(), 4);
    EXPECT_EQ(target.GetLineWidth(), 0.5);
    EXPECT_TRUE(target.IsClosed());
    EXPECT_EQ(target.GetPoints(), foreign.GetPoints());
    expectSamePersistedFields(target, before);

    EXPECT_EQ(target.CopyFrom(nullptr), Pfad::eInvalidInput);
    expectSamePersistedFields(target, before);
}

TEST(AnimationRecordPersistence, saveAndLoadKeepEveryKeyedField)
{
    KVXAnimation record(1, 2, KVXAnimation::Path, KVXAnimation::LeftToRight);
    populate(record);
    record.SetColor(QColor(12, 34, 56, 78));
    record.SetPoints({{0.1, 0.2, 0.3}, {1000.0, -2000.0, 0.0}});

    KVXSaveLoadXml xml;
    record.Save(xml);
    KVXAnimation loaded;
    loaded.Load(xml);

    expectSamePersistedFields(loaded, record);
    EXPECT_EQ(loaded.GetColor(), record.GetColor());
    EXPECT_EQ(loaded.GetLineType(), record.GetLineType());
    EXPECT_EQ(loaded.GetLineWidth(), record.GetLineWidth());
    EXPECT_EQ(loaded.GetPoints(), record.GetPoints());
    EXPECT_TRUE(xml.unconsumedKeys().isEmpty()) << xml.unconsumedKeys().join(',').toStdString();
}

TEST(AnimationRecordPersistence, writesItsKeysAfterTheBaseKeysInOrder)
{
    KVXAnimation record(3, 4, KVXAnimation::Path, KVXAnimation::LeftToRight);
    record.SetPoints({{0.0, 0.0, 0.0}, {5.0, 5.0, 0.0}});
    KVXSaveLoadXml xml;
    record.setElementPropertys(xml);

    KVXBaseObject base;
    ASSERT_EQ(base.CopyFrom(&record), Pfad::eOk);
    KVXSaveLoadXml baseXml;
    base.setElementPropertys(baseXml);

    const std::size_t ownKeys = std::size(kRecordKeys);
    ASSERT_EQ(xml.size(), baseXml.size() + ownKeys);
    for (std::size_t i = 0; i < baseXml.size(); ++i)
        EXPECT_EQ(xml.properties()[i].key, baseXml.properties()[i].key) << "base key " << i;
    for (std::size_t i = 0; i < ownKeys; ++i) {
        const KVXSaveLoadXml::Property& property = xml.properties()[baseXml.size() + i];
        SCOPED_TRACE(kRecordKeys[i].first);
        EXPECT_EQ(property.key, QString::fromLatin1(kRecordKeys[i].first));
        EXPECT_EQ(property.type, kRecordKeys[i].second);
    }
}

TEST(AnimationRecordPersistence, missingKeysLoadAsDefaults)
{
    KVXAnimation record(1, 2, KVXAnimation::Path, KVXAnimation::LeftToRight);
    populate(record);
    KVXSaveLoadXml empty;
    record.getElementPropertys(empty);

    EXPECT_EQ(record.getNumber(), 0);
    EXPECT_EQ(record.getObjId(), 0);
    EXPECT_FALSE(record.getStartDate().isValid());
    EXPECT_FALSE(record.getEndDate().isValid());
    EXPECT_EQ(record.getDurationDays(), 0);
    EXPECT_EQ(record.getAnimationType(), KVXAnimation::Construction);
    EXPECT_EQ(record.getTranslationType(), KVXAnimation::LeftToRight);
    EXPECT_FALSE(record.getLoopPlayback());
    EXPECT_FALSE(record.getLoopEndDate().isValid());
    EXPECT_EQ(record.getAnimStartPoint(), vpe::CVec3<double>(0.0, 0.0, 0.0));
    EXPECT_EQ(record.getAnimEndPoint(), vpe::CVec3<double>(0.0, 0.0, 0.0));
    EXPECT_EQ(record.getStartAngle(), 0.0);
    EXPECT_EQ(record.getEndAngle(), 0.0);
    EXPECT_EQ(record.getPathRotateAngel(), 0.0);
    EXPECT_FALSE(record.getIsLayering());
    EXPECT_EQ(record.getLayerHeight(), 0.0);
}

struct DateTextRow {
    const char* name;
    QDate date;
    const char* text;
};

void PrintTo(const DateTextRow& row, std::ostream* os) { *os << row.name; }

class AnimationRecordDateText : public ::testing::TestWithParam<DateTextRow> {};

TEST_P(AnimationRecordDateText, everyDateKeyIsWrittenAndReadAsDigits)
{
    const DateTextRow& row = GetParam();
    KVXAnimation record(1, 2, KVXAnimation::Construction, KVXAnimation::LeftToRight);
    record.setStartDate(row.date);
    record.setEndDate(row.date);
    record.setLoopEndDate(row.date);
    KVXSaveLoadXml xml;
    record.setElementPropertys(xml);

    for (const char* key : {"AnimationStartDate", "AnimationEndDate", "AnimationLoopEndDate"}) {
        SCOPED_TRACE(key);
        ASSERT_TRUE(xml.contains(QString::fromLatin1(key)));
        EXPECT_EQ(xml.getString(QString::fromLatin1(key), QStringLiteral("<missing>")),
                  QString::fromLatin1(row.text));
    }

    xml.rewind();
    KVXAnimation loaded;
    loaded.getElementPropertys(xml);
    EXPECT_EQ(loaded.getStartDate(), row.date);
    EXPECT_EQ(loaded.getEndDate(), row.date);
    EXPECT_EQ(loaded.getLoopEndDate(), row.date);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, AnimationRecordDateText,
    ::testing::Values(DateTextRow{"ordinaryDay", QDate(2021, 2, 28), "20210228"},
                      DateTextRow{"leapDay", QDate(2024, 2, 29), "20240229"},
                      DateTextRow{"singleDigitMonthAndDay", QDate(2021, 3, 5), "20210305"},
                      DateTextRow{"lastDayOfACentury", QDate(1999, 12, 31), "19991231"},
                      DateTextRow{"invalidDateIsEmptyText", QDate(), ""}),
    [](const ::testing::TestParamInfo<DateTextRow>& info) { return std::string(info.param.name); });

TEST(AnimationRecordPersistence, malformedDateTextLoadsAsInvalidDate)
{
    KVXAnimation record(1, 2, KVXAnimation::Construction, KVXAnimation::LeftToRight);
    KVXSaveLoadXml saved;
    record.setElementPropertys(saved);

    for (const char* text : {"2021-02-28", "20210230", "20211301", "2021022", "2021O228", "abcdefgh", ""}) {
        SCOPED_TRACE(text);
        KVXSaveLoadXml xml = saved;
        replaceText(xml, QStringLiteral("AnimationStartDate"), QString::fromLatin1(text));
        KVXAnimation loaded;
        loaded.getElementPropertys(xml);
        EXPECT_FALSE(loaded.getStartDate().isValid()) << loaded.getStartDate().toString().toStdString();
        EXPECT_EQ(loaded.getEndDate(), record.getEndDate());
    }
}

TEST(AnimationRecordDrawing, hiddenRecordDrawsNothingInEitherView)
{
    using Draw = bool (KVXAnimation::*)(PfGiWorldDraw*, vpe::CSceneNode*&);
    const std::pair<const char*, Draw> draws[] = {{"plan", &KVXAnimation::draw2d}, {"model", &KVXAnimation::draw3d}};
    for (const auto& [name, draw] : draws) {
        SCOPED_TRACE(name);
        PfGiWorldDraw context;
        KVXAnimation record(1, 2, KVXAnimation::Path, KVXAnimation::LeftToRight);
        record.SetPoints({{0.0, 0.0, 0.0}, {1000.0, 0.0, 200.0}});

        record.setVisibleFroAnimation(false);
        vpe::CSceneNode* node = nullptr;
        EXPECT_FALSE((record.*draw)(&context, node));
        EXPECT_EQ(node, nullptr);

        record.setVisibleFroAnimation(true);
        EXPECT_TRUE((record.*draw)(&context, node));
        // The caller takes over the node's reference.
        osg::ref_ptr<osg::Node> drawn = node;
        EXPECT_NE(drawn, nullptr);

        // A visible record answers true even where its base draws nothing.
        KVXAnimation pointless(1, 2, KVXAnimation::Path, KVXAnimation::LeftToRight);
        vpe::CSceneNode* none = nullptr;
        EXPECT_TRUE((pointless.*draw)(&context, none));
        EXPECT_EQ(none, nullptr);
    }
}

} // namespace
