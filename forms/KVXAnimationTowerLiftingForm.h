#pragma once

#include <QDialog>

class KVXAnimationTowerLiftingModel;
class KVXTowerAnimation;
class QCheckBox;
class QDateEdit;
class QTableView;

// The jacking data of a tower crane ("塔吊顶升参数设置"): a table of jacking
// rows and the dismantling date. Nothing reaches the record before OK, and
// then all of it at once, as one undoable step.
class KVXAnimationTowerLiftingForm : public QDialog {
    Q_OBJECT
public:
    explicit KVXAnimationTowerLiftingForm(QWidget* parent = nullptr);

    void setTowerAnimation(KVXTowerAnimation* animation) { m_animation = animation; }
    // Builds the controls from the record.
    void initUI();

    KVXAnimationTowerLiftingModel* model() const { return m_model; }
    QTableView* tableView() const { return m_view; }
    QCheckBox* dismantleBox() const { return m_dismantle; }
    QDateEdit* dismantleDateEdit() const { return m_dismantleDate; }

public slots:
    void onBtnAdd();
    void onBtnDelete();
    void onBtnOk();
    void onBtnCancel();

private:
    KVXTowerAnimation* m_animation = nullptr;
    KVXAnimationTowerLiftingModel* m_model;
    QTableView* m_view = nullptr;
    QCheckBox* m_dismantle = nullptr;
    QDateEdit* m_dismantleDate = nullptr;
};
