#include "KVXConstructionPage.h"

#include "KVXDateTimeLineWidget.h"
#include "KVXRecordEdit.h"
#include "KVXScheduleGantt.h"
#include "animation/KVXAnimatorManager.h"
#include "host/model/ZUpdater.h"
#include "keyframe/KVXKeyFrameAnimationManager.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

// A document shown anew (the window tells its observers) brings its schedule.
class KVXConstructionPage::DocumentFollower : public ZUpdater {
public:
    explicit DocumentFollower(KVXConstructionPage* page) : m_page(page) { updaters_.push_back(this); }
    void Update(const ZUpdateMessage& message) override
    {
        if (message.kind == kSelectionChanged)
            m_page->followSchedule();
    }

private:
    KVXConstructionPage* m_page;
};

KVXConstructionPage::KVXConstructionPage(QWidget* parent)
    : QWidget(parent), m_timeline(new KVXDateTimeLineWidget(this)), m_conflicts(new QLabel(this)),
      m_gantt(new KVXScheduleGantt(m_timeline->GetCalendarGrid()))
{
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    // The playing date clock moves the timeline's indicator.
    KVXKeyFrameAnimationManager::SetDateLineWidget(m_timeline);
    connect(m_timeline, &KVXDateTimeLineWidget::indicatorChanged, schedule,
            [schedule](const QDate& date) { schedule->playAnimationAtDate(date); });
    auto* buttons = new QHBoxLayout;
    const struct {
        const char* text;
        void (KVXAnimatorManager::*action)();
    } actions[] = {{"播放", &KVXAnimatorManager::play},
                   {"暂停", &KVXAnimatorManager::pause},
                   {"停止", &KVXAnimatorManager::stop},
                   {"预览", &KVXAnimatorManager::preview}};
    for (const auto& action : actions) {
        auto* push = new QPushButton(QString::fromUtf8(action.text), this);
        connect(push, &QPushButton::clicked, schedule, [schedule, call = action.action] { (schedule->*call)(); });
        buttons->addWidget(push);
    }
    buttons->addStretch();
    buttons->addWidget(m_conflicts);
    // The Gantt rows scroll up and down under the timeline; across, they
    // follow the timeline itself.
    auto* rows = new QScrollArea(this);
    rows->setWidget(m_gantt);
    rows->setWidgetResizable(true);
    rows->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    rows->setFrameShape(QFrame::NoFrame);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_timeline);
    layout->addWidget(rows, 1);
    layout->addLayout(buttons);
    connect(schedule, &KVXAnimatorManager::dataChangedSignal, this, &KVXConstructionPage::followSchedule);
    connect(KVXRecordEditNotifier::Get(), &KVXRecordEditNotifier::recordsEdited, this,
            &KVXConstructionPage::refreshConflicts);
    m_follower = std::make_unique<DocumentFollower>(this);
    followSchedule();
}

KVXConstructionPage::~KVXConstructionPage() = default;

void KVXConstructionPage::followSchedule()
{
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    if (!schedule->getAnimationVector().empty()) {
        schedule->updateAllAnimationsDateRange();
        const QDate start = schedule->getAllAnimationsStartDate();
        m_timeline->SetCalendarStartDate(start.addDays(-5));
        m_timeline->SetCalendarDateRange(start, schedule->getAllAnimationsEndDate());
        if (m_timeline->GetIndicator() < start || m_timeline->GetIndicator() > schedule->getAllAnimationsEndDate())
            m_timeline->SetIndicator(start);
    }
    refreshConflicts();
}

QPushButton* KVXConstructionPage::button(const QString& text) const
{
    for (QPushButton* each : findChildren<QPushButton*>())
        if (each->text() == text)
            return each;
    return nullptr;
}

void KVXConstructionPage::refreshConflicts()
{
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    schedule->checkAnimations();
    m_conflicts->setText(QStringLiteral("冲突: %1").arg(schedule->getErrorMap().size()));
    m_gantt->Refresh();
}
