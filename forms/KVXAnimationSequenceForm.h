#pragma once

#include <QWidget>

#include <memory>

class KVXAnimationModel;
class KVXSelectedChangeForAnimateList;
class QModelIndex;
class QTableView;

// The list of schedule animations ("动画序列"): those of the elements
// selected in the drawing, or of the whole document when nothing is
// selected. Clicking a row shows it in the property form; the context menu
// deletes it. The routes of listed path animations are shown and selected.
class KVXAnimationSequenceForm : public QWidget {
    Q_OBJECT
public:
    static KVXAnimationSequenceForm* getInstance();
    static void freeInstance();

    // Reloads the list (and shows the routes); from then on the form follows
    // the selection.
    void updateData();
    // The same, only while the form follows the selection.
    void updateDataFromSelected();
    void setResponseSelectedChange(bool respond) { m_respondToSelection = respond; }

    KVXAnimationModel* model() const { return m_model.get(); }
    QTableView* tableView() const { return m_view; }

public slots:
    void onClicked(const QModelIndex& index);
    void onRightMenu(const QPoint& position);
    void onDelete(int row);
    void onDataChangedSignal();

private:
    KVXAnimationSequenceForm();
    ~KVXAnimationSequenceForm() override;
    void initUI();
    // The list taken again; conflicts checked again.
    void reload();
    void redraw();
    void refresh();
    void showRouteObjects();
    void routeObjectAddToSelection(qint64 handle);

    static KVXAnimationSequenceForm* m_pInstance;

    QTableView* m_view = nullptr;
    std::unique_ptr<KVXAnimationModel> m_model;
    std::unique_ptr<KVXSelectedChangeForAnimateList> m_selectionObserver;
    bool m_respondToSelection = false;
};
