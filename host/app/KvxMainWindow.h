#pragma once

#include <QMainWindow>
#include <QString>

class PfDbDocument;
class PfQtView;
class QAction;
class QDockWidget;

// The desktop application's main window: the document's 3D view in the
// centre, the pages the module offers as docks around it (the user moves
// and closes them; the layout is kept between runs), and the menus for
// documents (new, open, save, save as), editing (undo, redo) and the view
// (fit all, the named sides). The title names the file and marks unsaved
// changes.
class KvxMainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit KvxMainWindow(QWidget* parent = nullptr);
    ~KvxMainWindow() override;

    // Opens a document into the window (the one shown before is closed);
    // false with a message box saying why.
    bool OpenDocument(const QString& path);
    void NewDocument();
    // False with the reason when it cannot be written.
    bool SaveDocument(const QString& path, QString* error = nullptr);
    PfDbDocument* Document() const { return m_document; }
    PfQtView* View() const { return m_view; }
    // Whether the document changed since it was opened or saved.
    bool IsModified() const;
    QDockWidget* Page(const QString& id) const;
    QAction* UndoAction() const { return m_undo; }
    QAction* RedoAction() const { return m_redo; }

public slots:
    void Undo();
    void Redo();
    // The camera on one of the named sides, the whole model in view.
    void ShowFrom(const QString& preset);
    void RefreshTitle();
    // The element under a pixel of the view selected (added with Ctrl,
    // toggled if it is selected already); nothing there clears.
    void SelectAt(const QPoint& pixel, Qt::KeyboardModifiers modifiers);
    void ClearSelection();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void createMenus();
    void createPages();
    void display(PfDbDocument* document, const QString& path);
    void closeDocument();
    void open();
    void saveAs();
    // Asks before changes would be lost; false when the user keeps them.
    bool mayDiscardChanges();
    // Shows the selection highlighted and tells the host's observers.
    void selectionChanged();

    PfDbDocument* m_document = nullptr;
    PfQtView* m_view = nullptr;
    QString m_path;
    unsigned long long m_savedChanges = 0;
    QAction* m_undo = nullptr;
    QAction* m_redo = nullptr;
};
