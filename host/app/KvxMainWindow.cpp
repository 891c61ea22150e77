#include "KvxMainWindow.h"

#include "PfQtView.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/db/PfDocManager.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfUiPages.h"
#include "host/model/ZUpdater.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CCamera.h"
#include "host/vpe/scene/CViewFraming.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QSettings>
#include <QTimer>

namespace {
const QString kLayoutKey = QStringLiteral("mainWindow/state");
const QString kGeometryKey = QStringLiteral("mainWindow/geometry");
} // namespace

KvxMainWindow::KvxMainWindow(QWidget* parent) : QMainWindow(parent)
{
    resize(1280, 800);
    createMenus();
    createPages();
    const QSettings settings;
    restoreGeometry(settings.value(kGeometryKey).toByteArray());
    restoreState(settings.value(kLayoutKey).toByteArray());
    // The title follows edits, undo and redo without each telling it.
    auto* watch = new QTimer(this);
    connect(watch, &QTimer::timeout, this, &KvxMainWindow::RefreshTitle);
    watch->start(250);
    NewDocument();
}

KvxMainWindow::~KvxMainWindow() { closeDocument(); }

void KvxMainWindow::createMenus()
{
    QMenu* file = menuBar()->addMenu(QStringLiteral("文件(&F)"));
    file->addAction(QStringLiteral("新建(&N)"), this, [this] {
        if (mayDiscardChanges())
            NewDocument();
    }, QKeySequence::New);
    file->addAction(QStringLiteral("打开(&O)…"), this, &KvxMainWindow::open, QKeySequence::Open);
    file->addAction(QStringLiteral("保存(&S)"), this, [this] {
        if (m_path.isEmpty())
            saveAs();
        else
            SaveDocument(m_path);
    }, QKeySequence::Save);
    file->addAction(QStringLiteral("另存为(&A)…"), this, &KvxMainWindow::saveAs, QKeySequence::SaveAs);
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
}

void KvxMainWindow::createPages()
{
    for (const PfUiPages::Page& page : PfUiPages::Pages()) {
        auto* dock = new QDockWidget(page.title, this);
        dock->setObjectName(page.id);
        dock->setWidget(page.make());
        addDockWidget(page.area, dock);
    }
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
    setCentralWidget(m_view);
    connect(m_view, &PfQtView::clicked, this, &KvxMainWindow::SelectAt);
    connect(m_view, &PfQtView::escapePressed, this, &KvxMainWindow::ClearSelection);
    m_savedChanges = document->GetDatabase()->TransactionManager()->GetChangeCount();
    ShowFrom(QStringLiteral("overview"));
    // The pages show the new document.
    ZUpdater::SelectionChanged(document);
    RefreshTitle();
}

void KvxMainWindow::closeDocument()
{
    if (!m_document)
        return;
    m_view = nullptr;
    PfDocManagerPtr()->CloseDocument(m_document);
    m_document = nullptr;
}

void KvxMainWindow::NewDocument()
{
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
    // The manager made the opened document current; the one before goes.
    PfDbDocument* before = m_document;
    m_document = nullptr;
    if (before)
        PfDocManagerPtr()->CloseDocument(before);
    display(opened, path);
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
    m_path = path;
    m_savedChanges = m_document->GetDatabase()->TransactionManager()->GetChangeCount();
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
}

void KvxMainWindow::Undo()
{
    if (m_document)
        m_document->GetDatabase()->TransactionManager()->Undo();
    if (m_view)
        m_view->GetViewer()->SetDirty();
    RefreshTitle();
}

void KvxMainWindow::Redo()
{
    if (m_document)
        m_document->GetDatabase()->TransactionManager()->Redo();
    if (m_view)
        m_view->GetViewer()->SetDirty();
    RefreshTitle();
}

void KvxMainWindow::SelectAt(const QPoint& pixel, Qt::KeyboardModifiers modifiers)
{
    auto* model = m_document ? dynamic_cast<PfGsModelView*>(m_document->GetActiveView()) : nullptr;
    if (!model || !m_view)
        return;
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
    if (!m_document || m_document->GetSelectionSet().IsEmpty())
        return;
    m_document->GetSelectionSet().Clear();
    selectionChanged();
}

void KvxMainWindow::selectionChanged()
{
    if (auto* model = dynamic_cast<PfGsModelView*>(m_document->GetActiveView()))
        model->SetHighlighted(m_document->GetSelectionSet().Ids());
    ZUpdater::SelectionChanged(m_document);
}

void KvxMainWindow::ShowFrom(const QString& preset)
{
    if (!m_view)
        return;
    vpe::CViewer* viewer = m_view->GetViewer();
    vpe::CRefPtr<vpe::CCamera> camera = viewer->GetCamera()->Clone();
    const double aspect = double(qMax(1, m_view->width())) / double(qMax(1, m_view->height()));
    osg::Vec3d eye, target;
    if (!vpe::CViewFraming::Frame(vpe::CViewFraming::Corners(viewer->GetScene()->GetRootNode()), preset, aspect,
                                  camera->GetFieldOfView(), eye, target))
        return;
    camera->SetLookAt(eye, target);
    camera->SetAspectRatio(float(aspect));
    viewer->SetCamera(*camera);
    viewer->SetDirty();
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

void KvxMainWindow::closeEvent(QCloseEvent* event)
{
    if (!mayDiscardChanges()) {
        event->ignore();
        return;
    }
    QSettings settings;
    settings.setValue(kGeometryKey, saveGeometry());
    settings.setValue(kLayoutKey, saveState());
    event->accept();
}
