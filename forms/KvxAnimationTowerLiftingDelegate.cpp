#include "KvxAnimationTowerLiftingDelegate.h"

#include <QDateEdit>
#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>

namespace {
const QString kDateFormat = QStringLiteral("yyyy-MM-dd");
}

KvxAnimationTowerLiftingDelegate::KvxAnimationTowerLiftingDelegate(QObject* parent) : QItemDelegate(parent) {}

QWidget* KvxAnimationTowerLiftingDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                                        const QModelIndex& index) const
{
    switch (index.column()) {
    case 0: return new QLabel(parent);
    case 1: {
        auto* date = new QDateEdit(parent);
        date->setDisplayFormat(kDateFormat);
        date->setCalendarPopup(true);
        return date;
    }
    default: {
        auto* height = new QLineEdit(parent);
        // Digits only; the model tells about a height below the least.
        height->setValidator(new QIntValidator(0, 1000000, height));
        return height;
    }
    }
}

void KvxAnimationTowerLiftingDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    const QString text = index.data(Qt::DisplayRole).toString();
    if (auto* label = qobject_cast<QLabel*>(editor))
        label->setText(text);
    else if (auto* date = qobject_cast<QDateEdit*>(editor))
        date->setDate(QDate::fromString(text, kDateFormat));
    else if (auto* line = qobject_cast<QLineEdit*>(editor))
        line->setText(text);
}

void KvxAnimationTowerLiftingDelegate::setModelData(QWidget* editor, QAbstractItemModel* model,
                                                    const QModelIndex& index) const
{
    if (auto* date = qobject_cast<QDateEdit*>(editor))
        model->setData(index, date->date().toString(kDateFormat), Qt::EditRole);
    else if (auto* line = qobject_cast<QLineEdit*>(editor))
        model->setData(index, line->text(), Qt::EditRole);
}
