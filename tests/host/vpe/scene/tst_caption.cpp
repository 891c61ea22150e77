#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CCaption.h"

#include "tests/support/ImageDifference.h"

#include <QImage>

#include <gtest/gtest.h>

namespace {

// An empty scene: every pixel outside the caption is the background.
class Caption : public ::testing::Test {
protected:
    void SetUp() override
    {
        caption->SetText(QStringLiteral("2025-03-15 星期六"));
        caption->SetTitle(QStringLiteral("1号楼 主体施工"));
        caption->SetProgress(0.5);
        caption->SetVisible(true);
    }
    QImage render(int width, int height)
    {
        QImage picture;
        EXPECT_TRUE(viewer->RenderImage(*viewer->GetCamera(), width, height, picture));
        return picture.convertToFormat(QImage::Format_RGB32);
    }
    // The caption's pixels, cut out of a picture.
    static QImage area(const QImage& picture, const QRect& box) { return picture.copy(box); }

    vpe::CRefPtr<vpe::CViewer> viewer = new vpe::CViewer;
    vpe::CCaption* caption = viewer->GetCaption();
};

TEST_F(Caption, staysInTheBottomLeftCornerAndGrowsWithThePicture)
{
    const QColor background = viewer->GetBackgroundColor();
    double heights[2] = {};
    const QSize sizes[] = {{854, 480}, {3840, 2160}};
    for (int i = 0; i < 2; ++i) {
        const QSize size = sizes[i];
        const QImage picture = render(size.width(), size.height());
        const QRect box = caption->Area(size.width(), size.height());
        heights[i] = box.height();
        EXPECT_LT(box.right(), size.width() / 2) << size.width();
        EXPECT_GT(box.top(), size.height() / 2) << size.width();
        EXPECT_EQ(box.bottom(), size.height() - 1 - box.left()) << "as far from the bottom as from the left";
        EXPECT_EQ(picture.pixelColor(size.width() / 2, size.height() / 2), background) << "the middle is clear";
        const QColor inside = picture.pixelColor(box.left() + 2, box.top() + 2);
        EXPECT_LT(inside.lightness(), background.lightness() - 40) << "the band darkens what it covers";
        EXPECT_GT(box.width(), box.height()) << "one line of text is wider than tall";
    }
    EXPECT_NEAR(heights[1] / heights[0], 2160.0 / 480.0, 0.5) << "sized to the picture";
    EXPECT_GE(heights[0], 40.0) << "legible on 480 lines";
}

TEST_F(Caption, picturesChangeWhereAndOnlyWhenTheTextDoes)
{
    const QRect box = caption->Area(640, 360);
    const QImage first = render(640, 360);
    const QImage again = render(640, 360);
    EXPECT_EQ(imageDifference(area(first, box), area(again, box)), 0.0);
    caption->SetText(QStringLiteral("2025-03-16 星期日"));
    const QImage next = render(640, 360);
    EXPECT_GT(imageDifference(area(first, box), area(next, box)), 0.2);
    QImage outside = next;
    QImage before = first;
    for (QImage* picture : {&outside, &before})
        for (int y = box.top(); y <= box.bottom(); ++y)
            for (int x = box.left(); x <= box.right(); ++x)
                picture->setPixel(x, y, 0);
    EXPECT_EQ(imageDifference(outside, before), 0.0) << "nothing else moves";

    caption->SetVisible(false);
    const QImage hidden = render(640, 360);
    EXPECT_EQ(hidden.pixelColor(box.left() + 2, box.top() + 2), viewer->GetBackgroundColor());
}

} // namespace
