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

#include <iterator>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace {

using Type = KVXSaveLoadXml::Type;

// The properties a key frame writes after those of its element base.
std::vector<KVXSaveLoadXml::Property> ownProperties(KVXBaseObject& keyFrame)
{
    KVXSaveLoadXml base;
    KVXBaseObject().setElementPropertys(base);
    KVXSaveLoadXml xml;
    keyFrame.setElementPropertys(xml);
    std::vector<KVXSaveLoadXml::Property> own;
    for (std::size_t i = 0; i < xml.size(); ++i) {
        if (i < base.size())
            EXPECT_EQ(xml.properties()[i].key, base.properties()[i].key) << "base key " << i;
        else
            own.push_back(xml.properties()[i]);
    }
    return own;
}

QStringList keysOf(const std::vector<KVXSaveLoadXml::Property>& properties)
{
    QStringList keys;
    for (const KVXSaveLoadXml::Property& p : properties)
        keys << p.key;
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
class CameraKeyFrameTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_directory.isValid());
        KVXGlobalInfo::getInstance()->setTempProjectPath(directory());
    }

    std::wstring directory() const { return m_directory.path().toStdWString(); }

    QTemporaryDir m_directory;
};

TEST(KeyFrame, timeInSecondsIsMillisecondsOverAThousand)
{
    const std::pair<int, float> rows[] = {{0, 0.0f}, {250, 0.25f}, {1500, 1.5f}, {90000, 90.0f}};
    for (const auto& [ms, seconds] : rows) {
        SCOPED_TRACE(ms);
        EXPECT_EQ(KVXKeyFrame(static_cast<unsigned int>(ms)).GetTimeS(), seconds);
        KVXDateKeyFrame keyFrame;
        keyFrame.SetTime(ms);
        EXPECT_EQ(keyFrame.GetTime(), ms);
        EXPECT_EQ(keyFrame.GetTimeS(), seconds);
    }
}

TEST(KeyFrame, timeIsTheOnlyKeyAndCarriesNoClassPrefix)
{
    KVXKeyFrame keyFrame(2500);
    const auto own = ownProperties(keyFrame);
    ASSERT_EQ(own.size(), 1u);
    EXPECT_EQ(own[0].key, QStringLiteral("KeyFrame::time_"));
    EXPECT_EQ(own[0].type, Type::Int);
    EXPECT_EQ(own[0].integer, 2500);

    KVXSaveLoadXml xml;
    keyFrame.Save(xml);
    KVXKeyFrame loaded;
    loaded.Load(xml);
    EXPECT_EQ(loaded.GetTime(), 2500);

    KVXSaveLoadXml empty;
    loaded.getElementPropertys(empty);
    EXPECT_EQ(loaded.GetTime(), 0);
}

TEST(DateKeyFrame, dateSurvivesSaveAndLoadAsThreeIntegers)
{
    KVXDateKeyFrame keyFrame(4000);
    keyFrame.SetDate(QDate(2021, 2, 28));

    const auto own = ownProperties(keyFrame);
    ASSERT_EQ(own.size(), 4u);
    const std::pair<const char*, int> expected[] = {
        {"KeyFrame::time_", 4000},
        {"KVXDateKeyFrame::year_", 2021},
        {"KVXDateKeyFrame::month_", 2},
        {"KVXDateKeyFrame::day_", 28},
    };
    for (std::size_t i = 0; i < own.size(); ++i) {
        SCOPED_TRACE(expected[i].first);
        EXPECT_EQ(own[i].key, QString::fromLatin1(expected[i].first));
        EXPECT_EQ(own[i].type, Type::Int);
        EXPECT_EQ(own[i].integer, expected[i].second);
    }

    KVXSaveLoadXml xml;
    keyFrame.Save(xml);
    KVXDateKeyFrame loaded;
    loaded.Load(xml);
    EXPECT_EQ(loaded.GetDate(), QDate(2021, 2, 28));
    EXPECT_EQ(loaded.GetTime(), 4000);
    EXPECT_TRUE(xml.unconsumedKeys().isEmpty()) << xml.unconsumedKeys().join(',').toStdString();
}

TEST(DateKeyFrame, impossibleDateIsKeptAsGivenAndReadsInvalid)
{
    KVXDateKeyFrame keyFrame;
    keyFrame.SetDate(2021, 2, 30);
    EXPECT_FALSE(keyFrame.GetDate().isValid());
    const auto own = ownProperties(keyFrame);
    ASSERT_EQ(own.size(), 4u);
    EXPECT_EQ(own[1].integer, 2021);
    EXPECT_EQ(own[2].integer, 2);
    EXPECT_EQ(own[3].integer, 30);
}

TEST(DateKeyFrame, withoutADateReadsInvalid)
{
    EXPECT_FALSE(KVXDateKeyFrame(1000).GetDate().isValid());
    KVXDateKeyFrame loaded(700);
    loaded.SetDate(QDate(2022, 1, 1));
    KVXSaveLoadXml empty;
    loaded.getElementPropertys(empty);
    EXPECT_FALSE(loaded.GetDate().isValid());
    EXPECT_EQ(loaded.GetTime(), 0);
}

TEST_F(CameraKeyFrameTest, holdsOneReferenceToItsCamera)
{
    vpe::CRefPtr<vpe::CCamera> first = new vpe::CCamera();
    vpe::CRefPtr<vpe::CCamera> second = new vpe::CCamera();
    {
        KVXCameraKeyFrame keyFrame(0);
        keyFrame.SetCamera(first.get());
        keyFrame.SetCamera(first.get());
        EXPECT_EQ(first->referenceCount(), 2);
        keyFrame.SetCamera(second.get());
        EXPECT_EQ(keyFrame.GetCamera(), second.get());
        EXPECT_EQ(first->referenceCount(), 1);
        EXPECT_EQ(second->referenceCount(), 2);
    }
    EXPECT_EQ(second->referenceCount(), 1);
}

TEST_F(CameraKeyFrameTest, copySharesTheCamera)
{
    KVXCameraKeyFrame keyFrame(1200);
    vpe::CRefPtr<vpe::CCamera> camera = makeCamera({0, 0, 0}, {0, 1, 0}, {0, 0, 1});
    keyFrame.SetCamera(camera.get());

    KVXCameraKeyFrame copy(keyFrame);
    EXPECT_EQ(copy.GetTime(), 1200);
    EXPECT_EQ(copy.GetSceneImagePath(), keyFrame.GetSceneImagePath());
    ASSERT_EQ(copy.GetCamera(), keyFrame.GetCamera());
    EXPECT_EQ(camera->referenceCount(), 3);

    copy.GetCamera()->SetPosition({500.0f, -250.0f, 1800.0f});
    EXPECT_EQ(keyFrame.GetCamera()->GetPosition(), osg::Vec3f(500.0f, -250.0f, 1800.0f));
}

struct ThumbnailRow {
    const char* name;
    PfDbHandle handle;
    const wchar_t* handleText;
};

void PrintTo(const ThumbnailRow& row, std::ostream* os) { *os << row.name; }

class CameraKeyFrameThumbnailPath : public CameraKeyFrameTest,
                                    public ::testing::WithParamInterface<ThumbnailRow> {};

TEST_P(CameraKeyFrameThumbnailPath, isTheTempDirectoryAndTheHandle)
{
    // Without a model space, so that every handle is free.
    PfDbDatabase database(false);
    auto* keyFrame = new KVXCameraKeyFrame(0);
    ASSERT_EQ(database.AddObjectWithHandle(keyFrame, GetParam().handle), Pfad::eOk);

    EXPECT_TRUE(keyFrame->GetSceneImagePath().empty());
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera();
    keyFrame->SetCamera(camera.get());
    // The doubled separator is part of the stored path.
    EXPECT_EQ(keyFrame->GetSceneImagePath(),
              directory() + L"//camera_key_frame_" + GetParam().handleText + L".png");
}

INSTANTIATE_TEST_SUITE_P(Rows, CameraKeyFrameThumbnailPath,
                         ::testing::Values(ThumbnailRow{"ordinaryHandle", 4711, L"4711"},
                                           ThumbnailRow{"firstHandle", 1, L"1"},
                                           ThumbnailRow{"beyondSigned64Bits", 0xfffffffffffffffeULL,
                                                        L"18446744073709551614"}),
                         [](const ::testing::TestParamInfo<ThumbnailRow>& info) {
                             return std::string(info.param.name);
                         });

TEST_F(CameraKeyFrameTest, thumbnailPathIsFixedByTheFirstCamera)
{
    PfDbDatabase database;
    auto* keyFrame = new KVXCameraKeyFrame(0);
    ASSERT_NE(database.AddObject(keyFrame), kPfDbNullHandle);
    vpe::CRefPtr<vpe::CCamera> first = new vpe::CCamera();
    vpe::CRefPtr<vpe::CCamera> second = new vpe::CCamera();

    keyFrame->SetCamera(first.get());
    const std::wstring path = keyFrame->GetSceneImagePath();
    ASSERT_FALSE(path.empty());

    QTemporaryDir elsewhere;
    ASSERT_TRUE(elsewhere.isValid());
    KVXGlobalInfo::getInstance()->setTempProjectPath(elsewhere.path().toStdWString());
    keyFrame->SetCamera(second.get());
    EXPECT_EQ(keyFrame->GetCamera(), second.get());
    EXPECT_EQ(keyFrame->GetSceneImagePath(), path);
}

struct TransformRow {
    const char* name;
    osg::Matrixd matrix;
    osg::Vec3f position;
};

void PrintTo(const TransformRow& row, std::ostream* os) { *os << row.name; }

class CameraKeyFrameTransform : public CameraKeyFrameTest, public ::testing::WithParamInterface<TransformRow> {};

TEST_P(CameraKeyFrameTransform, movesTheEyeButNotTheView)
{
    const osg::Vec3f direction(0.6f, 0.8f, 0.0f);
    const osg::Vec3f up(0.0f, 0.0f, 1.0f);
    KVXCameraKeyFrame keyFrame(0);
    vpe::CRefPtr<vpe::CCamera> camera = makeCamera({1000.0f, 0.0f, 500.0f}, direction, up);
    keyFrame.SetCamera(camera.get());

    EXPECT_EQ(keyFrame.Transform(GetParam().matrix), Pfad::eOk);

    const osg::Vec3f moved = camera->GetPosition();
    const osg::Vec3f& expected = GetParam().position;
    EXPECT_NEAR(moved.x(), expected.x(), 1e-3) << moved;
    EXPECT_NEAR(moved.y(), expected.y(), 1e-3) << moved;
    EXPECT_NEAR(moved.z(), expected.z(), 1e-3) << moved;
    EXPECT_EQ(camera->GetDirection(), direction);
    EXPECT_EQ(camera->GetUpDirection(), up);
}

osg::Matrixd homogeneousScale(double w)
{
    osg::Matrixd m;
    m(3, 3) = w;
    return m;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, CameraKeyFrameTransform,
    ::testing::Values(
        TransformRow{"quarterTurnAboutZ", osg::Matrixd::rotate(osg::PI_2, osg::Z_AXIS), {0.0f, 1000.0f, 500.0f}},
        TransformRow{"halfTurnAboutX", osg::Matrixd::rotate(osg::PI, osg::X_AXIS), {1000.0f, 0.0f, -500.0f}},
        TransformRow{"translation", osg::Matrixd::translate(10.0, -20.0, 30.0), {1010.0f, -20.0f, 530.0f}},
        TransformRow{"turnThenShift",
                     osg::Matrixd::rotate(osg::PI_2, osg::Z_AXIS) * osg::Matrixd::translate(100.0, 0.0, 0.0),
                     {100.0f, 1000.0f, 500.0f}},
        TransformRow{"uniformScale", osg::Matrixd::scale(2.0, 2.0, 2.0), {2000.0f, 0.0f, 1000.0f}},
        TransformRow{"homogeneousDivide", homogeneousScale(2.0), {500.0f, 0.0f, 250.0f}}),
    [](const ::testing::TestParamInfo<TransformRow>& info) { return std::string(info.param.name); });

TEST(CameraKeyFrame, transformWithoutCameraSucceedsAndMakesNone)
{
    KVXCameraKeyFrame keyFrame(0);
    EXPECT_EQ(keyFrame.Transform(osg::Matrixd::translate(1.0, 2.0, 3.0)), Pfad::eOk);
    EXPECT_EQ(keyFrame.GetCamera(), nullptr);
}

struct OrientationRow {
    const char* name;
    osg::Vec3f direction;
    osg::Vec3f up;
};

void PrintTo(const OrientationRow& row, std::ostream* os) { *os << row.name; }

class CameraKeyFrameRotation : public CameraKeyFrameTest, public ::testing::WithParamInterface<OrientationRow> {};

TEST_P(CameraKeyFrameRotation, turnsLocalYOntoTheDirectionAndLocalZOntoUp)
{
    const OrientationRow& row = GetParam();
    KVXCameraKeyFrame keyFrame(0);
    vpe::CRefPtr<vpe::CCamera> camera = makeCamera({0, 0, 0}, row.direction, row.up);
    keyFrame.SetCamera(camera.get());

    const vpe::CQuaternion rotation = keyFrame.GetCameraRotation();
    const osg::Vec3d side = osg::Vec3d(row.direction) ^ osg::Vec3d(row.up);
    const std::pair<osg::Vec3d, osg::Vec3d> axes[] = {
        {{1, 0, 0}, side}, {{0, 1, 0}, osg::Vec3d(row.direction)}, {{0, 0, 1}, osg::Vec3d(row.up)}};
    for (const auto& [local, expected] : axes) {
        SCOPED_TRACE(::testing::PrintToString(local));
        const osg::Vec3d turned = rotation * local;
        EXPECT_NEAR((turned - expected).length(), 0.0, 1e-5) << turned << " instead of " << expected;
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, CameraKeyFrameRotation,
                         ::testing::Values(OrientationRow{"alongY", {0, 1, 0}, {0, 0, 1}},
                                           OrientationRow{"alongX", {1, 0, 0}, {0, 0, 1}},
                                           OrientationRow{"towardsSouthWest", {-0.6f, -0.8f, 0}, {0, 0, 1}},
                                           OrientationRow{"straightDown", {0, 0, -1}, {0, 1, 0}},
                                           OrientationRow{"tiltedDown", {0, 0.8f, -0.6f}, {0, 0.6f, 0.8f}},
                                           OrientationRow{"rolledOntoItsSide", {0, 1, 0}, {1, 0, 0}}),
                         [](const ::testing::TestParamInfo<OrientationRow>& info) {
                             return std::string(info.param.name);
                         });

TEST(CameraKeyFrame, rotationWithoutCameraIsIdentity)
{
    KVXCameraKeyFrame keyFrame(0);
    EXPECT_EQ(keyFrame.GetCameraRotation().asVec4(), osg::Vec4d(0.0, 0.0, 0.0, 1.0));
}

TEST_F(CameraKeyFrameTest, cameraSurvivesSaveAndLoadExactly)
{
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

    const auto own = ownProperties(*keyFrame);
    const std::pair<const char*, Type> expectedKeys[] = {
        {"KeyFrame::time_", Type::Int},
        {"KVXCameraKeyFrame::camera_type", Type::Int},
        {"KVXCameraKeyFrame::camera_position", Type::Vector},
        {"KVXCameraKeyFrame::camera_direction", Type::Vector},
        {"KVXCameraKeyFrame::camera_up_direction", Type::Vector},
        {"KVXCameraKeyFrame::camera_aspect_ratio", Type::Double},
        {"KVXCameraKeyFrame::camera_near_dist", Type::Double},
        {"KVXCameraKeyFrame::camera_far_dist", Type::Double},
        {"KVXCameraKeyFrame::camera_field_of_view", Type::Double},
        {"KVXCameraKeyFrame::camera_ortho_window_height", Type::Double},
        {"KVXCameraKeyFrame::scene_image_path_", Type::String},
    };
    ASSERT_EQ(own.size(), std::size(expectedKeys));
    for (std::size_t i = 0; i < own.size(); ++i) {
        SCOPED_TRACE(expectedKeys[i].first);
        EXPECT_EQ(own[i].key, QString::fromLatin1(expectedKeys[i].first));
        EXPECT_EQ(own[i].type, expectedKeys[i].second);
    }

    KVXSaveLoadXml xml;
    keyFrame->Save(xml);
    KVXCameraKeyFrame loaded;
    loaded.Load(xml);
    EXPECT_TRUE(xml.unconsumedKeys().isEmpty()) << xml.unconsumedKeys().join(',').toStdString();
    EXPECT_EQ(loaded.GetTime(), 6000);
    EXPECT_EQ(loaded.GetSceneImagePath(), keyFrame->GetSceneImagePath());
    const vpe::CCamera* copy = loaded.GetCamera();
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy, camera.get());
    EXPECT_EQ(copy->GetProjectionType(), vpe::CCamera::Orthographic);
    EXPECT_EQ(copy->GetPosition(), camera->GetPosition());
    EXPECT_EQ(copy->GetDirection(), camera->GetDirection());
    EXPECT_EQ(copy->GetUpDirection(), camera->GetUpDirection());
    EXPECT_EQ(copy->GetAspectRatio(), 1.7f);
    EXPECT_EQ(copy->GetNearDistance(), 0.1f);
    EXPECT_EQ(copy->GetFarDistance(), 25000.3f);
    EXPECT_EQ(copy->GetFieldOfView(), 60.7f);
    EXPECT_EQ(copy->GetOrthoWindowHeight(), 3500.9f);
}

TEST(CameraKeyFrame, withoutCameraSavesNoCameraKeys)
{
    KVXCameraKeyFrame keyFrame(800);
    EXPECT_EQ(keysOf(ownProperties(keyFrame)),
              QStringList({"KeyFrame::time_", "KVXCameraKeyFrame::scene_image_path_"}));
}

TEST_F(CameraKeyFrameTest, loadingReusesTheCameraItHas)
{
    KVXCameraKeyFrame source(0);
    vpe::CRefPtr<vpe::CCamera> sourceCamera = makeCamera({1, 2, 3}, {0, 0, -1}, {0, 1, 0});
    source.SetCamera(sourceCamera.get());
    KVXSaveLoadXml xml;
    source.Save(xml);

    KVXCameraKeyFrame target(0);
    vpe::CRefPtr<vpe::CCamera> targetCamera = makeCamera({9, 9, 9}, {0, 1, 0}, {0, 0, 1});
    target.SetCamera(targetCamera.get());
    target.Load(xml);
    EXPECT_EQ(target.GetCamera(), targetCamera.get());
    EXPECT_EQ(targetCamera->GetPosition(), osg::Vec3f(1, 2, 3));
    EXPECT_EQ(targetCamera->GetDirection(), osg::Vec3f(0, 0, -1));
}

TEST(CameraKeyFrame, missingCameraKeysLoadAsAZeroCamera)
{
    KVXCameraKeyFrame keyFrame(0);
    KVXSaveLoadXml empty;
    keyFrame.getElementPropertys(empty);
    const vpe::CCamera* camera = keyFrame.GetCamera();
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(camera->GetProjectionType(), 0);
    EXPECT_EQ(camera->GetPosition(), osg::Vec3f(0, 0, 0));
    EXPECT_EQ(camera->GetDirection(), osg::Vec3f(0, 0, 0));
    EXPECT_EQ(camera->GetUpDirection(), osg::Vec3f(0, 0, 0));
    EXPECT_EQ(camera->GetAspectRatio(), 0.0f);
    EXPECT_EQ(camera->GetNearDistance(), 0.0f);
    EXPECT_EQ(camera->GetFarDistance(), 0.0f);
    EXPECT_EQ(camera->GetFieldOfView(), 0.0f);
    EXPECT_EQ(camera->GetOrthoWindowHeight(), 0.0f);
    EXPECT_TRUE(keyFrame.GetSceneImagePath().empty());
}

TEST_F(CameraKeyFrameTest, loadedThumbnailPathIsKept)
{
    KVXSaveLoadXml xml;
    KVXCameraKeyFrame(0).Save(xml);
    for (KVXSaveLoadXml::Property& property : xml.properties()) {
        if (property.key == QStringLiteral("KVXCameraKeyFrame::scene_image_path_"))
            property.text = QStringLiteral("/projects/site/camera_key_frame_12.png");
    }

    KVXCameraKeyFrame loaded;
    loaded.Load(xml);
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera();
    loaded.SetCamera(camera.get());
    EXPECT_EQ(loaded.GetSceneImagePath(), L"/projects/site/camera_key_frame_12.png");
}

} // namespace
