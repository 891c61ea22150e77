#include "KVXAddLiftingDataForm.h"

#include "KVXAnimationTowerLiftingModel.h"

#include <QDateEdit>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QIntValidator>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>

KVXAddLiftingDataForm::KVXAddLiftingDataForm(KVXAnimation* animation, QWidget* parent)
    : QDialog(parent), m_animation(animation), m_date(new QDateEdit(QDate::currentDate(), this)),
      m_height(new QLineEdit(this))
{
    setWindowTitle(QStringLiteral("添加塔吊顶升数据"));
    setFixedSize(300, 120);
    m_date->setFixedWidth(160);
    m_date->setCalendarPopup(true);
    m_date->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    m_height->setFixedWidth(160);
    m_height->setAlignment(Qt::AlignCenter);
    m_height->setValidator(new QIntValidator(KVXAnimationTowerLiftingModel::kLowestHeight, 1000000, m_height));
    auto* fields = new QFormLayout;
    fields->addRow(QStringLiteral("顶升日期"), m_date);
    fields->addRow(QStringLiteral("塔身高度(mm)"), m_height);
    auto* ok = new QPushButton(QStringLiteral("确定"), this);
    auto* cancel = new QPushButton(QStringLiteral("取消"), this);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addLayout(buttons);
    connect(ok, SIGNAL(clicked()), this, SLOT(onBtnOk()));
    connect(cancel, SIGNAL(clicked()), this, SLOT(onBtnCancel()));
}

QDate KVXAddLiftingDataForm::getDate() const { return m_date->date(); }

int KVXAddLiftingDataForm::getHeight() const { return m_height->text().toInt(); }

void KVXAddLiftingDataForm::onBtnOk()
{
    // The date first, then the height.
    const char* refusal = nullptr;
    if (!KVXAnimationTowerLiftingModel::IsWithinDays(m_animation, getDate()))
        refusal = KVXAnimationTowerLiftingModel::kDateOutOfRange;
    else if (getHeight() < KVXAnimationTowerLiftingModel::kLowestHeight)
        refusal = KVXAnimationTowerLiftingModel::kHeightTooLow;
    if (refusal) {
        QMessageBox::information(this, QStringLiteral("提示"), QString::fromUtf8(refusal), QMessageBox::Ok);
        return;
    }
    accept();
}

void KVXAddLiftingDataForm::onBtnCancel() { reject(); }
