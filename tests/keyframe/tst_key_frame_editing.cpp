#include "animation/KVXAnimatorManager.h"
#include "forms/KVXDateTimeLineWidget.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/db/PfDocManager.h"
#include "host/db/PfDbObjContainer.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfEdInformation.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfUiActionManager.h"
#include "host/vpe/render/CViewer.h"
#include "keyframe/KVXAnimationKeyFramePanel.h"
#include "keyframe/KVXAnimationTimeLineWidget.h"
#include "keyframe/KVXCameraKeyFramesTrack.h"
#include "keyframe/KVXDateKeyFramesTrack.h"
#include "keyframe/KVXKeyFrameAnimationManager.h"
#include "keyframe/KvxAnimationButtonsPanel.h"

#include "tests/support/FixedStepTimeSource.h"
#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QAction>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

struct NoticeLog : PfEdInformationSink {
    QStringList texts;
    void Show(const QString& title, const QString& text) override { texts << title + QLatin1Char('|') + text; }
};

const QString kPlaying = QStringLiteral("提示|动画正在播放状态，请先暂停或停止动画播放");
const QString kTaken = QStringLiteral("提示|当前时间已经存在关键帧！");
const QString kNothingPicked = QStringLiteral("提示|请先选中一帧关键帧再删除");

// A document with a view and one storey built from 1 to 11 March 2025, the
// two timelines shown, and key-frame editing begun.
class KeyFrameEditing : public ::testing::Test {
protected:
    void SetUp() override
    {
        previousSink = PfEdInformationSink::Install(&notices);
        KVXKeyFrameAnimationManager::SetTimeLineWidget(&timeLine);
        KVXKeyFrameAnimationManager::SetDateLineWidget(&dateLine);
        document = PfDocManagerPtr()->NewDocument();
        viewer = PfGsModelView::Attach(document)->GetViewer();
        viewer->SetTimeSource(new FixedStepTimeSource);
        viewer->GetScene()->SetShadowsEnabled(false);
        auto* storey = new KVX3DElementObject();
        storey->AddBody(vpe::CBody::CreateBox({0, 0, 0}, {10000, 10000, 3000}));
        document->GetDatabase()->GetModelSpace()->Add(storey);
        KVXAnimation* record = KVXAnimatorManager::getInstance()->addKvxAnimation(
            static_cast<qint64>(storey->GetHandle()), KVXAnimation::Construction, KVXAnimation::BottomUp);
        record->setStartDate(QDate(2025, 3, 1));
        record->setEndDate(QDate(2025, 3, 11));
        manager->BeginEditKeyFrameAnimation();
    }
    void TearDown() override
    {
        manager->EndEditKeyFrameAnimation();
        manager->UnInitAnimationData();
        PfDocManagerPtr()->CloseAll();
        KVXKeyFrameAnimationManager::SetTimeLineWidget(nullptr);
        KVXKeyFrameAnimationManager::SetDateLineWidget(nullptr);
        PfEdInformationSink::Install(previousSink);
    }
    // A key frame as the user makes one: indicator there, view from there.
    void createAt(unsigned int ms, const vpe::CVec3<double>& eye, const QDate& date = QDate(2025, 3, 1))
    {
        timeLine.SetTimeIndicator(ms);
        dateLine.SetIndicator(date);
        vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera(*viewer->GetCamera());
        camera->SetLookAt(eye, {5000, 5000, 0});
        viewer->SetCamera(*camera);
        manager->CreateKeyFrame();
    }
    void tick(double seconds)
    {
        viewer->GetClock()->Tick(seconds);
        viewer->AdvanceFrame();
    }
    std::size_t cameraKeyFrames() const { return manager->GetCameraKeyFramesTrack()->Size(); }
    std::size_t dateKeyFrames() const { return manager->GetDateKeyFramesTrack()->Size(); }
    void pick(int button)
    {
        const QRect box = timeLine.GetKeyFramePanel()->ButtonRect(timeLine.GetKeyFrameButtons()[button]);
        QTest::mouseClick(timeLine.GetKeyFramePanel(), Qt::LeftButton, Qt::NoModifier, box.center());
    }

    KVXKeyFrameAnimationManager* manager = KVXKeyFrameAnimationManager::GetInstance();
    NoticeLog notices;
    PfEdInformationSink* previousSink = nullptr;
    KVXAnimationTimeLineWidget timeLine;
    KVXDateTimeLineWidget dateLine;
    PfDbDocument* document = nullptr;
    vpe::CViewer* viewer = nullptr;
};

TEST_F(KeyFrameEditing, editingTurnsOffAutoSaveAndTheMinimumFrameRateAndShowsTheScheduleDates)
{
    EXPECT_EQ(dateLine.GetIndicator(), QDate(2025, 3, 1)) << "a date for the first date key frame";
    manager->EndEditKeyFrameAnimation();
    viewer->SetMinimumFrameRate(12);
    document->SetAutoSaveMinutes(7);
    manager->BeginEditKeyFrameAnimation();
    EXPECT_TRUE(manager->IsEditing());
    EXPECT_EQ(viewer->GetMinimumFrameRate(), 0u);
    EXPECT_EQ(document->GetAutoSaveMinutes(), 0);
    EXPECT_EQ(dateLine.GetCalendarStartDate(), QDate(2025, 2, 24));
    manager->EndEditKeyFrameAnimation();
    EXPECT_FALSE(manager->IsEditing());
    EXPECT_EQ(viewer->GetMinimumFrameRate(), 12u);
    EXPECT_EQ(document->GetAutoSaveMinutes(), 7);
    manager->BeginEditKeyFrameAnimation();
}

TEST_F(KeyFrameEditing, lookingAtADocumentWithoutKeyFramesLeavesItUnchanged)
{
    // Opening the roaming-video page used to mark a document changed: its
    // empty key-frame tracks were counted as an edit.
    manager->EndEditKeyFrameAnimation();
    manager->UnInitAnimationData();
    PfDbDocument* other = PfDocManagerPtr()->NewDocument();
    PfGsModelView::Attach(other);
    PfDbTransactionManager* steps = other->GetDatabase()->TransactionManager();
    const auto changes = steps->GetChangeCount();
    manager->BeginEditKeyFrameAnimation();
    ASSERT_NE(manager->GetCameraKeyFramesTrack(), nullptr);
    EXPECT_EQ(manager->GetCameraKeyFramesTrack()->GetDatabase(), other->GetDatabase());
    EXPECT_EQ(steps->GetChangeCount(), changes);
    createAt(0, {-20000, -20000, 15000});
    EXPECT_GT(steps->GetChangeCount(), changes) << "a key frame is a change";
}

TEST_F(KeyFrameEditing, creatingIsRefusedWhilePlayingAndWhereACameraKeyFrameIs)
{
    createAt(0, {0, -20000, 8000});
    createAt(4000, {20000, 0, 8000}, QDate(2025, 3, 11));
    ASSERT_EQ(cameraKeyFrames(), 2u);
    EXPECT_EQ(timeLine.GetKeyFrameButtons().size(), 2u);
    EXPECT_TRUE(notices.texts.isEmpty()) << notices.texts.join(' ').toStdString();

    manager->PlayAnimation();
    EXPECT_EQ(manager->GetPlayState(), KVXKeyFrameAnimationManager::Playing);
    createAt(2000, {0, 0, 20000});
    EXPECT_EQ(notices.texts, QStringList{kPlaying});
    EXPECT_EQ(cameraKeyFrames(), 2u);

    manager->PauseAnimation();
    createAt(2000, {0, 0, 20000});
    EXPECT_EQ(cameraKeyFrames(), 3u) << "paused, it works";
    createAt(2000, {1, 1, 20000});
    EXPECT_EQ(notices.texts.last(), kTaken);
    EXPECT_EQ(cameraKeyFrames(), 3u);
}

TEST_F(KeyFrameEditing, aMomentWithOnlyADateKeyFrameTakesACameraKeyFrameAndASecondDate)
{
    // A date key frame alone, as a deleted camera key frame leaves it.
    createAt(1000, {0, -20000, 8000});
    pick(0);
    const PfDbHandle camera = timeLine.GetPickedCameraKeyFrame()->GetHandle();
    manager->GetCameraKeyFramesTrack()->RemoveKeyFrame(static_cast<qint64>(camera));
    ASSERT_EQ(cameraKeyFrames(), 0u);
    createAt(1000, {0, -20000, 8000});
    EXPECT_EQ(cameraKeyFrames(), 1u);
    EXPECT_EQ(dateKeyFrames(), 2u);
    EXPECT_TRUE(notices.texts.isEmpty()) << notices.texts.join(' ').toStdString();
}

TEST_F(KeyFrameEditing, deleteNeedsAPickedButtonAndRemovesItsKeyFrames)
{
    createAt(0, {0, -20000, 8000});
    createAt(3000, {20000, 0, 8000});
    manager->DeleteKeyFrame();
    EXPECT_EQ(notices.texts, QStringList{kNothingPicked});
    EXPECT_EQ(cameraKeyFrames(), 2u);
    EXPECT_EQ(timeLine.GetKeyFrameButtons().size(), 2u);

    pick(1);
    EXPECT_EQ(timeLine.GetPickedCameraKeyFrame()->GetTime(), 3000);
    manager->DeleteKeyFrame();
    EXPECT_EQ(cameraKeyFrames(), 1u);
    EXPECT_EQ(dateKeyFrames(), 1u);
    ASSERT_EQ(timeLine.GetKeyFrameButtons().size(), 1u);
    EXPECT_EQ(timeLine.GetKeyFrameButtons()[0].Time(), 0);
}

TEST_F(KeyFrameEditing, undoAndRedoOfACreationPauseAndRebuildTheButtons)
{
    createAt(0, {0, -20000, 8000});
    createAt(5000, {20000, 0, 8000});
    manager->PlayAnimation();
    tick(1.0);
    PfDbTransactionManager* transactions = document->GetDatabase()->TransactionManager();
    ASSERT_TRUE(transactions->Undo());
    EXPECT_EQ(manager->GetPlayState(), KVXKeyFrameAnimationManager::Paused);
    EXPECT_EQ(cameraKeyFrames(), 1u);
    EXPECT_EQ(timeLine.GetKeyFrameButtons().size(), 2u) << "rebuilt: a camera and a date button";
    EXPECT_EQ(viewer->GetAnimationManager()->FindAnimator("camera_animation"), nullptr)
        << "built again on the next play";

    ASSERT_TRUE(transactions->Redo());
    EXPECT_EQ(KVXAnimatorManager::getInstance()->getPlayState(), 2) << "a second pause leaves the schedule paused";
    EXPECT_EQ(cameraKeyFrames(), 2u);
    EXPECT_EQ(timeLine.GetKeyFrameButtons().size(), 4u);
    manager->PlayAnimation();
    EXPECT_EQ(manager->GetPlayState(), KVXKeyFrameAnimationManager::Playing);
}

TEST_F(KeyFrameEditing, eightSecondsOfKeyFramesPlayEightSecondsAndTheClockStopsThem)
{
    createAt(0, {0, -20000, 8000});
    createAt(8000, {20000, 0, 8000});
    EXPECT_DOUBLE_EQ(manager->getAnimationVideoLength(), 8.0);
    manager->PlayAnimation();
    ASSERT_NE(viewer->GetAnimationManager()->FindAnimator("camera_animation"), nullptr);
    tick(4.0);
    EXPECT_EQ(timeLine.GetTimeIndicator(), 4000u);
    tick(4.0);
    EXPECT_EQ(manager->GetPlayState(), KVXKeyFrameAnimationManager::Playing) << "exactly at the end it goes on";
    tick(0.1);
    EXPECT_EQ(manager->GetPlayState(), KVXKeyFrameAnimationManager::Stopped);
    EXPECT_EQ(timeLine.GetTimeIndicator(), 0u);
    EXPECT_EQ(viewer->GetAnimationManager()->FindAnimator("camera_animation"), nullptr);
}

TEST_F(KeyFrameEditing, withOneCameraKeyFrameNothingPlays)
{
    createAt(0, {0, -20000, 8000});
    manager->PlayAnimation();
    EXPECT_EQ(manager->GetPlayState(), KVXKeyFrameAnimationManager::Stopped);
    EXPECT_EQ(manager->getAnimationVideoLength(), 0.0);
}

TEST_F(KeyFrameEditing, thePlayActionAndButtonShowWhetherItPlays)
{
    QAction action;
    action.setCheckable(true);
    PfUiActionManager::GetInstance()->AddAction(QStringLiteral("KVX_PREVIEW_ANIMATION_PLAY_PAUSE"), &action);
    KvxAnimationButtonsPanel buttons;
    QPushButton* play = buttons.GetButton(KvxAnimationButtonsPanel::PlayOrPause);
    createAt(0, {0, -20000, 8000});
    createAt(2000, {20000, 0, 8000});

    QTest::mouseClick(play, Qt::LeftButton);
    EXPECT_EQ(manager->GetPlayState(), KVXKeyFrameAnimationManager::Playing);
    EXPECT_TRUE(action.isChecked());
    EXPECT_EQ(action.text(), QStringLiteral("暂停"));
    EXPECT_TRUE(play->isChecked());
    QTest::mouseClick(play, Qt::LeftButton);
    EXPECT_EQ(manager->GetPlayState(), KVXKeyFrameAnimationManager::Paused);
    EXPECT_FALSE(action.isChecked());
    EXPECT_EQ(action.text(), QStringLiteral("预览"));
    EXPECT_FALSE(play->isChecked());
    EXPECT_FALSE(action.icon().pixmap(16, 16).isNull()) << "the icons are in the module's resources";
    PfUiActionManager::GetInstance()->RemoveAction(QStringLiteral("KVX_PREVIEW_ANIMATION_PLAY_PAUSE"));
}

TEST_F(KeyFrameEditing, aSavedFlyThroughReopensWithItsButtonsAndPlaysTheSame)
{
    createAt(0, {0, -20000, 8000});
    createAt(6000, {20000, 0, 8000}, QDate(2025, 3, 11));
    manager->PlayAnimationAtTime(3000);
    tick(0.0);
    const vpe::CVec3<float> halfway = viewer->GetCamera()->GetPosition();
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("flight.kvx"));
    ASSERT_TRUE(document->Save(path));
    manager->StopAnimation();
    PfDocManagerPtr()->CloseAll();
    EXPECT_TRUE(timeLine.GetKeyFrameButtons().empty()) << "the closed document's buttons go with it";

    document = PfDocManagerPtr()->OpenDocument(path);
    ASSERT_NE(document, nullptr);
    viewer = PfGsModelView::Attach(document)->GetViewer();
    viewer->SetTimeSource(new FixedStepTimeSource);
    manager->InitAnimationData();
    std::vector<int> times;
    for (const KVXKeyFrameButton& button : timeLine.GetKeyFrameButtons())
        times.push_back(button.Time());
    EXPECT_EQ(times, (std::vector<int>{0, 6000, 0, 6000})) << "camera buttons, then date buttons";
    manager->PlayAnimationAtTime(3000);
    tick(0.0);
    const vpe::CVec3<float> again = viewer->GetCamera()->GetPosition();
    EXPECT_NEAR((again - halfway).length(), 0.0f, 1.0f);
    EXPECT_NEAR(halfway.x(), 10000.0f, 1.0f) << "halfway between the two eyes";
}

} // namespace
