#include "animation/KVXAnimationNames.h"
#include "animation/KVXAnimatorManager.h"
#include "forms/KVXCalendarGrid.h"
#include "forms/KVXDateEditDialog.h"
#include "forms/KVXDateTimeLineScrollButton.h"
#include "forms/KVXDateTimeLineWidget.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfGsModelView.h"
#include "host/vpe/render/CViewer.h"
#include "keyframe/KVXKeyFrameAnimationManager.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QApplication>
#include <QDateEdit>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

const QDate kFirst(2025, 1, 1);

// A 640-pixel strip starting on 1 January 2025 at 20 pixels a day.
class DateTimeLine : public ::testing::Test {
protected:
    void SetUp() override
    {
        timeline.resize(640 + 24, timeline.height());
        timeline.show();
        grid()->SetFirstDate(kFirst, false);
    }
    KVXCalendarGrid* grid() { return timeline.GetCalendarGrid(); }
    void sendMouse(QEvent::Type type, const QPoint& at, Qt::MouseButton button, Qt::MouseButtons held)
    {
        QMouseEvent event(type, at, grid()->mapToGlobal(at), button, held, Qt::NoModifier);
        QApplication::sendEvent(grid(), &event);
    }
    void wheel(int delta, Qt::KeyboardModifiers modifiers, const QPoint& at = {300, 40})
    {
        QWheelEvent event(at, grid()->mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton, modifiers,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(grid(), &event);
    }
    static QStringList labels(const QVector<KVXCalendarGrid::BandCell>& cells)
    {
        QStringList list;
        for (const auto& cell : cells)
            list << cell.label;
        return list;
    }

    KVXDateTimeLineWidget timeline;
};

TEST_F(DateTimeLine, aClickAtTheLeftEdgeTakesTheFirstDateAndScrollsItIn)
{
    QSignalSpy moved(&timeline, &KVXDateTimeLineWidget::indicatorChanged);
    QTest::mouseClick(grid(), Qt::LeftButton, Qt::NoModifier, QPoint(0, 40));
    EXPECT_EQ(timeline.GetIndicator(), kFirst);
    ASSERT_EQ(moved.count(), 1);
    EXPECT_EQ(moved.at(0).at(0).toDate(), kFirst);
    // The strip scrolled so that the indicator is back inside the margin.
    EXPECT_LT(grid()->FirstDate(), kFirst);
    EXPECT_GE(grid()->XForDate(kFirst), KVXCalendarGrid::kMargin);

    QTest::mouseClick(grid(), Qt::LeftButton, Qt::NoModifier, grid()->IndicatorBox().center() + QPoint(200, 30));
    const QDate clicked = timeline.GetIndicator();
    EXPECT_EQ(moved.count(), 2);
    timeline.GetCalendarGrid()->SetIndicator(clicked, true);
    EXPECT_EQ(moved.count(), 2) << "the same date twice plays once";
}

TEST_F(DateTimeLine, dragAndPanAndArrowKeys)
{
    grid()->SetIndicator(kFirst.addDays(10), false);
    QSignalSpy moved(&timeline, &KVXDateTimeLineWidget::indicatorChanged);
    const QPoint box = grid()->IndicatorBox().center();
    sendMouse(QEvent::MouseButtonPress, box, Qt::LeftButton, Qt::LeftButton);
    sendMouse(QEvent::MouseMove, box + QPoint(100, 0), Qt::NoButton, Qt::LeftButton);
    sendMouse(QEvent::MouseButtonRelease, box + QPoint(100, 0), Qt::LeftButton, Qt::NoButton);
    EXPECT_EQ(timeline.GetIndicator(), kFirst.addDays(15)) << "dragged five days on";
    EXPECT_EQ(moved.count(), 1);

    sendMouse(QEvent::MouseButtonPress, {300, 40}, Qt::MiddleButton, Qt::MiddleButton);
    sendMouse(QEvent::MouseMove, {310, 40}, Qt::NoButton, Qt::MiddleButton);
    EXPECT_EQ(grid()->FirstDate(), kFirst) << "half a day does not pan";
    sendMouse(QEvent::MouseMove, {340, 40}, Qt::NoButton, Qt::MiddleButton);
    EXPECT_EQ(grid()->FirstDate(), kFirst.addDays(-2));
    sendMouse(QEvent::MouseButtonRelease, {340, 40}, Qt::MiddleButton, Qt::NoButton);

    QTest::keyClick(grid(), Qt::Key_Right);
    EXPECT_EQ(timeline.GetIndicator(), kFirst.addDays(16));
    QTest::keyClick(grid(), Qt::Key_Left);
    QTest::keyClick(grid(), Qt::Key_Left);
    EXPECT_EQ(timeline.GetIndicator(), kFirst.addDays(14));
    EXPECT_EQ(moved.count(), 4);
}

TEST_F(DateTimeLine, zoomStopsAtItsLimitsAndScrollingFollowsTheScale)
{
    wheel(120, Qt::ControlModifier);
    EXPECT_EQ(grid()->ZoomLevel(), 0) << "no closer than 20 pixels a day";
    const QDate under = grid()->DateAtX(300);
    wheel(-120, Qt::ControlModifier);
    EXPECT_EQ(grid()->ZoomLevel(), 1);
    EXPECT_EQ(grid()->PixelsPerDay(), 5.0f);
    EXPECT_EQ(grid()->DateAtX(300), under) << "zoomed about the mouse";
    for (int i = 0; i < 3; ++i)
        wheel(-30, Qt::ControlModifier);
    EXPECT_EQ(grid()->ZoomLevel(), 3) << "no farther than a pixel a day";

    const QDate first = grid()->FirstDate();
    wheel(120, Qt::NoModifier);
    EXPECT_EQ(grid()->FirstDate(), first.addDays(-100)) << "a hundred pixels at a pixel a day";
    wheel(-120, Qt::NoModifier);
    EXPECT_EQ(grid()->FirstDate(), first);
}

TEST_F(DateTimeLine, bandsByZoomLevel)
{
    EXPECT_EQ(labels(grid()->BandCells(1)).value(0), "2025年");
    EXPECT_EQ(labels(grid()->BandCells(2)).value(0), "1月");
    EXPECT_EQ(labels(grid()->BandCells(3)).mid(0, 3), QStringList({"01", "02", "03"}));
    grid()->SetZoomLevel(1);
    EXPECT_EQ(labels(grid()->BandCells(3)).value(0), "1周") << "the week of 30 December 2024";
    grid()->SetZoomLevel(2);
    EXPECT_EQ(labels(grid()->BandCells(3)).mid(0, 6), QStringList({"上旬", "中旬", "下旬", "上旬", "中旬", "下旬"}));
    const auto tenDays = grid()->BandCells(3);
    EXPECT_EQ(tenDays[2].right - tenDays[2].left, 11 * 3) << "21 to 31 January";
    grid()->SetZoomLevel(3);
    EXPECT_EQ(labels(grid()->BandCells(2)).mid(0, 3), QStringList({"第一季度", "第二季度", "第三季度"}));
    EXPECT_EQ(labels(grid()->BandCells(3)).mid(0, 2), QStringList({"1月", "2月"}));
    const auto quarters = grid()->BandCells(2);
    EXPECT_LE(quarters.last().right, grid()->width());
    EXPECT_GE(quarters.last().right, grid()->width() - 92) << "the band reaches the end of the strip";
}

TEST_F(DateTimeLine, scrollButtonsStepWithoutPlaying)
{
    grid()->SetIndicator(kFirst.addDays(10), false);
    QSignalSpy moved(&timeline, &KVXDateTimeLineWidget::indicatorChanged);
    QTest::mouseClick(timeline.GetScrollButton(true), Qt::LeftButton);
    EXPECT_EQ(timeline.GetIndicator(), kFirst.addDays(9));
    QTest::mouseClick(timeline.GetScrollButton(false), Qt::LeftButton);
    QTest::mouseClick(timeline.GetScrollButton(false), Qt::LeftButton);
    EXPECT_EQ(timeline.GetIndicator(), kFirst.addDays(11));
    EXPECT_EQ(moved.count(), 0);
    timeline.SetIndicator(kFirst.addDays(20));
    EXPECT_EQ(moved.count(), 0) << "the playing clock moves it silently";
}

TEST_F(DateTimeLine, aStripThatIsNotEditableOnlyOpensItsMenu)
{
    grid()->SetIndicator(kFirst.addDays(10), false);
    timeline.SetEditable(false);
    EXPECT_FALSE(timeline.GetScrollButton(true)->isEnabled());
    QSignalSpy moved(&timeline, &KVXDateTimeLineWidget::indicatorChanged);
    QTest::mouseClick(grid(), Qt::LeftButton, Qt::NoModifier, QPoint(500, 40));
    wheel(-120, Qt::ControlModifier);
    wheel(120, Qt::NoModifier);
    QTest::keyClick(grid(), Qt::Key_Right);
    EXPECT_EQ(timeline.GetIndicator(), kFirst.addDays(10));
    EXPECT_EQ(grid()->ZoomLevel(), 0);
    EXPECT_EQ(grid()->FirstDate(), kFirst);
    EXPECT_EQ(moved.count(), 0);

    bool opened = false;
    QTimer::singleShot(0, [&] {
        opened = QApplication::activePopupWidget() == timeline.GetMenu();
        timeline.GetMenu()->close();
    });
    QContextMenuEvent menu(QContextMenuEvent::Mouse, QPoint(100, 20), timeline.mapToGlobal(QPoint(100, 20)));
    QApplication::sendEvent(&timeline, &menu);
    EXPECT_TRUE(opened);
}

TEST_F(DateTimeLine, locatingADateMovesTheIndicatorThere)
{
    QSignalSpy moved(&timeline, &KVXDateTimeLineWidget::indicatorChanged);
    QTimer::singleShot(0, [&] {
        KVXDateEditDialog* dialog = timeline.GetDateEditDialog();
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(dialog->windowTitle(), "定位日期");
        dialog->GetDateEdit()->setDate(QDate(2025, 6, 1));
        dialog->accept();
    });
    timeline.onLocateDateTime();
    EXPECT_EQ(timeline.GetIndicator(), QDate(2025, 6, 1));
    EXPECT_EQ(moved.count(), 1);
}

TEST_F(DateTimeLine, theIndicatorLineRunsThroughTheMiddleOfItsBox)
{
    grid()->SetIndicator(kFirst.addDays(10), false);
    const QImage picture = grid()->grab().toImage();
    const QRect box = grid()->IndicatorBox();
    const int middle = box.left() + box.width() / 2;
    const int y = (box.bottom() + grid()->height()) / 2;
    const auto red = [&](int x) {
        const QColor c = picture.pixelColor(x, y);
        return c.red() > 200 && c.green() < 120 && c.blue() < 120;
    };
    EXPECT_TRUE(red(middle));
    EXPECT_FALSE(red(middle - 1));
    EXPECT_FALSE(red(middle + 1));
}

TEST_F(DateTimeLine, thePlayingScheduleMovesTheTimelineItWasGivenOnly)
{
    KVXDateTimeLineWidget other;
    KVXKeyFrameAnimationManager::SetDateLineWidget(&timeline);
    PfDbDocument* document = PfDocManagerPtr()->NewDocument();
    vpe::CViewer* viewer = PfGsModelView::Attach(document)->GetViewer();
    auto* storey = new KVX3DElementObject();
    storey->AddBody(vpe::CBody::CreateBox({0, 0, 0}, {1000, 1000, 3000}));
    document->GetDatabase()->GetModelSpace()->Add(storey);
    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    KVXAnimation* record =
        manager->addKvxAnimation(static_cast<qint64>(storey->GetHandle()), KVXAnimation::Construction,
                                 KVXAnimation::BottomUp);
    record->setStartDate(QDate(2025, 2, 1));
    record->setEndDate(QDate(2025, 2, 11));
    manager->play();
    viewer->GetClock()->Tick(4.0);
    EXPECT_EQ(timeline.GetIndicator(), QDate(2025, 2, 5));
    EXPECT_FALSE(other.GetIndicator().isValid()) << "building a timeline registers nothing";
    manager->stop();
    KVXKeyFrameAnimationManager::SetDateLineWidget(nullptr);
    PfDocManagerPtr()->CloseAll();
}

} // namespace
