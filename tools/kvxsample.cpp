// Builds a small construction-site project (elements, schedule animation
// records, a tower crane with its lifting steps, camera and date key
// frames), saves it, reopens it from the file and prints one line per record.

#include "animation/KVXTowerAnimation.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbLoadReport.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVXGlobalInfo.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfHostClasses.h"
#include "host/rx/PfRxModuleLoader.h"
#include "keyframe/KVXCameraKeyFramesTrack.h"
#include "keyframe/KVXDateKeyFramesTrack.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTextStream>

#include <vector>

namespace {

QTextStream& out()
{
    static QTextStream stream(stdout);
    stream.setCodec("UTF-8");
    return stream;
}

QTextStream& err()
{
    static QTextStream stream(stderr);
    stream.setCodec("UTF-8");
    return stream;
}

PfDbHandle addElement(PfDbDatabase* database, const QString& name, const QColor& colour, const osg::Vec3d& min,
                      const osg::Vec3d& max)
{
    auto* element = new KVX3DElementObject();
    element->SetName(name.toStdWString());
    element->SetBodyColor(colour);
    element->AddBody(vpe::CBody::CreateBox(min, max));
    database->GetModelSpace()->Add(element);
    return element->GetHandle();
}

void addRecord(PfDbDatabase* database, KVXAnimation* record, const QDate& start, int days)
{
    record->setStartDate(start);
    record->setEndDate(start.addDays(days - 1));
    record->setDurationDays(days);
    database->GetModelSpace()->Add(record);
}

void buildSample(PfDbDocument* document)
{
    PfDbDatabase* database = document->GetDatabase();
    const QDate start(2026, 3, 2);
    // Three storeys of 24 x 14 x 3.5 m and a site shed; the crane beside
    // them, its mast as tall as its highest lifting step.
    std::vector<PfDbHandle> storeys;
    for (int storey = 1; storey <= 3; ++storey)
        storeys.push_back(addElement(database, QStringLiteral("1号楼 %1层").arg(storey), QColor(215, 205, 185),
                                     {0.0, 0.0, (storey - 1) * 3500.0}, {24000.0, 14000.0, storey * 3500.0}));
    const PfDbHandle shed = addElement(database, QStringLiteral("临时工棚"), QColor(60, 110, 190),
                                       {-20000.0, -15000.0, 0.0}, {-12000.0, -9000.0, 3000.0});
    auto* crane = new KVXTowerCraneObject();
    crane->SetName(L"TC-1 塔吊");
    crane->SetPosition({32000.0, -8000.0, 0.0});
    crane->SetTowerHeight(48000);
    database->GetModelSpace()->Add(crane);
    // Records take their elements' levels from the view.
    PfGsModelView::Attach(document);

    int number = 1;
    for (int storey = 1; storey <= 3; ++storey) {
        const PfDbHandle element = storeys[storey - 1];
        addRecord(database, new KVXAnimation(number++, element, KVXAnimation::Construction, KVXAnimation::BottomUp),
                  start.addDays(14 * (storey - 1)), 14);
    }
    addRecord(database, new KVXAnimation(number++, shed, KVXAnimation::Demolition, KVXAnimation::LeftToRight),
              start.addDays(60), 5);

    auto* craneRecord =
        new KVXTowerAnimation(number++, crane->GetHandle(), KVXAnimation::Rotation, KVXAnimation::LeftToRight);
    craneRecord->SetLiftingData({{start.addDays(10), 36000}, {start.addDays(24), 42000}, {start.addDays(38), 48000}});
    craneRecord->SetIsDismantle(true);
    craneRecord->SetDismantleDate(start.addDays(70));
    addRecord(database, craneRecord, start, 70);

    auto* cameras = KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(database);
    auto* dates = KVXDateKeyFramesTrack::GetOrCteateKeyFrameContainer(database);
    for (int i = 0; i < 3; ++i) {
        vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera();
        camera->SetLookAt({-40000.0 + 30000.0 * i, -60000.0, 30000.0}, {12000.0, 7000.0, 8000.0});
        cameras->CreateCameraKeyFrame(4000 * i)->SetCamera(camera);
        dates->CreateDateKeyFrame(4000 * i)->SetDate(start.addDays(35 * i));
    }
}

QString elementName(PfDbDocument* document, qint64 objId)
{
    auto* element = PfDbElement::Cast(document->GetItem(static_cast<PfDbHandle>(objId)));
    return element ? QString::fromStdWString(element->GetName()) : QStringLiteral("(missing element)");
}

void printRecords(PfDbDocument* document)
{
    for (PfDbObject* object : *document->GetDatabase()->GetModelSpace()) {
        const KVXAnimation* record = KVXAnimation::Cast(object);
        if (!record)
            continue;
        out() << QStringLiteral("#%1 %2 of \"%3\": %4 to %5, %6 days")
                     .arg(record->getNumber())
                     .arg(record->getAnimationTypeName(), elementName(document, record->getObjId()),
                          record->getStartDate().toString(Qt::ISODate), record->getEndDate().toString(Qt::ISODate))
                     .arg(record->getDurationDays());
        if (const KVXTowerAnimation* tower = KVXTowerAnimation::Cast(record)) {
            QStringList steps;
            for (const KVXTowerLiftingData& step : tower->GetLiftingData())
                steps << QStringLiteral("%1 %2 m").arg(step.date.toString(Qt::ISODate)).arg(step.height / 1000.0);
            out() << QStringLiteral("; lifting %1").arg(steps.join(QStringLiteral(", ")));
            if (tower->GetIsDismantle())
                out() << QStringLiteral("; dismantled %1").arg(tower->GetDismantleDate().toString(Qt::ISODate));
        }
        out() << '\n';
    }
    auto* cameras = KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(document->GetDatabase());
    auto* dates = KVXDateKeyFramesTrack::GetOrCteateKeyFrameContainer(document->GetDatabase());
    out() << QStringLiteral("key frames: %1 camera, %2 date\n").arg(cameras->Size()).arg(dates->Size());
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Builds, saves, reopens and lists a sample project."));
    parser.addHelpOption();
    parser.addOption({QStringLiteral("out"), QStringLiteral("Where to save the project."), QStringLiteral("file")});
    parser.process(application);
    const QString path = parser.value(QStringLiteral("out"));
    if (path.isEmpty()) {
        err() << "kvxsample: --out FILE.kvx is required\n";
        return 2;
    }

    // Nothing is made when the project cannot be saved where asked.
    const QFileInfo folder(QFileInfo(path).absolutePath());
    if (!folder.isDir() || !folder.isWritable()) {
        err() << "kvxsample: cannot write " << path << ": its folder " << folder.filePath()
              << (folder.isDir() ? " is not writable\n" : " does not exist\n");
        return 1;
    }
    PfHostRegisterClasses();
    PfRxModuleLoader module;
    QString error;
    const QString modulePath = QDir(QCoreApplication::applicationDirPath() + QStringLiteral("/../lib"))
                                   .filePath(QStringLiteral(KVX_MODULE_FILE));
    if (!module.Load(modulePath, &error)) {
        err() << "kvxsample: " << error << '\n';
        return 1;
    }
    // The key frames' thumbnails, drawn from the view, beside the project.
    KVXGlobalInfo::getInstance()->setTempProjectPath(
        (QFileInfo(path).absolutePath() + QStringLiteral("/thumbnails")).toStdWString());

    PfDocManager* documents = PfDocManagerPtr();
    PfDbDocument* sample = documents->NewDocument();
    buildSample(sample);
    if (!sample->Save(path, &error)) {
        err() << "kvxsample: " << error << '\n';
        return 1;
    }
    documents->CloseDocument(sample);

    PfDbLoadReport report;
    PfDbDocument* reopened = documents->OpenDocument(path, &report, &error);
    if (!reopened) {
        err() << "kvxsample: " << error << '\n';
        return 1;
    }
    out() << "saved and reopened " << QFileInfo(path).absoluteFilePath() << '\n';
    for (const QString& note : report.Messages())
        out() << "note: " << note << '\n';
    printRecords(reopened);
    documents->CloseAll();
    return 0;
}
