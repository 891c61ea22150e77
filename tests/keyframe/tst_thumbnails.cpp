#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/KVXGlobalInfo.h"
#include "host/model/PfGsModelView.h"
#include "host/vpe/render/CViewer.h"
#include "keyframe/KVXCameraKeyFramesTrack.h"

#include "tests/support/ModuleEnvironment.h"

#include <QCryptographicHash>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

vpe::CRefPtr<vpe::CCamera> lookingAt(const osg::Vec3f& eye)
{
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
    camera->SetLookAt(osg::Vec3d(eye), osg::Vec3d(0, 0, 0));
    return camera;
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha1);
}

class Thumbnails : public ::testing::Test {
protected:
    void SetUp() override
    {
        KVXGlobalInfo::getInstance()->setTempProjectPath(directory.path().toStdWString());
        document = PfDocManagerPtr()->NewDocument();
        auto* block = new KVX3DElementObject();
        block->SetBodyColor(Qt::red);
        block->AddBody(vpe::CBody::CreateBox({-5000, -5000, 0}, {5000, 5000, 8000}));
        document->GetDatabase()->GetModelSpace()->Add(block);
        track = KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(document->GetDatabase());
    }
    void TearDown() override { PfDocManagerPtr()->CloseAll(); }

    QTemporaryDir directory;
    PfDbDocument* document = nullptr;
    KVXCameraKeyFramesTrack* track = nullptr;
};

TEST_F(Thumbnails, aQuarterOfTheViewportFromTheKeyFramesCamera)
{
    PfGsModelView::Attach(document)->GetViewer()->SetActiveViewportSize(1023, 767);
    KVXCameraKeyFrame* keyFrame = track->CreateCameraKeyFrame(2000);
    ASSERT_NE(keyFrame, nullptr);
    keyFrame->SetCamera(lookingAt({-20000, -30000, 20000}));

    const QString path = QString::fromStdWString(keyFrame->GetSceneImagePath());
    EXPECT_EQ(path, directory.path() + QStringLiteral("//camera_key_frame_%1.png").arg(keyFrame->GetHandle()));
    const QImage thumbnail(path);
    ASSERT_EQ(thumbnail.size(), QSize(255, 191));
    const QRgb middle = thumbnail.pixel(127, 95);
    EXPECT_GT(qRed(middle), 2 * qBlue(middle)) << "the red block fills the middle";
    EXPECT_NE(thumbnail.pixel(2, 2), middle);

    // Later cameras keep the first picture.
    const QByteArray first = contentOf(path);
    keyFrame->SetCamera(lookingAt({20000, 30000, 5000}));
    EXPECT_EQ(QString::fromStdWString(keyFrame->GetSceneImagePath()), path);
    EXPECT_EQ(contentOf(path), first);
}

TEST_F(Thumbnails, withoutAViewThePathIsFixedButNothingIsDrawn)
{
    KVXCameraKeyFrame* keyFrame = track->CreateCameraKeyFrame(0);
    keyFrame->SetCamera(lookingAt({-20000, -30000, 20000}));
    ASSERT_FALSE(keyFrame->GetSceneImagePath().empty());
    EXPECT_FALSE(QFile::exists(QString::fromStdWString(keyFrame->GetSceneImagePath())));
}

} // namespace
