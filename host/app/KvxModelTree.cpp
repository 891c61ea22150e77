#include "KvxModelTree.h"

#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDatabaseReactor.h"
#include "host/db/PfDbElement.h"
#include "host/db/PfDbObjContainer.h"
#include "host/model/PfModelElements.h"

#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>
#include <limits>
#include <map>

namespace {

constexpr int kHandleRole = Qt::UserRole + 1;
// What the search looks in: the name, the type, the storey and the GlobalId.
constexpr int kSearchRole = Qt::UserRole + 2;
// A group row's key, to keep it expanded over a rebuild.
constexpr int kGroupRole = Qt::UserRole + 3;

const QString kNoStorey = QStringLiteral("无楼层");

struct Storey {
    double elevation = std::numeric_limits<double>::infinity();
    std::map<QString, std::vector<const PfDbElement*>> kinds;
};

// The end of the run of digits that starts at i.
int digitsEnd(const QString& text, int i)
{
    while (i < text.size() && text[i].isDigit())
        ++i;
    return i;
}

// "墙 9" before "墙 10", "9层" before "10层": runs of digits compare as
// numbers, the rest character by character.
bool naturalLess(const QString& a, const QString& b)
{
    int i = 0, j = 0;
    while (i < a.size() && j < b.size()) {
        if (a[i].isDigit() && b[j].isDigit()) {
            const int endA = digitsEnd(a, i), endB = digitsEnd(b, j);
            while (i < endA - 1 && a[i] == QLatin1Char('0'))
                ++i;
            while (j < endB - 1 && b[j] == QLatin1Char('0'))
                ++j;
            // Without leading zeros, the longer run is the larger number.
            if (endA - i != endB - j)
                return endA - i < endB - j;
            const int order = a.midRef(i, endA - i).compare(b.midRef(j, endB - j));
            if (order != 0)
                return order < 0;
            i = endA;
            j = endB;
        } else if (a[i] != b[j]) {
            return QString::localeAwareCompare(QString(a[i]), QString(b[j])) < 0;
        } else {
            ++i;
            ++j;
        }
    }
    return a.size() - i < b.size() - j;
}

QStandardItem* groupItem(const QString& text, std::size_t count, const QString& key)
{
    auto* item = new QStandardItem(QStringLiteral("%1 (%2)").arg(text).arg(count));
    item->setEditable(false);
    item->setData(key, kGroupRole);
    item->setData(text, kSearchRole);
    return item;
}

QStandardItem* elementItem(const PfDbElement* element, const QString& kind, const QString& storey)
{
    const QString name = QString::fromStdWString(element->GetName());
    auto* item = new QStandardItem(name.isEmpty() ? QStringLiteral("(未命名)") : name);
    item->setEditable(false);
    item->setData(static_cast<qulonglong>(element->GetHandle()), kHandleRole);
    item->setData(QStringList{name, kind, storey, element->Property(PfDbElement::kGlobalIdProperty)}.join(QChar('\n')),
                  kSearchRole);
    return item;
}

} // namespace

// Rebuilds the tree when elements come or go, by edit, undo or redo.
class KvxModelTree::Follower : public PfDbDatabaseReactor {
public:
    explicit Follower(KvxModelTree* tree) : m_tree(tree) {}
    void objectAppended(const PfDbDatabase*, const PfDbObject* object) override { touched(object); }
    void objectErased(const PfDbDatabase*, const PfDbObject* object, bool) override { touched(object); }
    void objectModified(const PfDbDatabase*, const PfDbObject* object) override { touched(object); }
    // The database forgets its reactors itself after this.
    void goodbye(const PfDbDatabase*) override
    {
        m_tree->m_database = nullptr;
        m_tree->fill();
    }

private:
    void touched(const PfDbObject* object)
    {
        if (PfModelElements::Of(object))
            m_tree->rebuildSoon();
    }
    KvxModelTree* m_tree;
};

KvxModelTree::KvxModelTree(QWidget* parent)
    : QWidget(parent), m_follower(std::make_unique<Follower>(this)), m_search(new QLineEdit(this)),
      m_tree(new QTreeView(this)), m_model(new QStandardItemModel(this)), m_filter(new QSortFilterProxyModel(this))
{
    m_search->setPlaceholderText(QStringLiteral("搜索构件名称、类型、楼层"));
    m_search->setClearButtonEnabled(true);
    m_filter->setSourceModel(m_model);
    m_filter->setFilterRole(kSearchRole);
    m_filter->setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_filter->setRecursiveFilteringEnabled(true);
    m_tree->setModel(m_filter);
    m_tree->setHeaderHidden(true);
    m_tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_tree->setUniformRowHeights(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(m_search);
    layout->addWidget(m_tree);

    connect(m_search, &QLineEdit::textChanged, this, &KvxModelTree::SetSearchText);
    connect(m_tree->selectionModel(), &QItemSelectionModel::selectionChanged, this, &KvxModelTree::pickSelected);
    connect(m_tree, &QTreeView::doubleClicked, this, [this](const QModelIndex& index) {
        const PfDbHandle id = HandleAt(index);
        if (id != kPfDbNullHandle)
            emit ElementActivated(id);
    });
}

KvxModelTree::~KvxModelTree() { SetDatabase(nullptr); }

void KvxModelTree::SetDatabase(PfDbDatabase* database)
{
    if (m_database)
        m_database->RemoveReactor(m_follower.get());
    m_database = database;
    if (m_database)
        m_database->AddReactor(m_follower.get());
    fill();
    m_tree->expandToDepth(0);
}

void KvxModelTree::rebuildSoon()
{
    // An import or an undo touches many elements at once: one rebuild after.
    if (m_rebuildPending)
        return;
    m_rebuildPending = true;
    QTimer::singleShot(0, this, [this] {
        if (m_rebuildPending)
            Rebuild();
    });
}

void KvxModelTree::Rebuild()
{
    const QStringList expanded = expandedGroups();
    std::vector<PfDbHandle> selected;
    for (const QModelIndex& index : m_tree->selectionModel()->selectedRows())
        if (HandleAt(index) != kPfDbNullHandle)
            selected.push_back(HandleAt(index));
    fill();
    expandGroups(expanded);
    ShowSelection(selected);
}

void KvxModelTree::fill()
{
    m_rebuildPending = false;
    const bool wasShowing = m_showing;
    m_showing = true; // clearing the model is not the user's pick
    m_model->clear();
    m_showing = wasShowing;
    m_items.clear();
    if (!m_database)
        return;
    std::map<QString, Storey> storeys;
    for (PfDbObject* object : *m_database->GetModelSpace()) {
        const PfDbElement* element = PfModelElements::Of(object);
        if (!element)
            continue;
        const QString storeyName = element->Property(PfDbElement::kStoreyProperty);
        Storey& storey = storeys[storeyName];
        bool known = false;
        const double elevation = element->Property(PfDbElement::kElevationProperty).toDouble(&known);
        if (known)
            storey.elevation = std::min(storey.elevation, elevation);
        storey.kinds[PfModelElements::KindOf(element)].push_back(element);
    }
    std::vector<std::pair<QString, const Storey*>> order;
    for (const auto& [name, storey] : storeys)
        order.emplace_back(name, &storey);
    std::sort(order.begin(), order.end(), [](const auto& a, const auto& b) {
        if (a.first.isEmpty() != b.first.isEmpty())
            return b.first.isEmpty();
        if (a.second->elevation != b.second->elevation)
            return a.second->elevation < b.second->elevation;
        return naturalLess(a.first, b.first);
    });
    auto byName = [](const PfDbElement* a, const PfDbElement* b) {
        return naturalLess(QString::fromStdWString(a->GetName()), QString::fromStdWString(b->GetName()));
    };
    for (const auto& [name, storey] : order) {
        const QString storeyText = name.isEmpty() ? kNoStorey : name;
        std::size_t count = 0;
        for (const auto& kind : storey->kinds)
            count += kind.second.size();
        QStandardItem* storeyItem = groupItem(storeyText, count, storeyText);
        for (const auto& [kind, members] : storey->kinds) {
            QStandardItem* kindItem = groupItem(kind, members.size(), storeyText + QChar('/') + kind);
            std::vector<const PfDbElement*> sorted = members;
            std::sort(sorted.begin(), sorted.end(), byName);
            for (const PfDbElement* element : sorted) {
                QStandardItem* item = elementItem(element, kind, name);
                m_items[element->GetHandle()] = item;
                kindItem->appendRow(item);
            }
            storeyItem->appendRow(kindItem);
        }
        m_model->appendRow(storeyItem);
    }
}

PfDbHandle KvxModelTree::HandleAt(const QModelIndex& index) const
{
    const QVariant handle = index.data(kHandleRole);
    return handle.isValid() ? static_cast<PfDbHandle>(handle.toULongLong()) : kPfDbNullHandle;
}

QModelIndex KvxModelTree::IndexOf(PfDbHandle id) const
{
    const auto found = m_items.find(id);
    return found == m_items.end() ? QModelIndex() : m_filter->mapFromSource(found->second->index());
}

void KvxModelTree::ShowSelection(const std::vector<PfDbHandle>& ids)
{
    QItemSelection rows;
    QModelIndex first;
    for (PfDbHandle id : ids) {
        const QModelIndex index = IndexOf(id);
        if (!index.isValid())
            continue;
        rows.select(index, index);
        if (!first.isValid())
            first = index;
    }
    m_showing = true;
    m_tree->selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    m_showing = false;
    if (first.isValid())
        m_tree->scrollTo(first);
}

void KvxModelTree::SetSearchText(const QString& text)
{
    if (m_search->text() != text)
        m_search->setText(text);
    m_filter->setFilterFixedString(text);
    if (!text.isEmpty())
        m_tree->expandAll();
}

void KvxModelTree::collect(const QModelIndex& index, std::vector<PfDbHandle>& ids) const
{
    const PfDbHandle id = HandleAt(index);
    if (id != kPfDbNullHandle) {
        if (std::find(ids.begin(), ids.end(), id) == ids.end())
            ids.push_back(id);
        return;
    }
    for (int row = 0; row < m_filter->rowCount(index); ++row)
        collect(m_filter->index(row, 0, index), ids);
}

void KvxModelTree::pickSelected()
{
    if (m_showing)
        return;
    std::vector<PfDbHandle> ids;
    for (const QModelIndex& index : m_tree->selectionModel()->selectedRows())
        collect(index, ids);
    emit SelectionPicked(ids);
}

QStringList KvxModelTree::expandedGroups() const
{
    QStringList keys;
    const QModelIndexList groups =
        m_filter->match(m_filter->index(0, 0), kGroupRole, QStringLiteral("*"), -1,
                        Qt::MatchWildcard | Qt::MatchRecursive);
    for (const QModelIndex& index : groups)
        if (m_tree->isExpanded(index))
            keys << index.data(kGroupRole).toString();
    return keys;
}

void KvxModelTree::expandGroups(const QStringList& keys)
{
    for (const QString& key : keys) {
        const QModelIndexList found =
            m_filter->match(m_filter->index(0, 0), kGroupRole, key, 1, Qt::MatchExactly | Qt::MatchRecursive);
        if (!found.isEmpty())
            m_tree->expand(found.front());
    }
}
