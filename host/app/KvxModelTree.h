#pragma once

#include "host/db/PfDbHandle.h"

#include <QWidget>

#include <memory>
#include <unordered_map>
#include <vector>

class PfDbDatabase;
class PfDbElement;
class PfDbObject;
class QLineEdit;
class QModelIndex;
class QSortFilterProxyModel;
class QStandardItem;
class QStandardItemModel;
class QTreeView;

// The model's elements as a tree: storeys from the lowest up (elements of no
// storey last), in each the element types, in each the elements by name. A
// search field keeps the rows whose element name, type, storey or GlobalId
// contains the text. Selecting rows picks their elements (a storey or a type
// row picks all the elements under it that the search shows); the tree
// follows the selection made elsewhere without answering it back.
class KvxModelTree : public QWidget {
    Q_OBJECT
public:
    explicit KvxModelTree(QWidget* parent = nullptr);
    ~KvxModelTree() override;

    // Lists the database's elements and keeps following its additions and
    // erasures; null empties the tree.
    void SetDatabase(PfDbDatabase* database);
    // Lists the elements again (after a rename), keeping what was expanded.
    void Rebuild();
    // Selects the rows of these elements and shows the first.
    void ShowSelection(const std::vector<PfDbHandle>& ids);
    void SetSearchText(const QString& text);

    QTreeView* Tree() const { return m_tree; }
    // The element of a row of the tree's (filtered) model; null handle for
    // a group row.
    PfDbHandle HandleAt(const QModelIndex& index) const;
    // The row of an element in the tree's (filtered) model.
    QModelIndex IndexOf(PfDbHandle id) const;

signals:
    void SelectionPicked(const std::vector<PfDbHandle>& ids);
    // A double click on an element's row.
    void ElementActivated(PfDbHandle id);

private:
    class Follower;

    void rebuildSoon();
    void fill();
    void pickSelected();
    void collect(const QModelIndex& index, std::vector<PfDbHandle>& ids) const;
    QStringList expandedGroups() const;
    void expandGroups(const QStringList& keys);

    PfDbDatabase* m_database = nullptr;
    std::unique_ptr<Follower> m_follower;
    QLineEdit* m_search = nullptr;
    QTreeView* m_tree = nullptr;
    QStandardItemModel* m_model = nullptr;
    QSortFilterProxyModel* m_filter = nullptr;
    std::unordered_map<PfDbHandle, QStandardItem*> m_items;
    bool m_rebuildPending = false;
    bool m_showing = false;
};
