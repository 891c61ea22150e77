#include "host/import/PfIfcReader.h"
#include "host/import/PfImportedProduct.h"
#include "host/import/PfIsolatedModelReader.h"
#include "host/import/PfModelImport.h"
#include "host/vpe/geometry/CBooleanOperate.h"
#include "host/vpe/geometry/CPlane.h"
#include "host/vpe/geometry/CSection.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"

#include "tests/support/QtPrinters.h"

#include <QDataStream>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>

namespace {

const QString kModels = QStringLiteral(KVX_TEST_DATA "/models/");

struct Answer {
    int code;
    QString out;
    QString err;
};

// The real program: the reading runs in a child process of it.
Answer kvxhost(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral(KVXHOST_PROGRAM), arguments);
    process.waitForFinished(240000);
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

struct Imported {
    std::vector<KVX3DElementObject*> elements;
    osg::BoundingBoxd box;
    std::map<QString, int> types;
};

Imported contents(PfDbDocument* document)
{
    Imported imported;
    for (PfDbObject* object : *document->GetDatabase()->GetModelSpace())
        if (auto* element = KVX3DElementObject::Cast(object)) {
            imported.elements.push_back(element);
            ++imported.types[element->Property(PfDbElement::kTypeProperty)];
            for (const auto& body : element->GetBodies())
                imported.box.expandBy(body->GetBoundingBox());
        }
    return imported;
}

class ModelImport : public ::testing::Test {
protected:
    void TearDown() override { PfDocManagerPtr()->CloseAll(); }
    QTemporaryDir folder;
};

TEST_F(ModelImport, everyProductWithAShapeBecomesAnElementInMillimetres)
{
    const struct {
        const char* file;
        int elements;
        osg::Vec3d size; // millimetres
    } cases[] = {
        {"duplex.ifc", 215, {9300, 26600, 8200}},
        {"IfcOpenHouse_IFC4.ifc", 34, {0, 0, 0}},
        // In inches in the file: millimetres in the document all the same.
        {"construction_scheduling_task_IFC4.ifc", 5, {0, 0, 0}},
    };
    for (const auto& c : cases) {
        const QString out = folder.filePath(QStringLiteral("%1.kvx").arg(QLatin1String(c.file)));
        const Answer run = kvxhost({"import", out, kModels + QLatin1String(c.file)});
        ASSERT_EQ(run.code, 0) << c.file << run.err.toStdString();
        EXPECT_TRUE(run.out.contains(QStringLiteral("%1 elements imported").arg(c.elements))) << run.out.toStdString();
        PfDbDocument* document = PfDocManagerPtr()->OpenDocument(out);
        ASSERT_NE(document, nullptr) << c.file;
        const Imported imported = contents(document);
        EXPECT_EQ(int(imported.elements.size()), c.elements) << c.file;
        EXPECT_EQ(imported.types.count(QStringLiteral("IfcSpace")), 0u) << c.file;
        EXPECT_EQ(imported.types.count(QStringLiteral("IfcOpeningElement")), 0u) << c.file;
        const osg::Vec3d size(imported.box.xMax() - imported.box.xMin(), imported.box.yMax() - imported.box.yMin(),
                              imported.box.zMax() - imported.box.zMin());
        for (int axis = 0; axis < 3; ++axis)
            if (c.size[axis] > 0)
                EXPECT_NEAR(size[axis], c.size[axis], 0.02 * c.size[axis]) << c.file << " axis " << axis;
        PfDocManagerPtr()->CloseDocument(document);
    }
}

TEST_F(ModelImport, meshModelsComeInMetresWithYUp)
{
    // The duplex as glTF: the same building as from its IFC file.
    const QString duplex = folder.filePath(QStringLiteral("duplex-glb.kvx"));
    const Answer glb = kvxhost({"import", duplex, kModels + QStringLiteral("Duplex.ifc.IfcConvert.glb")});
    ASSERT_EQ(glb.code, 0) << glb.err.toStdString();
    PfDbDocument* document = PfDocManagerPtr()->OpenDocument(duplex);
    ASSERT_NE(document, nullptr);
    Imported imported = contents(document);
    EXPECT_EQ(imported.elements.size(), 223u) << "a product a node";
    EXPECT_EQ(imported.elements.front()->Property(PfDbElement::kGlobalIdProperty).size(), 22);
    const QString fromIfc = folder.filePath(QStringLiteral("duplex-ifc.kvx"));
    ASSERT_EQ(kvxhost({"import", fromIfc, kModels + QStringLiteral("duplex.ifc")}).code, 0);
    PfDbDocument* ifcDocument = PfDocManagerPtr()->OpenDocument(fromIfc);
    ASSERT_NE(ifcDocument, nullptr);
    const osg::BoundingBoxd ifcBox = contents(ifcDocument).box;
    // Where the IFC model stands, turned and scaled alike (the conversion
    // left a few products out along y).
    for (int axis = 0; axis < 3; ++axis) {
        EXPECT_GE(imported.box._min[axis], ifcBox._min[axis] - 10.0) << axis;
        EXPECT_LE(imported.box._max[axis], ifcBox._max[axis] + 10.0) << axis;
        if (axis != 1)
            EXPECT_NEAR(imported.box._max[axis] - imported.box._min[axis], ifcBox._max[axis] - ifcBox._min[axis], 10.0)
                << axis;
    }

    // A box 2 m wide, 1 m tall and 3 m deep, written by hand.
    const QString obj = folder.filePath(QStringLiteral("box.obj"));
    QFile file(obj);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("o 箱子\nv 0 0 0\nv 2 0 0\nv 2 1 0\nv 0 1 0\nv 0 0 3\nv 2 0 3\nv 2 1 3\nv 0 1 3\n"
               "f 1 4 3 2\nf 5 6 7 8\nf 1 2 6 5\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n");
    file.close();
    const QString boxDocument = folder.filePath(QStringLiteral("box.kvx"));
    ASSERT_EQ(kvxhost({"import", boxDocument, obj}).code, 0);
    document = PfDocManagerPtr()->OpenDocument(boxDocument);
    ASSERT_NE(document, nullptr);
    imported = contents(document);
    ASSERT_EQ(imported.elements.size(), 1u);
    EXPECT_NEAR(imported.box.xMax() - imported.box.xMin(), 2000.0, 1e-6);
    EXPECT_NEAR(imported.box.yMax() - imported.box.yMin(), 3000.0, 1e-6) << "its depth, along -z";
    EXPECT_NEAR(imported.box.zMax() - imported.box.zMin(), 1000.0, 1e-6) << "its height, along y";
    EXPECT_TRUE(imported.elements.front()->GetFirstBody()->IsClosed());
}

TEST_F(ModelImport, elementsKeepWhatTheModelSaysOfThem)
{
    const QString out = folder.filePath(QStringLiteral("duplex.kvx"));
    ASSERT_EQ(kvxhost({"import", out, kModels + QStringLiteral("duplex.ifc")}).code, 0);
    PfDbDocument* document = PfDocManagerPtr()->OpenDocument(out);
    ASSERT_NE(document, nullptr);
    Imported imported = contents(document);
    EXPECT_GT(imported.types[QStringLiteral("IfcWallStandardCase")] + imported.types[QStringLiteral("IfcWall")], 40);
    EXPECT_GT(imported.types[QStringLiteral("IfcSlab")], 10);
    int closed = 0;
    for (KVX3DElementObject* element : imported.elements) {
        EXPECT_EQ(element->Property(PfDbElement::kGlobalIdProperty).size(), 22) << element->GetHandle();
        EXPECT_FALSE(element->Property(PfDbElement::kStoreyProperty).isEmpty()) << element->GetHandle();
        bool shut = true;
        for (const auto& body : element->GetBodies())
            shut = shut && body->IsClosed() && body->GetVolume() > 0.0;
        closed += shut;
    }
    // Re-wound shells: most products close (about 84 % do as delivered).
    EXPECT_GT(closed, int(0.9 * imported.elements.size()));
}

TEST_F(ModelImport, aDamagedFileIsToldInOneLineAndWritesNothing)
{
    QByteArray duplex;
    {
        QFile file(kModels + QStringLiteral("duplex.ifc"));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        duplex = file.readAll();
    }
    QByteArray glb;
    {
        QFile file(kModels + QStringLiteral("Duplex.ifc.IfcConvert.glb"));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        glb = file.readAll();
    }
    QByteArray random(4096, '\0');
    for (int i = 0; i < random.size(); ++i)
        random[i] = char((i * 7919 + 13) % 251);
    const struct {
        const char* name;
        QByteArray bytes;
    } cases[] = {
        {"empty.ifc", QByteArray()},
        {"truncated.ifc", duplex.left(duplex.size() / 2)},
        {"random.ifc", random},
        {"truncated.glb", glb.left(glb.size() / 2)},
        {"random.obj", random},
        {"missing-reference.ifc", QByteArray(duplex).replace("#123=IFCARBITRARYOPENPROFILEDEF(.CURVE.,$,#122);", "")},
        {"placed-in-itself.ifc",
         QByteArray(duplex).replace("#487=IFCLOCALPLACEMENT(#38,#486);", "#487=IFCLOCALPLACEMENT(#487,#486);")},
    };
    for (const auto& c : cases) {
        const QString model = folder.filePath(QLatin1String(c.name));
        QFile file(model);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(c.bytes);
        file.close();
        const QString out = folder.filePath(QStringLiteral("damaged.kvx"));
        const Answer run = kvxhost({"import", out, model});
        EXPECT_EQ(run.code, 1) << c.name << run.out.toStdString();
        EXPECT_EQ(run.err.trimmed().count(QLatin1Char('\n')), 0) << c.name << run.err.toStdString();
        EXPECT_TRUE(run.err.startsWith(QStringLiteral("kvxhost: %1: ").arg(QLatin1String(c.name))))
            << c.name << run.err.toStdString();
        EXPECT_GT(run.err.trimmed().size(), QStringLiteral("kvxhost: %1: ").arg(QLatin1String(c.name)).size() + 5)
            << c.name << ": says why";
        EXPECT_FALSE(QFileInfo::exists(out)) << c.name;
    }
}

TEST_F(ModelImport, aWindowWaitingOnTheReaderIsCalledMeanwhileAndCanCancel)
{
    for (const bool cancel : {false, true}) {
        PfDbDatabase database;
        PfIsolatedModelReader reader(QStringLiteral(KVXHOST_PROGRAM));
        int calls = 0;
        reader.SetWaiting([&calls, cancel](int, int) { return ++calls < 2 || !cancel; });
        PfModelImport::Report report;
        QString error;
        const bool imported = PfModelImport::Import(&database, reader, kModels + "duplex.ifc", report, &error);
        EXPECT_GE(calls, 2) << "called while the child reads";
        EXPECT_EQ(imported, !cancel) << error.toStdString();
        EXPECT_EQ(error, cancel ? PfIsolatedModelReader::kCancelled : QString());
        EXPECT_EQ(database.GetModelSpace()->Size() > 0, !cancel) << "a cancelled import adds nothing";
    }
}

TEST(ImportedProduct, crossesTheProcessBoundaryWholeAndRefusesDamagedStreams)
{
    PfImportedProduct product;
    product.globalId = QStringLiteral("2O2Fr$t4X7Zf8NOew3FLQD");
    product.name = QStringLiteral("外墙 W-1");
    product.type = QStringLiteral("IfcWallStandardCase");
    product.storey = QStringLiteral("Level 2");
    product.elevation = 3100.0;
    product.color = QColor(10, 20, 30, 128);
    product.shells.push_back({{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}}});
    QByteArray bytes;
    {
        QDataStream out(&bytes, QIODevice::WriteOnly);
        out << product;
    }
    PfImportedProduct back;
    QDataStream in(bytes);
    in >> back;
    EXPECT_EQ(back.name, product.name);
    EXPECT_EQ(back.color, product.color);
    EXPECT_EQ(back.elevation, 3100.0);
    ASSERT_EQ(back.shells.size(), 1u);
    EXPECT_EQ(back.shells[0].vertices, product.shells[0].vertices);
    EXPECT_EQ(back.shells[0].triangles, product.shells[0].triangles);

    // The triangle's last index is the stream's last four bytes, and the
    // triangle count the four before its three indices.
    const auto patched = [&bytes](int fromEnd, quint32 value) {
        QByteArray copy = bytes;
        QByteArray word;
        QDataStream out(&word, QIODevice::WriteOnly);
        out << value;
        copy.replace(copy.size() - fromEnd, 4, word);
        return copy;
    };
    const struct {
        const char* what;
        QByteArray bytes;
    } damaged[] = {
        {"cut short", bytes.left(bytes.size() - 6)},
        {"an index past the vertices", patched(4, 3)},
        {"an absurd triangle count", patched(16, 0xfffffff0u)},
    };
    for (const auto& d : damaged) {
        PfImportedProduct read;
        QDataStream in(d.bytes);
        in >> read;
        EXPECT_NE(in.status(), QDataStream::Ok) << d.what;
        EXPECT_TRUE(read.shells.empty()) << d.what;
    }
}

// A wall of the duplex with a ledge at 3200 mm, cut a hair above it: two
// of the ledge's triangles have no area (about 1e-9 mm², normals of either
// sign), and were put on opposite sides by that sign.
TEST(ImportedSplit, aWallCutAtItsLedgeSplitsIntoClosedParts)
{
    PfDbDatabase database;
    PfModelImport::Report report;
    QString error;
    ASSERT_TRUE(PfModelImport::Import(&database, *PfMakeIfcReader(), kModels + QStringLiteral("duplex.ifc"), report,
                                      &error))
        << error.toStdString();
    const KVX3DElementObject* wall = nullptr;
    for (PfDbObject* object : *database.GetModelSpace())
        if (auto* element = KVX3DElementObject::Cast(object);
            element && element->Property(PfDbElement::kGlobalIdProperty) == QStringLiteral("2O2Fr$t4X7Zf8NOew3FLQD"))
            wall = element;
    ASSERT_NE(wall, nullptr);
    ASSERT_TRUE(wall->GetFirstBody()->IsClosed());
    vpe::CRefPtr<vpe::CBody> above, below;
    vpe::CSection section;
    ASSERT_TRUE(vpe::CBooleanOperate(true, true, true, true)
                    .SplitBody(*wall->GetFirstBody(), vpe::CPlane({0, 0, 3200.0000000001965}, {0, 0, 1}), above,
                               below, section));
    EXPECT_TRUE(above->IsClosed());
    EXPECT_TRUE(below->IsClosed());
    EXPECT_NEAR(above->GetVolume() + below->GetVolume(), wall->GetFirstBody()->GetVolume(),
                1e-6 * wall->GetFirstBody()->GetVolume());
}

} // namespace
