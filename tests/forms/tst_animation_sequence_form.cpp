#include "animation/KVXAnimatorManager.h"
#include "forms/KVXAnimationModel.h"
#include "forms/KVXAnimationPropertyForm.h"
#include "forms/KVXAnimationSequenceForm.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfGsModelView.h"
#include "host/model/ZUpdater.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QDateEdit>
#include <QMenu>
#include <QTableView>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

// Two storeys, "A" with two records and "B" with one.
class SequenceForm : public ::testing::Test {
protected:
    void SetUp() override
    {
        document = PfDocManagerPtr()->NewDocument();
        PfGsModelView::Attach(document);
        a = addStorey(L"A", 0.0);
        b = addStorey(L"B", 20000.0);
        first = add(a, QDate(2025, 3, 1), QDate(2025, 3, 5));
        second = add(a, QDate(2025, 3, 10), QDate(2025, 3, 15));
        third = add(b, QDate(2025, 3, 1), QDate(2025, 3, 9));
        form->updateData();
    }
    void TearDown() override
    {
        KVXAnimationPropertyForm::freeInstance();
        KVXAnimationSequenceForm::freeInstance();
        PfDocManagerPtr()->CloseAll();
        KVXAnimatorManager::getInstance()->clearAnimations();
    }
    qint64 addStorey(const wchar_t* name, double x)
    {
        auto* storey = new KVX3DElementObject();
        storey->SetName(name);
        storey->AddBody(vpe::CBody::CreateBox({x, 0, 0}, {x + 10000, 6000, 3000}));
        document->GetDatabase()->GetModelSpace()->Add(storey);
        return static_cast<qint64>(storey->GetHandle());
    }
    static KVXAnimation* add(qint64 element, const QDate& start, const QDate& end)
    {
        KVXAnimation* record = KVXAnimatorManager::getInstance()->addKvxAnimation(element, KVXAnimation::Construction,
                                                                                   KVXAnimation::LeftToRight);
        record->setStartDate(start);
        record->setEndDate(end);
        record->setDurationDays(static_cast<int>(start.daysTo(end)));
        return record;
    }
    void select(std::initializer_list<qint64> ids)
    {
        document->GetSelectionSet().Clear();
        for (qint64 id : ids)
            document->GetSelectionSet().Add(static_cast<PfDbHandle>(id));
        ZUpdater::SelectionChanged(document);
    }
    QStringList rows() const
    {
        QStringList shown;
        const QAbstractItemModel* model = form->tableView()->model();
        for (int row = 0; row < model->rowCount(); ++row)
            shown << model->index(row, 0).data().toString() + ' ' + model->index(row, 1).data().toString();
        return shown;
    }
    bool red(int row) const
    {
        return form->model()->index(row, 0).data(Qt::ForegroundRole).value<QBrush>().color() == QColor(Qt::red);
    }
    void click(int row)
    {
        QTableView* view = form->tableView();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(view->model()->index(row, 1)).center());
    }

    KVXAnimationSequenceForm* form = KVXAnimationSequenceForm::getInstance();
    PfDbDocument* document = nullptr;
    qint64 a = 0, b = 0;
    KVXAnimation* first = nullptr;
    KVXAnimation* second = nullptr;
    KVXAnimation* third = nullptr;
};

TEST_F(SequenceForm, listsTheSelectedElementsRecordsOrAll)
{
    EXPECT_EQ(form->model()->headerData(1, Qt::Horizontal).toString(), QStringLiteral("对象"));
    EXPECT_EQ(rows(), (QStringList{"1 A", "2 A", "3 B"}));
    select({b});
    EXPECT_EQ(rows(), QStringList{"3 B"});
    select({b, a});
    EXPECT_EQ(rows(), (QStringList{"3 B", "1 A", "2 A"}));
    form->setResponseSelectedChange(false);
    select({});
    EXPECT_EQ(rows(), (QStringList{"3 B", "1 A", "2 A"})) << "not following the selection now";
}

TEST_F(SequenceForm, conflictingRowsAreRedUntilADateIsMended)
{
    form->show();
    // The second of A now starts inside the first.
    click(1);
    KVXAnimationPropertyForm* properties = KVXAnimationPropertyForm::getInstance();
    ASSERT_EQ(properties->getAnimation(), second);
    properties->startDateEdit()->setDate(QDate(2025, 3, 3));
    EXPECT_TRUE(red(0));
    EXPECT_TRUE(red(1));
    EXPECT_FALSE(red(2));
    properties->startDateEdit()->setDate(QDate(2025, 3, 8));
    EXPECT_FALSE(red(0));
    EXPECT_FALSE(red(1));
    form->hide();
}

TEST_F(SequenceForm, theContextMenuDeletesTheRowUnderTheCursor)
{
    form->resize(400, 300);
    form->show();
    QTableView* view = form->tableView();
    click(0);
    // Below the last row: "删除" does nothing.
    {
        QMenu* shown = nullptr;
        const auto pick = [&shown] {
            shown = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (shown)
                shown->actions().first()->trigger(), shown->close();
        };
        QTimer::singleShot(50, pick);
        emit view->customContextMenuRequested(QPoint(5, view->viewport()->height() - 3));
        ASSERT_NE(shown, nullptr);
        EXPECT_EQ(shown->actions().first()->text(), QStringLiteral("删除"));
    }
    EXPECT_EQ(rows().size(), 3);
    // On the first row: it goes, and the property form shows what now
    // stands in the current row.
    QTimer::singleShot(50, [] {
        if (auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget()))
            menu->actions().first()->trigger(), menu->close();
    });
    emit view->customContextMenuRequested(view->visualRect(view->model()->index(0, 1)).center());
    EXPECT_EQ(rows(), (QStringList{"2 A", "3 B"}));
    EXPECT_EQ(KVXAnimationPropertyForm::getInstance()->getAnimation(), second);
    form->hide();
}

} // namespace
