#include "animation/KVXAnimatorManager.h"
#include "forms/KVXAnimationModel.h"
#include "forms/KVXAnimationPropertyForm.h"
#include "forms/KVXAnimationSequenceForm.h"
#include "forms/KVXConstructionPage.h"
#include "forms/KVXDateTimeLineWidget.h"
#include "host/app/KvxMainWindow.h"
#include "host/app/PfQtView.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CCamera.h"

#include "tests/support/CommandLineRun.h"
#include "tests/support/ModalAnswer.h"
#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"

#include <QAction>
#include <QDir>
#include <QDateEdit>
#include <QDockWidget>
#include <QLabel>
#include <QPushButton>
#include <QLineEdit>
#include <QSettings>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

// The application's window on the demo site.
class MainWindow : public ::testing::Test {
protected:
    void SetUp() override
    {
        QCoreApplication::setOrganizationName(QStringLiteral("KVX-tests"));
        QCoreApplication::setApplicationName(QStringLiteral("tst_main_window"));
        QSettings().clear();
        ASSERT_EQ(runCommandLine({"demo-site", "--out", site}).code, 0);
    }
    void TearDown() override { PfDocManagerPtr()->CloseAll(); }
    static void waitForFrame(KvxMainWindow& window)
    {
        for (int i = 0; i < 200 && window.View()->FrameCount() == 0; ++i)
            QTest::qWait(10);
    }
    static void keep(QWidget& widget, const char* name)
    {
        if (qEnvironmentVariableIsSet("KVX_TEST_PICTURES"))
            widget.grab().save(QDir(qEnvironmentVariable("KVX_TEST_PICTURES")).filePath(QLatin1String(name)));
    }

    QTemporaryDir folder;
    const QString site = folder.filePath(QStringLiteral("site.kvx"));
};

TEST_F(MainWindow, opensADocumentWithTheModulesPagesAndUndoesAnEdit)
{
    KvxMainWindow window;
    ASSERT_TRUE(window.OpenDocument(site));
    window.show();
    waitForFrame(window);
    EXPECT_GT(window.View()->FrameCount(), 0);
    EXPECT_EQ(window.windowTitle(), QStringLiteral("site.kvx — KVX"));
    for (const char* page : {"kvx_animation_sequence", "kvx_animation_property", "kvx_virtual_construction"})
        ASSERT_NE(window.Page(QLatin1String(page)), nullptr) << page;
    keep(window, "main_window_opened.png");

    // The list shows the schedule; a click opens a record in the form.
    KVXAnimationSequenceForm* list = KVXAnimationSequenceForm::getInstance();
    ASSERT_EQ(list->model()->rowCount(), 26);
    QTableView* table = list->tableView();
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, table->visualRect(table->model()->index(10, 1)).center());
    KVXAnimationPropertyForm* properties = KVXAnimationPropertyForm::getInstance();
    KVXAnimation* record = properties->getAnimation();
    ASSERT_NE(record, nullptr);
    const int days = record->getDurationDays();
    properties->durationEdit()->selectAll();
    QTest::keyClicks(properties->durationEdit(), "9");
    QTest::keyClick(properties->durationEdit(), Qt::Key_Return);
    EXPECT_EQ(record->getDurationDays(), 9);
    window.RefreshTitle();
    EXPECT_EQ(window.windowTitle(), QStringLiteral("site.kvx* — KVX"));
    keep(window, "main_window_edited.png");

    window.UndoAction()->trigger();
    EXPECT_EQ(record->getDurationDays(), days);
    EXPECT_EQ(properties->getDurationTime(), QString::number(days));
    window.RedoAction()->trigger();
    EXPECT_EQ(record->getDurationDays(), 9);

    const QString copy = folder.filePath(QStringLiteral("copy.kvx"));
    ASSERT_TRUE(window.SaveDocument(copy));
    EXPECT_EQ(window.windowTitle(), QStringLiteral("copy.kvx — KVX"));
    const int number = record->getNumber();
    ASSERT_TRUE(window.OpenDocument(copy));
    KVXAnimation* reopened = KVXAnimatorManager::getInstance()->findKVXAnimation(number);
    ASSERT_NE(reopened, nullptr);
    EXPECT_EQ(reopened->getDurationDays(), 9);
    window.close();
}

TEST_F(MainWindow, clickingAnElementSelectsItAndTheListFollows)
{
    KvxMainWindow window;
    ASSERT_TRUE(window.OpenDocument(site));
    window.show();
    waitForFrame(window);
    PfQtView* view = window.View();
    // Where the middle of a storey's top face is on the screen.
    const auto pixelOfTop = [&](const wchar_t* name, PfDbHandle& handle) {
        for (PfDbObject* object : *window.Document()->GetDatabase()->GetModelSpace())
            if (auto* element = KVX3DElementObject::Cast(object); element && element->GetName() == name) {
                handle = object->GetHandle();
                const osg::BoundingBoxd box = element->GetFirstBody()->GetBoundingBox();
                const vpe::CCamera* camera = view->GetViewer()->GetCamera();
                const osg::Vec3d onScreen =
                    osg::Vec3d(box.center().x(), box.center().y(), box.zMax()) * camera->GetViewMatrix() *
                    camera->GetProjectionMatrix(double(view->width()) / view->height());
                return QPoint(int((onScreen.x() + 1) / 2 * view->width()), int((1 - onScreen.y()) / 2 * view->height()));
            }
        return QPoint();
    };
    PfDbHandle top1 = 0, top3 = 0;
    const QPoint at1 = pixelOfTop(L"1号楼 6层", top1);
    const QPoint at3 = pixelOfTop(L"3号楼 10层", top3);
    QAbstractItemModel* rows = KVXAnimationSequenceForm::getInstance()->tableView()->model();
    const auto listed = [rows] {
        QStringList names;
        for (int row = 0; row < rows->rowCount(); ++row)
            names << rows->index(row, 1).data().toString();
        return names;
    };

    QTest::mouseClick(view, Qt::LeftButton, {}, at1);
    EXPECT_EQ(window.Document()->GetSelectionSet().Ids(), std::vector<PfDbHandle>{top1});
    EXPECT_EQ(listed(), QStringList{QStringLiteral("1号楼 6层")});
    QTest::mouseClick(view, Qt::LeftButton, Qt::ControlModifier, at3);
    EXPECT_EQ(listed(), (QStringList{QStringLiteral("1号楼 6层"), QStringLiteral("3号楼 10层")}));
    // Drawn in the selection's blue.
    view->GetViewer()->SetDirty();
    const int drawn = view->FrameCount();
    for (int i = 0; i < 200 && view->FrameCount() == drawn; ++i)
        QTest::qWait(10);
    const QColor colour = view->LastFrame().pixelColor(at1);
    EXPECT_GT(colour.blue(), colour.red() + 40) << colour.name().toStdString();
    keep(window, "main_window_selected.png");

    QTest::keyClick(view, Qt::Key_Escape);
    EXPECT_TRUE(window.Document()->GetSelectionSet().IsEmpty());
    EXPECT_EQ(rows->rowCount(), 26);
    window.close();
}

TEST_F(MainWindow, theConstructionPagePlaysScrubsAndCountsConflicts)
{
    KvxMainWindow window;
    ASSERT_TRUE(window.OpenDocument(site));
    window.show();
    waitForFrame(window);
    auto* page = qobject_cast<KVXConstructionPage*>(window.Page(QStringLiteral("kvx_virtual_construction"))->widget());
    ASSERT_NE(page, nullptr);
    EXPECT_EQ(page->conflicts()->text(), QStringLiteral("冲突: 0"));
    EXPECT_EQ(page->timeline()->GetIndicator(), QDate(2025, 3, 3)) << "the document's schedule, not today";
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    QTest::mouseClick(page->button(QStringLiteral("播放")), Qt::LeftButton);
    EXPECT_EQ(schedule->getPlayState(), 1);
    QTest::mouseClick(page->button(QStringLiteral("暂停")), Qt::LeftButton);
    EXPECT_EQ(schedule->getPlayState(), 2);
    QTest::mouseClick(page->button(QStringLiteral("停止")), Qt::LeftButton);
    EXPECT_EQ(schedule->getPlayState(), 0);
    // Scrubbing the timeline shows that day, paused there.
    emit page->timeline()->indicatorChanged(QDate(2025, 3, 20));
    EXPECT_EQ(schedule->getPlayState(), 2);
    schedule->stop();
    // A record moved onto another of its element's days is a conflict.
    KVXAnimation* second = schedule->findKVXAnimation(12);
    KVXAnimationPropertyForm* properties = KVXAnimationPropertyForm::getInstance();
    properties->setAnimation(second);
    properties->updateData();
    properties->startDateEdit()->setDate(QDate(2025, 3, 8));
    EXPECT_EQ(page->conflicts()->text(), QStringLiteral("冲突: 0")) << "another storey's days";
    second->setObjId(schedule->findKVXAnimation(11)->getObjId());
    properties->startDateEdit()->setDate(QDate(2025, 3, 9));
    EXPECT_NE(page->conflicts()->text(), QStringLiteral("冲突: 0"));
    // Closing asks before the changes are lost: they are.
    QString asked;
    const ModalAnswer discard([&asked](QWidget* modal) {
        auto* box = qobject_cast<QMessageBox*>(modal);
        asked = box ? box->text() : QString();
        if (box)
            box->button(QMessageBox::Discard)->click();
    });
    window.close();
    EXPECT_EQ(asked, QStringLiteral("文档已修改，是否保存？"));
}

TEST_F(MainWindow, theLayoutOfThePagesIsKeptBetweenRuns)
{
    {
        KvxMainWindow window;
        window.show();
        window.Page(QStringLiteral("kvx_animation_property"))->close();
        window.close();
    }
    KvxMainWindow again;
    again.show();
    EXPECT_FALSE(again.Page(QStringLiteral("kvx_animation_property"))->isVisible());
    EXPECT_TRUE(again.Page(QStringLiteral("kvx_animation_sequence"))->isVisible());
    again.close();
}

} // namespace
