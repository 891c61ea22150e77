#include "KvxMainWindow.h"

#include "KvxElementProperties.h"
#include "KvxModelTree.h"
#include "KvxScheduleImportDialog.h"
#include "PfEdMessageBoxSink.h"
#include "PfQtView.h"
#include "PfViewNavigator.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbDocumentFile.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/db/PfDocManager.h"
#include "host/import/PfIsolatedModelReader.h"
#include "host/import/PfModelImport.h"
#include "host/model/PfAutoSave.h"
#include "host/model/PfEdPolylinePrompt.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfProgressMeter.h"
#include "host/model/PfStatusBarTip.h"
#include "host/model/PfUiActionManager.h"
#include "host/model/PfUiCommands.h"
#include "host/model/PfUiPages.h"
#include "host/model/ZUpdater.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CCamera.h"
#include "host/vpe/scene/CScene.h"
#include "host/vpe/scene/CViewFraming.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDateTime>
#include <QDir>
#include <QDockWidget>
#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPointer>
#include <QProgressBar>
#include <QProgressDialog>
#include <QSettings>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>
#include <QUrl>

#include <limits>

namespace {
const QString kLayoutKey = QStringLiteral("mainWindow/state");
const QString kGeometryKey = QStringLiteral("mainWindow/geometry");
const QString kRecentKey = QStringLiteral("recentFiles");
constexpr int kRecentCount = 8;
// A model read faster than this shows no progress dialog.
constexpr int kImportDialogDelayMs = 700;
// How often the window looks whether it is time to save aside.
constexpr int kAutoSaveCheckMilliseconds = 30 * 1000;
// A change count no document reaches: the document shows as changed.
constexpr unsigned long long kNeverSaved = std::numeric_limits<unsigned long long>::max();

QPointer<QStatusBar> tipBar;

void showTip(const QString& tip)
{
    if (tipBar)
        tipBar->showMessage(tip);
}

bool isDocumentUrl(const QUrl& url)
{
    return url.isLocalFile() && QFileInfo(url.toLocalFile()).suffix().compare(QLatin1String("kvx"), Qt::CaseInsensitive) == 0;
}
} // namespace

// The progress of long operations in the status bar. Only the bar is
// repainted as it moves: the events of the rest of the window wait.
class KvxMainWindow::StatusProgress : public PfProgressMeter::Listener {
public:
    explicit StatusProgress(QProgressBar* bar) : m_bar(bar) {}
    void started(const QString& caption, int total) override
    {
        m_bar->setRange(0, qMax(1, total));
        m_bar->setValue(0);
        m_bar->setFormat(caption + QStringLiteral(" %p%"));
        m_bar->show();
        m_bar->repaint();
    }
    void progressed(int done, int) override
    {
        m_bar->setValue(done);
        m_bar->repaint();
    }
    void stopped() override { m_bar->hide(); }

private:
    QProgressBar* m_bar;
};

KvxMainWindow::KvxMainWindow(QWidget* parent) : QMainWindow(parent)
{
    resize(1280, 800);
    setAcceptDrops(true);
    createMenus();
    createModuleCommands();
    createPages();
    createStatusBar();
    m_messages = std::make_unique<PfEdMessageBoxSink>(this);
    m_previousMessages = PfEdInformationSink::Install(m_messages.get());
    PfEdPolylinePrompt::SetPicker(
        [this](const QString& prompt, std::vector<osg::Vec3d>& points) { return pickRoute(prompt, points); });
    const QSettings settings;
    restoreGeometry(settings.value(kGeometryKey).toByteArray());
    restoreState(settings.value(kLayoutKey).toByteArray());
    // The title follows edits, undo and redo without each telling it.
    auto* watch = new QTimer(this);
    connect(watch, &QTimer::timeout, this, &KvxMainWindow::RefreshTitle);
    watch->start(250);
    auto* autoSave = new QTimer(this);
    connect(autoSave, &QTimer::timeout, this, &KvxMainWindow::autoSaveTick);
    autoSave->start(kAutoSaveCheckMilliseconds);
    NewDocument();
}

KvxMainWindow::~KvxMainWindow()
{
    PfEdPolylinePrompt::SetPicker(nullptr);
    PfEdInformationSink::Install(m_previousMessages);
    PfProgressMeter::InstallListener(nullptr);
    PfStatusBarTip::SetDisplay(nullptr);
    // The side file stays: a window that goes without being closed is
    // taken for a crash.
    closeDocument();
}

void KvxMainWindow::createMenus()
{
    QMenu* file = menuBar()->addMenu(QStringLiteral("文件(&F)"));
    file->addAction(QStringLiteral("新建(&N)"), this, [this] {
        if (mayDiscardChanges())
            NewDocument();
    }, QKeySequence::New);
    file->addAction(QStringLiteral("打开(&O)…"), this, &KvxMainWindow::open, QKeySequence::Open);
    m_recent = file->addMenu(QStringLiteral("最近打开(&R)"));
    connect(m_recent, &QMenu::aboutToShow, this, &KvxMainWindow::fillRecentMenu);
    file->addAction(QStringLiteral("保存(&S)"), this, [this] {
        if (m_path.isEmpty())
            saveAs();
        else
            SaveDocument(m_path);
    }, QKeySequence::Save);
    file->addAction(QStringLiteral("另存为(&A)…"), this, &KvxMainWindow::saveAs, QKeySequence::SaveAs);
    file->addSeparator();
    file->addAction(QStringLiteral("导入模型(&I)…"), this, [this] {
        const QString path = QFileDialog::getOpenFileName(this, QStringLiteral("导入模型"), QString(),
                                                          QStringLiteral("建筑模型 (*.ifc *.glb *.gltf *.obj *.stl)"));
        if (!path.isEmpty())
            ImportModel(path);
    });
    file->addAction(QStringLiteral("导入进度计划(&P)…"), this, [this] {
        if (m_document)
            KvxScheduleImportDialog(m_document, this).exec();
    });
    file->addSeparator();
    file->addAction(QStringLiteral("退出(&X)"), this, &QWidget::close, QKeySequence::Quit);

    QMenu* edit = menuBar()->addMenu(QStringLiteral("编辑(&E)"));
    m_undo = edit->addAction(QStringLiteral("撤销(&U)"), this, &KvxMainWindow::Undo, QKeySequence::Undo);
    m_redo = edit->addAction(QStringLiteral("重做(&R)"), this, &KvxMainWindow::Redo, QKeySequence::Redo);

    QMenu* view = menuBar()->addMenu(QStringLiteral("视图(&V)"));
    const struct {
        const char* preset;
        const char* text;
    } sides[] = {{"overview", "全部显示"}, {"top", "俯视"}, {"front", "前视"}, {"south-west", "西南等轴测"},
                 {"north-east", "东北等轴测"}};
    for (const auto& side : sides) {
        const QString preset = QLatin1String(side.preset);
        view->addAction(QString::fromUtf8(side.text), this, [this, preset] { ShowFrom(preset); });
    }
    view->addAction(QStringLiteral("缩放到所选(&S)"), this, &KvxMainWindow::ShowSelected, Qt::Key_F);
    view->addSeparator();
    m_orthographic = view->addAction(QStringLiteral("正交投影"), this, &KvxMainWindow::SetOrthographic);
    m_orthographic->setCheckable(true);
}

QMenu* KvxMainWindow::menuAt(const QString& path)
{
    QWidget* parent = menuBar();
    QMenu* menu = nullptr;
    for (const QString& title : path.split(QLatin1Char('/'))) {
        QMenu* found = nullptr;
        for (QAction* action : parent->actions())
            if (action->menu() && action->menu()->title() == title)
                found = action->menu();
        if (!found)
            found = menu ? menu->addMenu(title) : menuBar()->addMenu(title);
        menu = found;
        parent = menu;
    }
    return menu;
}

void KvxMainWindow::createModuleCommands()
{
    QToolBar* tools = addToolBar(QStringLiteral("动画"));
    tools->setObjectName(QStringLiteral("kvx_toolbar"));
    for (const PfUiCommands::Command& command : PfUiCommands::Commands()) {
        QAction* action = menuAt(command.menu)->addAction(command.text);
        action->setObjectName(command.name);
        if (!command.icon.isEmpty())
            action->setIcon(QIcon(command.icon));
        action->setShortcut(command.shortcut);
        action->setCheckable(command.checkable);
        if (command.onToolBar)
            tools->addAction(action);
        const bool escape = command.shortcut == QKeySequence(Qt::Key_Escape);
        connect(action, &QAction::triggered, this, [this, run = command.run, escape] {
            // Esc with nothing to stop ends the route being picked, or the
            // selection.
            if (!run() && escape)
                ClearSelection();
        });
        PfUiActionManager::GetInstance()->AddAction(command.name, action);
    }
}

QDockWidget* KvxMainWindow::addDock(const QString& id, const QString& title, QWidget* content, Qt::DockWidgetArea area)
{
    auto* dock = new QDockWidget(title, this);
    dock->setObjectName(id);
    dock->setWidget(content);
    addDockWidget(area, dock);
    return dock;
}

void KvxMainWindow::createModelDocks()
{
    m_tree = new KvxModelTree(this);
    m_properties = new KvxElementProperties(this);
    addDock(QStringLiteral("kvx_model_tree"), QStringLiteral("模型树"), m_tree, Qt::LeftDockWidgetArea);
    addDock(QStringLiteral("kvx_element_properties"), QStringLiteral("构件属性"), m_properties,
            Qt::LeftDockWidgetArea);
    connect(m_tree, &KvxModelTree::SelectionPicked, this, &KvxMainWindow::selectFromTree);
    connect(m_tree, &KvxModelTree::ElementActivated, this, [this](PfDbHandle id) {
        selectFromTree({id});
        ShowSelected();
    });
    connect(m_properties, &KvxElementProperties::ElementChanged, this, [this] {
        m_tree->Rebuild();
        if (m_view)
            m_view->GetViewer()->SetDirty();
        RefreshTitle();
    });
}

void KvxMainWindow::createPages()
{
    createModelDocks();
    QDockWidget* bottom = nullptr;
    for (const PfUiPages::Page& page : PfUiPages::Pages()) {
        QDockWidget* dock = addDock(page.id, page.title, page.make(), page.area);
        // The timelines share the bottom as tabs: each needs the width.
        if (page.area == Qt::BottomDockWidgetArea) {
            if (bottom)
                tabifyDockWidget(bottom, dock);
            else
                bottom = dock;
        }
    }
    if (bottom)
        bottom->raise();
}

void KvxMainWindow::createStatusBar()
{
    tipBar = statusBar();
    PfStatusBarTip::SetDisplay(&showTip);
    m_progress = new QProgressBar(this);
    m_progress->setMaximumWidth(320);
    m_progress->hide();
    statusBar()->addPermanentWidget(m_progress);
    m_progressListener = std::make_unique<StatusProgress>(m_progress);
    PfProgressMeter::InstallListener(m_progressListener.get());
}

QDockWidget* KvxMainWindow::Page(const QString& id) const { return findChild<QDockWidget*>(id); }

void KvxMainWindow::display(PfDbDocument* document, const QString& path)
{
    m_document = document;
    m_path = path;
    PfGsModelView* model = PfGsModelView::Attach(document);
    // The view before goes with setCentralWidget; it keeps its viewer alive
    // until it is gone.
    m_view = new PfQtView(model->GetViewer(), this);
    PfQtView* view = m_view;
    m_view->SetPointLocator([model, view](const QPointF& pixel, osg::Vec3d& point) {
        return model->PointAt(pixel, view->size(), point);
    });
    setCentralWidget(m_view);
    // Keys go to the view (Space previews, Esc stops), not to the first
    // field of the docks.
    m_view->setFocus();
    connect(m_view, &PfQtView::clicked, this, &KvxMainWindow::SelectAt);
    connect(m_view, &PfQtView::escapePressed, this, &KvxMainWindow::ClearSelection);
    connect(m_view, &PfQtView::finishPressed, this, [this] { finishRoute(true); });
    m_savedChanges = m_autoSavedChanges = document->GetDatabase()->TransactionManager()->GetChangeCount();
    m_autoSaved = false;
    m_lastAutoSave = QDateTime::currentMSecsSinceEpoch();
    m_orthographic->setChecked(model->GetViewer()->GetCamera()->GetProjectionType() == vpe::CCamera::Orthographic);
    ShowFrom(QStringLiteral("overview"));
    m_tree->SetDatabase(document->GetDatabase());
    m_properties->ShowElements(document->GetDatabase(), {});
    // The pages show the new document.
    ZUpdater::SelectionChanged(document);
    RefreshTitle();
}

void KvxMainWindow::closeDocument()
{
    if (!m_document)
        return;
    finishRoute(false);
    m_tree->SetDatabase(nullptr);
    m_properties->ShowElements(nullptr, {});
    m_view = nullptr;
    PfDocManagerPtr()->CloseDocument(m_document);
    m_document = nullptr;
}

void KvxMainWindow::replaceDocument(PfDbDocument* opened, const QString& path)
{
    // The manager made the opened document current; the one before goes.
    PfDbDocument* before = m_document;
    m_document = nullptr;
    if (before)
        PfDocManagerPtr()->CloseDocument(before);
    display(opened, path);
}

void KvxMainWindow::NewDocument()
{
    dropAutoSave();
    closeDocument();
    display(PfDocManagerPtr()->NewDocument(), QString());
}

bool KvxMainWindow::OpenDocument(const QString& path)
{
    QString error;
    PfDbDocument* opened = PfDocManagerPtr()->OpenDocument(path, nullptr, &error);
    if (!opened) {
        QMessageBox::warning(this, QStringLiteral("打开文件"), error);
        return false;
    }
    dropAutoSave();
    replaceDocument(opened, QFileInfo(path).absoluteFilePath());
    rememberRecent(m_path);
    offerRecovery(m_path);
    return true;
}

bool KvxMainWindow::SaveDocument(const QString& path, QString* error)
{
    QString reason;
    if (!m_document || !m_document->Save(path, &reason)) {
        if (error)
            *error = reason;
        else
            QMessageBox::warning(this, QStringLiteral("保存文件"), reason);
        return false;
    }
    dropAutoSave();
    m_path = QFileInfo(path).absoluteFilePath();
    m_savedChanges = m_autoSavedChanges = m_document->GetDatabase()->TransactionManager()->GetChangeCount();
    rememberRecent(m_path);
    RefreshTitle();
    return true;
}

bool KvxMainWindow::IsModified() const
{
    return m_document && m_document->GetDatabase()->TransactionManager()->GetChangeCount() != m_savedChanges;
}

void KvxMainWindow::RefreshTitle()
{
    const QString name = m_path.isEmpty() ? QStringLiteral("未命名") : QFileInfo(m_path).fileName();
    setWindowTitle(QStringLiteral("%1%2 — KVX").arg(name, IsModified() ? QStringLiteral("*") : QString()));
    PfDbTransactionManager* steps = m_document ? m_document->GetDatabase()->TransactionManager() : nullptr;
    m_undo->setEnabled(steps && steps->CanUndo());
    m_redo->setEnabled(steps && steps->CanRedo());
    // "撤销 添加动画(&U)": the step the command would take back.
    const auto named = [](const QString& verb, char key, const QString& step) {
        return (step.isEmpty() ? verb : verb + QLatin1Char(' ') + step) + QStringLiteral("(&%1)").arg(QLatin1Char(key));
    };
    m_undo->setText(named(QStringLiteral("撤销"), 'U', steps ? steps->UndoName() : QString()));
    m_redo->setText(named(QStringLiteral("重做"), 'R', steps ? steps->RedoName() : QString()));
}

void KvxMainWindow::Undo()
{
    if (m_document)
        m_document->GetDatabase()->TransactionManager()->Undo();
    if (m_view)
        m_view->GetViewer()->SetDirty();
    m_properties->Refresh();
    RefreshTitle();
}

void KvxMainWindow::Redo()
{
    if (m_document)
        m_document->GetDatabase()->TransactionManager()->Redo();
    if (m_view)
        m_view->GetViewer()->SetDirty();
    m_properties->Refresh();
    RefreshTitle();
}

void KvxMainWindow::SelectAt(const QPoint& pixel, Qt::KeyboardModifiers modifiers)
{
    auto* model = m_document ? dynamic_cast<PfGsModelView*>(m_document->GetActiveView()) : nullptr;
    if (!model || !m_view)
        return;
    if (m_route) {
        osg::Vec3d point;
        if (model->PointAt(pixel, m_view->size(), point))
            m_route->push_back(point);
        QPolygonF line;
        for (const osg::Vec3d& each : *m_route)
            line << m_view->PixelOf(each);
        m_view->SetOverlay(line);
        return;
    }
    const PfDbHandle hit = model->PickAt(pixel, m_view->size());
    PfDbSelectionSet& selection = m_document->GetSelectionSet();
    if (!(modifiers & Qt::ControlModifier))
        selection.Clear();
    if (hit != kPfDbNullHandle && !selection.Add(hit))
        selection.Remove(hit);
    selectionChanged();
}

void KvxMainWindow::ClearSelection()
{
    if (m_route) {
        finishRoute(false);
        return;
    }
    if (!m_document || m_document->GetSelectionSet().IsEmpty())
        return;
    m_document->GetSelectionSet().Clear();
    selectionChanged();
}

void KvxMainWindow::selectionChanged()
{
    const std::vector<PfDbHandle>& ids = m_document->GetSelectionSet().Ids();
    if (auto* model = dynamic_cast<PfGsModelView*>(m_document->GetActiveView()))
        model->SetHighlighted(ids);
    if (!m_pickingInTree)
        m_tree->ShowSelection(ids);
    m_properties->ShowElements(m_document->GetDatabase(), ids);
    ZUpdater::SelectionChanged(m_document);
}

void KvxMainWindow::selectFromTree(const std::vector<PfDbHandle>& ids)
{
    if (!m_document)
        return;
    PfDbSelectionSet& selection = m_document->GetSelectionSet();
    selection.Clear();
    for (PfDbHandle id : ids)
        selection.Add(id);
    // The tree keeps the rows the user selected (a storey row stays one row).
    m_pickingInTree = true;
    selectionChanged();
    m_pickingInTree = false;
}

void KvxMainWindow::ShowSelected()
{
    auto* model = m_document ? dynamic_cast<PfGsModelView*>(m_document->GetActiveView()) : nullptr;
    if (!model || !m_view)
        return;
    std::vector<osg::Vec3d> corners;
    for (PfDbHandle id : m_document->GetSelectionSet().Ids())
        if (vpe::CSceneNode* node = model->GetSceneNode(id)) {
            const std::vector<osg::Vec3d> own = vpe::CViewFraming::Corners(node);
            corners.insert(corners.end(), own.begin(), own.end());
        }
    frame(corners, QStringLiteral("south-west"));
}

bool KvxMainWindow::pickRoute(const QString& prompt, std::vector<osg::Vec3d>& points)
{
    if (m_route || !m_view)
        return false;
    std::vector<osg::Vec3d> route;
    QEventLoop loop;
    const QPointer<KvxMainWindow> alive(this);
    m_route = &route;
    m_routeLoop = &loop;
    m_routeAccepted = false;
    PfStatusBarTip::Show(prompt);
    m_view->setFocus();
    loop.exec();
    if (!alive)
        return false;
    m_route = nullptr;
    m_routeLoop = nullptr;
    PfStatusBarTip::Clear();
    if (m_view)
        m_view->SetOverlay({});
    if (!m_routeAccepted)
        return false;
    points = route;
    return true;
}

void KvxMainWindow::finishRoute(bool accepted)
{
    if (!m_routeLoop)
        return;
    m_routeAccepted = accepted;
    m_routeLoop->quit();
}

void KvxMainWindow::ShowFrom(const QString& preset)
{
    if (m_view)
        frame(vpe::CViewFraming::Corners(m_view->GetViewer()->GetScene()->GetRootNode()), preset);
}

void KvxMainWindow::frame(const std::vector<osg::Vec3d>& points, const QString& preset)
{
    if (!m_view)
        return;
    vpe::CViewer* viewer = m_view->GetViewer();
    vpe::CRefPtr<vpe::CCamera> camera = viewer->GetCamera()->Clone();
    const double aspect = double(qMax(1, m_view->width())) / double(qMax(1, m_view->height()));
    osg::Vec3d eye, target;
    if (!vpe::CViewFraming::Frame(points, preset, aspect, camera->GetFieldOfView(), eye, target))
        return;
    camera->SetLookAt(eye, target);
    camera->SetAspectRatio(float(aspect));
    // The framing is a perspective one: an orthographic camera shows the
    // same extent at the target.
    if (camera->GetProjectionType() == vpe::CCamera::Orthographic) {
        camera->SetProjectionType(vpe::CCamera::Perspective);
        PfViewNavigator::SetProjection(*camera, vpe::CCamera::Orthographic, (target - eye).length());
    }
    viewer->SetCamera(*camera);
    viewer->SetDirty();
}

void KvxMainWindow::SetOrthographic(bool orthographic)
{
    if (!m_view)
        return;
    vpe::CViewer* viewer = m_view->GetViewer();
    vpe::CRefPtr<vpe::CCamera> camera = viewer->GetCamera()->Clone();
    // The picture keeps its scale at the model's middle.
    const osg::Vec3d middle = viewer->GetScene()->GetRootNode()->getBound().center();
    osg::Vec3d look(camera->GetDirection());
    look.normalize();
    const double focus = qMax(1.0, (middle - osg::Vec3d(camera->GetPosition())) * look);
    PfViewNavigator::SetProjection(
        *camera, orthographic ? vpe::CCamera::Orthographic : vpe::CCamera::Perspective, focus);
    viewer->SetCamera(*camera);
    viewer->SetDirty();
    m_orthographic->setChecked(orthographic);
}

bool KvxMainWindow::ImportModel(const QString& path)
{
    if (!m_document)
        return false;
    PfIsolatedModelReader reader(PfIsolatedModelReader::DefaultProgram());
    // The window keeps painting while the model is read; the dialog is
    // modal, so nothing else can change the document meanwhile.
    QProgressDialog progress(QStringLiteral("正在读取 %1…").arg(QFileInfo(path).fileName()), QStringLiteral("取消"),
                             0, 0, this);
    progress.setWindowTitle(QStringLiteral("导入模型"));
    progress.setWindowModality(Qt::WindowModal);
    progress.setMinimumDuration(kImportDialogDelayMs);
    reader.SetWaiting([&progress](int done, int found) {
        progress.setMaximum(found);
        progress.setValue(std::min(done, found));
        QCoreApplication::processEvents();
        return !progress.wasCanceled();
    });
    PfModelImport::Report report;
    QString error;
    const bool imported = PfModelImport::Import(m_document->GetDatabase(), reader, path, report, &error);
    progress.reset();
    if (!imported && error == PfIsolatedModelReader::kCancelled) {
        statusBar()->showMessage(QStringLiteral("已取消导入 %1").arg(QFileInfo(path).fileName()));
        return false;
    }
    if (!imported) {
        QMessageBox::warning(this, QStringLiteral("导入模型"), QStringLiteral("未能导入模型：%1").arg(error));
        return false;
    }
    statusBar()->showMessage(QStringLiteral("已导入 %1：%2").arg(QFileInfo(path).fileName(), report.Text()));
    ShowFrom(QStringLiteral("overview"));
    RefreshTitle();
    return true;
}

void KvxMainWindow::open()
{
    if (!mayDiscardChanges())
        return;
    const QString path = QFileDialog::getOpenFileName(this, QStringLiteral("打开"), QString(),
                                                      QStringLiteral("KVX 文档 (*.kvx)"));
    if (!path.isEmpty())
        OpenDocument(path);
}

void KvxMainWindow::saveAs()
{
    QString path = QFileDialog::getSaveFileName(this, QStringLiteral("另存为"), m_path,
                                                QStringLiteral("KVX 文档 (*.kvx)"));
    if (path.isEmpty())
        return;
    if (QFileInfo(path).suffix().isEmpty())
        path += QStringLiteral(".kvx");
    SaveDocument(path);
}

bool KvxMainWindow::mayDiscardChanges()
{
    if (!IsModified())
        return true;
    const auto answer =
        QMessageBox::question(this, QStringLiteral("KVX"), QStringLiteral("文档已修改，是否保存？"),
                              QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, QMessageBox::Save);
    if (answer == QMessageBox::Cancel)
        return false;
    if (answer == QMessageBox::Save) {
        if (m_path.isEmpty())
            saveAs();
        else
            SaveDocument(m_path);
        return !IsModified();
    }
    return true;
}

// ---- recent files ------------------------------------------------------------

QStringList KvxMainWindow::RecentFiles() const { return QSettings().value(kRecentKey).toStringList(); }

void KvxMainWindow::rememberRecent(const QString& path)
{
    QStringList recent = RecentFiles();
    recent.removeAll(path);
    recent.prepend(path);
    while (recent.size() > kRecentCount)
        recent.removeLast();
    QSettings().setValue(kRecentKey, recent);
}

void KvxMainWindow::fillRecentMenu()
{
    m_recent->clear();
    const QStringList recent = RecentFiles();
    for (int i = 0; i < recent.size(); ++i) {
        const QString path = recent.at(i);
        QAction* action = m_recent->addAction(QStringLiteral("&%1 %2").arg(i + 1).arg(QFileInfo(path).fileName()));
        action->setToolTip(path);
        connect(action, &QAction::triggered, this, [this, path] {
            if (!QFileInfo::exists(path)) {
                QStringList kept = RecentFiles();
                kept.removeAll(path);
                QSettings().setValue(kRecentKey, kept);
                QMessageBox::warning(this, QStringLiteral("打开文件"), QStringLiteral("文件已不存在：%1").arg(path));
                return;
            }
            if (mayDiscardChanges())
                OpenDocument(path);
        });
    }
    m_recent->setEnabled(!recent.isEmpty());
}

// ---- auto-save ---------------------------------------------------------------

QString KvxMainWindow::AutoSavePath() const
{
    if (!m_path.isEmpty()) {
        const QFileInfo file(m_path);
        return file.dir().filePath(file.completeBaseName() + QStringLiteral(".autosave.kvx"));
    }
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    return QDir(folder).filePath(QStringLiteral("untitled.autosave.kvx"));
}

void KvxMainWindow::autoSaveTick()
{
    if (!m_document || !PfAutoSave::IsEnabled() || m_document->GetAutoSaveMinutes() <= 0)
        return;
    const qint64 due = m_lastAutoSave + qint64(m_document->GetAutoSaveMinutes()) * 60 * 1000;
    if (QDateTime::currentMSecsSinceEpoch() >= due)
        AutoSaveNow();
}

bool KvxMainWindow::AutoSaveNow()
{
    if (!m_document)
        return false;
    m_lastAutoSave = QDateTime::currentMSecsSinceEpoch();
    const unsigned long long changes = m_document->GetDatabase()->TransactionManager()->GetChangeCount();
    if (!IsModified() || changes == m_autoSavedChanges)
        return true;
    const QString path = AutoSavePath();
    QDir().mkpath(QFileInfo(path).absolutePath());
    QString error;
    if (!PfDbDocumentFile::Write(*m_document->GetDatabase(), path, &error)) {
        statusBar()->showMessage(QStringLiteral("自动保存失败：%1").arg(error));
        return false;
    }
    m_autoSavedChanges = changes;
    m_autoSaved = true;
    statusBar()->showMessage(QStringLiteral("已自动保存到 %1").arg(QDir::toNativeSeparators(path)), 5000);
    return true;
}

void KvxMainWindow::dropAutoSave()
{
    // Only a side file of this window's own: another may be a crash's,
    // still to be offered.
    if (m_document && m_autoSaved)
        QFile::remove(AutoSavePath());
    m_autoSaved = false;
}

bool KvxMainWindow::recover(const QString& autoSaved, const QString& path)
{
    QString error;
    PfDbDocument* recovered = PfDocManagerPtr()->OpenDocument(autoSaved, nullptr, &error);
    if (!recovered) {
        QMessageBox::warning(this, QStringLiteral("恢复"), error);
        return false;
    }
    replaceDocument(recovered, path);
    // Unsaved changes to the document, until it is saved.
    m_savedChanges = kNeverSaved;
    RefreshTitle();
    return true;
}

void KvxMainWindow::offerRecovery(const QString& path)
{
    const QString autoSaved = AutoSavePath();
    const QFileInfo aside(autoSaved);
    if (!aside.exists())
        return;
    if (!path.isEmpty() && aside.lastModified() < QFileInfo(path).lastModified()) {
        // Older than the document: saved since.
        QFile::remove(autoSaved);
        return;
    }
    const QString name = path.isEmpty() ? QStringLiteral("未命名文档") : QFileInfo(path).fileName();
    const auto answer = QMessageBox::question(
        this, QStringLiteral("恢复"),
        QStringLiteral("%1 有未保存的修改，于 %2 自动保存。是否恢复？")
            .arg(name, aside.lastModified().toString(QStringLiteral("yyyy-MM-dd HH:mm"))),
        QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes);
    if (answer == QMessageBox::Yes && recover(autoSaved, path)) {
        // Kept until the recovered changes are saved or dropped.
        m_autoSavedChanges = m_document->GetDatabase()->TransactionManager()->GetChangeCount();
        m_autoSaved = true;
        return;
    }
    QFile::remove(autoSaved);
}

void KvxMainWindow::OfferUnsavedRecovery()
{
    if (m_path.isEmpty() && !IsModified())
        offerRecovery(QString());
}

// ---- window ------------------------------------------------------------------

void KvxMainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.size() == 1 && isDocumentUrl(urls.first()))
        event->acceptProposedAction();
}

void KvxMainWindow::dropEvent(QDropEvent* event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.size() != 1 || !isDocumentUrl(urls.first()))
        return;
    event->acceptProposedAction();
    const QString path = urls.first().toLocalFile();
    // After the drop has finished: the prompts are modal.
    QTimer::singleShot(0, this, [this, path] {
        if (mayDiscardChanges())
            OpenDocument(path);
    });
}

void KvxMainWindow::closeEvent(QCloseEvent* event)
{
    if (!mayDiscardChanges()) {
        event->ignore();
        return;
    }
    finishRoute(false);
    dropAutoSave();
    QSettings settings;
    settings.setValue(kGeometryKey, saveGeometry());
    settings.setValue(kLayoutKey, saveState());
    event->accept();
}
