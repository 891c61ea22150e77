#include "KVXDateTimeLineWidget.h"

#include "KVXCalendarGrid.h"
#include "KVXDateEditDialog.h"
#include "KVXDateTimeLineScrollButton.h"

#include <QContextMenuEvent>
#include <QDateEdit>
#include <QHBoxLayout>
#include <QMenu>

KVXDateTimeLineWidget::KVXDateTimeLineWidget(QWidget* parent)
    : QWidget(parent), m_grid(new KVXCalendarGrid), m_menu(new QMenu(this))
{
    setFont(QFont(QStringLiteral("微软雅黑"), 10));
    m_left = new KVXDateTimeLineScrollButton(KVXDateTimeLineScrollButton::Left, m_grid);
    m_right = new KVXDateTimeLineScrollButton(KVXDateTimeLineScrollButton::Right, m_grid);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_left);
    layout->addWidget(m_grid);
    layout->addWidget(m_right);
    setFixedHeight(m_grid->height());
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    QAction* locate = m_menu->addAction(QStringLiteral("定位日期"));
    const bool wired = connect(locate, SIGNAL(triggered()), this, SLOT(onLocateDateTime())) &&
                       connect(m_grid, SIGNAL(userMovedIndicator(QDate)), this, SIGNAL(indicatorChanged(QDate)));
    Q_ASSERT(wired);
    Q_UNUSED(wired);
}

void KVXDateTimeLineWidget::SetIndicator(const QDate& date) { m_grid->SetIndicator(date, false); }

QDate KVXDateTimeLineWidget::GetIndicator() const { return m_grid->Indicator(); }

QDate KVXDateTimeLineWidget::GetCalendarStartDate() const { return m_grid->FirstDate(); }

void KVXDateTimeLineWidget::SetCalendarStartDate(const QDate& date) { m_grid->SetFirstDate(date, true); }

void KVXDateTimeLineWidget::SetCalendarDateRange(const QDate& from, const QDate& to)
{
    m_grid->SetDateRange(from, to);
}

int KVXDateTimeLineWidget::GetCalendarDisplayStyle() const { return m_grid->ZoomLevel(); }

void KVXDateTimeLineWidget::SetCalendarDisplayStyle(int style) { m_grid->SetZoomLevel(style); }

void KVXDateTimeLineWidget::SetEditable(bool editable)
{
    m_grid->SetEditable(editable);
    m_left->setEnabled(editable);
    m_right->setEnabled(editable);
}

bool KVXDateTimeLineWidget::GetEditable() const { return m_grid->IsEditable(); }

void KVXDateTimeLineWidget::contextMenuEvent(QContextMenuEvent* event) { m_menu->exec(event->globalPos()); }

void KVXDateTimeLineWidget::onLocateDateTime()
{
    if (!m_dialog)
        m_dialog = new KVXDateEditDialog(QDate::currentDate(), this);
    else
        m_dialog->GetDateEdit()->setDate(QDate::currentDate());
    if (m_dialog->exec() == QDialog::Accepted)
        m_grid->SetIndicator(m_dialog->GetDate(), true);
}
