#include "animation/KVXAnimatorManager.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDocManager.h"
#include "host/db/PfDbObjContainer.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfGsModelView.h"
#include "host/vpe/render/CViewer.h"
#include "keyframe/KVXKeyFrameAnimationManager.h"

#include "tests/support/FixedStepTimeSource.h"
#include "tests/support/ImageDifference.h"
#include "tests/support/ModuleEnvironment.h"

#include <QImage>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kWidth = 160;
constexpr int kHeight = 90;

// Three coloured blocks seen from three cameras; a fly-through through
// them at 0, 4 and 8 seconds, with the schedule's first and last days pinned
// to its ends.
class KeyFramePictures : public ::testing::Test {
protected:
    void SetUp() override
    {
        document = PfDocManagerPtr()->NewDocument();
        viewer = PfGsModelView::Attach(document)->GetViewer();
        viewer->SetTimeSource(new FixedStepTimeSource);
        viewer->GetScene()->SetShadowsEnabled(false);
        viewer->SetActiveViewportSize(kWidth, kHeight);
        const struct {
            osg::Vec3d from, to;
            QColor colour;
        } blocks[] = {{{0, 0, 0}, {4000, 4000, 12000}, Qt::red},
                      {{8000, 0, 0}, {12000, 4000, 6000}, Qt::darkGreen},
                      {{0, 8000, 0}, {4000, 12000, 3000}, Qt::blue}};
        for (const auto& block : blocks) {
            auto* element = new KVX3DElementObject();
            element->AddBody(vpe::CBody::CreateBox(block.from, block.to));
            element->SetBodyColor(block.colour);
            document->GetDatabase()->GetModelSpace()->Add(element);
            elements.push_back(element);
        }
        KVXAnimation* record = KVXAnimatorManager::getInstance()->addKvxAnimation(
            static_cast<qint64>(elements[0]->GetHandle()), KVXAnimation::Construction, KVXAnimation::BottomUp);
        record->setStartDate(QDate(2025, 3, 1));
        record->setEndDate(QDate(2025, 3, 11));
        KVXAnimatorManager::getInstance()->updateAllAnimationsDateRange();
        manager->InitAnimationData();
        const vpe::CVec3<double> eyes[] = {{-20000, -20000, 15000}, {30000, -15000, 9000}, {6000, 35000, 20000}};
        const unsigned int times[] = {0, 4000, 8000};
        const QDate dates[] = {QDate(2025, 3, 1), QDate(), QDate(2025, 3, 11)};
        for (int i = 0; i < 3; ++i) {
            cameras[i] = lookingFrom(eyes[i]);
            ASSERT_EQ(manager->CreateKeyFrameAt(times[i], *cameras[i], dates[i]), QString());
        }
    }
    void TearDown() override
    {
        manager->StopAnimation();
        manager->UnInitAnimationData();
        PfDocManagerPtr()->CloseAll();
    }
    vpe::CRefPtr<vpe::CCamera> lookingFrom(const vpe::CVec3<double>& eye) const
    {
        vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera(*viewer->GetCamera());
        camera->SetAspectRatio(float(kWidth) / float(kHeight));
        camera->SetLookAt(eye, {6000, 6000, 3000});
        return camera;
    }
    QImage single(const vpe::CCamera& camera) const
    {
        QImage picture;
        EXPECT_TRUE(viewer->RenderImage(camera, kWidth, kHeight, picture));
        return picture;
    }
    QImage frameAfter(double seconds)
    {
        viewer->GetClock()->Tick(seconds);
        viewer->AdvanceFrame();
        QImage picture;
        EXPECT_TRUE(viewer->RenderFrame(picture));
        return picture;
    }

    KVXKeyFrameAnimationManager* manager = KVXKeyFrameAnimationManager::GetInstance();
    PfDbDocument* document = nullptr;
    vpe::CViewer* viewer = nullptr;
    std::vector<KVX3DElementObject*> elements;
    vpe::CRefPtr<vpe::CCamera> cameras[3];
};

TEST_F(KeyFramePictures, theFlyThroughShowsTheKeyFramesViewsAndMovesBetweenThem)
{
    // The schedule stays still: the pictures compare views of one scene.
    manager->SetEnableDateAnimation(false);
    const QImage first = single(*cameras[0]);
    const QImage second = single(*cameras[1]);
    const QImage last = single(*cameras[2]);
    ASSERT_GT(imageDifference(first, last), 10.0) << "the three views differ";

    manager->PlayAnimation();
    EXPECT_LT(imageDifference(frameAfter(0.0), first), 1.0);

    const QImage between = frameAfter(2.0);
    const vpe::CVec3<float> eye = viewer->GetCamera()->GetPosition();
    const vpe::CVec3<float> middle = (cameras[0]->GetPosition() + cameras[1]->GetPosition()) * 0.5f;
    EXPECT_LT((eye - middle).length(), 1.0f) << "halfway from the first eye to the second";
    const auto angle = [](const vpe::CVec3<float>& a, const vpe::CVec3<float>& b) {
        return std::acos(std::clamp(a * b / (a.length() * b.length()), -1.0f, 1.0f));
    };
    const vpe::CVec3<float>& look = viewer->GetCamera()->GetDirection();
    EXPECT_NEAR(angle(look, cameras[0]->GetDirection()), angle(look, cameras[1]->GetDirection()), 0.01f)
        << "turned halfway too";
    EXPECT_GT(imageDifference(between, first), 3.0);
    EXPECT_GT(imageDifference(between, second), 3.0);
    EXPECT_LT(imageDifference(between, single(*viewer->GetCamera())), 1.0);

    EXPECT_LT(imageDifference(frameAfter(6.0), last), 1.0);
    manager->SetEnableDateAnimation(true);
}

TEST_F(KeyFramePictures, theScheduleFollowsTheDateKeyFrames)
{
    KVXDateAnimationClockTimer* dates = manager->GetDateAnimationClockTimer();
    ASSERT_NE(dates, nullptr);
    manager->PlayAnimation();
    EXPECT_EQ(KVXAnimatorManager::getInstance()->getPlayState(), 1);
    frameAfter(0.0);
    frameAfter(2.0);
    // A quarter of the way from 1 to 11 March: two and a half days in.
    EXPECT_NEAR(dates->GetValue(), dates->TimeForDate(QDate(2025, 3, 1)) + 0.25 * dates->TimeForDate(QDate(2025, 3, 11)),
                1e-6);
    EXPECT_EQ(dates->DateForTime(dates->GetValue()), QDate(2025, 3, 3));
    frameAfter(6.0);
    EXPECT_EQ(dates->DateForTime(dates->GetValue()), QDate(2025, 3, 11));
}

} // namespace
