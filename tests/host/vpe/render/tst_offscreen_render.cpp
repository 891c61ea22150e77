#include "host/model/KVXDrawHelper.h"
#include "host/vpe/render/CScreenshoter.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CPrimitiveRenderable.h"
#include "host/vpe/scene/CRefGroupNode.h"
#include "host/vpe/scene/CRefVisualNode.h"
#include "host/vpe/scene/CStateSetManager.h"

#include <QTemporaryDir>

#include <algorithm>

#include <gtest/gtest.h>

namespace {

// Everything is seen from straight above, 3 m across a 200 pixel picture:
// model x grows to the right, y upwards, 15 mm a pixel, the origin in the
// middle.
constexpr int kSize = 200;

vpe::CRefPtr<vpe::CCamera> topCamera()
{
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
    camera->SetProjectionType(vpe::CCamera::Orthographic);
    camera->SetPosition({0.0f, 0.0f, 20000.0f});
    camera->SetDirection({0.0f, 0.0f, -1.0f});
    camera->SetUpDirection({0.0f, 1.0f, 0.0f});
    camera->SetOrthoWindowHeight(3000.0f);
    camera->SetNearDistance(1.0f);
    camera->SetFarDistance(100000.0f);
    return camera;
}

QPoint pixelOf(double x, double y) { return QPoint(int(kSize / 2 + x / 15.0), int(kSize / 2 - y / 15.0)); }

// By the dominant channel: faces in shadow are darker, not another colour.
bool dominates(int channel, int other1, int other2) { return channel > 60 && channel > 2 * std::max(other1, other2); }
bool isRed(QRgb c) { return dominates(qRed(c), qGreen(c), qBlue(c)); }
bool isGreen(QRgb c) { return dominates(qGreen(c), qRed(c), qBlue(c)); }
bool isBlue(QRgb c) { return dominates(qBlue(c), qRed(c), qGreen(c)); }

osg::Node* box(const osg::Vec3d& min, const osg::Vec3d& max, const QColor& color)
{
    vpe::CRefPtr<vpe::CBody> body = vpe::CBody::CreateBox(min, max);
    return KVXDrawHelper::CreateBodyNode(*body, color);
}

class OffscreenRender : public ::testing::Test {
protected:
    void SetUp() override
    {
        viewer = new vpe::CViewer;
        viewer->SetBackgroundColor(Qt::white);
        root()->addChild(block);
    }
    vpe::CGroupNode* root() { return viewer->GetScene()->GetRootNode(); }
    QRgb at(double x, double y)
    {
        QString error;
        if (picture.isNull() || dirty) {
            EXPECT_TRUE(viewer->RenderImage(*topCamera(), kSize, kSize, picture, &error)) << error.toStdString();
            dirty = false;
        }
        return picture.pixel(pixelOf(x, y));
    }
    void changed() { dirty = true; }

    vpe::CRefPtr<vpe::CViewer> viewer;
    osg::ref_ptr<osg::Node> block = box({-1000, -1000, 0}, {1000, 1000, 1000}, Qt::red);
    QImage picture;
    bool dirty = true;
};

TEST_F(OffscreenRender, drawsTheModelOverTheBackground)
{
    EXPECT_TRUE(isRed(at(-500, 0)));
    EXPECT_TRUE(isRed(at(500, 500)));
    EXPECT_EQ(at(1400, 1400), QColor(Qt::white).rgb());
}

TEST_F(OffscreenRender, clipPlaneKeepsOneHalfUntilRemoved)
{
    osg::ref_ptr<vpe::CStateSet> state = new vpe::CStateSet;
    block->setStateSet(state);
    state->AddClipPlane(0, osg::Vec4d(1.0, 0.0, 0.0, 0.0));
    EXPECT_FALSE(isRed(at(-500, 0)));
    EXPECT_TRUE(isRed(at(500, 0)));

    state->RemoveClipPlane(0);
    changed();
    EXPECT_TRUE(isRed(at(-500, 0)));
    EXPECT_TRUE(isRed(at(500, 0)));
}

TEST_F(OffscreenRender, disabledClipPlanesAreNeverCut)
{
    osg::ref_ptr<vpe::CStateSet> parent = new vpe::CStateSet;
    parent->AddClipPlane(3, osg::Vec4d(1.0, 0.0, 0.0, 0.0));
    parent->SetOverriding();
    root()->setStateSet(parent);
    EXPECT_FALSE(isRed(at(-500, 0)));

    osg::ref_ptr<vpe::CStateSet> own = new vpe::CStateSet;
    own->SetClipPlanesDisabled(true);
    block->setStateSet(own);
    changed();
    EXPECT_TRUE(isRed(at(-500, 0)));
}

TEST_F(OffscreenRender, overlayWithoutDepthTestShowsThroughWhatIsInFront)
{
    // A blue slab above the red block hides it from the camera.
    root()->addChild(box({-1200, -1200, 2000}, {1200, 1200, 2200}, Qt::blue));
    EXPECT_TRUE(isBlue(at(0, 0)));

    auto* original = block->asGeode();
    ASSERT_NE(original, nullptr);
    osg::ref_ptr<vpe::CRefVisualNode> overlay = new vpe::CRefVisualNode(original, false, false);
    osg::ref_ptr<vpe::CStateSet> look = new vpe::CStateSet;
    look->SetDiffuseColor(QColor(0, 255, 0));
    look->SetAmbientColor(QColor(0, 255, 0));
    look->SetDepthTestEnabled(false);
    look->SetDrawingPriority(100);
    look->SetOverriding();
    overlay->setStateSet(look);
    root()->addChild(overlay);
    changed();
    EXPECT_TRUE(isGreen(at(0, 0))) << std::hex << at(0, 0);
    EXPECT_TRUE(isBlue(at(1100, 1100)));

    root()->removeChild(overlay);
    changed();
    EXPECT_TRUE(isBlue(at(0, 0)));
    // The overlay shared the block's renderables and changed nothing of them.
    EXPECT_EQ(original->getDrawable(0)->getStateSet(), KVXDrawHelper::FaceStateSet(Qt::red));
}

TEST_F(OffscreenRender, drawingMaskLimitsTheChannelsWritten)
{
    viewer->SetBackgroundColor(Qt::black);
    osg::ref_ptr<vpe::CStateSet> state = new vpe::CStateSet;
    state->SetLightingEnabled(false);
    state->SetDrawingMask(0x4);
    block->setStateSet(state);
    block->asGeode()->getDrawable(0)->setStateSet(nullptr);
    // White geometry through a blue-only mask over black.
    osg::ref_ptr<osg::Vec4Array> white = new osg::Vec4Array(1);
    (*white)[0] = osg::Vec4(1, 1, 1, 1);
    block->asGeode()->getDrawable(0)->asGeometry()->setColorArray(white, osg::Array::BIND_OVERALL);
    const QRgb seen = at(0, 0);
    EXPECT_EQ(qRed(seen), 0);
    EXPECT_EQ(qGreen(seen), 0);
    EXPECT_GT(qBlue(seen), 200);
}

TEST_F(OffscreenRender, groupOverlayFollowsTheGroupsPlacement)
{
    root()->removeChild(block);
    osg::ref_ptr<vpe::CGroupNode> group = new vpe::CGroupNode;
    group->addChild(block);
    group->setMatrix(osg::Matrix::translate(0, 0, -5000));
    root()->addChild(group);
    root()->addChild(box({-1200, -1200, 2000}, {1200, 1200, 2200}, Qt::blue));
    osg::ref_ptr<vpe::CRefGroupNode> overlay = new vpe::CRefGroupNode(group, false, false);
    osg::ref_ptr<vpe::CStateSet> look = new vpe::CStateSet;
    look->SetDepthTestEnabled(false);
    look->SetDrawingPriority(100);
    overlay->setStateSet(look);
    root()->addChild(overlay);
    EXPECT_TRUE(isRed(at(0, 0)));
}

TEST_F(OffscreenRender, pictureFilesComeAtTheBufferSize)
{
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("shots/top.png"));
    vpe::CScreenshoter screenshoter(viewer.get(), true, 14);
    screenshoter.SetOffscreenBuffer(255, 191);
    QString error;
    ASSERT_TRUE(screenshoter.CreateOffScreenshot(nullptr, path, topCamera().get(), &error)) << error.toStdString();
    const QImage written(path);
    EXPECT_EQ(written.size(), QSize(255, 191));
    EXPECT_TRUE(isRed(written.pixel(127, 95)));

    screenshoter.SetOffscreenBuffer(0, 10);
    EXPECT_FALSE(screenshoter.CreateOffScreenshot(nullptr, path, topCamera().get(), &error));
    EXPECT_TRUE(error.contains(QLatin1String("0x10"))) << error.toStdString();
}

TEST_F(OffscreenRender, longEdgesAreSmoothed)
{
    // A slightly turned edge of a face (no edge lines, which are smoothed on
    // their own): without anti-aliasing every pixel along it is either black
    // or white; smoothed or averaged pixels show mixed shades.
    root()->removeChild(block);
    osg::ref_ptr<vpe::CPrimitiveRenderable> face = new vpe::CPrimitiveRenderable;
    face->SetPrimitives(vpe::CPrimitiveRenderable::Triangles, {{-1400, -1400, 0}, {1400, -1300, 0}, {1400, 1400, 0}},
                        {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}});
    face->setStateSet(KVXDrawHelper::FaceStateSet(Qt::black));
    osg::ref_ptr<vpe::CVisualNode> node = new vpe::CVisualNode;
    node->addDrawable(face);
    root()->addChild(node);
    auto mixedPixels = [this] {
        changed();
        at(0, 0);
        int mixed = 0;
        for (int x = 10; x < kSize - 10; ++x) {
            for (int y = kSize - 20; y < kSize; ++y) {
                const int g = qGray(picture.pixel(x, y));
                mixed += g > 40 && g < 215;
            }
        }
        return mixed;
    };
    using AntiAliasing = vpe::CViewer::AntiAliasing;
    ASSERT_EQ(viewer->GetAntiAliasing(), AntiAliasing::EdgeSmoothing);
    EXPECT_GT(mixedPixels(), kSize / 3);
    viewer->SetAntiAliasing(AntiAliasing::Supersampling);
    EXPECT_GT(mixedPixels(), kSize / 3);
    viewer->SetAntiAliasing(AntiAliasing::None);
    EXPECT_LT(mixedPixels(), kSize / 10);
}

} // namespace
