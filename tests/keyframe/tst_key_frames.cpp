#include "host/db/KVXSaveLoadXml.h"
#include "host/db/PfDbDatabase.h"
#include "host/model/KVXGlobalInfo.h"
#include "keyframe/KVXCameraKeyFrame.h"
#include "keyframe/KVXDateKeyFrame.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QDate>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <osg/io_utils>

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

using Type = KVXSaveLoadXml::Type;

// The properties a key frame writes after those of its element base, one line
// each: key, type and value.
QStringList ownProperties(KVXBaseObject& keyFrame)
{
    static const char* const typeNames[] = {"Int", "Int64", "Bool", "Double", "Vector", "String", "Handles", "Numbers"};
    KVXSaveLoadXml base, xml;
    KVXBaseObject().setElementPropertys(base);
    keyFrame.setElementPropertys(xml);
    QStringList own;
    for (std::size_t i = base.size(); i < xml.size(); ++i) {
        const KVXSaveLoadXml::Property& p = xml.properties()[i];
        QString value = p.type == Type::String ? p.text : QString::number(p.integer);
        if (p.type == Type::Double || p.type == Type::Vector) {
            value = QStringLiteral("%1,%2,%3").arg(p.number[0], 0, 'g', 17).arg(p.number[1], 0, 'g', 17).arg(
                p.number[2], 0, 'g', 17);
        }
        own << p.key + ' ' + typeNames[static_cast<int>(p.type)] + ' ' + value;
    }
    return own;
}

QStringList keysAndTypes(const QStringList& properties)
{
    QStringList keys;
    for (const QString& line : properties)
        keys << line.section(' ', 0, 1);
    return keys;
}

vpe::CRefPtr<vpe::CCamera> makeCamera(const osg::Vec3f& position, const osg::Vec3f& direction, const osg::Vec3f& up)
{
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera();
    camera->SetPosition(position);
    camera->SetDirection(direction);
    camera->SetUpDirection(up);
    return camera;
}

// Thumbnails go to a temporary directory of each test's own.
class CameraKeyFrame : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_directory.isValid());
        KVXGlobalInfo::getInstance()->setTempProjectPath(directory());
    }

    std::wstring directory() const { return m_directory.path().toStdWString(); }

    QTemporaryDir m_directory;
};

TEST(KeyFrame, timeIsItsOnlyKeyAndReadsInSeconds)
{
    KVXKeyFrame keyFrame(2500);
    EXPECT_EQ(keyFrame.GetTimeS(), 2.5f);
    EXPECT_EQ(ownProperties(keyFrame), QStringList(QStringLiteral("KeyFrame::time_ Int 2500")));
}

TEST(DateKeyFrame, dateIsWrittenAsGivenInThreeIntegersAndReadBack)
{
    KVXDateKeyFrame valid(4000);
    valid.SetDate(QDate(2021, 2, 28));
    // An impossible date is kept as given and reads invalid.
    KVXDateKeyFrame impossible(4000);
    impossible.SetDate(2021, 2, 30);
    EXPECT_FALSE(impossible.GetDate().isValid());

    for (auto [keyFrame, day] : {std::pair(&valid, 28), std::pair(&impossible, 30)}) {
        SCOPED_TRACE(day);
        const QStringList own = ownProperties(*keyFrame);
        EXPECT_EQ(own, QStringList({"KeyFrame::time_ Int 4000", "KVXDateKeyFrame::year_ Int 2021",
                                    "KVXDateKeyFrame::month_ Int 2",
                                    QStringLiteral("KVXDateKeyFrame::day_ Int %1").arg(day)}));
        KVXSaveLoadXml xml;
        keyFrame->Save(xml);
        KVXDateKeyFrame loaded;
        loaded.Load(xml);
        EXPECT_EQ(ownProperties(loaded), own);
        EXPECT_TRUE(xml.unconsumedKeys().isEmpty()) << xml.unconsumedKeys().join(',').toStdString();
    }

    KVXSaveLoadXml empty;
    valid.getElementPropertys(empty);
    EXPECT_FALSE(valid.GetDate().isValid());
    EXPECT_EQ(valid.GetTime(), 0);
    EXPECT_FALSE(KVXDateKeyFrame(1000).GetDate().isValid());
}

TEST_F(CameraKeyFrame, copiesShareTheCamera)
{
    KVXCameraKeyFrame keyFrame(1200);
    vpe::CRefPtr<vpe::CCamera> camera = makeCamera({0, 0, 0}, {0, 1, 0}, {0, 0, 1});
    keyFrame.SetCamera(camera.get());
    keyFrame.SetCamera(camera.get());
    EXPECT_EQ(camera->referenceCount(), 2);

    KVXCameraKeyFrame copy(keyFrame);
    EXPECT_EQ(copy.GetSceneImagePath(), keyFrame.GetSceneImagePath());
    ASSERT_EQ(copy.GetCamera(), camera.get());
    copy.GetCamera()->SetPosition({500.0f, -250.0f, 1800.0f});
    EXPECT_EQ(keyFrame.GetCamera()->GetPosition(), osg::Vec3f(500.0f, -250.0f, 1800.0f));
}

TEST_F(CameraKeyFrame, thumbnailPathIsTheTempDirectoryAndTheHandle)
{
    const std::pair<PfDbHandle, const wchar_t*> rows[] = {{4711, L"4711"},
                                                          {0xfffffffffffffffeULL, L"18446744073709551614"}};
    for (const auto& [handle, text] : rows) {
        SCOPED_TRACE(handle);
        // Without a model space, so that every handle is free.
        PfDbDatabase database(false);
        auto* keyFrame = new KVXCameraKeyFrame(0);
        ASSERT_EQ(database.AddObjectWithHandle(keyFrame, handle), Pfad::eOk);
        EXPECT_TRUE(keyFrame->GetSceneImagePath().empty());
        vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera();
        keyFrame->SetCamera(camera.get());
        // The doubled separator is part of the stored path.
        EXPECT_EQ(keyFrame->GetSceneImagePath(), directory() + L"//camera_key_frame_" + text + L".png");
    }
}

TEST_F(CameraKeyFrame, firstThumbnailPathIsKept)
{
    PfDbDatabase database;
    auto* keyFrame = new KVXCameraKeyFrame(0);
    ASSERT_NE(database.AddObject(keyFrame), kPfDbNullHandle);
    vpe::CRefPtr<vpe::CCamera> first = new vpe::CCamera();
    vpe::CRefPtr<vpe::CCamera> second = new vpe::CCamera();
    keyFrame->SetCamera(first.get());
    const std::wstring path = keyFrame->GetSceneImagePath();
    ASSERT_FALSE(path.empty());

    KVXGlobalInfo::getInstance()->setTempProjectPath(L"/elsewhere");
    keyFrame->SetCamera(second.get());
    EXPECT_EQ(keyFrame->GetCamera(), second.get());
    EXPECT_EQ(keyFrame->GetSceneImagePath(), path);

    // So is one loaded with the key frame.
    KVXSaveLoadXml xml;
    xml.setString(QStringLiteral("KVXCameraKeyFrame::scene_image_path_"), "/projects/site/camera_key_frame_12.png");
    KVXCameraKeyFrame loaded;
    loaded.getElementPropertys(xml);
    loaded.SetCamera(first.get());
    EXPECT_EQ(loaded.GetSceneImagePath(), L"/projects/site/camera_key_frame_12.png");
}

TEST_F(CameraKeyFrame, transformMovesTheEyeButNotTheView)
{
    osg::Matrixd homogeneous;
    homogeneous(3, 3) = 2.0;
    const std::pair<osg::Matrixd, osg::Vec3f> rows[] = {
        {osg::Matrixd::rotate(osg::PI_2, osg::Z_AXIS) * osg::Matrixd::translate(100.0, 0.0, 0.0),
         {100.0f, 1000.0f, 500.0f}},
        {osg::Matrixd::rotate(osg::PI, osg::X_AXIS), {1000.0f, 0.0f, -500.0f}},
        {homogeneous, {500.0f, 0.0f, 250.0f}},
    };
    const osg::Vec3f direction(0.6f, 0.8f, 0.0f);
    const osg::Vec3f up(0.0f, 0.0f, 1.0f);
    for (const auto& [matrix, expected] : rows) {
        SCOPED_TRACE(::testing::PrintToString(expected));
        KVXCameraKeyFrame keyFrame(0);
        vpe::CRefPtr<vpe::CCamera> camera = makeCamera({1000.0f, 0.0f, 500.0f}, direction, up);
        keyFrame.SetCamera(camera.get());
        EXPECT_EQ(keyFrame.Transform(matrix), Pfad::eOk);
        EXPECT_NEAR((camera->GetPosition() - expected).length(), 0.0, 1e-3) << camera->GetPosition();
        EXPECT_EQ(camera->GetDirection(), direction);
        EXPECT_EQ(camera->GetUpDirection(), up);
    }

    KVXCameraKeyFrame withoutCamera(0);
    EXPECT_EQ(withoutCamera.Transform(osg::Matrixd::translate(1.0, 2.0, 3.0)), Pfad::eOk);
    EXPECT_EQ(withoutCamera.GetCamera(), nullptr);
}

TEST_F(CameraKeyFrame, rotationTurnsLocalAxesOntoSideDirectionAndUp)
{
    const std::pair<osg::Vec3f, osg::Vec3f> rows[] = {
        {{0, 1, 0}, {0, 0, 1}},
        {{-0.6f, -0.8f, 0}, {0, 0, 1}},
        {{0, 0.8f, -0.6f}, {0, 0.6f, 0.8f}},
        {{0, 1, 0}, {1, 0, 0}},
    };
    for (const auto& [direction, up] : rows) {
        SCOPED_TRACE(::testing::PrintToString(direction) + " up " + ::testing::PrintToString(up));
        KVXCameraKeyFrame keyFrame(0);
        vpe::CRefPtr<vpe::CCamera> camera = makeCamera({0, 0, 0}, direction, up);
        keyFrame.SetCamera(camera.get());
        const vpe::CQuaternion rotation = keyFrame.GetCameraRotation();
        const osg::Vec3d d(direction), u(up);
        const std::pair<osg::Vec3d, osg::Vec3d> axes[] = {{{1, 0, 0}, d ^ u}, {{0, 1, 0}, d}, {{0, 0, 1}, u}};
        for (const auto& [local, expected] : axes) {
            const osg::Vec3d turned = rotation * local;
            EXPECT_NEAR((turned - expected).length(), 0.0, 1e-5) << local << " turned to " << turned;
        }
    }
    EXPECT_EQ(KVXCameraKeyFrame(0).GetCameraRotation().asVec4(), osg::Vec4d(0.0, 0.0, 0.0, 1.0));
}

TEST_F(CameraKeyFrame, cameraIsWrittenOnlyWhenThereIsOneAndReadBackExactly)
{
    KVXCameraKeyFrame bare(800);
    EXPECT_EQ(keysAndTypes(ownProperties(bare)),
              QStringList({"KeyFrame::time_ Int", "KVXCameraKeyFrame::scene_image_path_ String"}));
    PfDbDatabase database;
    auto* keyFrame = new KVXCameraKeyFrame(6000);
    ASSERT_NE(database.AddObject(keyFrame), kPfDbNullHandle);
    vpe::CRefPtr<vpe::CCamera> camera = makeCamera({1234.5f, -678.3f, 90.1f}, {0.6f, 0.8f, 0.0f}, {0.0f, 0.0f, 1.0f});
    camera->SetProjectionType(vpe::CCamera::Orthographic);
    camera->SetAspectRatio(1.7f);
    camera->SetNearDistance(0.1f);
    camera->SetFarDistance(25000.3f);
    camera->SetFieldOfView(60.7f);
    camera->SetOrthoWindowHeight(3500.9f);
    keyFrame->SetCamera(camera.get());
    const QStringList own = ownProperties(*keyFrame);
    EXPECT_EQ(keysAndTypes(own), QStringList({"KeyFrame::time_ Int", "KVXCameraKeyFrame::camera_type Int",
                                              "KVXCameraKeyFrame::camera_position Vector",
                                              "KVXCameraKeyFrame::camera_direction Vector",
                                              "KVXCameraKeyFrame::camera_up_direction Vector",
                                              "KVXCameraKeyFrame::camera_aspect_ratio Double",
                                              "KVXCameraKeyFrame::camera_near_dist Double",
                                              "KVXCameraKeyFrame::camera_far_dist Double",
                                              "KVXCameraKeyFrame::camera_field_of_view Double",
                                              "KVXCameraKeyFrame::camera_ortho_window_height Double",
                                              "KVXCameraKeyFrame::scene_image_path_ String"}));

    KVXSaveLoadXml xml;
    keyFrame->Save(xml);
    KVXCameraKeyFrame loaded;
    loaded.Load(xml);
    EXPECT_TRUE(xml.unconsumedKeys().isEmpty()) << xml.unconsumedKeys().join(',').toStdString();
    ASSERT_NE(loaded.GetCamera(), nullptr);
    EXPECT_NE(loaded.GetCamera(), camera.get());
    EXPECT_EQ(ownProperties(loaded), own);

    // A key frame that has a camera loads into it.
    xml.rewind();
    vpe::CRefPtr<vpe::CCamera> target = makeCamera({9, 9, 9}, {0, 1, 0}, {0, 0, 1});
    loaded.SetCamera(target.get());
    loaded.Load(xml);
    EXPECT_EQ(loaded.GetCamera(), target.get());
    EXPECT_EQ(target->GetPosition(), camera->GetPosition());

    // Missing camera keys load as a zero camera.
    KVXSaveLoadXml empty;
    bare.getElementPropertys(empty);
    ASSERT_NE(bare.GetCamera(), nullptr);
    EXPECT_EQ(bare.GetCamera()->GetPosition(), osg::Vec3f(0, 0, 0));
    EXPECT_EQ(bare.GetCamera()->GetFieldOfView(), 0.0f);
    EXPECT_TRUE(bare.GetSceneImagePath().empty());
}

} // namespace
