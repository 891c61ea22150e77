#include "KVXDateEditDialog.h"

#include <QDateEdit>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

KVXDateEditDialog::KVXDateEditDialog(const QDate& date, QWidget* parent) : QDialog(parent), m_edit(new QDateEdit(date))
{
    setWindowTitle(QStringLiteral("定位日期"));
    setFont(QFont(QStringLiteral("微软雅黑"), 10));
    m_edit->setFixedSize(200, 26);
    m_edit->setCalendarPopup(true);
    auto* dateRow = new QHBoxLayout;
    dateRow->addWidget(m_edit);
    auto* ok = new QPushButton(QStringLiteral("确定"));
    auto* cancel = new QPushButton(QStringLiteral("取消"));
    auto* buttonRow = new QHBoxLayout;
    buttonRow->addWidget(ok);
    buttonRow->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(dateRow);
    layout->addLayout(buttonRow);
    const bool wired = connect(ok, SIGNAL(clicked()), this, SLOT(accept())) &&
                       connect(cancel, SIGNAL(clicked()), this, SLOT(reject()));
    Q_ASSERT(wired);
    Q_UNUSED(wired);
}

QDate KVXDateEditDialog::GetDate() const { return m_edit->date(); }
