#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CVectorText2D.h"

#include <gtest/gtest.h>

namespace {

vpe::CRefPtr<vpe::CCamera> frontCamera()
{
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
    camera->SetPosition({0.0f, -10000.0f, 0.0f});
    camera->SetDirection({0.0f, 1.0f, 0.0f});
    camera->SetUpDirection({0.0f, 0.0f, 1.0f});
    return camera;
}

QRect inkBounds(const QImage& picture)
{
    QRect ink;
    const QRgb background = picture.pixel(0, 0);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixel(x, y) != background)
                ink |= QRect(x, y, 1, 1);
        }
    }
    return ink;
}

QImage render(vpe::CVectorText2D* label, float pixels)
{
    vpe::CRefPtr<vpe::CViewer> viewer = new vpe::CViewer;
    viewer->SetBackgroundColor(Qt::white);
    osg::ref_ptr<osg::Geode> holder = new osg::Geode;
    label->SetSizeInPixels(pixels);
    holder->addDrawable(label);
    viewer->GetScene()->GetRootNode()->addChild(holder);
    QImage picture;
    EXPECT_TRUE(viewer->RenderImage(*frontCamera(), 400, 200, picture));
    return picture;
}

TEST(VectorText, fontconfigGivesTheSimplifiedChineseFace)
{
    std::string file;
    int index = -1;
    ASSERT_TRUE(vpe::CVectorText2D::FindChineseFace(file, index));
    EXPECT_NE(file.find("NotoSansCJK"), std::string::npos) << file;
    // Face 0 of the collection is the Japanese one.
    EXPECT_GT(index, 0);
}

TEST(VectorText, chineseLabelIsDrawnAtItsPixelSize)
{
    osg::ref_ptr<vpe::CVectorText2D> label = new vpe::CVectorText2D;
    label->SetText(QStringLiteral("塔吊"));
    label->SetColor(Qt::black);
    label->SetAlignmentScheme(vpe::CVectorText2D::CenterCenter);
    const QRect small = inkBounds(render(label.get(), 24));
    ASSERT_FALSE(small.isEmpty());
    // Two square glyphs, centred on the anchor in the middle of the picture.
    EXPECT_NEAR(small.height(), 22, 4);
    EXPECT_NEAR(small.width(), 46, 6);
    EXPECT_NEAR(small.center().x(), 200, 3);
    EXPECT_NEAR(small.center().y(), 100, 3);

    osg::ref_ptr<vpe::CVectorText2D> large = new vpe::CVectorText2D;
    large->SetText(QStringLiteral("塔吊"));
    large->SetColor(Qt::black);
    large->SetAlignmentScheme(vpe::CVectorText2D::CenterCenter);
    const QRect big = inkBounds(render(large.get(), 48));
    EXPECT_NEAR(big.height(), 2 * small.height(), 4);

}

TEST(VectorText, anchorSitsWhereTheSchemeSays)
{
    osg::ref_ptr<vpe::CVectorText2D> label = new vpe::CVectorText2D;
    label->SetText(QStringLiteral("[2][3]"));
    label->SetColor(Qt::red);
    label->SetAlignmentScheme(vpe::CVectorText2D::CenterBottom);
    const QRect ink = inkBounds(render(label.get(), 20));
    ASSERT_FALSE(ink.isEmpty());
    EXPECT_LE(ink.bottom(), 101);
    EXPECT_NEAR(ink.center().x(), 200, 3);
}

} // namespace
