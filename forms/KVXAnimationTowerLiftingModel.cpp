#include "KVXAnimationTowerLiftingModel.h"

#include "animation/KVXAnimation.h"

#include <QMessageBox>
#include <QWidget>

const char* const KVXAnimationTowerLiftingModel::kDateOutOfRange = "顶升时间应在选择动画时间范围内。";
const char* const KVXAnimationTowerLiftingModel::kHeightTooLow = "塔身高度最小为10000(mm)";

namespace {
const QString kDateFormat = QStringLiteral("yyyy-MM-dd");
}

KVXAnimationTowerLiftingModel::KVXAnimationTowerLiftingModel(QObject* parent) : QStandardItemModel(parent)
{
    setColumnCount(3);
    setHorizontalHeaderLabels({QStringLiteral("序号"), QStringLiteral("顶升时间"), QStringLiteral("塔身高度(mm)")});
}

void KVXAnimationTowerLiftingModel::setLiftingData(const QList<KVXTowerLiftingData>& data)
{
    m_data = data;
    setRowCount(m_data.size());
}

void KVXAnimationTowerLiftingModel::appendRow(const KVXTowerLiftingData& row)
{
    m_data.append(row);
    setRowCount(m_data.size());
}

void KVXAnimationTowerLiftingModel::removeLiftingRow(int row)
{
    if (row < 0 || row >= m_data.size())
        return;
    m_data.removeAt(row);
    removeRows(row, 1);
}

bool KVXAnimationTowerLiftingModel::IsWithinDays(const KVXAnimation* animation, const QDate& date)
{
    if (!animation || !date.isValid())
        return false;
    const QDate last = animation->getLoopPlayback() ? animation->getLoopEndDate() : animation->getEndDate();
    return date >= animation->getStartDate() && date <= last;
}

QVariant KVXAnimationTowerLiftingModel::data(const QModelIndex& index, int role) const
{
    if (role == Qt::DisplayRole && index.isValid() && index.row() < m_data.size()) {
        const KVXTowerLiftingData& row = m_data.at(index.row());
        switch (index.column()) {
        case 0: return index.row();
        case 1: return row.date.toString(kDateFormat);
        case 2: return row.height;
        default: break;
        }
    }
    return QStandardItemModel::data(index, role);
}

bool KVXAnimationTowerLiftingModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (role != Qt::EditRole || !index.isValid() || index.row() >= rowCount() || index.column() >= columnCount() ||
        index.row() >= m_data.size())
        return false;
    if (index.column() == 1) {
        const QDate date = QDate::fromString(value.toString(), kDateFormat);
        if (!IsWithinDays(m_animation, date)) {
            tell(kDateOutOfRange);
            return false;
        }
        m_data[index.row()].date = date;
    } else if (index.column() == 2) {
        const int height = value.toString().toInt();
        if (height < kLowestHeight) {
            tell(kHeightTooLow);
            return false;
        }
        m_data[index.row()].height = height;
    } else {
        return false;
    }
    emit dataChanged(index, index);
    return true;
}

void KVXAnimationTowerLiftingModel::tell(const char* text) const
{
    QMessageBox::information(qobject_cast<QWidget*>(QObject::parent()), QStringLiteral("提示"), QString::fromUtf8(text),
                             QMessageBox::Ok);
}
