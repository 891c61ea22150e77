#include "EffectScene.h"

#include "effects/KVXAnimTransCallback.h"
#include "host/import/PfIfcReader.h"
#include "host/import/PfModelImport.h"

#include <osg/Geometry>

namespace {

// A record on a wall of a real model, imported as a planner would.
class ImportedCut : public EffectScene {
protected:
    void SetUp() override
    {
        EffectScene::SetUp();
        PfModelImport::Report report;
        QString error;
        const std::unique_ptr<PfModelReader> reader = PfMakeIfcReader();
        ASSERT_TRUE(PfModelImport::Import(document->GetDatabase(), *reader,
                                          QStringLiteral(KVX_TEST_DATA "/models/construction_scheduling_task_IFC4.ifc"),
                                          report, &error))
            << error.toStdString();
        // The longest wall.
        for (PfDbObject* object : *document->GetDatabase()->GetModelSpace())
            if (auto* element = KVX3DElementObject::Cast(object);
                element && element->Property(PfDbElement::kTypeProperty).startsWith(QLatin1String("IfcWall"))) {
                const osg::BoundingBoxd box = bounds(element);
                if (!wall || box.radius() > wallBox.radius()) {
                    wall = element;
                    wallBox = box;
                }
            }
        // Alone, so that the walls behind it do not fill its missing half.
        std::vector<PfDbObject*> others;
        for (PfDbObject* object : *document->GetDatabase()->GetModelSpace())
            if (object != wall)
                others.push_back(object);
        for (PfDbObject* object : others)
            document->GetDatabase()->GetModelSpace()->Remove(object);
    }
    static osg::BoundingBoxd bounds(const KVX3DElementObject* element)
    {
        osg::BoundingBoxd box;
        for (const auto& body : element->GetBodies())
            box.expandBy(body->GetBoundingBox());
        return box;
    }
    // The area of the cap's faces and their lowest and highest level.
    static double capArea(KVXAnimTransCallback* callback, double& low, double& high)
    {
        double area = 0.0;
        low = 1e30;
        high = -1e30;
        forEachCapTriangle(callback->GetCapNode(), [&](const osg::Vec3f& a, const osg::Vec3f& b, const osg::Vec3f& c) {
            area += ((b - a) ^ (c - a)).length() / 2.0;
            for (const osg::Vec3f& corner : {a, b, c}) {
                low = std::min(low, double(corner.z()));
                high = std::max(high, double(corner.z()));
            }
        });
        return area;
    }

    KVX3DElementObject* wall = nullptr;
    osg::BoundingBoxd wallBox;
};

TEST_F(ImportedCut, aBottomUpRecordOnAnImportedWallCutsItAndCapsIt)
{
    ASSERT_NE(wall, nullptr);
    KVXAnimation* record =
        addRecord(wall, KVXAnimation::Construction, KVXAnimation::BottomUp, QDate(2024, 1, 1), QDate(2024, 1, 11));
    vpe::CRefPtr<KVXAnimTransCallback> callback = new KVXAnimTransCallback(record, context().get());
    play(record, callback.get());
    evaluateAt(5.0);

    const double middle = (wallBox.zMin() + wallBox.zMax()) / 2.0;
    double low = 0.0, high = 0.0;
    EXPECT_GT(capArea(callback.get(), low, high), 0.0) << "the cut is closed";
    EXPECT_NEAR(low, middle, 1.0);
    EXPECT_NEAR(high, middle, 1.0);

    // From above, the half-built wall shows its cap; from the side, the upper
    // half is not there yet.
    const osg::Vec3d centre = wallBox.center();
    const vpe::CRefPtr<vpe::CCamera> above =
        cameraAt(centre + osg::Vec3d(1.0, 1.0, 40000.0), {centre.x(), centre.y(), middle});
    const QImage top = render(*above);
    keep(top, "imported_wall_cap");
    EXPECT_FALSE(isBackground(top, project(*above, {centre.x(), centre.y(), middle})));
    const osg::Vec3d side = wallBox.xMax() - wallBox.xMin() > wallBox.yMax() - wallBox.yMin()
                                ? osg::Vec3d(0.0, -30000.0, 0.0)
                                : osg::Vec3d(-30000.0, 0.0, 0.0);
    const vpe::CRefPtr<vpe::CCamera> beside = cameraAt(centre + side, centre);
    const QImage front = render(*beside);
    keep(front, "imported_wall_half");
    EXPECT_FALSE(isBackground(front, project(*beside, {centre.x(), centre.y(), (wallBox.zMin() + middle) / 2.0})));
    EXPECT_TRUE(isBackground(front, project(*beside, {centre.x(), centre.y(), middle + 0.5 * (wallBox.zMax() - middle)})));
}

} // namespace
