#pragma once

#include <QItemDelegate>

// The cell editors of the jacking table: a label for the ordinal, a date
// editor for the date, a line edit for the height. Edits go to the model
// with the edit role, so that the model's checks apply.
class KvxAnimationTowerLiftingDelegate : public QItemDelegate {
    Q_OBJECT
public:
    explicit KvxAnimationTowerLiftingDelegate(QObject* parent = nullptr);

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
};
