#include "animation/KVXAnimatorManager.h"
#include "forms/KVXAnimationModel.h"
#include "forms/KVXAnimationPropertyForm.h"
#include "forms/KVXAnimationSequenceForm.h"
#include "forms/KVXConstructionPage.h"
#include "forms/KVXDateTimeLineWidget.h"
#include "keyframe/KVXAnimationTimeLineWidget.h"
#include "keyframe/KVXKeyFrameAnimationManager.h"
#include "keyframe/KVXRoamingVideoPage.h"
#include "keyframe/KvxAnimationButtonsPanel.h"
#include "keyframe/KvxOutputVideoSettingDialog.h"
#include "animation/KVXPlatformAnimationManager.h"
#include "forms/KVXLiveCranes.h"
#include "host/app/KvxElementProperties.h"
#include "host/app/KvxMainWindow.h"
#include "host/app/KvxModelTree.h"
#include "host/app/KvxScheduleImportDialog.h"
#include "host/app/PfQtView.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/db/PfDocManager.h"
#include "host/import/PfIsolatedModelReader.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/PfUiActionManager.h"
#include "host/net/PfCraneSimulator.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CCamera.h"

#include "tests/support/CommandLineRun.h"
#include "tests/support/ModalAnswer.h"
#include "tests/support/ModuleEnvironment.h"
#include "tests/support/QtPrinters.h"
#include "tests/support/VideoProbe.h"

#include <QAction>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QStatusBar>
#include <QTableWidget>
#include <QTreeView>
#include <QMimeData>
#include <QWheelEvent>
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
    // Where the middle of an element's top face is in the view.
    static QPoint pixelOfTop(KvxMainWindow& window, const wchar_t* name, PfDbHandle& handle)
    {
        for (PfDbObject* object : *window.Document()->GetDatabase()->GetModelSpace())
            if (auto* element = KVX3DElementObject::Cast(object); element && element->GetName() == name) {
                handle = object->GetHandle();
                const osg::BoundingBoxd box = element->GetFirstBody()->GetBoundingBox();
                return window.View()->PixelOf({box.center().x(), box.center().y(), box.zMax()}).toPoint();
            }
        return QPoint();
    }
    // Lets events run until the condition holds or two seconds pass.
    template <class Condition>
    static bool waitFor(Condition condition)
    {
        for (int i = 0; i < 200 && !condition(); ++i)
            QTest::qWait(10);
        return condition();
    }
    // Opens the demo site in the window and shows its first frame.
    bool showSite(KvxMainWindow& window) const
    {
        if (!window.OpenDocument(site))
            return false;
        window.show();
        activate(window);
        waitForFrame(window);
        return true;
    }
    // Shortcuts (Space, Esc) go to the active window only. Without a window
    // manager a window is made active neither by being shown nor when a
    // dialog over it closes.
    static void activate(QWidget& window)
    {
        window.activateWindow();
        waitFor([&window] { return QApplication::activeWindow() == &window; });
    }
    // Presses a button of the next message box, keeping its text.
    static ModalAnswer press(QMessageBox::StandardButton button, QString* text = nullptr)
    {
        return ModalAnswer([button, text](QWidget* modal) {
            auto* box = qobject_cast<QMessageBox*>(modal);
            if (text)
                *text = box ? box->text() : QString();
            if (box)
                box->button(button)->click();
        });
    }
    static QAction* command(const char* name) { return PfUiActionManager::GetInstance()->FindAction(QLatin1String(name)); }
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
    ASSERT_TRUE(showSite(window));
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
    // The start a day later, with the date picker's arrow key.
    const QDate start = record->getStartDate();
    QDateEdit* startPicker = properties->startDateEdit();
    startPicker->setFocus();
    startPicker->setCurrentSection(QDateTimeEdit::DaySection);
    QTest::keyClick(startPicker, Qt::Key_Up);
    EXPECT_EQ(record->getStartDate(), start.addDays(1));
    EXPECT_EQ(record->getDurationDays(), 9);
    window.UndoAction()->trigger();
    EXPECT_EQ(record->getStartDate(), start);
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
    ASSERT_TRUE(showSite(window));
    PfQtView* view = window.View();
    PfDbHandle top1 = 0, top3 = 0;
    const QPoint at1 = pixelOfTop(window, L"1号楼 6层", top1);
    const QPoint at3 = pixelOfTop(window, L"3号楼 10层", top3);
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

TEST_F(MainWindow, theModelTreeAndThePropertiesFollowTheSelectionBothWays)
{
    KvxMainWindow window;
    ASSERT_TRUE(showSite(window));
    KvxModelTree* tree = window.ModelTree();
    QTableWidget* properties = window.Properties()->Table();
    const auto shownName = [&] { return properties->item(window.Properties()->RowOf("名称"), 1)->text(); };
    PfDbHandle top1 = 0, top3 = 0;
    QTest::mouseClick(window.View(), Qt::LeftButton, {}, pixelOfTop(window, L"1号楼 6层", top1));
    const QModelIndexList rows = tree->Tree()->selectionModel()->selectedRows();
    ASSERT_EQ(rows.size(), 1);
    EXPECT_EQ(tree->HandleAt(rows.front()), top1);
    EXPECT_EQ(shownName(), QStringLiteral("1号楼 6层"));

    // Found by search and clicked in the tree: selected in the view and listed.
    pixelOfTop(window, L"3号楼 10层", top3);
    tree->SetSearchText(QStringLiteral("3号楼 10"));
    const QModelIndex row = tree->IndexOf(top3);
    ASSERT_TRUE(row.isValid());
    QTest::mouseClick(tree->Tree()->viewport(), Qt::LeftButton, {}, tree->Tree()->visualRect(row).center());
    EXPECT_EQ(window.Document()->GetSelectionSet().Ids(), std::vector<PfDbHandle>{top3});
    QAbstractItemModel* listed = KVXAnimationSequenceForm::getInstance()->tableView()->model();
    ASSERT_EQ(listed->rowCount(), 1);
    EXPECT_EQ(listed->index(0, 1).data().toString(), QStringLiteral("3号楼 10层"));
    keep(window, "main_window_tree.png");

    // Renamed in the properties: the tree follows, and the Edit menu undoes it by name.
    tree->SetSearchText(QString());
    properties->item(window.Properties()->RowOf("名称"), 1)->setText(QStringLiteral("3号楼 屋面层"));
    QCoreApplication::processEvents();
    EXPECT_EQ(tree->IndexOf(top3).data().toString(), QStringLiteral("3号楼 屋面层"));
    window.RefreshTitle();
    EXPECT_EQ(window.UndoAction()->text(), QStringLiteral("撤销 重命名构件(&U)"));
    window.UndoAction()->trigger();
    QCoreApplication::processEvents();
    EXPECT_EQ(shownName(), QStringLiteral("3号楼 10层"));
    EXPECT_TRUE(waitFor([&] { return tree->IndexOf(top3).data().toString() == QStringLiteral("3号楼 10层"); }));
    const ModalAnswer discard = press(QMessageBox::Discard);
    window.close();
}

TEST_F(MainWindow, anImportedModelIsListedByStoreyAndUndoneAsOneStep)
{
    PfIsolatedModelReader::SetDefaultProgram(QStringLiteral(KVXHOST_PROGRAM));
    KvxMainWindow window;
    ASSERT_TRUE(showSite(window));
    const QAbstractItemModel* rows = window.ModelTree()->Tree()->model();
    const int storeys = rows->rowCount();
    ASSERT_TRUE(window.ImportModel(QStringLiteral(KVX_TEST_DATA "/models/construction_scheduling_task_IFC4.ifc")));
    window.RefreshTitle();
    EXPECT_EQ(window.UndoAction()->text(), QStringLiteral("撤销 导入模型(&U)"));
    EXPECT_TRUE(window.statusBar()->currentMessage().contains(QStringLiteral("5 elements imported")))
        << window.statusBar()->currentMessage().toStdString();
    // Its elements come under their own storey.
    EXPECT_TRUE(waitFor([&] { return rows->rowCount() > storeys; }));

    QString told;
    {
        const ModalAnswer answer = press(QMessageBox::Ok, &told);
        EXPECT_FALSE(window.ImportModel(QStringLiteral(KVX_TEST_DATA "/README.md")));
    }
    EXPECT_TRUE(told.contains(QStringLiteral("README.md"))) << told.toStdString();

    // The model's own work schedule links to what was imported, in one step.
    KvxScheduleImportDialog schedule(window.Document(), &window);
    schedule.SetSchedulePath(QStringLiteral(KVX_TEST_DATA "/models/construction_scheduling_task_IFC4.ifc"));
    ASSERT_TRUE(schedule.Import()) << schedule.ReportText().toStdString();
    EXPECT_TRUE(schedule.ReportText().contains(QStringLiteral("linked: 5 of 5 tasks")))
        << schedule.ReportText().toStdString();
    window.RefreshTitle();
    EXPECT_EQ(window.UndoAction()->text(), QStringLiteral("撤销 导入进度计划(&U)"));
    {
        const ModalAnswer answer = press(QMessageBox::Ok, &told);
        schedule.SetRulesText(QStringLiteral("storey == wbs"));
        EXPECT_FALSE(schedule.Import());
    }
    EXPECT_TRUE(told.contains(QStringLiteral("line 1"))) << told.toStdString();

    window.UndoAction()->trigger();
    window.UndoAction()->trigger();
    EXPECT_TRUE(waitFor([&] { return rows->rowCount() == storeys; }));
    window.RedoAction()->trigger();
    const ModalAnswer discard = press(QMessageBox::Discard);
    window.close();
}

TEST_F(MainWindow, liveCranesFollowTheSimulatorAndAFailingPlatformIsToldInTheStatusBar)
{
    PfCraneSimulator simulator;
    PfCraneSimulator::Reading reading;
    reading.rotation = 135.0;
    reading.height = 48.0;
    simulator.SetScript({reading});
    ASSERT_TRUE(simulator.Listen(0));
    KvxMainWindow window;
    ASSERT_TRUE(showSite(window));
    KVXPlatformAnimationManager* live = KVXPlatformAnimationManager::getInstance();
    QAction* toggle = command("KVX_LIVE_CRANES");
    ASSERT_NE(toggle, nullptr);

    // No platform set yet: the switch asks for one and keeps it.
    const QString endpoint = QStringLiteral("http://127.0.0.1:%1/latest").arg(simulator.Port());
    const ModalAnswer answer([&endpoint](QWidget* dialog) {
        dialog->findChild<QLineEdit*>(QStringLiteral("endpoint"))->setText(endpoint);
        dialog->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
    });
    toggle->trigger();
    EXPECT_TRUE(toggle->isChecked());
    EXPECT_EQ(QSettings().value(KVXLiveCranes::kEndpointKey).toString(), endpoint);
    EXPECT_TRUE(waitFor([&] { return live->getCurrentData().rotation == 135.0f; }));
    EXPECT_EQ(live->getCurrentData().height, 48000.0f);
    toggle->trigger();
    EXPECT_FALSE(toggle->isChecked());
    EXPECT_EQ(live->getPlayingState(), KVXPlatformAnimationManager::Stopped);

    // A platform that refuses: said in the status bar, the cranes stay live.
    quint16 closed = 0;
    {
        PfCraneSimulator gone;
        ASSERT_TRUE(gone.Listen(0));
        closed = gone.Port();
    }
    QSettings().setValue(KVXLiveCranes::kEndpointKey, QStringLiteral("http://127.0.0.1:%1/latest").arg(closed));
    toggle->trigger();
    EXPECT_TRUE(waitFor([&] { return window.statusBar()->currentMessage().startsWith(QStringLiteral("实时塔吊数据：")); }))
        << window.statusBar()->currentMessage().toStdString();
    EXPECT_EQ(live->getPlayingState(), KVXPlatformAnimationManager::Playing);
    activate(window);
    QTest::keyClick(window.View(), Qt::Key_Escape);
    EXPECT_EQ(live->getPlayingState(), KVXPlatformAnimationManager::Stopped);
    EXPECT_FALSE(toggle->isChecked());
    window.close();
}

TEST_F(MainWindow, theConstructionPagePlaysScrubsAndCountsConflicts)
{
    KvxMainWindow window;
    ASSERT_TRUE(showSite(window));
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
    const ModalAnswer discard = press(QMessageBox::Discard, &asked);
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

TEST_F(MainWindow, addsARecordOfEachKindToTheSelectionAsOneNamedStep)
{
    KvxMainWindow window;
    ASSERT_TRUE(showSite(window));
    PfDbHandle storey = 0;
    QTest::mouseClick(window.View(), Qt::LeftButton, {}, pixelOfTop(window, L"1号楼 6层", storey));
    ASSERT_EQ(window.Document()->GetSelectionSet().Ids(), std::vector<PfDbHandle>{storey});
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    const std::size_t before = schedule->getAnimationVector().size();

    command("KVX_ADD_BUILD_BOTTOM_UP")->trigger();
    ASSERT_EQ(schedule->getAnimationVector().size(), before + 1);
    KVXAnimation* added = schedule->getAnimationVector().back();
    EXPECT_EQ(added->getObjId(), qint64(storey));
    EXPECT_EQ(added->getTranslationType(), KVXAnimation::BottomUp);
    EXPECT_EQ(added->getStartDate(), QDate(2025, 3, 3)) << "the day the date timeline shows";
    EXPECT_EQ(KVXAnimationSequenceForm::getInstance()->model()->rowCount(), 2) << "the storey's two records";
    KVXAnimationPropertyForm* properties = KVXAnimationPropertyForm::getInstance();
    ASSERT_EQ(properties->getAnimation(), added);
    window.RefreshTitle();
    EXPECT_EQ(window.UndoAction()->text(), QStringLiteral("撤销 添加动画(&U)"));

    properties->durationEdit()->selectAll();
    QTest::keyClicks(properties->durationEdit(), "9");
    QTest::keyClick(properties->durationEdit(), Qt::Key_Return);
    window.RefreshTitle();
    EXPECT_EQ(window.UndoAction()->text(), QStringLiteral("撤销 修改动画 %1(&U)").arg(added->getNumber()));
    window.UndoAction()->trigger();
    window.UndoAction()->trigger();
    EXPECT_EQ(schedule->getAnimationVector().size(), before);
    EXPECT_EQ(window.RedoAction()->text(), QStringLiteral("重做 添加动画(&R)"));
    window.RedoAction()->trigger();
    window.RedoAction()->trigger();
    ASSERT_EQ(schedule->getAnimationVector().back(), added);
    EXPECT_EQ(added->getDurationDays(), 9);

    // A crane record needs a crane; the message says so.
    QString notice;
    {
        const ModalAnswer read = ModalAnswer::Acknowledge(&notice);
        command("KVX_ADD_TOWER_CRANE")->trigger();
    }
    EXPECT_EQ(notice, QStringLiteral("所选构件中没有塔吊"));

    // A route picked by two clicks in the view and Return.
    const QPoint a(window.View()->width() / 3, window.View()->height() / 2);
    QTimer::singleShot(0, &window, [&window, a] {
        QTest::mouseClick(window.View(), Qt::LeftButton, {}, a);
        QTest::mouseClick(window.View(), Qt::LeftButton, {}, a + QPoint(120, 40));
        QTest::keyClick(window.View(), Qt::Key_Return);
    });
    command("KVX_ADD_PATH")->trigger();
    KVXAnimation* route = schedule->getAnimationVector().back();
    EXPECT_EQ(route->getAnimationType(), KVXAnimation::Path);
    EXPECT_EQ(route->GetPoints().size(), 2u);
    EXPECT_EQ(window.Document()->GetSelectionSet().Ids(), std::vector<PfDbHandle>{storey}) << "picking kept it";
    const ModalAnswer discard = press(QMessageBox::Discard);
    window.close();
}

TEST_F(MainWindow, keyFramesFromThreeViewsPlayExportAndComeBackWithTheDocument)
{
    const QString film = folder.filePath(QStringLiteral("flight.mp4"));
    const QString copy = folder.filePath(QStringLiteral("flight.kvx"));
    {
        KvxMainWindow window;
        ASSERT_TRUE(showSite(window));
        window.Page(QStringLiteral("kvx_roaming_video"))->raise();
        auto* page = qobject_cast<KVXRoamingVideoPage*>(window.Page(QStringLiteral("kvx_roaming_video"))->widget());
        ASSERT_NE(page, nullptr);
        ASSERT_TRUE(waitFor([page] { return page->isVisible(); }));
        const struct {
            const char* side;
            unsigned int ms;
        } views[] = {{"south-west", 0}, {"top", 3000}, {"north-east", 6000}};
        for (const auto& view : views) {
            window.ShowFrom(QLatin1String(view.side));
            page->timeline()->SetTimeIndicator(view.ms);
            QTest::mouseClick(page->buttons()->GetButton(KvxAnimationButtonsPanel::AddKeyFrame), Qt::LeftButton);
        }
        EXPECT_EQ(page->timeline()->GetKeyFrameButtons().size(), 3u);
        window.RefreshTitle();
        EXPECT_EQ(window.UndoAction()->text(), QStringLiteral("撤销 添加关键帧(&U)"));
        keep(window, "main_window_key_frames.png");

        KVXKeyFrameAnimationManager* flight = KVXKeyFrameAnimationManager::GetInstance();
        QTest::keyClick(window.View(), Qt::Key_Space);
        EXPECT_EQ(flight->GetPlayState(), KVXKeyFrameAnimationManager::Playing);
        EXPECT_TRUE(command("KVX_PREVIEW_ANIMATION_PLAY_PAUSE")->isChecked());
        QTest::keyClick(window.View(), Qt::Key_Escape);
        EXPECT_EQ(flight->GetPlayState(), KVXKeyFrameAnimationManager::Stopped);

        // The dialog is answered, then the message that the film is done.
        QString done;
        std::unique_ptr<ModalAnswer> finished;
        const ModalAnswer settings([&](QWidget* modal) {
            auto* dialog = qobject_cast<KvxOutputVideoSettingDialog*>(modal);
            ASSERT_NE(dialog, nullptr);
            dialog->GetPathEdit()->setText(film);
            dialog->GetResolutionBox()->setEditText(QStringLiteral("160x90"));
            QTest::keyClick(dialog, Qt::Key_Return);
            finished = std::make_unique<ModalAnswer>(ModalAnswer::Acknowledge(&done));
        });
        QTest::mouseClick(page->exportButton(), Qt::LeftButton);
        EXPECT_TRUE(probeVideo(film).contains(QLatin1String("width=160")));
        EXPECT_FALSE(done.isEmpty());
        ASSERT_TRUE(window.SaveDocument(copy));
        window.close();
    }
    KvxMainWindow again;
    ASSERT_TRUE(again.OpenDocument(copy));
    again.show();
    again.Page(QStringLiteral("kvx_roaming_video"))->raise();
    auto* page = qobject_cast<KVXRoamingVideoPage*>(again.Page(QStringLiteral("kvx_roaming_video"))->widget());
    ASSERT_TRUE(waitFor([page] { return page->isVisible(); }));
    const auto& buttons = page->timeline()->GetKeyFrameButtons();
    EXPECT_EQ(std::count_if(buttons.begin(), buttons.end(), [](const KVXKeyFrameButton& b) { return b.cameraKeyFrame; }),
              3);
    EXPECT_EQ(again.RecentFiles().value(0), QFileInfo(copy).absoluteFilePath());
    again.close();
}

TEST_F(MainWindow, changesSavedAsideAreOfferedBackAfterACrash)
{
    QString sideFile;
    {
        KvxMainWindow crashed;
        ASSERT_TRUE(crashed.OpenDocument(site));
        crashed.Document()->GetDatabase()->TransactionManager()->StartTransaction();
        KVXAnimatorManager::getInstance()->deleteKvxAnimation(7);
        crashed.Document()->GetDatabase()->TransactionManager()->EndTransaction();
        ASSERT_TRUE(crashed.AutoSaveNow());
        sideFile = crashed.AutoSavePath();
        // Gone without being closed, as in a crash.
    }
    ASSERT_TRUE(QFileInfo::exists(sideFile));
    KvxMainWindow window;
    window.show();
    QString offer;
    {
        const ModalAnswer recover = press(QMessageBox::Yes, &offer);
        // Dropped on the window, as a planner would.
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(site)});
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&window, &enter);
        ASSERT_TRUE(enter.isAccepted());
        QDropEvent drop(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&window, &drop);
        ASSERT_TRUE(waitFor([&window] { return !window.Document()->FilePath().isEmpty(); })) << offer.toStdString();
    }
    EXPECT_TRUE(offer.startsWith(QStringLiteral("site.kvx 有未保存的修改"))) << offer;
    EXPECT_EQ(KVXAnimatorManager::getInstance()->findKVXAnimation(7), nullptr);
    window.RefreshTitle();
    EXPECT_EQ(window.windowTitle(), QStringLiteral("site.kvx* — KVX")) << "recovered changes are not saved yet";
    ASSERT_TRUE(window.SaveDocument(site));
    EXPECT_FALSE(QFileInfo::exists(sideFile));
    KvxMainWindow reopened;
    ASSERT_TRUE(reopened.OpenDocument(site));
    EXPECT_EQ(KVXAnimatorManager::getInstance()->findKVXAnimation(7), nullptr);
    reopened.close();
    window.close();
}

TEST_F(MainWindow, theWheelZoomsToTheCursorAndTheProjectionSwitches)
{
    KvxMainWindow window;
    ASSERT_TRUE(showSite(window));
    PfQtView* view = window.View();
    PfDbHandle storey = 0;
    const QPoint at = pixelOfTop(window, L"2号楼 4层", storey);
    const osg::Vec3d eye(view->GetViewer()->GetCamera()->GetPosition());
    QWheelEvent wheel(QPointF(at), view->mapToGlobal(at), {}, QPoint(0, 240), Qt::NoButton, {}, Qt::NoScrollPhase,
                      false);
    QApplication::sendEvent(view, &wheel);
    EXPECT_LT((pixelOfTop(window, L"2号楼 4层", storey) - at).manhattanLength(), 3);
    EXPECT_LT((osg::Vec3d(view->GetViewer()->GetCamera()->GetPosition()) - eye).length(), eye.length());
    EXPECT_NE(osg::Vec3d(view->GetViewer()->GetCamera()->GetPosition()), eye);
    window.SetOrthographic(true);
    EXPECT_EQ(view->GetViewer()->GetCamera()->GetProjectionType(), int(vpe::CCamera::Orthographic));
    window.close();
}

} // namespace
