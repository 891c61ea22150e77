#include "animation/KVXAnimatorManager.h"
#include "animation/KVXTaskRecords.h"
#include "forms/KVXCalendarGrid.h"
#include "forms/KVXConstructionPage.h"
#include "forms/KVXDateTimeLineWidget.h"
#include "forms/KVXScheduleGantt.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfGsModelView.h"
#include "host/vpe/geometry/CBody.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QTest>

#include <memory>

#include <gtest/gtest.h>

namespace {

using State = KVXScheduleGanttRows::State;

// Three elements: task A builds the first two, task B the third; a record
// added by hand on the first overlaps task A's, another on the third does
// not.
class ScheduleGantt : public ::testing::Test {
protected:
    void SetUp() override
    {
        document = PfDocManagerPtr()->NewDocument();
        for (int i = 0; i < 3; ++i) {
            auto* element = new KVX3DElementObject();
            element->SetName(QStringLiteral("E%1").arg(i + 1).toStdWString());
            element->AddBody(vpe::CBody::CreateBox({i * 2000.0, 0, 0}, {i * 2000.0 + 1000, 1000, 3000}));
            document->GetDatabase()->GetModelSpace()->Add(element);
            elements.push_back(element->GetHandle());
        }
        PfGsModelView::Attach(document);
        const auto task = [](PfDbHandle element, const char* id, QDate start, QDate finish) {
            PfTaskRecord record;
            record.element = element;
            record.start = start;
            record.finish = finish;
            record.taskId = record.taskName = QString::fromUtf8(id);
            return record;
        };
        KVXTaskRecords::Outcome outcome;
        ASSERT_TRUE(KVXTaskRecords::Apply(document,
                                          {task(elements[0], "A", day(0), day(2)), task(elements[1], "A", day(0), day(2)),
                                           task(elements[2], "B", day(7), day(7))},
                                          outcome, nullptr));
        byHand(elements[0], day(1), day(3));
        byHand(elements[2], day(1), day(5));
    }
    void TearDown() override { PfDocManagerPtr()->CloseAll(); }

    static QDate day(int n) { return QDate(2026, 3, 2).addDays(n); }
    void byHand(PfDbHandle element, QDate start, QDate end)
    {
        KVXAnimation* record = KVXAnimatorManager::getInstance()->addKvxAnimation(
            static_cast<qint64>(element), KVXAnimation::Construction, KVXAnimation::BottomUp);
        record->setStartDate(start);
        record->setEndDate(end);
        record->setDurationDays(static_cast<int>(start.daysTo(end)));
    }
    static QStringList described(const std::vector<KVXScheduleGanttRows::Row>& rows)
    {
        QStringList lines;
        for (const auto& row : rows)
            lines << QStringLiteral("%1 %2..%3 %4 %5")
                         .arg(row.name, row.start.toString(Qt::ISODate), row.end.toString(Qt::ISODate))
                         .arg(row.numbers.size())
                         .arg(KVXScheduleGanttRows::StateText(row.state));
        return lines;
    }

    PfDbDocument* document = nullptr;
    std::vector<PfDbHandle> elements;
};

TEST_F(ScheduleGantt, rowsGatherTasksInStartOrderAndTellConflictsAndLostElements)
{
    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    manager->checkAnimations();
    std::vector<int> conflicts;
    for (const auto& [number, conflict] : manager->getErrorMap())
        conflicts.push_back(number);
    EXPECT_EQ(described(KVXScheduleGanttRows::Build(manager->getAnimationVector(), conflicts, document)),
              (QStringList{"A 2026-03-02..2026-03-05 2 冲突", "[4] E1 2026-03-03..2026-03-05 1 冲突",
                           "[5] E3 2026-03-03..2026-03-07 1 手动添加", "B 2026-03-09..2026-03-10 1 已关联"}));

    // A record whose element the document lacks (erasing an element takes
    // its records along; a damaged file need not).
    auto lost = std::make_unique<KVXAnimation>(9, 999999, KVXAnimation::Construction, KVXAnimation::BottomUp);
    lost->SetProperty(PfTaskRecord::kTaskIdProperty, QStringLiteral("B"));
    lost->setStartDate(day(7));
    lost->setEndDate(day(8));
    std::vector<KVXAnimation*> records = manager->getAnimationVector();
    records.push_back(lost.get());
    const auto rows = KVXScheduleGanttRows::Build(records, conflicts, document);
    ASSERT_EQ(rows.size(), 4u);
    EXPECT_EQ(rows[3].state, State::Unlinked);
    EXPECT_EQ(rows[3].numbers.size(), 2u);
}

TEST_F(ScheduleGantt, barsStandOnTheTimelinesDaysAndScrollWithIt)
{
    KVXConstructionPage page;
    page.resize(800, 400);
    page.show();
    KVXCalendarGrid* grid = page.timeline()->GetCalendarGrid();
    KVXScheduleGantt* gantt = page.gantt();
    ASSERT_EQ(gantt->Rows().size(), 4u);
    const auto gridX = [&](const QDate& date) {
        return gantt->mapFromGlobal(grid->mapToGlobal(QPoint(grid->XForDate(date), 0))).x();
    };
    const QRect first = gantt->BarRect(0);
    EXPECT_EQ(first.left(), gridX(day(0)));
    EXPECT_EQ(first.right() + 1, gridX(day(3)));
    grid->SetFirstDate(grid->FirstDate().addDays(2), false);
    EXPECT_EQ(gantt->BarRect(0).left(), gridX(day(0)));
    EXPECT_LT(gantt->BarRect(0).left(), first.left()) << "the bar moves left with the days";

    // A click on task B's row shows the site on its first day.
    QTest::mouseClick(gantt, Qt::LeftButton, Qt::NoModifier,
                      QPoint(5, 3 * KVXScheduleGantt::kRowHeight + KVXScheduleGantt::kRowHeight / 2));
    EXPECT_EQ(page.timeline()->GetIndicator(), day(7));
}

} // namespace
