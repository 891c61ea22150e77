#include "animation/KVXAnimatorManager.h"
#include "animation/KVXTowerAnimation.h"
#include "forms/KVXAddLiftingDataForm.h"
#include "forms/KVXAnimationTowerLiftingForm.h"
#include "forms/KVXAnimationTowerLiftingModel.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/model/PfGsModelView.h"

#include "tests/support/ModalAnswer.h"
#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QCheckBox>
#include <QDateEdit>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

namespace {

const QString kDateRefused = QStringLiteral("顶升时间应在选择动画时间范围内。");
const QString kHeightRefused = QStringLiteral("塔身高度最小为10000(mm)");

// A crane's record from 1 to 31 March 2025, looping to 30 April, with two
// jacking rows.
class TowerLifting : public ::testing::Test {
protected:
    void SetUp() override
    {
        document = PfDocManagerPtr()->NewDocument();
        PfGsModelView::Attach(document);
        auto* crane = new KVXTowerCraneObject();
        document->GetDatabase()->GetModelSpace()->Add(crane);
        tower = KVXTowerAnimation::Cast(KVXAnimatorManager::getInstance()->addKvxAnimation(
            static_cast<qint64>(crane->GetHandle()), KVXAnimation::Rotation, KVXAnimation::LeftToRight));
        ASSERT_NE(tower, nullptr);
        tower->setStartDate(QDate(2025, 3, 1));
        tower->setEndDate(QDate(2025, 3, 31));
        tower->setLoopPlayback(true);
        tower->setLoopEndDate(QDate(2025, 4, 30));
        tower->SetLiftingData({{QDate(2025, 3, 5), 30000}, {QDate(2025, 3, 20), 36000}});
        dialog.setTowerAnimation(tower);
        dialog.initUI();
    }
    void TearDown() override
    {
        PfDocManagerPtr()->CloseAll();
        KVXAnimatorManager::getInstance()->clearAnimations();
    }
    QPushButton* button(const QString& text) const
    {
        for (QPushButton* each : dialog.findChildren<QPushButton*>())
            if (each->text() == text)
                return each;
        return nullptr;
    }
    // Edits a cell through the model as the delegate does; the refusal's text.
    QString edit(int row, int column, const QString& value, bool& taken)
    {
        QString refusal;
        const ModalAnswer answer = ModalAnswer::Acknowledge(&refusal);
        taken = dialog.model()->setData(dialog.model()->index(row, column), value, Qt::EditRole);
        return refusal;
    }

    PfDbDocument* document = nullptr;
    KVXTowerAnimation* tower = nullptr;
    KVXAnimationTowerLiftingForm dialog;
};

TEST_F(TowerLifting, tableShowsOrdinalsFromZeroDatesAndHeights)
{
    const QAbstractItemModel* model = dialog.model();
    ASSERT_EQ(model->rowCount(), 2);
    EXPECT_EQ(model->headerData(2, Qt::Horizontal).toString(), QStringLiteral("塔身高度(mm)"));
    EXPECT_EQ(model->index(0, 0).data().toInt(), 0);
    EXPECT_EQ(model->index(1, 1).data().toString(), QStringLiteral("2025-03-20"));
    EXPECT_EQ(model->index(1, 2).data().toInt(), 36000);
    EXPECT_EQ(dialog.dismantleBox()->text(), QStringLiteral("设置拆除日期"));
}

TEST_F(TowerLifting, editsAreCheckedAgainstTheDaysAndTheLeastHeight)
{
    const struct {
        int column;
        const char* value;
        const QString refusal;
    } cases[] = {
        {1, "2025-03-01", QString()},     {1, "2025-04-30", QString()}, // the loop end counts
        {1, "2025-02-28", kDateRefused},  {1, "2025-05-01", kDateRefused},
        {1, "not a date", kDateRefused},  {2, "10000", QString()},
        {2, "9999", kHeightRefused},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        bool taken = false;
        EXPECT_EQ(edit(0, c.column, QString::fromUtf8(c.value), taken), c.refusal);
        EXPECT_EQ(taken, c.refusal.isEmpty());
    }
    EXPECT_EQ(dialog.model()->index(0, 1).data().toString(), QStringLiteral("2025-04-30"));
    EXPECT_EQ(dialog.model()->index(0, 2).data().toInt(), 10000);
    bool taken = true;
    tower->setLoopPlayback(false);
    EXPECT_EQ(edit(0, 1, QStringLiteral("2025-04-01"), taken), kDateRefused) << "without the loop, the end bounds";
}

TEST_F(TowerLifting, okWritesEverythingAsOneStepAndCancelNothing)
{
    dialog.tableView()->setCurrentIndex(dialog.model()->index(0, 1));
    QTest::mouseClick(button(QStringLiteral("删除")), Qt::LeftButton);
    {
        const ModalAnswer fill([](QWidget* modal) {
            auto* add = qobject_cast<KVXAddLiftingDataForm*>(modal);
            add->dateEdit()->setDate(QDate(2025, 3, 25));
            add->heightEdit()->setText(QStringLiteral("42000"));
            add->onBtnOk();
        });
        QTest::mouseClick(button(QStringLiteral("添加顶升日期")), Qt::LeftButton);
    }
    ASSERT_EQ(dialog.model()->rowCount(), 2);
    EXPECT_EQ(tower->GetLiftingData().size(), 2) << "nothing reaches the record before OK";
    EXPECT_EQ(tower->GetLiftingData().first().height, 30000);

    dialog.dismantleBox()->setChecked(true);
    dialog.dismantleDateEdit()->setDate(QDate(2025, 4, 28));
    QTest::mouseClick(button(QStringLiteral("确定")), Qt::LeftButton);
    const QList<KVXTowerLiftingData> written = tower->GetLiftingData();
    ASSERT_EQ(written.size(), 2);
    EXPECT_EQ(written[0].height, 36000);
    EXPECT_EQ(written[1].date, QDate(2025, 3, 25));
    EXPECT_TRUE(tower->GetIsDismantle());
    EXPECT_EQ(tower->GetDismantleDate(), QDate(2025, 4, 28));
    ASSERT_TRUE(document->GetDatabase()->TransactionManager()->Undo());
    EXPECT_EQ(tower->GetLiftingData().size(), 2);
    EXPECT_EQ(tower->GetLiftingData().first().height, 30000);
    EXPECT_FALSE(tower->GetIsDismantle());

    KVXAnimationTowerLiftingForm cancelled;
    cancelled.setTowerAnimation(tower);
    cancelled.initUI();
    cancelled.model()->removeLiftingRow(0);
    cancelled.onBtnCancel();
    EXPECT_EQ(tower->GetLiftingData().size(), 2);
}

TEST_F(TowerLifting, addingChecksTheDateBeforeTheHeightAndStaysOpen)
{
    KVXAddLiftingDataForm add(tower);
    add.show();
    const struct {
        QDate date;
        const char* height;
        const QString refusal;
    } cases[] = {
        {QDate(2025, 2, 1), "100", kDateRefused},
        {QDate(2025, 3, 10), "", kHeightRefused},
        {QDate(2025, 3, 10), "12000", QString()},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.height);
        add.dateEdit()->setDate(c.date);
        add.heightEdit()->setText(QString::fromUtf8(c.height));
        QString refusal;
        {
            const ModalAnswer answer = ModalAnswer::Acknowledge(&refusal);
            add.onBtnOk();
        }
        EXPECT_EQ(refusal, c.refusal);
        EXPECT_EQ(add.result(), c.refusal.isEmpty() ? QDialog::Accepted : 0);
    }
    EXPECT_EQ(add.getHeight(), 12000);
}

} // namespace
