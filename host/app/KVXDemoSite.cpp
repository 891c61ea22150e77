#include "KVXDemoSite.h"

#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbObjContainer.h"
#include "host/model/KVXMeshBuilder.h"
#include "host/model/KVXTowerCraneObject.h"

#include <QString>

namespace {

constexpr double kStorey = 3200.0;
constexpr double kSlab = 250.0;

KVX3DElementObject* addElement(PfDbDatabase* database, const QString& name, const QString& type,
                               const QColor& color, vpe::CBody* body, int transparency = 0)
{
    auto* element = new KVX3DElementObject();
    element->SetName(name.toStdWString());
    element->SetProperty(PfDbElement::kTypeProperty, type);
    element->SetBodyColor(color);
    element->SetTransparency(transparency);
    element->AddBody(body);
    database->GetModelSpace()->Add(element);
    return element;
}

// One element per storey: the floor slab and the storey's walls above it.
void addBuilding(PfDbDatabase* database, const QString& name, const std::vector<osg::Vec2d>& outline, int storeys,
                 const QColor& color)
{
    for (int i = 0; i < storeys; ++i) {
        const double bottom = i * kStorey;
        // Every other storey a shade lighter, so that storeys read apart.
        KVX3DElementObject* storey = addElement(
            database, QStringLiteral("%1 %2层").arg(name).arg(i + 1), QStringLiteral("楼层"),
            i % 2 ? color : color.lighter(106), vpe::CBody::CreateExtrusion(outline, bottom, bottom + kSlab));
        storey->SetProperty(PfDbElement::kStoreyProperty, QStringLiteral("%1层").arg(i + 1));
        storey->SetProperty(PfDbElement::kElevationProperty, QString::number(bottom));
        storey->AddBody(vpe::CBody::CreateExtrusion(outline, bottom + kSlab, bottom + kStorey));
    }
}

void addBox(KVXMeshBuilder& builder, double x0, double y0, double z0, double x1, double y1, double z1)
{
    builder.AddBox({x0, y0, z0}, {x1, y1, z1});
}

void addSlabWithOpening(PfDbDatabase* database)
{
    // A 24 x 16 m slab on its formwork level with a 6 x 4 m opening (a stair
    // and lift core to come).
    KVXMeshBuilder b;
    const double z0 = 0.0, z1 = 300.0;
    addBox(b, 40000, -30000, z0, 64000, -24000, z1);
    addBox(b, 40000, -20000, z0, 64000, -14000, z1);
    addBox(b, 40000, -24000, z0, 49000, -20000, z1);
    addBox(b, 55000, -24000, z0, 64000, -20000, z1);
    addElement(database, QStringLiteral("地下室顶板"), QStringLiteral("楼板"), QColor(170, 170, 165), b.Take());
}

void addShed(PfDbDatabase* database)
{
    KVXMeshBuilder b;
    addBox(b, -38000, -26000, 0, -32000, -23000, 2800);
    addBox(b, -38300, -26300, 2800, -31700, -22700, 3000);
    addElement(database, QStringLiteral("临时工棚"), QStringLiteral("临时设施"), QColor(60, 110, 190), b.Take());
}

void addRoad(PfDbDatabase* database)
{
    addElement(database, QStringLiteral("施工道路"), QStringLiteral("道路"), QColor(90, 90, 95),
               vpe::CBody::CreateBox({-60000, -42000, -50}, {90000, -36000, 20}));
}

void addTruck(PfDbDatabase* database)
{
    KVXMeshBuilder b;
    addBox(b, -20000, -40800, 500, -11500, -38400, 1600);
    addBox(b, -20000, -40800, 1600, -12500, -38400, 2900);
    addBox(b, -11400, -40700, 500, -9000, -38500, 3100);
    for (double x : {-19000.0, -16000.0, -10200.0}) {
        addBox(b, x - 500, -41000, 0, x + 500, -40700, 1000);
        addBox(b, x - 500, -38500, 0, x + 500, -38200, 1000);
    }
    addElement(database, QStringLiteral("运输车"), QStringLiteral("机械"), QColor(200, 40, 35), b.Take());
}

void addGate(PfDbDatabase* database)
{
    // Two posts, and a leaf that pivots open about its middle.
    KVXMeshBuilder posts;
    addBox(posts, 70000, -36400, 0, 70400, -36000, 2400);
    addBox(posts, 76000, -36400, 0, 76400, -36000, 2400);
    addElement(database, QStringLiteral("大门门柱"), QStringLiteral("大门"), QColor(90, 95, 100), posts.Take());
    KVXMeshBuilder leaf;
    addBox(leaf, 70400, -36300, 200, 76000, -36100, 2100);
    addElement(database, QStringLiteral("大门"), QStringLiteral("大门"), QColor(40, 140, 80), leaf.Take());
}

void addHazardZone(PfDbDatabase* database)
{
    const double x0 = 10000, y0 = -30000, x1 = 26000, y1 = -18000;
    KVXMeshBuilder fence;
    for (double x = x0; x <= x1; x += 2000) {
        addBox(fence, x - 60, y0 - 60, 0, x + 60, y0 + 60, 1200);
        addBox(fence, x - 60, y1 - 60, 0, x + 60, y1 + 60, 1200);
    }
    for (double y = y0; y <= y1; y += 2000) {
        addBox(fence, x0 - 60, y - 60, 0, x0 + 60, y + 60, 1200);
        addBox(fence, x1 - 60, y - 60, 0, x1 + 60, y + 60, 1200);
    }
    for (double z : {600.0, 1100.0}) {
        addBox(fence, x0, y0 - 30, z, x1, y0 + 30, z + 60);
        addBox(fence, x0, y1 - 30, z, x1, y1 + 30, z + 60);
        addBox(fence, x0 - 30, y0, z, x0 + 30, y1, z + 60);
        addBox(fence, x1 - 30, y0, z, x1 + 30, y1, z + 60);
    }
    addElement(database, QStringLiteral("危险区围栏"), QStringLiteral("围挡"), QColor(235, 110, 20), fence.Take());
    addElement(database, QStringLiteral("危险区"), QStringLiteral("危险区"), QColor(230, 40, 30),
               vpe::CBody::CreateBox({x0, y0, 0}, {x1, y1, 30}), 60);
}

void addCrane(PfDbDatabase* database)
{
    auto* crane = new KVXTowerCraneObject();
    crane->SetName(L"TC-1 塔吊");
    crane->SetProperty(PfDbElement::kTypeProperty, QStringLiteral("塔吊"));
    crane->SetPosition({20000.0, 6000.0, 0.0});
    crane->SetTowerHeight(62000);
    crane->SetJibLength(55000.0);
    database->GetModelSpace()->Add(crane);
}

} // namespace

void KVXDemoSite::Build(PfDbDatabase* database)
{
    addElement(database, QStringLiteral("场地"), QStringLiteral("场地"), QColor(150, 160, 130),
               vpe::CBody::CreateBox({-70000, -50000, -400}, {100000, 60000, -50}));
    addBuilding(database, QStringLiteral("1号楼"), {{-30000, 0}, {0, 0}, {0, 15000}, {-30000, 15000}}, 6,
                QColor(215, 205, 185));
    addBuilding(database, QStringLiteral("2号楼"),
                {{30000, 10000}, {60000, 10000}, {60000, 22000}, {42000, 22000}, {42000, 40000}, {30000, 40000}}, 4,
                QColor(200, 190, 200));
    addBuilding(database, QStringLiteral("3号楼"), {{-20000, 25000}, {0, 25000}, {0, 45000}, {-20000, 45000}}, 10,
                QColor(190, 205, 215));
    addSlabWithOpening(database);
    addShed(database);
    addRoad(database);
    addTruck(database);
    addGate(database);
    addHazardZone(database);
    addCrane(database);
}
