#include "forms/KVXDateTimeLineWidget.h"
#include "host/db/PfDocManager.h"
#include "host/model/PfGsModelView.h"
#include "keyframe/KVXAnimationKeyFramePanel.h"
#include "keyframe/KVXAnimationTimeLineWidget.h"
#include "keyframe/KVXCameraKeyFrame.h"
#include "keyframe/KVXDateKeyFrame.h"
#include "keyframe/KVXKeyFrameAnimationManager.h"
#include "keyframe/KvxAnimationButtonsPanel.h"
#include "keyframe/KvxKeyFrameAnimationSettingDialog.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QComboBox>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>

#include <gtest/gtest.h>

namespace {

// A 400-pixel timeline at the defaults: 1000 ms and 10 pixels a step.
class KeyFrameTimeLine : public ::testing::Test {
protected:
    void SetUp() override
    {
        timeLine.resize(400, 100);
        timeLine.show();
    }
    KvxAnimationTimeScale* scale() { return timeLine.GetTimeScaleWidget(); }
    void wheel(int delta, Qt::KeyboardModifiers modifiers)
    {
        QWidget* target = timeLine.viewport();
        const QPoint at(50, 20);
        QWheelEvent event(at, target->mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton, modifiers,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(target, &event);
    }
    // QTest moves the cursor rather than send a move; a drag wants the event.
    void dragTo(int x)
    {
        QMouseEvent event(QEvent::MouseMove, QPoint(x, 20), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(scale(), &event);
    }
    bool indicatorInView()
    {
        const int x = scale()->XForTime(timeLine.GetTimeIndicator());
        const int left = timeLine.horizontalScrollBar()->value();
        return x >= left && x < left + timeLine.viewport()->width();
    }

    KVXAnimationTimeLineWidget timeLine;
};

TEST_F(KeyFrameTimeLine, timesAreDrawnAtTheStepToTheirLeft)
{
    const struct {
        int msPerStep, pixels;
        Time_Ms time;
        int x;
    } cases[] = {{1000, 10, 2500, 25}, {1000, 10, 0, 5}, {1000, 10, 999, 5},
                 {500, 10, 2500, 55},  {100, 4, 1234, 50}, {12000, 100, 60000, 550}};
    for (const auto& c : cases) {
        scale()->SetTimeUnit(c.msPerStep);
        scale()->SetPixelsPerStep(c.pixels);
        EXPECT_EQ(scale()->XForTime(c.time), c.x) << c.msPerStep << ' ' << c.time;
    }
}

TEST_F(KeyFrameTimeLine, draggingSnapsToWholeStepsAndNeverGoesBeforeZero)
{
    QSignalSpy moved(scale(), SIGNAL(IndicatorMoved(Time_Ms)));
    QTest::mousePress(scale(), Qt::LeftButton, Qt::NoModifier, QPoint(100, 20));
    dragTo(39);
    EXPECT_EQ(timeLine.GetTimeIndicator(), 3000u);
    dragTo(-30);
    EXPECT_EQ(timeLine.GetTimeIndicator(), 0u);
    dragTo(2);
    QTest::mouseRelease(scale(), Qt::LeftButton, Qt::NoModifier, QPoint(2, 20));
    EXPECT_FALSE(scale()->IsDragging());
    ASSERT_EQ(moved.size(), 3) << "a move to the same time again is not told";
    EXPECT_EQ(moved[1][0].value<Time_Ms>(), 3000u);
    EXPECT_EQ(moved[2][0].value<Time_Ms>(), 0u);
}

TEST_F(KeyFrameTimeLine, labelsReadMinutesAndSecondsWithHoursInFront)
{
    EXPECT_EQ(KvxAnimationTimeScale::FormatTime(0), QStringLiteral("00:00"));
    EXPECT_EQ(KvxAnimationTimeScale::FormatTime(65500), QStringLiteral("01:05"));
    EXPECT_EQ(KvxAnimationTimeScale::FormatTime(3600000), QStringLiteral("1:00:00"));
    EXPECT_EQ(KvxAnimationTimeScale::FormatTime(2 * 3600000 + 61000), QStringLiteral("2:01:01"));
}

TEST_F(KeyFrameTimeLine, ctrlWheelZoomsWithinFourToAHundredPixelsAndThePlainWheelScrolls)
{
    QSignalSpy wheels(&timeLine, SIGNAL(mouseWheel(QWheelEvent*)));
    for (int i = 0; i < 30; ++i)
        wheel(120, Qt::ControlModifier);
    EXPECT_EQ(wheels.size(), 30);
    EXPECT_EQ(scale()->GetPixelsPerStep(), KvxAnimationTimeScale::kMaxPixelsPerStep);
    for (int i = 0; i < 30; ++i)
        wheel(-120, Qt::ControlModifier);
    EXPECT_EQ(scale()->GetPixelsPerStep(), KvxAnimationTimeScale::kMinPixelsPerStep);
    wheel(30, Qt::ControlModifier);
    EXPECT_GT(scale()->GetPixelsPerStep(), KvxAnimationTimeScale::kMinPixelsPerStep) << "a fine wheel still zooms";

    const int before = timeLine.horizontalScrollBar()->value();
    wheel(-120, Qt::NoModifier);
    EXPECT_GT(timeLine.horizontalScrollBar()->value(), before);
    EXPECT_EQ(scale()->GetPixelsPerStep(), 5);
}

TEST_F(KeyFrameTimeLine, theViewFollowsThePlayingIndicatorBothWays)
{
    for (Time_Ms ms : {30000u, 90000u, 250000u, 1000u, 0u}) {
        timeLine.SetTimeIndicator(ms);
        EXPECT_TRUE(indicatorInView()) << ms;
    }
    const int width = timeLine.ContentWidth();
    timeLine.horizontalScrollBar()->setValue(timeLine.horizontalScrollBar()->maximum());
    EXPECT_GT(timeLine.ContentWidth(), width) << "scrolled to the end, it grows";
}

TEST_F(KeyFrameTimeLine, aFinerTimeUnitWidensTheContentToTheLastKeyFrame)
{
    KVXCameraKeyFrame late(60000);
    timeLine.CreateCameraKeyFrameButton(&late);
    scale()->SetTimeUnit(100);
    EXPECT_GT(timeLine.ContentWidth(), scale()->XForTime(60000));
}

TEST_F(KeyFrameTimeLine, aClickPicksTheButtonUnderItAndCameraAndDateHalvesAreApart)
{
    KVXCameraKeyFrame camera(2000);
    KVXDateKeyFrame date(2000);
    KVXDateKeyFrame later(5000);
    timeLine.CreateCameraKeyFrameButton(&camera);
    timeLine.CreateDateKeyFrameButton(&date);
    timeLine.CreateKeyFrameButton(nullptr, &later);
    KVXAnimationKeyFramePanel* panel = timeLine.GetKeyFramePanel();
    const int x = scale()->XForTime(2000);
    const int half = panel->height() / 2;

    QTest::mouseClick(panel, Qt::LeftButton, Qt::NoModifier, QPoint(x, half / 2));
    EXPECT_EQ(timeLine.GetPickedCameraKeyFrame(), &camera);
    EXPECT_EQ(timeLine.GetPickedDateKeyFrame(), nullptr);
    QTest::mouseClick(panel, Qt::LeftButton, Qt::NoModifier, QPoint(x, half + half / 2));
    EXPECT_EQ(timeLine.GetPickedCameraKeyFrame(), nullptr);
    EXPECT_EQ(timeLine.GetPickedDateKeyFrame(), &date);

    const QImage picture = panel->grab().toImage();
    const QColor top = picture.pixelColor(x, half / 2);
    const QColor bottom = picture.pixelColor(scale()->XForTime(5000), half + half / 2);
    EXPECT_GT(top.blue(), top.red()) << "a camera key frame is blue";
    EXPECT_GT(bottom.red(), bottom.blue()) << "a date key frame is orange";

    timeLine.DeleteKeyFrameButton();
    EXPECT_EQ(timeLine.GetKeyFrameButtons().size(), 2u);
    QTest::mouseClick(panel, Qt::LeftButton, Qt::NoModifier, QPoint(x + 40, half / 2));
    EXPECT_EQ(timeLine.GetPickedCameraKeyFrame(), nullptr) << "a click beside the buttons picks none";
    timeLine.DeleteKeyFrameButton();
    EXPECT_EQ(timeLine.GetKeyFrameButtons().size(), 2u);
}

TEST(KeyFrameButtons, fillTwoColumnsAndTheSettingsRow)
{
    KvxAnimationButtonsPanel panel;
    panel.resize(80, 90);
    panel.show();
    EXPECT_EQ(panel.GetButton(KvxAnimationButtonsPanel::AddKeyFrame)->geometry(), QRect(0, 0, 40, 30));
    EXPECT_EQ(panel.GetButton(KvxAnimationButtonsPanel::Stop)->geometry(), QRect(40, 30, 40, 30));
    EXPECT_EQ(panel.GetButton(KvxAnimationButtonsPanel::Settings)->geometry(), QRect(0, 60, 80, 30));
    EXPECT_TRUE(panel.GetButton(KvxAnimationButtonsPanel::PlayOrPause)->isCheckable());
    for (int i = 0; i < KvxAnimationButtonsPanel::ButtonCount; ++i)
        EXPECT_FALSE(panel.GetButton(KvxAnimationButtonsPanel::Button(i))->icon().pixmap(16, 16).isNull()) << i;
}

// The settings dialog over the live timelines and camera clock.
class KeyFrameSettings : public ::testing::Test {
protected:
    void TearDown() override
    {
        manager->UnInitAnimationData();
        PfDocManagerPtr()->CloseAll();
        KVXKeyFrameAnimationManager::SetTimeLineWidget(nullptr);
        KVXKeyFrameAnimationManager::SetDateLineWidget(nullptr);
    }
    void withClock()
    {
        PfGsModelView::Attach(PfDocManagerPtr()->NewDocument());
        manager->InitAnimationData();
    }
    // Opens the dialog, sets the boxes and presses OK (or Cancel).
    void choose(int unit, int speed, int style, bool ok = true)
    {
        KvxKeyFrameAnimationSettingDialog dialog;
        dialog.GetTimeScaleBox()->setCurrentIndex(unit);
        dialog.GetSpeedBox()->setCurrentIndex(speed);
        dialog.GetStyleBox()->setCurrentIndex(style);
        if (ok)
            dialog.accept();
        else
            dialog.reject();
    }

    KVXKeyFrameAnimationManager* manager = KVXKeyFrameAnimationManager::GetInstance();
};

TEST_F(KeyFrameSettings, withoutAClockItShowsOneTimesAndChangesNoSpeed)
{
    manager->UnInitAnimationData();
    KvxKeyFrameAnimationSettingDialog dialog;
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("设置"));
    EXPECT_EQ(dialog.GetSpeedBox()->currentText(), QStringLiteral("1x"));
    EXPECT_EQ(dialog.GetTimeScaleBox()->currentText(), QStringLiteral("1"));
    EXPECT_EQ(dialog.GetStyleBox()->currentIndex(), 0);
    dialog.GetSpeedBox()->setCurrentIndex(4);
    dialog.accept();
    EXPECT_EQ(manager->GetCameraAnimationClockTimer(), nullptr);
}

TEST_F(KeyFrameSettings, readsAndWritesTheLiveObjects)
{
    withClock();
    KVXAnimationTimeLineWidget timeLine;
    KVXDateTimeLineWidget dateLine;
    KVXKeyFrameAnimationManager::SetTimeLineWidget(&timeLine);
    KVXKeyFrameAnimationManager::SetDateLineWidget(&dateLine);
    KVXCameraAnimationClockTimer* clock = manager->GetCameraAnimationClockTimer();
    ASSERT_NE(clock, nullptr);

    clock->SetScale(3.0f);
    {
        KvxKeyFrameAnimationSettingDialog dialog;
        EXPECT_EQ(dialog.GetSpeedBox()->currentText(), QStringLiteral("1x")) << "an odd speed shows as 1x";
        dialog.accept();
    }
    EXPECT_EQ(clock->GetScale(), 1.0f);

    choose(5, 0, 3);
    EXPECT_EQ(timeLine.GetTimeScaleWidget()->GetTimeUnit(), 12000);
    EXPECT_EQ(clock->GetScale(), 0.25f);
    EXPECT_EQ(dateLine.GetCalendarDisplayStyle(), 3);
    KvxKeyFrameAnimationSettingDialog reopened;
    EXPECT_EQ(reopened.GetTimeScaleBox()->currentIndex(), 5);
    EXPECT_EQ(reopened.GetSpeedBox()->currentIndex(), 0);
    EXPECT_EQ(reopened.GetStyleBox()->currentIndex(), 3);

    choose(0, 4, 1, false);
    EXPECT_EQ(timeLine.GetTimeScaleWidget()->GetTimeUnit(), 12000) << "cancel changes nothing";
    EXPECT_EQ(clock->GetScale(), 0.25f);
    EXPECT_EQ(dateLine.GetCalendarDisplayStyle(), 3);
}

TEST_F(KeyFrameSettings, theSettingsButtonOpensTheDialogModally)
{
    KVXAnimationTimeLineWidget timeLine;
    KVXKeyFrameAnimationManager::SetTimeLineWidget(&timeLine);
    KvxAnimationButtonsPanel panel;
    bool opened = false;
    QTimer::singleShot(0, [&] {
        auto* dialog = qobject_cast<KvxKeyFrameAnimationSettingDialog*>(QApplication::activeModalWidget());
        opened = dialog != nullptr;
        if (!dialog)
            return;
        dialog->GetTimeScaleBox()->setCurrentIndex(0);
        QTest::keyClick(dialog, Qt::Key_Return);
    });
    QTest::mouseClick(panel.GetButton(KvxAnimationButtonsPanel::Settings), Qt::LeftButton);
    EXPECT_TRUE(opened);
    EXPECT_EQ(timeLine.GetTimeScaleWidget()->GetTimeUnit(), 100);
}

} // namespace
