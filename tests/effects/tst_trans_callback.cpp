#include "EffectScene.h"

#include "effects/KVXAnimTransCallback.h"
#include "effects/KVXCapGeometry.h"
#include "host/vpe/scene/CStateSet.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <osg/ComputeBoundsVisitor>
#include <osg/Geometry>

namespace {

const QDate kStart(2024, 1, 1);
const QDate kEnd(2024, 1, 11);

// A wall 10 m long (x), 6 m deep, 3 m high, built over ten days.
class TransCallback : public EffectScene {
protected:
    void SetUp() override
    {
        EffectScene::SetUp();
        wall = addBox({0, 0, 0}, {10000, 6000, 3000});
    }
    KVXAnimTransCallback* start(KVXAnimation::AnimType type, KVXAnimation::TranslationType translation)
    {
        record = addRecord(wall, type, translation, kStart, kEnd);
        vpe::CRefPtr<KVXAnimTransCallback> callback = new KVXAnimTransCallback(record, context().get());
        play(record, callback.get());
        return callback.get();
    }
    // Is the front face drawn at this fraction of the length and height?
    bool frontShows(const QImage& picture, double alongX, double alongZ) const
    {
        return !isBackground(picture, project(*front, {alongX * 10000, 0, alongZ * 3000}));
    }
    // The area and the plane of the cap's faces.
    double capArea(KVXAnimTransCallback* callback, double& x) const
    {
        double area = 0.0;
        forEachCapTriangle(callback->GetCapNode(), [&](const osg::Vec3f& a, const osg::Vec3f& b, const osg::Vec3f& c) {
            area += ((b - a) ^ (c - a)).length() / 2.0;
            x = a.x();
        });
        return area;
    }

    KVX3DElementObject* wall = nullptr;
    KVXAnimation* record = nullptr;
    vpe::CRefPtr<vpe::CCamera> front = cameraAt({5000, -30000, 1500}, {5000, 0, 1500});
};

TEST_F(TransCallback, leftToRightConstructionShowsTheBuiltShareWithACap)
{
    KVXAnimTransCallback* callback = start(KVXAnimation::Construction, KVXAnimation::LeftToRight);
    struct Moment {
        double days;
        double built;
    };
    for (const Moment m : {Moment{2.5, 0.25}, Moment{5.0, 0.5}, Moment{10.0, 1.0}}) {
        evaluateAt(m.days);
        const QImage picture = render(*front);
        keep(picture, QString("construction_%1").arg(m.built));
        for (double x : {0.05, 0.15, 0.35, 0.45, 0.55, 0.7, 0.95}) {
            EXPECT_EQ(frontShows(picture, x, 0.5), x < m.built) << "day " << m.days << ", x " << x;
        }
        double capX = 0.0;
        const double area = capArea(callback, capX);
        if (m.built < 1.0) {
            EXPECT_NEAR(area, 6000.0 * 3000.0, 1.0) << "the cap closes the whole cut";
            EXPECT_NEAR(capX, m.built * 10000, 1e-3);
        } else {
            EXPECT_EQ(area, 0.0) << "no cap once built";
        }
    }
}

TEST_F(TransCallback, capHasTheColourOfTheElementsFaces)
{
    start(KVXAnimation::Construction, KVXAnimation::LeftToRight);
    const vpe::CRefPtr<vpe::CCamera> side = cameraAt({30000, -12000, 9000}, {5000, 3000, 1500});
    evaluateAt(10.0);
    const QColor endFace = render(*side).pixelColor(project(*side, {10000, 3000, 1500}));
    evaluateAt(2.5);
    const QImage cut = render(*side);
    keep(cut, "construction_cap");
    const QColor cap = cut.pixelColor(project(*side, {2500, 3000, 1500}));
    // A face of the element turned the same way: the cap must not stand out
    // from the element it closes (it used to be drawn near-white).
    EXPECT_NEAR(cap.hsvHue(), endFace.hsvHue(), 8);
    EXPECT_NEAR(cap.value(), endFace.value(), 6);
    EXPECT_NEAR(cap.hsvSaturation(), endFace.hsvSaturation(), 10);
}

TEST_F(TransCallback, demolitionBeforeItsStartShowsTheWholeElement)
{
    start(KVXAnimation::Demolition, KVXAnimation::LeftToRight);
    evaluateAt(kStart.addDays(-3));
    QImage picture = render(*front);
    for (double x : {0.05, 0.5, 0.95})
        EXPECT_TRUE(frontShows(picture, x, 0.5)) << x;
    // Halfway, the demolished half is gone.
    evaluateAt(5.0);
    picture = render(*front);
    EXPECT_FALSE(frontShows(picture, 0.25, 0.5));
    EXPECT_TRUE(frontShows(picture, 0.75, 0.5));
}

TEST_F(TransCallback, atItsFirstInstantNoPlaneLiesOnAFace)
{
    // A plane on the face it starts from leaves that face to the renderer's
    // rounding: a storey whose demolition begins flashed dark for a frame.
    const KVXAnimation::TranslationType directions[] = {
        KVXAnimation::LeftToRight, KVXAnimation::RightToLeft, KVXAnimation::FrontToBack,
        KVXAnimation::BackToFront, KVXAnimation::BottomUp,    KVXAnimation::TopDown};
    for (KVXAnimation::AnimType type : {KVXAnimation::Construction, KVXAnimation::Demolition})
        for (KVXAnimation::TranslationType direction : directions) {
            SCOPED_TRACE(testing::Message() << "type " << type << ", direction " << direction);
            KVXAnimTransCallback* callback = start(type, direction);
            evaluateAt(0.0);
            auto* own = dynamic_cast<vpe::CStateSet*>(
                callback->GetElementNode()->asGeode()->getDrawable(0)->getStateSet());
            ASSERT_NE(own, nullptr);
            if (!own->HasClipPlane(type))
                continue;
            // Every corner clearly kept (a demolition not yet begun) or
            // clearly cut away (a construction not yet begun).
            const osg::Vec4d plane = own->GetClipPlane(type);
            for (double x : {0.0, 10000.0})
                for (double y : {0.0, 6000.0})
                    for (double z : {0.0, 3000.0}) {
                        const double side = plane * osg::Vec4d(x, y, z, 1.0);
                        if (type == KVXAnimation::Demolition)
                            EXPECT_GT(side, 1.0);
                        else
                            EXPECT_LT(side, -1.0);
                    }
            viewer->GetAnimationManager()->DestroyAnimator("1");
            viewer->GetAnimationManager()->DestroyAnimation("1");
            manager()->clearAnimations();
        }
}

TEST_F(TransCallback, bottomUpRevealsFromTheBottom)
{
    start(KVXAnimation::Construction, KVXAnimation::BottomUp);
    evaluateAt(5.0);
    const QImage picture = render(*front);
    keep(picture, "construction_bottom_up");
    EXPECT_TRUE(frontShows(picture, 0.5, 0.2));
    EXPECT_TRUE(frontShows(picture, 0.5, 0.4));
    EXPECT_FALSE(frontShows(picture, 0.5, 0.6));
    EXPECT_FALSE(frontShows(picture, 0.5, 0.9));
}

TEST_F(TransCallback, constructionBeforeItsStartIsHidden)
{
    start(KVXAnimation::Construction, KVXAnimation::TopDown);
    evaluateAt(kStart.addDays(-2));
    const QImage picture = render(*front);
    for (double z : {0.1, 0.5, 0.9})
        EXPECT_FALSE(frontShows(picture, 0.5, z)) << z;
}

TEST_F(TransCallback, translationOutsideTheKnownOnesCutsAtGroundLevel)
{
    KVXAnimTransCallback* callback = start(KVXAnimation::Construction, KVXAnimation::LeftToRight);
    // A value the type can hold that is none of its directions.
    record->setTranslationType(static_cast<KVXAnimation::TranslationType>(7));
    evaluateAt(5.0);
    double x = 0.0;
    EXPECT_EQ(capArea(callback, x), 0.0) << "the plane z = 0 only touches the wall";
    auto* state = dynamic_cast<vpe::CStateSet*>(
        callback->GetElementNode()->asGeode()->getDrawable(0)->getStateSet());
    ASSERT_NE(state, nullptr);
    EXPECT_EQ(state->GetClipPlane(0), osg::Vec4d(0, 0, 1, 0));
}

TEST_F(TransCallback, zeroDurationIsWholeAtItsDayAndAfter)
{
    record = addRecord(wall, KVXAnimation::Construction, KVXAnimation::LeftToRight, kStart, kStart);
    vpe::CRefPtr<KVXAnimTransCallback> callback = new KVXAnimTransCallback(record, context().get());
    play(record, callback.get());
    evaluateAt(kStart);
    QImage picture = render(*front);
    EXPECT_TRUE(frontShows(picture, 0.9, 0.5)) << "on its day the plane is past the far end";
    evaluateAt(kStart.addDays(1));
    picture = render(*front);
    EXPECT_TRUE(frontShows(picture, 0.9, 0.5));
    evaluateAt(kStart.addDays(-1));
    picture = render(*front);
    EXPECT_FALSE(frontShows(picture, 0.1, 0.5)) << "before it, nothing";
}

TEST_F(TransCallback, loopingRepeatsAndHoldsPastTheLoopEnd)
{
    KVXAnimTransCallback* callback = start(KVXAnimation::Construction, KVXAnimation::LeftToRight);
    record->setLoopPlayback(true);
    record->setLoopEndDate(kEnd.addDays(15));
    manager()->updateAllAnimationsDateRange();
    evaluateAt(12.5); // a quarter into the second round
    double x = 0.0;
    EXPECT_GT(capArea(callback, x), 0.0);
    EXPECT_NEAR(x, 2500.0, 1e-3);

    evaluateAt(30.0); // past the loop end: the last state stays
    EXPECT_NEAR(capArea(callback, x), 0.0, 1e-9) << "the caps are cleared";
    auto* state = dynamic_cast<vpe::CStateSet*>(
        callback->GetElementNode()->asGeode()->getDrawable(0)->getStateSet());
    ASSERT_NE(state, nullptr);
    // Keeping x < 2500: normal -x, so w = 2500.
    EXPECT_NEAR(state->GetClipPlane(0).w(), 2500.0, 1e-3) << "the plane stays where it was";
}

TEST_F(TransCallback, elementsDrawnAlikeAreNotCutTogether)
{
    KVX3DElementObject* twin = addBox({0, 10000, 0}, {10000, 16000, 3000});
    start(KVXAnimation::Construction, KVXAnimation::LeftToRight);
    evaluateAt(5.0);
    const vpe::CRefPtr<vpe::CCamera> both = cameraAt({5000, -40000, 1500}, {5000, 8000, 1500});
    const QImage picture = render(*both);
    keep(picture, "construction_twin");
    // The twin stands behind the wall, higher up in the picture's view: look
    // at its top right corner region above the wall.
    const vpe::CRefPtr<vpe::CCamera> above = cameraAt({5000, 8000, 40000}, {5000, 8000, 0});
    const QImage top = render(*above);
    EXPECT_FALSE(isBackground(top, project(*above, {9000, 13000, 3000})))
        << "the twin's far end is not cut";
    EXPECT_TRUE(isBackground(top, project(*above, {9000, 3000, 3000}))) << "the wall's is";
    (void)twin;
}

TEST_F(TransCallback, withoutTheElementsNodeNothingHappens)
{
    KVXAnimation* missing = manager()->addKvxAnimation(idOf(wall), KVXAnimation::Construction,
                                                       KVXAnimation::LeftToRight);
    missing->setObjId(idOf(wall) + 1000);
    vpe::CRefPtr<KVXAnimTransCallback> callback = new KVXAnimTransCallback(missing, context().get());
    EXPECT_EQ(callback->GetCapNode(), nullptr);
    (*callback)(nullptr, vpe::CFrameTime{1.0f, 1});
}

TEST_F(TransCallback, theCapsLeaveWithTheCallback)
{
    osg::Group* root = viewer->GetScene()->GetRootNode();
    vpe::CRefPtr<KVXAnimTransCallback> callback = start(KVXAnimation::Construction, KVXAnimation::LeftToRight);
    const unsigned int before = root->getNumChildren();
    evaluateAt(5.0);
    EXPECT_EQ(root->getNumChildren(), before + 1) << "a cap is shown";
    evaluateAt(20.0);
    EXPECT_EQ(root->getNumChildren(), before) << "a built element has none";
    evaluateAt(5.0);
    viewer->GetAnimationManager()->DestroyAnimator("1");
    viewer->GetAnimationManager()->DestroyAnimation("1");
    const vpe::CRefPtr<vpe::CVisualNode> caps = callback->GetCapNode();
    EXPECT_EQ(caps->getNumParents(), 1u);
    record->setAnimation(nullptr);
    record->setAnimator(nullptr);
    callback = nullptr;
    EXPECT_EQ(caps->getNumParents(), 0u);
    EXPECT_EQ(root->getNumChildren(), before);
}

TEST_F(TransCallback, aSlidingPlaneMovesTheCapInsteadOfMakingIt)
{
    KVXAnimTransCallback* callback = start(KVXAnimation::Construction, KVXAnimation::BottomUp);
    evaluateAt(2.0);
    evaluateAt(2.0);
    EXPECT_EQ(callback->GetCap().BuildCount(), 1) << "a plane that stays put is not cut again";
    evaluateAt(3.0);
    evaluateAt(7.0);
    EXPECT_EQ(callback->GetCap().BuildCount(), 1);
    EXPECT_EQ(callback->GetCap().MoveCount(), 2);
    double capZ = 0.0;
    vpe::CVisualNode* caps = callback->GetCapNode();
    auto* vertices = static_cast<const osg::Vec3Array*>(caps->getDrawable(0)->asGeometry()->getVertexArray());
    for (const osg::Vec3f& v : *vertices)
        capZ = std::max(capZ, double(v.z()));
    EXPECT_NEAR(capZ, 0.7 * 3000, 1e-3) << "the moved cap stands where the plane is";
}

// A storey whose long sides are divided every metre, as imported outlines
// often are: sweeping across it, the plane crosses a vertex level every
// metre, but the section keeps its rectangle. Where the outline narrows (a
// notch), the section changes shape and the cap must be made again.
TEST_F(TransCallback, aCapFollowsAnOutlineThatKeepsItsShapeAcrossVertexLevels)
{
    const struct {
        const char* name;
        double notchFrom; // x from which the storey is 3 m deep instead of 6 m
        int builds;
    } shapes[] = {{"straight", 1e9, 1}, {"notched", 6500.0, 2}};
    for (const auto& shape : shapes) {
        std::vector<osg::Vec2d> outline;
        for (int x = 0; x <= 10000; x += 1000)
            outline.emplace_back(x, 0.0);
        for (int x = 10000; x >= 0; x -= 1000) {
            if (x < shape.notchFrom && x + 1000 > shape.notchFrom)
                outline.insert(outline.end(), {{shape.notchFrom, 3000.0}, {shape.notchFrom, 6000.0}});
            outline.emplace_back(x, x > shape.notchFrom ? 3000.0 : 6000.0);
        }
        auto* storey = new KVX3DElementObject();
        storey->AddBody(vpe::CBody::CreateExtrusion(outline, 0.0, 3000.0));
        document->GetDatabase()->GetModelSpace()->Add(storey);
        wall = storey;
        KVXAnimTransCallback* callback = start(KVXAnimation::Construction, KVXAnimation::LeftToRight);
        for (double days = 0.05; days < 9.5; days += 0.1) {
            evaluateAt(days);
            double x = 0.0;
            const double area = capArea(callback, x);
            const double depth = days * 1000.0 > shape.notchFrom ? 3000.0 : 6000.0;
            ASSERT_NEAR(area, depth * 3000.0, 1.0) << shape.name << " at day " << days;
            ASSERT_NEAR(x, days * 1000.0, 1e-2) << shape.name << " at day " << days;
        }
        EXPECT_EQ(callback->GetCap().BuildCount(), shape.builds) << shape.name;
        EXPECT_GT(callback->GetCap().MoveCount(), 85) << shape.name;
    }
}

// Cut loops as real models give them: the cap must keep every corner.
TEST(CapOutline, straighteningKeepsCornersMetTwiceAndDropsPointsOnStraightRuns)
{
    const osg::Vec3d corner(1000, 0, 0);
    const struct {
        const char* what;
        vpe::CSection::Loop loop;
        std::size_t corners;
    } cases[] = {
        {"a corner met twice a hair apart", {{0, 0, 0}, corner, corner + osg::Vec3d(0, 1e-9, 0), {1000, 1000, 0}, {0, 1000, 0}}, 4},
        {"a corner met twice, the second first", {{0, 0, 0}, corner - osg::Vec3d(1e-9, 0, 0), corner, {1000, 1000, 0}, {0, 1000, 0}}, 4},
        {"a straight run of short pieces", {{0, 0, 0}, {250, 0, 0}, {500, 0, 0}, {750, 0, 0}, corner, {1000, 1000, 0}, {0, 1000, 0}}, 4},
        {"the loop closing on its first point", {{0, 0, 0}, corner, {1000, 1000, 0}, {0, 1000, 0}, {0, 1e-9, 0}}, 4},
    };
    for (const auto& c : cases) {
        vpe::CSection section;
        section.AddLoop(c.loop);
        const vpe::CSection::Loop kept = KVXCapGeometry::Straightened(section).GetLoops().at(0);
        EXPECT_EQ(kept.size(), c.corners) << c.what;
        bool hasCorner = false;
        for (const osg::Vec3d& point : kept)
            hasCorner = hasCorner || (point - corner).length() < 1e-6;
        EXPECT_TRUE(hasCorner) << c.what;
    }
}

TEST(CapOutline, loopsThatCoincideWithOppositeWindingCancel)
{
    // A window: the frame (outline and opening) and the sash set in its
    // opening (outline and glass), one element, cut across.
    const auto square = [](double from, double to, bool counterClockwise) {
        vpe::CSection::Loop loop{{from, from, 0}, {to, from, 0}, {to, to, 0}, {from, to, 0}};
        if (!counterClockwise)
            std::reverse(loop.begin(), loop.end());
        return loop;
    };
    vpe::CSection section;
    section.AddLoop(square(0, 1000, true));
    section.AddLoop(square(100, 900, false));
    vpe::CSection::Loop sash = square(100, 900, true);
    std::rotate(sash.begin(), sash.begin() + 2, sash.end());
    sash[1] += osg::Vec3d(1e-9, 0, 0);
    section.AddLoop(sash);
    section.AddLoop(square(200, 800, false));
    const std::vector<vpe::CSection::Loop> loops = KVXCapGeometry::Straightened(section).GetLoops();
    ASSERT_EQ(loops.size(), 2u) << "the frame's outline and the glass";
    EXPECT_EQ(loops[0], square(0, 1000, true));
    EXPECT_EQ(loops[1], square(200, 800, false));

    // The same outline twice, wound alike, is no such pair.
    vpe::CSection twice;
    twice.AddLoop(square(0, 1000, true));
    twice.AddLoop(square(0, 1000, true));
    EXPECT_EQ(KVXCapGeometry::Straightened(twice).GetLoops().size(), 2u);
}

} // namespace
