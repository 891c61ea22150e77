#include "KvxElementProperties.h"

#include "KvxModelTree.h"
#include "host/model/PfModelElements.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbTransaction.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/model/PfEdInformation.h"

#include <QHeaderView>
#include <QLabel>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

const QString kNameLabel = QStringLiteral("名称");
const QString kTransparencyLabel = QStringLiteral("透明度 (%)");

// The labels of the properties an import gives; others show their own key.
QString labelOf(const QString& key)
{
    if (key == PfDbElement::kTypeProperty)
        return QStringLiteral("类型");
    if (key == PfDbElement::kStoreyProperty)
        return QStringLiteral("楼层");
    if (key == PfDbElement::kElevationProperty)
        return QStringLiteral("楼层标高 (mm)");
    return key;
}

QString metres(double millimetres) { return QString::number(millimetres / 1000.0, 'f', 2); }

// One edit of an element as one named undo step.
template <class Change>
bool editElement(PfDbElement* element, const QString& step, Change change)
{
    PfDbDatabase* database = element->GetDatabase();
    if (!database)
        return false;
    database->TransactionManager()->StartTransaction()->SetName(step);
    element->AssertWriteEnabled();
    change();
    database->TransactionManager()->EndTransaction();
    return true;
}

} // namespace

KvxElementProperties::KvxElementProperties(QWidget* parent)
    : QWidget(parent), m_summary(new QLabel(this)), m_table(new QTableWidget(0, 2, this))
{
    m_table->setHorizontalHeaderLabels({QStringLiteral("属性"), QStringLiteral("值")});
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->verticalHeader()->hide();
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                             QAbstractItemView::AnyKeyPressed);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(m_summary);
    layout->addWidget(m_table);
    connect(m_table, &QTableWidget::itemChanged, this, &KvxElementProperties::edited);
    ShowElements(nullptr, {});
}

void KvxElementProperties::ShowElements(PfDbDatabase* database, const std::vector<PfDbHandle>& ids)
{
    m_database = database;
    m_ids = ids;
    Refresh();
}

void KvxElementProperties::Refresh()
{
    const PfDbElement* element =
        m_database && m_ids.size() == 1 ? PfDbElement::Cast(m_database->OpenObject(m_ids.front())) : nullptr;
    if (m_ids.empty() || !m_database)
        m_summary->setText(QStringLiteral("未选择构件"));
    else if (m_ids.size() > 1)
        m_summary->setText(QStringLiteral("已选择 %1 个构件").arg(m_ids.size()));
    else
        m_summary->setText(element ? PfModelElements::KindOf(element) : QStringLiteral("构件已删除"));
    fill(element);
}

void KvxElementProperties::addRow(const QString& label, const QString& value, bool editable)
{
    const int row = m_table->rowCount();
    m_table->insertRow(row);
    auto* name = new QTableWidgetItem(label);
    name->setFlags(Qt::ItemIsEnabled);
    auto* cell = new QTableWidgetItem(value);
    cell->setFlags(editable ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable : Qt::ItemIsEnabled);
    if (!editable)
        cell->setForeground(palette().color(QPalette::Disabled, QPalette::Text));
    m_table->setItem(row, 0, name);
    m_table->setItem(row, 1, cell);
}

void KvxElementProperties::fill(const PfDbElement* element)
{
    m_filling = true;
    m_table->setRowCount(0);
    if (element) {
        addRow(kNameLabel, QString::fromStdWString(element->GetName()), true);
        addRow(QStringLiteral("句柄"), QString::number(element->GetHandle()));
        for (const auto& [key, value] : element->GetProperties())
            addRow(labelOf(key), value);
        if (const auto* solid = KVX3DElementObject::Cast(element)) {
            addRow(kTransparencyLabel, QString::number(solid->GetTransparency()), true);
            addRow(QStringLiteral("颜色"), solid->GetBodyColor().name());
            osg::BoundingBoxd box;
            for (const auto& body : solid->GetBodies())
                box.expandBy(body->GetBoundingBox());
            if (box.valid()) {
                addRow(QStringLiteral("尺寸 (m)"), QStringLiteral("%1 × %2 × %3")
                                                       .arg(metres(box.xMax() - box.xMin()))
                                                       .arg(metres(box.yMax() - box.yMin()))
                                                       .arg(metres(box.zMax() - box.zMin())));
                addRow(QStringLiteral("底 / 顶标高 (m)"),
                       QStringLiteral("%1 / %2").arg(metres(box.zMin())).arg(metres(box.zMax())));
            }
        }
        if (const auto* crane = KVXTowerCraneObject::Cast(element)) {
            addRow(QStringLiteral("塔身高度 (m)"), metres(crane->GetTowerHeight()));
            addRow(QStringLiteral("起重臂长 (m)"), metres(crane->GetJibLength()));
        }
    }
    m_table->resizeColumnToContents(0);
    m_filling = false;
}

int KvxElementProperties::RowOf(const QString& label) const
{
    for (int row = 0; row < m_table->rowCount(); ++row)
        if (m_table->item(row, 0)->text() == label)
            return row;
    return -1;
}

void KvxElementProperties::edited(QTableWidgetItem* item)
{
    if (m_filling || item->column() != 1 || m_ids.size() != 1 || !m_database)
        return;
    auto* element = PfDbElement::Cast(m_database->OpenObject(m_ids.front()));
    if (!element)
        return;
    const QString label = m_table->item(item->row(), 0)->text();
    if (label == kNameLabel)
        rename(element, item->text().trimmed());
    else if (label == kTransparencyLabel)
        setTransparency(element, item->text().trimmed());
    // The row shows what the element holds now, also when the edit was refused.
    QMetaObject::invokeMethod(this, &KvxElementProperties::Refresh, Qt::QueuedConnection);
}

void KvxElementProperties::rename(PfDbElement* element, const QString& name)
{
    if (name.isEmpty()) {
        PfEdInformation(QStringLiteral("构件名称不能为空。"), QStringLiteral("属性"));
        return;
    }
    if (name.toStdWString() == element->GetName())
        return;
    if (editElement(element, QStringLiteral("重命名构件"), [&] { element->SetName(name.toStdWString()); }))
        emit ElementChanged(element->GetHandle());
}

void KvxElementProperties::setTransparency(PfDbElement* element, const QString& percent)
{
    auto* solid = KVX3DElementObject::Cast(element);
    bool number = false;
    const int value = percent.toInt(&number);
    if (!solid || !number || value < 0 || value > 100) {
        PfEdInformation(QStringLiteral("透明度须为 0 到 100 之间的整数。"), QStringLiteral("属性"));
        return;
    }
    if (value == solid->GetTransparency())
        return;
    if (editElement(element, QStringLiteral("修改透明度"), [&] {
            solid->SetTransparency(value);
            solid->regenerate();
        }))
        emit ElementChanged(element->GetHandle());
}
