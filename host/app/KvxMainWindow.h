#pragma once

#include <QMainWindow>
#include <QString>

#include <memory>
#include <vector>

#include "host/db/PfDbHandle.h"

class KvxElementProperties;
class KvxModelTree;
class PfDbDocument;
class PfEdInformationSink;
class PfQtView;
class QAction;
class QDockWidget;
class QEventLoop;
class QMenu;
class QProgressBar;
namespace osg {
class Vec3d;
}

// The desktop application's main window: the document's 3D view in the
// centre, the pages the module offers as docks around it (the user moves
// and closes them; the layout is kept between runs), the module's commands
// in menus and on the toolbar, and the menus for documents (new, open,
// recent, save, save as), editing (undo, redo, named after the step) and the
// view (fit all, the named sides, the projection). The title names the file
// and marks unsaved changes; changes are saved aside every few minutes and
// offered back when the document is opened after a crash.
class KvxMainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit KvxMainWindow(QWidget* parent = nullptr);
    ~KvxMainWindow() override;

    // Opens a document into the window (the one shown before is closed);
    // false with a message box saying why. A newer auto-saved copy of it is
    // offered back.
    bool OpenDocument(const QString& path);
    void NewDocument();
    // Adds a building model's elements to the document as one undoable
    // step; false (told in a message box) when the file cannot be read.
    bool ImportModel(const QString& path);
    // False with the reason when it cannot be written.
    bool SaveDocument(const QString& path, QString* error = nullptr);
    PfDbDocument* Document() const { return m_document; }
    PfQtView* View() const { return m_view; }
    // Whether the document changed since it was opened or saved.
    bool IsModified() const;
    QDockWidget* Page(const QString& id) const;
    KvxModelTree* ModelTree() const { return m_tree; }
    KvxElementProperties* Properties() const { return m_properties; }
    QAction* UndoAction() const { return m_undo; }
    QAction* RedoAction() const { return m_redo; }
    // The files opened or saved last, the latest first.
    QStringList RecentFiles() const;
    // The side file the document's changes are saved aside to.
    QString AutoSavePath() const;
    // Offers back the auto-saved copy of a document never saved, if any.
    void OfferUnsavedRecovery();

public slots:
    void Undo();
    void Redo();
    // The camera on one of the named sides, the whole model in view.
    void ShowFrom(const QString& preset);
    // The camera on the selected elements, from the south-west.
    void ShowSelected();
    void SetOrthographic(bool orthographic);
    void RefreshTitle();
    // The element under a pixel of the view selected (added with Ctrl,
    // toggled if it is selected already); nothing there clears. While a
    // route is picked, the pixel's point is added to it instead.
    void SelectAt(const QPoint& pixel, Qt::KeyboardModifiers modifiers);
    void ClearSelection();
    // Saves the changes aside when there are some not saved aside yet;
    // false when that failed (said in the status bar).
    bool AutoSaveNow();

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    class StatusProgress;

    void createMenus();
    void createModuleCommands();
    void createPages();
    void createStatusBar();
    QMenu* menuAt(const QString& path);
    QDockWidget* addDock(const QString& id, const QString& title, QWidget* content, Qt::DockWidgetArea area);
    void createModelDocks();
    void frame(const std::vector<osg::Vec3d>& points, const QString& preset);
    void selectFromTree(const std::vector<PfDbHandle>& ids);
    void display(PfDbDocument* document, const QString& path);
    // Shows a document just opened in place of the one shown.
    void replaceDocument(PfDbDocument* opened, const QString& path);
    void closeDocument();
    void open();
    void saveAs();
    // Asks before changes would be lost; false when the user keeps them.
    bool mayDiscardChanges();
    // Shows the selection highlighted and tells the host's observers.
    void selectionChanged();
    void rememberRecent(const QString& path);
    void fillRecentMenu();
    void autoSaveTick();
    void dropAutoSave();
    // Opens the auto-saved copy in place of the document, as unsaved
    // changes to it.
    bool recover(const QString& autoSaved, const QString& path);
    void offerRecovery(const QString& path);
    bool pickRoute(const QString& prompt, std::vector<osg::Vec3d>& points);
    void finishRoute(bool accepted);

    PfDbDocument* m_document = nullptr;
    PfQtView* m_view = nullptr;
    KvxModelTree* m_tree = nullptr;
    KvxElementProperties* m_properties = nullptr;
    bool m_pickingInTree = false;
    QString m_path;
    unsigned long long m_savedChanges = 0;
    unsigned long long m_autoSavedChanges = 0;
    qint64 m_lastAutoSave = 0;
    // Whether the side file is this window's (written or recovered here).
    bool m_autoSaved = false;
    QAction* m_undo = nullptr;
    QAction* m_redo = nullptr;
    QAction* m_orthographic = nullptr;
    QMenu* m_recent = nullptr;
    QProgressBar* m_progress = nullptr;
    std::unique_ptr<StatusProgress> m_progressListener;
    std::unique_ptr<PfEdInformationSink> m_messages;
    PfEdInformationSink* m_previousMessages = nullptr;
    // While a route is picked: its points and the loop that waits for it.
    std::vector<osg::Vec3d>* m_route = nullptr;
    QEventLoop* m_routeLoop = nullptr;
    bool m_routeAccepted = false;
};
