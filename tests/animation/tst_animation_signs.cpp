#include "animation/KVXAnimatorManager.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfGsModelView.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CVectorText2D.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QDir>
#include <QImage>

#include <gtest/gtest.h>

namespace {

QString signText(KVXAnimatorManager* manager, qint64 objId)
{
    vpe::CVectorText2D* sign = manager->findSign(objId);
    return sign ? sign->GetText() : QStringLiteral("<none>");
}

// Two storeys side by side, 10 m apart, each 10 m by 6 m and 3 m high.
class AnimationSigns : public ::testing::Test {
protected:
    void SetUp() override
    {
        document = PfDocManagerPtr()->NewDocument();
        view = PfGsModelView::Attach(document);
        left = addStorey(-15000.0);
        right = addStorey(5000.0);
    }
    void TearDown() override { PfDocManagerPtr()->CloseAll(); }

    qint64 addStorey(double x)
    {
        auto* storey = new KVX3DElementObject();
        storey->AddBody(vpe::CBody::CreateBox({x, 0, 0}, {x + 10000, 6000, 3000}));
        document->GetDatabase()->GetModelSpace()->Add(storey);
        return static_cast<qint64>(storey->GetHandle());
    }
    KVXAnimation* add(qint64 objId)
    {
        return manager->addKvxAnimation(objId, KVXAnimation::Construction, KVXAnimation::BottomUp);
    }
    unsigned int signCount() const
    {
        return manager->signGroupNode() ? manager->signGroupNode()->getNumChildren() : 0u;
    }

    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    PfDbDocument* document = nullptr;
    PfGsModelView* view = nullptr;
    qint64 left = 0;
    qint64 right = 0;
};

TEST_F(AnimationSigns, oneLabelPerElementListsItsNumbers)
{
    document->GetDatabase()->GetModelSpace()->Add(
        new KVXAnimation(7, left, KVXAnimation::Construction, KVXAnimation::BottomUp));
    manager->clearAnimations();
    manager->readAnimationData();
    manager->resetSigns();
    EXPECT_EQ(signText(manager, left), "[7]");

    add(left);
    EXPECT_EQ(signText(manager, left), "[7][8]");
    EXPECT_EQ(signCount(), 1u) << "the label is updated, not doubled";
    add(right);
    EXPECT_EQ(signText(manager, right), "[9]");
    EXPECT_EQ(signCount(), 2u);

    manager->deleteKvxAnimation(7);
    EXPECT_EQ(signText(manager, left), "[8]");
    manager->deleteKvxAnimation(8);
    EXPECT_EQ(manager->findSign(left), nullptr);
    EXPECT_EQ(signCount(), 1u);
}

TEST_F(AnimationSigns, labelFloatsOverTheTopOfItsElement)
{
    add(right);
    vpe::CVectorText2D* sign = manager->findSign(right);
    ASSERT_NE(sign, nullptr);
    EXPECT_FLOAT_EQ(sign->getPosition().x(), 10000.0f);
    EXPECT_FLOAT_EQ(sign->getPosition().y(), 3000.0f);
    EXPECT_FLOAT_EQ(sign->getPosition().z(), 3010.0f);
    EXPECT_EQ(sign->GetSizeInPixels(), 15.0f);
}

TEST_F(AnimationSigns, erasingTheElementTakesItsLabel)
{
    add(left);
    add(left);
    add(right);
    document->GetDatabase()->EraseObject(document->GetItem(static_cast<PfDbHandle>(left)));
    EXPECT_EQ(manager->findSign(left), nullptr);
    EXPECT_EQ(signCount(), 1u);
}

TEST_F(AnimationSigns, hidingAndResettingWorkOnTheWholeGroup)
{
    add(left);
    add(right);
    vpe::CGroupNode* group = manager->signGroupNode();
    ASSERT_NE(group, nullptr);
    manager->setSignsVisible(false);
    EXPECT_EQ(group->getNodeMask(), 0u);
    manager->setSignsVisible(true);
    EXPECT_NE(group->getNodeMask(), 0u);

    const vpe::CRefPtr<vpe::CGroupNode> old = group;
    manager->resetSigns();
    EXPECT_EQ(old->getNumParents(), 0u) << "the old group left the scene";
    ASSERT_NE(manager->signGroupNode(), nullptr);
    EXPECT_TRUE(view->GetViewer()->GetScene()->GetRootNode()->containsNode(manager->signGroupNode()));
    EXPECT_EQ(signCount(), 2u);
    EXPECT_EQ(signText(manager, right), "[2]");
}

TEST_F(AnimationSigns, withoutAViewThereAreNoLabels)
{
    document->SetActiveView(nullptr);
    manager->followDocument(document);
    ASSERT_NE(add(left), nullptr);
    EXPECT_EQ(manager->signGroupNode(), nullptr);
    EXPECT_EQ(manager->findSign(left), nullptr);
    manager->setSignsVisible(false);
    EXPECT_EQ(manager->signGroupNode(), nullptr);
}

// Columns (left, right) of the pixels that differ between two pictures
// inside the given column range, and the lowest differing row; -1 if none.
struct Extent {
    int firstColumn = -1;
    int lastColumn = -1;
    int highestRow = -1;
    int lowestRow = -1;
};

Extent differences(const QImage& a, const QImage& b, int fromColumn, int toColumn)
{
    Extent extent;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = fromColumn; x < toColumn; ++x) {
            const QColor p = a.pixelColor(x, y);
            const QColor q = b.pixelColor(x, y);
            if (std::abs(p.red() - q.red()) + std::abs(p.green() - q.green()) + std::abs(p.blue() - q.blue()) < 40)
                continue;
            extent.firstColumn = extent.firstColumn < 0 ? x : std::min(extent.firstColumn, x);
            extent.lastColumn = std::max(extent.lastColumn, x);
            extent.highestRow = extent.highestRow < 0 ? y : extent.highestRow;
            extent.lowestRow = std::max(extent.lowestRow, y);
        }
    }
    return extent;
}

// The first row from the top in that column that is not the background.
int topOfModel(const QImage& picture, int column, const QColor& background)
{
    for (int y = 0; y < picture.height(); ++y) {
        const QColor p = picture.pixelColor(column, y);
        if (std::abs(p.red() - background.red()) + std::abs(p.green() - background.green()) +
                std::abs(p.blue() - background.blue()) > 30)
            return y;
    }
    return -1;
}

TEST_F(AnimationSigns, renderedLabelsStandOverTheirElements)
{
    add(left);
    add(right);
    add(right);
    ASSERT_EQ(signText(manager, left), "[1]");
    ASSERT_EQ(signText(manager, right), "[2][3]");

    vpe::CViewer* viewer = view->GetViewer();
    // The shadow map is fitted to everything drawn: the labels would move
    // it, and the shading of the storeys with it.
    viewer->GetScene()->SetShadowsEnabled(false);
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera();
    camera->SetLookAt({0, -40000, 1500}, {0, 0, 1500});
    constexpr int kWidth = 640;
    constexpr int kHeight = 360;
    QImage labelled;
    QImage plain;
    QString error;
    ASSERT_TRUE(viewer->RenderImage(*camera, kWidth, kHeight, labelled, &error)) << error.toStdString();
    manager->setSignsVisible(false);
    ASSERT_TRUE(viewer->RenderImage(*camera, kWidth, kHeight, plain, &error)) << error.toStdString();
    manager->setSignsVisible(true);
    if (qEnvironmentVariableIsSet("KVX_TEST_PICTURES"))
        labelled.save(QDir(qEnvironmentVariable("KVX_TEST_PICTURES")).filePath("animation_signs.png"));

    const Extent one = differences(labelled, plain, 0, kWidth / 2);
    const Extent two = differences(labelled, plain, kWidth / 2, kWidth);
    ASSERT_GE(one.firstColumn, 0) << "no label over the left element";
    ASSERT_GE(two.firstColumn, 0) << "no label over the right element";
    // Centred over the elements, which stand symmetrically about the middle.
    const double oneCentre = (one.firstColumn + one.lastColumn) / 2.0;
    const double twoCentre = (two.firstColumn + two.lastColumn) / 2.0;
    EXPECT_NEAR(oneCentre + twoCentre, kWidth, 12.0);
    // "[2][3]" is about twice as wide as "[1]".
    const int oneWidth = one.lastColumn - one.firstColumn + 1;
    const int twoWidth = two.lastColumn - two.firstColumn + 1;
    EXPECT_GT(twoWidth, oneWidth * 3 / 2) << oneWidth << " vs " << twoWidth;
    EXPECT_LT(twoWidth, oneWidth * 4) << oneWidth << " vs " << twoWidth;
    // Standing on the tops of the elements: the base line a little behind
    // the front edge, only the brackets' tails reaching below it.
    const int leftTop = topOfModel(plain, static_cast<int>(oneCentre), viewer->GetBackgroundColor());
    const int rightTop = topOfModel(plain, static_cast<int>(twoCentre), viewer->GetBackgroundColor());
    ASSERT_GT(leftTop, 0);
    for (const auto& [label, top] : {std::make_pair(one, leftTop), std::make_pair(two, rightTop)}) {
        EXPECT_LT(label.highestRow, top - 8);
        EXPECT_LE(label.lowestRow, top + 6);
    }
}

} // namespace
