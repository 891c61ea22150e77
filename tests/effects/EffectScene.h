#pragma once

#include "animation/KVXAnimationNames.h"
#include "animation/KVXAnimatorManager.h"
#include "effects/KVXEffectContext.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfGsModelView.h"
#include "host/vpe/render/CViewer.h"
#include "keyframe/KVXDateAnimationClockTimer.h"
#include "tests/support/FixedStepTimeSource.h"

#include <QDir>
#include <osg/Geometry>
#include <QImage>

#include <gtest/gtest.h>

#include <string>

// A document with a view and no shadows (pixels compare exactly), records
// played the way schedule playback plays them: one engine animation per
// record on the date clock, the clock put at a time, one frame evaluated.
class EffectScene : public ::testing::Test {
protected:
    static constexpr int kWidth = 480;
    static constexpr int kHeight = 320;

    void SetUp() override
    {
        document = PfDocManagerPtr()->NewDocument();
        view = PfGsModelView::Attach(document);
        viewer = view->GetViewer();
        viewer->SetTimeSource(new FixedStepTimeSource);
        viewer->GetScene()->SetShadowsEnabled(false);
    }
    void TearDown() override
    {
        vpe::CClockTimerManager::GetInstance()->Remove(KVXAnimationNames::kDateAnimationClockTimer);
        PfDocManagerPtr()->CloseAll();
    }

    KVX3DElementObject* addBox(const osg::Vec3d& min, const osg::Vec3d& max, const QColor& colour = {200, 80, 40})
    {
        auto* element = new KVX3DElementObject();
        element->AddBody(vpe::CBody::CreateBox(min, max));
        element->SetBodyColor(colour);
        document->GetDatabase()->GetModelSpace()->Add(element);
        return element;
    }
    static qint64 idOf(const PfDbObject* object) { return static_cast<qint64>(object->GetHandle()); }

    // A record over [start, end]; the schedule's span is taken again.
    KVXAnimation* addRecord(const PfDbObject* element, KVXAnimation::AnimType type,
                            KVXAnimation::TranslationType translation, const QDate& start, const QDate& end)
    {
        KVXAnimation* record = manager()->addKvxAnimation(idOf(element), type, translation);
        record->setStartDate(start);
        record->setEndDate(end);
        manager()->updateAllAnimationsDateRange();
        return record;
    }

    // What playback hands its callbacks: this document and viewer, the
    // schedule's time scale.
    vpe::CRefPtr<KVXEffectContext> context() const
    {
        return new KVXEffectContext(document, viewer, manager()->getTimeScale());
    }

    // The record's engine animation with the callback, on the date clock.
    void play(KVXAnimation* record, vpe::CFrameCallback* callback)
    {
        vpe::CAnimationManager* engine = viewer->GetAnimationManager();
        const std::string name = std::to_string(record->getNumber());
        vpe::CAnimation* animation = engine->CreateAnimation(name, manager()->getAllAnimationsTimeLength());
        animation->SetFrameCallback(record->getNode(), callback);
        vpe::CAnimator* animator = engine->CreateAnimator(name, animation, dateClock());
        animator->Enable();
        record->setAnimation(animation);
        record->setAnimator(animator);
    }

    // One frame with the date clock held at the time (in seconds).
    void evaluateAt(double seconds)
    {
        dateClock()->FreezeAtTime(seconds);
        viewer->AdvanceFrame();
    }
    void evaluateAt(const QDate& date) { evaluateAt(manager()->getAnimationTimeAtDate(date)); }

    QImage render(const vpe::CCamera& camera)
    {
        QImage picture;
        QString error;
        EXPECT_TRUE(viewer->RenderImage(camera, kWidth, kHeight, picture, &error)) << error.toStdString();
        return picture;
    }
    // Saved for a person to look at when KVX_TEST_PICTURES names a folder.
    static void keep(const QImage& picture, const QString& name)
    {
        if (qEnvironmentVariableIsSet("KVX_TEST_PICTURES"))
            picture.save(QDir(qEnvironmentVariable("KVX_TEST_PICTURES")).filePath(name + ".png"));
    }

    // Where a point of the model lands in a picture of the test's size.
    static QPoint project(const vpe::CCamera& camera, const osg::Vec3d& point)
    {
        const osg::Matrixd projection = osg::Matrixd::perspective(
            camera.GetFieldOfView(), double(kWidth) / kHeight, camera.GetNearDistance(), camera.GetFarDistance());
        const osg::Vec3d ndc = point * camera.GetViewMatrix() * projection;
        return QPoint(static_cast<int>((ndc.x() + 1.0) * 0.5 * kWidth), static_cast<int>((1.0 - ndc.y()) * 0.5 * kHeight));
    }
    bool isBackground(const QImage& picture, const QPoint& pixel) const
    {
        const QColor p = picture.pixelColor(pixel);
        const QColor& b = viewer->GetBackgroundColor();
        return std::abs(p.red() - b.red()) + std::abs(p.green() - b.green()) + std::abs(p.blue() - b.blue()) < 20;
    }
    // Anything but background in a small square around the pixel.
    bool anyModelNear(const QImage& picture, const QPoint& pixel, int radius = 3) const
    {
        for (int dy = -radius; dy <= radius; ++dy) {
            for (int dx = -radius; dx <= radius; ++dx) {
                const QPoint p = pixel + QPoint(dx, dy);
                if (picture.rect().contains(p) && !isBackground(picture, p))
                    return true;
            }
        }
        return false;
    }
    // Each triangle of the cap's faces (a node of drawables, as the cut
    // callbacks keep their caps), its three corners at a time.
    template <class Visit>
    static void forEachCapTriangle(const osg::Group* caps, const Visit& visit)
    {
        for (unsigned int i = 0; caps && i < caps->getNumChildren(); ++i) {
            const osg::Geometry* geometry = caps->getChild(i)->asGeometry();
            if (!geometry || geometry->getPrimitiveSet(0)->getMode() != GL_TRIANGLES)
                continue;
            auto* vertices = static_cast<const osg::Vec3Array*>(geometry->getVertexArray());
            for (std::size_t k = 0; k + 2 < vertices->size(); k += 3)
                visit((*vertices)[k], (*vertices)[k + 1], (*vertices)[k + 2]);
        }
    }

    static bool isReddish(const QColor& c) { return c.red() > c.green() + 60 && c.red() > c.blue() + 60; }

    static vpe::CRefPtr<vpe::CCamera> cameraAt(const osg::Vec3d& eye, const osg::Vec3d& target)
    {
        vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera();
        camera->SetLookAt(eye, target);
        camera->SetNearDistance(100.0f);
        camera->SetFarDistance(1.0e6f);
        return camera;
    }

    static KVXAnimatorManager* manager() { return KVXAnimatorManager::getInstance(); }
    static KVXDateAnimationClockTimer* dateClock()
    {
        return KVXDateAnimationClockTimer::GetOrCreate(KVXAnimationNames::kDateAnimationClockTimer);
    }

    PfDbDocument* document = nullptr;
    PfGsModelView* view = nullptr;
    vpe::CViewer* viewer = nullptr;
};
