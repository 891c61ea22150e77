#include "animation/KVXTowerAnimation.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVXTowerCraneObject.h"
#include "keyframe/KVXCameraKeyFrame.h"
#include "keyframe/KVXCameraKeyFramesTrack.h"

#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

int runSample(const QString& out, QString* errors = nullptr)
{
    QProcess sample;
    sample.start(QStringLiteral(KVX_SAMPLE_PROGRAM), {QStringLiteral("--out"), out});
    if (!sample.waitForFinished(120000))
        return -1;
    if (errors)
        *errors = QString::fromUtf8(sample.readAllStandardError());
    return sample.exitCode();
}

TEST(SampleProject, everyElementHasAShapeAndTheCraneFitsItsMast)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("sample.kvx"));
    ASSERT_EQ(runSample(path), 0);
    PfDbDocument* document = PfDocManagerPtr()->OpenDocument(path);
    ASSERT_NE(document, nullptr);
    int elements = 0, bottomUp = 0, thumbnails = 0;
    int towerHeight = 0, highestStep = 0;
    for (PfDbObject* object : *document->GetDatabase()->GetModelSpace()) {
        if (auto* crane = KVXTowerCraneObject::Cast(object))
            towerHeight = crane->GetTowerHeight();
        else if (auto* element = KVX3DElementObject::Cast(object); element && ++elements)
            EXPECT_NE(element->GetFirstBody(), nullptr) << QString::fromStdWString(element->GetName());
        if (auto* tower = KVXTowerAnimation::Cast(object))
            for (const KVXTowerLiftingData& step : tower->GetLiftingData())
                highestStep = std::max(highestStep, static_cast<int>(step.height));
        else if (auto* record = KVXAnimation::Cast(object);
                 record && record->getTranslationType() == KVXAnimation::BottomUp && ++bottomUp)
            EXPECT_GT(record->getAnimEndPoint().z(), record->getAnimStartPoint().z()) << record->getNumber();
    }
    for (PfDbObject* object : *KVXCameraKeyFramesTrack::GetOrCteateKeyFrameContainer(document->GetDatabase()))
        if (auto* keyFrame = KVXCameraKeyFrame::Cast(object))
            thumbnails += QFile::exists(QString::fromStdWString(keyFrame->GetSceneImagePath()));
    EXPECT_EQ(elements, 4);
    EXPECT_EQ(bottomUp, 3);
    EXPECT_GT(highestStep, 0);
    EXPECT_LE(highestStep, towerHeight) << "the crane's top would float over its mast";
    EXPECT_EQ(thumbnails, 3) << "every stored thumbnail is drawn";
    PfDocManagerPtr()->CloseAll();
}

TEST(SampleProject, aMissingFolderIsRefusedAndNothingIsMade)
{
    QTemporaryDir folder;
    QString errors;
    EXPECT_EQ(runSample(folder.filePath(QStringLiteral("no/such/sample.kvx")), &errors), 1);
    EXPECT_TRUE(errors.contains(QLatin1String("does not exist"))) << errors;
    EXPECT_TRUE(QDir(folder.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).isEmpty());
}

} // namespace
