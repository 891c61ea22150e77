#include "animation/KVXAnimatorManager.h"
#include "animation/KVXTowerAnimation.h"
#include "forms/KVXAnimationPropertyForm.h"
#include "forms/KVXAnimationTowerLiftingForm.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/model/PfEdInformation.h"
#include "host/model/PfGsModelView.h"

#include "tests/support/ModalAnswer.h"
#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

struct InformationLog : PfEdInformationSink {
    void Show(const QString& title, const QString& text) override { shown << title + '|' + text; }
    QStringList shown;
};

// A storey 3 m high and a crane in a document with a view; the form shows
// a record of one of them.
class PropertyForm : public ::testing::Test {
protected:
    void SetUp() override
    {
        document = PfDocManagerPtr()->NewDocument();
        PfGsModelView::Attach(document);
        auto* box = new KVX3DElementObject();
        box->AddBody(vpe::CBody::CreateBox({0, 0, 0}, {10000, 6000, 3000}));
        document->GetDatabase()->GetModelSpace()->Add(box);
        storey = static_cast<qint64>(box->GetHandle());
        auto* tower = new KVXTowerCraneObject();
        document->GetDatabase()->GetModelSpace()->Add(tower);
        crane = static_cast<qint64>(tower->GetHandle());
        previousSink = PfEdInformationSink::Install(&information);
    }
    void TearDown() override
    {
        PfEdInformationSink::Install(previousSink);
        KVXAnimationPropertyForm::freeInstance();
        PfDocManagerPtr()->CloseAll();
        KVXAnimatorManager::getInstance()->clearAnimations();
    }
    KVXAnimation* show(qint64 element, KVXAnimation::AnimType type, KVXAnimation::TranslationType direction)
    {
        KVXAnimation* record = KVXAnimatorManager::getInstance()->addKvxAnimation(element, type, direction);
        record->setStartDate(QDate(2025, 3, 1));
        record->setEndDate(QDate(2025, 3, 11));
        record->setDurationDays(10);
        record->setLoopEndDate(QDate(2025, 3, 20));
        form->setAnimation(record);
        form->updateData();
        return record;
    }
    // Types the text over the field's and leaves it with Return.
    static void type(QLineEdit* edit, const QString& text)
    {
        edit->selectAll();
        QTest::keyClicks(edit, text);
        QTest::keyClick(edit, Qt::Key_Return);
    }
    PfDbTransactionManager* undo() const { return document->GetDatabase()->TransactionManager(); }

    KVXAnimationPropertyForm* form = KVXAnimationPropertyForm::getInstance();
    PfDbDocument* document = nullptr;
    qint64 storey = 0;
    qint64 crane = 0;
    InformationLog information;
    PfEdInformationSink* previousSink = nullptr;
};

TEST_F(PropertyForm, eachKindShowsItsOwnRows)
{
    struct Case {
        bool craneElement;
        KVXAnimation::AnimType type;
        KVXAnimation::TranslationType direction;
        // elevations, translation, layering, angles, path turn, jacking
        bool rows[6];
    };
    const Case cases[] = {
        {false, KVXAnimation::Construction, KVXAnimation::BottomUp, {true, false, false, false, false, false}},
        {false, KVXAnimation::Demolition, KVXAnimation::RightToLeft, {false, true, true, false, false, false}},
        {false, KVXAnimation::Rotation, KVXAnimation::LeftToRight, {false, false, false, true, false, false}},
        {true, KVXAnimation::Rotation, KVXAnimation::LeftToRight, {false, false, false, true, false, true}},
        {false, KVXAnimation::Path, KVXAnimation::LeftToRight, {false, false, false, false, true, false}},
        {false, KVXAnimation::Emphasis, KVXAnimation::LeftToRight, {false, false, false, false, false, false}},
    };
    form->show();
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "type " << c.type << ", direction " << c.direction << ", crane "
                                        << c.craneElement);
        show(c.craneElement ? crane : storey, c.type, c.direction);
        const QWidget* editors[] = {form->startElevationEdit(), form->translationCombo(), form->layeringBox(),
                                    form->startAngleEdit(),     form->pathRotateEdit(),   form->towerButton()};
        for (int row = 0; row < 6; ++row)
            EXPECT_EQ(editors[row]->isVisible(), c.rows[row]) << "row " << row;
    }
    form->hide();
}

TEST_F(PropertyForm, datesAndDaysFollowEachOther)
{
    KVXAnimation* record = show(storey, KVXAnimation::Construction, KVXAnimation::LeftToRight);
    EXPECT_EQ(form->getAnimationID(), QString::number(record->getNumber()));
    type(form->durationEdit(), "5");
    EXPECT_EQ(record->getDurationDays(), 5);
    EXPECT_EQ(record->getEndDate(), QDate(2025, 3, 6));
    EXPECT_EQ(form->getEndDate(), QDate(2025, 3, 6));

    form->endDateEdit()->setDate(QDate(2025, 3, 9));
    EXPECT_EQ(form->getDurationTime(), QStringLiteral("8"));
    EXPECT_EQ(record->getDurationDays(), 8);

    // Moving the start keeps the days and moves the end.
    form->startDateEdit()->setDate(QDate(2025, 3, 4));
    EXPECT_EQ(record->getStartDate(), QDate(2025, 3, 4));
    EXPECT_EQ(record->getEndDate(), QDate(2025, 3, 12));

    // Past the loop end: the loop end is pulled up to the start.
    form->startDateEdit()->setDate(QDate(2025, 3, 25));
    EXPECT_EQ(form->getRepeatEndDate(), QDate(2025, 3, 25));
    EXPECT_EQ(record->getLoopEndDate(), QDate(2025, 3, 25));

    // No days: the end is the start.
    form->durationEdit()->clear();
    EXPECT_EQ(record->getEndDate(), QDate(2025, 3, 25));
    EXPECT_EQ(record->getDurationDays(), 0);
}

TEST_F(PropertyForm, layerThicknessIsKeptBetweenAFiftiethAndTheWholeHeight)
{
    KVXAnimation* record = show(storey, KVXAnimation::Construction, KVXAnimation::LeftToRight);
    form->show();
    QTest::mouseClick(form->layeringBox(), Qt::LeftButton, {}, QPoint(2, form->layeringBox()->height() / 2));
    ASSERT_TRUE(record->getIsLayering());
    EXPECT_TRUE(form->layerHeightEdit()->isVisible());
    const struct {
        const char* text;
        bool taken;
    } cases[] = {{"60", true}, {"3000", true}, {"59.9", false}, {"3000.5", false}, {"1000", true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const double before = record->getLayerHeight();
        information.shown.clear();
        type(form->layerHeightEdit(), c.text);
        if (c.taken) {
            EXPECT_EQ(record->getLayerHeight(), QString(c.text).toDouble());
            EXPECT_TRUE(information.shown.isEmpty());
        } else {
            EXPECT_EQ(record->getLayerHeight(), before);
            EXPECT_EQ(information.shown, QStringList{"提示|输入范围:[构件高度/50，构件高度]（[60,3000]）"});
            EXPECT_EQ(form->layerHeightEdit()->text(), QString::number(before));
        }
    }
    form->hide();
}

TEST_F(PropertyForm, everyEditIsOneUndoStepAndSurvivesSaving)
{
    KVXAnimation* record = show(storey, KVXAnimation::Construction, KVXAnimation::BottomUp);
    const PfDbHandle handle = record->GetHandle();
    struct Edit {
        const char* name;
        std::function<void()> make;
        std::function<QString()> read;
    };
    const Edit edits[] = {
        {"start date", [&] { form->startDateEdit()->setDate(QDate(2025, 3, 3)); },
         [&] { return record->getStartDate().toString(Qt::ISODate) + record->getEndDate().toString(Qt::ISODate); }},
        {"days", [&] { type(form->durationEdit(), "12"); },
         [&] { return QString::number(record->getDurationDays()) + record->getEndDate().toString(Qt::ISODate); }},
        {"loop", [&] { form->repeatBox()->setChecked(!form->repeatBox()->isChecked()); },
         [&] { return QString::number(record->getLoopPlayback()); }},
        {"end elevation", [&] { type(form->endElevationEdit(), "2.5"); },
         [&] { return QString::number(record->getAnimEndPoint().z()); }},
    };
    for (const Edit& edit : edits) {
        SCOPED_TRACE(edit.name);
        const QString before = edit.read();
        edit.make();
        const QString after = edit.read();
        EXPECT_NE(after, before);
        ASSERT_TRUE(undo()->Undo());
        EXPECT_EQ(edit.read(), before) << "one undo takes the whole edit back";
        EXPECT_EQ(form->getStartDate(), record->getStartDate()) << "the form shows the record again";
        EXPECT_EQ(form->getDurationTime(), QString::number(record->getDurationDays()));
        ASSERT_TRUE(undo()->Redo());
        EXPECT_EQ(edit.read(), after);
    }

    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("site.kvx"));
    ASSERT_TRUE(document->Save(path));
    PfDocManagerPtr()->CloseAll();
    form->setAnimation(nullptr);
    PfDbDocument* reopened = PfDocManagerPtr()->OpenDocument(path);
    ASSERT_NE(reopened, nullptr);
    auto* read = KVXAnimation::Cast(reopened->GetDatabase()->OpenObject(handle));
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read->getStartDate(), QDate(2025, 3, 3));
    EXPECT_EQ(read->getDurationDays(), 12);
    EXPECT_EQ(read->getEndDate(), QDate(2025, 3, 15));
    EXPECT_EQ(read->getAnimEndPoint().z(), 2500.0);
}

TEST_F(PropertyForm, theOtherFieldsOfEachKindAreUndoneOneEditAtATime)
{
    struct Edit {
        KVXAnimation::AnimType type;
        KVXAnimation::TranslationType direction;
        std::function<void()> make;
        std::function<QString(const KVXAnimation*)> read;
    };
    const Edit edits[] = {
        {KVXAnimation::Construction, KVXAnimation::LeftToRight,
         [&] { form->repeatEndDateEdit()->setDate(QDate(2025, 3, 28)); },
         [](const KVXAnimation* r) { return r->getLoopEndDate().toString(Qt::ISODate); }},
        {KVXAnimation::Construction, KVXAnimation::LeftToRight, [&] { form->translationCombo()->setCurrentIndex(2); },
         [](const KVXAnimation* r) { return QString::number(r->getTranslationType()); }},
        {KVXAnimation::Construction, KVXAnimation::LeftToRight, [&] { form->layeringBox()->setChecked(true); },
         [](const KVXAnimation* r) { return QString::number(r->getIsLayering()); }},
        {KVXAnimation::Demolition, KVXAnimation::TopDown, [&] { type(form->startElevationEdit(), "2.75"); },
         [](const KVXAnimation* r) { return QString::number(r->getAnimStartPoint().z()); }},
        {KVXAnimation::Rotation, KVXAnimation::LeftToRight, [&] { type(form->startAngleEdit(), "45"); },
         [](const KVXAnimation* r) { return QString::number(r->getStartAngle()); }},
        {KVXAnimation::Rotation, KVXAnimation::LeftToRight, [&] { type(form->endAngleEdit(), "135"); },
         [](const KVXAnimation* r) { return QString::number(r->getEndAngle()); }},
        {KVXAnimation::Path, KVXAnimation::LeftToRight, [&] { type(form->pathRotateEdit(), "90"); },
         [](const KVXAnimation* r) { return QString::number(r->getPathRotateAngel()); }},
    };
    for (const Edit& edit : edits) {
        const KVXAnimation* record = show(storey, edit.type, edit.direction);
        SCOPED_TRACE(record->getNumber());
        const QString before = edit.read(record);
        edit.make();
        const QString after = edit.read(record);
        EXPECT_NE(after, before);
        ASSERT_TRUE(undo()->Undo());
        EXPECT_EQ(edit.read(record), before);
        ASSERT_TRUE(undo()->Redo());
        EXPECT_EQ(edit.read(record), after);
    }
}

TEST_F(PropertyForm, theJackingButtonOpensTheCranesLiftingDialog)
{
    show(crane, KVXAnimation::Rotation, KVXAnimation::LeftToRight);
    QString title;
    QSize size;
    const ModalAnswer look([&](QWidget* modal) {
        title = modal->windowTitle();
        size = modal->size();
        modal->close();
    });
    form->show();
    QTest::mouseClick(form->towerButton(), Qt::LeftButton);
    form->hide();
    EXPECT_EQ(title, QStringLiteral("塔吊顶升参数设置"));
    EXPECT_EQ(size, QSize(480, 240));
}

TEST_F(PropertyForm, withoutAnAnimationNothingChanges)
{
    form->setDurationTime(QStringLiteral("7"));
    form->setAnimationID(QStringLiteral("x"));
    form->updateData();
    EXPECT_EQ(form->getDurationTime(), QStringLiteral("7"));
    EXPECT_EQ(form->getAnimationID(), QStringLiteral("x"));
}

} // namespace
