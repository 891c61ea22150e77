#include "KVXAnimationTowerLiftingForm.h"

#include "KVXAddLiftingDataForm.h"
#include "KVXAnimationTowerLiftingModel.h"
#include "KVXRecordEdit.h"
#include "KvxAnimationTowerLiftingDelegate.h"
#include "animation/KVXTowerAnimation.h"

#include <QCheckBox>
#include <QDateEdit>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableView>

KVXAnimationTowerLiftingForm::KVXAnimationTowerLiftingForm(QWidget* parent)
    : QDialog(parent), m_model(new KVXAnimationTowerLiftingModel(this))
{
}

void KVXAnimationTowerLiftingForm::initUI()
{
    if (m_view)
        return;
    m_dismantle = new QCheckBox(QStringLiteral("设置拆除日期"), this);
    m_dismantleDate = new QDateEdit(this);
    m_dismantleDate->setCalendarPopup(true);
    m_dismantleDate->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    if (m_animation) {
        m_dismantle->setChecked(m_animation->GetIsDismantle());
        m_dismantleDate->setDate(m_animation->GetDismantleDate());
        m_model->setAnimation(m_animation);
        m_model->setLiftingData(m_animation->GetLiftingData());
    }
    m_view = new QTableView(this);
    m_view->setModel(m_model);
    m_view->setItemDelegate(new KvxAnimationTowerLiftingDelegate(m_view));
    m_view->verticalHeader()->hide();
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
    m_view->setColumnWidth(0, 60);
    m_view->setColumnWidth(1, 160);
    m_view->setColumnWidth(2, 120);

    auto* dismantling = new QHBoxLayout;
    dismantling->addWidget(m_dismantle);
    dismantling->addWidget(m_dismantleDate);
    dismantling->addStretch();
    auto* buttons = new QHBoxLayout;
    const struct {
        const char* text;
        const char* slot;
    } actions[] = {{"添加顶升日期", SLOT(onBtnAdd())},
                   {"删除", SLOT(onBtnDelete())},
                   {"确定", SLOT(onBtnOk())},
                   {"取消", SLOT(onBtnCancel())}};
    for (const auto& action : actions) {
        auto* button = new QPushButton(QString::fromUtf8(action.text), this);
        connect(button, SIGNAL(clicked()), this, action.slot);
        buttons->addWidget(button);
    }
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(dismantling);
    layout->addWidget(m_view);
    layout->addLayout(buttons);
}

void KVXAnimationTowerLiftingForm::onBtnAdd()
{
    KVXAddLiftingDataForm add(m_animation, this);
    if (add.exec() != QDialog::Accepted)
        return;
    m_model->appendRow({add.getDate(), add.getHeight()});
}

void KVXAnimationTowerLiftingForm::onBtnDelete()
{
    const QModelIndex current = m_view->currentIndex();
    if (current.isValid())
        m_model->removeLiftingRow(current.row());
}

void KVXAnimationTowerLiftingForm::onBtnOk()
{
    if (m_animation) {
        KVXRecordEdit step(m_animation);
        m_animation->SetLiftingData(m_model->liftingData());
        m_animation->SetIsDismantle(m_dismantle->isChecked());
        m_animation->SetDismantleDate(m_dismantleDate->date());
    }
    accept();
}

void KVXAnimationTowerLiftingForm::onBtnCancel() { close(); }
