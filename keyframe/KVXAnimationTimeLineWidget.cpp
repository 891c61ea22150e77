#include "KVXAnimationTimeLineWidget.h"

#include "KVXAnimationKeyFramePanel.h"

#include <QScrollBar>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {
// Room kept after the indicator and the last key frame, in steps; the
// content grows and the view moves by kGrowthSteps at a time.
constexpr int kMarginSteps = 12;
constexpr int kGrowthSteps = 5;
} // namespace

KVXAnimationTimeLineWidget::KVXAnimationTimeLineWidget(QWidget* parent)
    : QScrollArea(parent), m_content(new QWidget), m_timeScale(new KvxAnimationTimeScale(m_content)),
      m_panel(new KVXAnimationKeyFramePanel(m_timeScale, &m_buttons, m_content))
{
    qRegisterMetaType<QWheelEvent*>("QWheelEvent*");
    auto* layout = new QVBoxLayout(m_content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_timeScale);
    layout->addWidget(m_panel, 1);
    setWidget(m_content);
    setWidgetResizable(false);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setMinimumHeight(m_timeScale->height() + m_panel->minimumHeight() + horizontalScrollBar()->sizeHint().height());
    connect(m_timeScale, SIGNAL(IndicatorMoved(Time_Ms)), this, SLOT(onIndicatorMoved(Time_Ms)));
    connect(horizontalScrollBar(), SIGNAL(valueChanged(int)), this, SLOT(onScrolled(int)));
    connect(m_timeScale, SIGNAL(ScaleChanged()), this, SLOT(onScaleChanged()));
    connect(this, SIGNAL(mouseWheel(QWheelEvent*)), this, SLOT(wheelEvent(QWheelEvent*)));
    setContentWidth(neededWidth());
}

void KVXAnimationTimeLineWidget::SetTimeIndicator(unsigned int milliseconds)
{
    m_timeScale->SetCurrentTime(milliseconds);
    keepIndicatorInView();
    m_panel->update();
}

unsigned int KVXAnimationTimeLineWidget::GetTimeIndicator() const { return m_timeScale->GetCurrentTime(); }

void KVXAnimationTimeLineWidget::onIndicatorMoved(Time_Ms)
{
    keepIndicatorInView();
    m_panel->update();
}

// ---- buttons -------------------------------------------------------------------

const KVXKeyFrameButton* KVXAnimationTimeLineWidget::pickedButton() const
{
    auto it = std::find_if(m_buttons.begin(), m_buttons.end(), [](const KVXKeyFrameButton& b) { return b.picked; });
    return it == m_buttons.end() ? nullptr : &*it;
}

KVXCameraKeyFrame* KVXAnimationTimeLineWidget::GetPickedCameraKeyFrame() const
{
    const KVXKeyFrameButton* picked = pickedButton();
    return picked ? picked->cameraKeyFrame : nullptr;
}

KVXDateKeyFrame* KVXAnimationTimeLineWidget::GetPickedDateKeyFrame() const
{
    const KVXKeyFrameButton* picked = pickedButton();
    return picked ? picked->dateKeyFrame : nullptr;
}

void KVXAnimationTimeLineWidget::addButton(KVXCameraKeyFrame* camera, KVXDateKeyFrame* date)
{
    if (!camera && !date)
        return;
    KVXKeyFrameButton button;
    button.cameraKeyFrame = camera;
    button.dateKeyFrame = date;
    m_buttons.push_back(button);
    setContentWidth(std::max(ContentWidth(), neededWidth()));
    m_panel->update();
}

void KVXAnimationTimeLineWidget::CreateKeyFrameButton(KVXCameraKeyFrame* camera, KVXDateKeyFrame* date)
{
    addButton(camera, date);
}

void KVXAnimationTimeLineWidget::CreateCameraKeyFrameButton(KVXCameraKeyFrame* keyFrame)
{
    addButton(keyFrame, nullptr);
}

void KVXAnimationTimeLineWidget::CreateDateKeyFrameButton(KVXDateKeyFrame* keyFrame) { addButton(nullptr, keyFrame); }

void KVXAnimationTimeLineWidget::DeleteKeyFrameButton()
{
    m_buttons.erase(std::remove_if(m_buttons.begin(), m_buttons.end(),
                                   [](const KVXKeyFrameButton& b) { return b.picked; }),
                    m_buttons.end());
    m_panel->update();
}

void KVXAnimationTimeLineWidget::ClearAllKeyFrameButtons()
{
    m_buttons.clear();
    m_panel->update();
}

// ---- scrolling and zoom ------------------------------------------------------

int KVXAnimationTimeLineWidget::ContentWidth() const { return m_content->width(); }

int KVXAnimationTimeLineWidget::neededWidth() const
{
    Time_Ms last = m_timeScale->GetCurrentTime();
    for (const KVXKeyFrameButton& button : m_buttons)
        last = std::max(last, static_cast<Time_Ms>(std::max(0, button.Time())));
    // Always a little wider than the view, so that the bar can be scrolled
    // to its end, which makes more room.
    const int s = m_timeScale->GetPixelsPerStep();
    return std::max(viewport()->width() + kGrowthSteps * s, m_timeScale->XForTime(last) + kMarginSteps * s);
}

void KVXAnimationTimeLineWidget::setContentWidth(int width)
{
    m_content->resize(width, viewport()->height());
}

void KVXAnimationTimeLineWidget::onScrolled(int value)
{
    QScrollBar* bar = horizontalScrollBar();
    const int step = kGrowthSteps * m_timeScale->GetPixelsPerStep();
    if (value == bar->maximum() && bar->maximum() > 0)
        setContentWidth(ContentWidth() + step);
    else if (value == bar->minimum() && ContentWidth() - step >= neededWidth())
        setContentWidth(ContentWidth() - step);
}

void KVXAnimationTimeLineWidget::keepIndicatorInView()
{
    const int s = m_timeScale->GetPixelsPerStep();
    const int x = m_timeScale->XForTime(m_timeScale->GetCurrentTime());
    const int margin = kMarginSteps * s;
    const int move = kGrowthSteps * s;
    const int view = viewport()->width();
    QScrollBar* bar = horizontalScrollBar();
    const int left = bar->value();
    // The right end is the content's or, when the content goes on past the
    // view, the view's. The j-th move is j times the growth step, so that a
    // fast indicator is caught up with.
    const int right = std::min(ContentWidth(), left + view);
    int moved = left;
    if (x > right - margin) {
        const int moves = (x + margin - right) / move + 1;
        moved = left + move * moves * (moves + 1) / 2;
    } else if (x < left + margin) {
        const int moves = (left + margin - x) / move;
        moved = left - move * moves * (moves + 1) / 2;
    } else {
        return;
    }
    // A jump never carries the view past the indicator.
    const int lowest = x + margin - view;
    const int highest = x - margin;
    moved = lowest <= highest ? qBound(lowest, moved, highest) : x - view / 2;
    moved = std::max(0, moved);
    setContentWidth(std::max(ContentWidth(), moved + view + move));
    bar->setValue(moved);
}

void KVXAnimationTimeLineWidget::zoom(int notches)
{
    const int before = m_timeScale->GetPixelsPerStep();
    int after = static_cast<int>(std::lround(before * std::pow(1.25, notches)));
    if (after == before)
        after += notches > 0 ? 1 : -1;
    m_timeScale->SetPixelsPerStep(after);
}

void KVXAnimationTimeLineWidget::onScaleChanged()
{
    setContentWidth(neededWidth());
    keepIndicatorInView();
    repaintAll();
}

void KVXAnimationTimeLineWidget::wheelEvent(QWheelEvent* event)
{
    const int delta = event->angleDelta().y() != 0 ? event->angleDelta().y() : event->angleDelta().x();
    if (delta == 0)
        return;
    // Whole notches of 120; a finer wheel still moves by one.
    int notches = delta / 120;
    if (notches == 0)
        notches = delta > 0 ? 1 : -1;
    if (event->modifiers() & Qt::ControlModifier) {
        zoom(notches);
    } else {
        QScrollBar* bar = horizontalScrollBar();
        bar->setValue(bar->value() - notches * kGrowthSteps * m_timeScale->GetPixelsPerStep());
    }
    event->accept();
}

bool KVXAnimationTimeLineWidget::viewportEvent(QEvent* event)
{
    if (event->type() != QEvent::Wheel)
        return QScrollArea::viewportEvent(event);
    emit mouseWheel(static_cast<QWheelEvent*>(event));
    return true;
}

void KVXAnimationTimeLineWidget::resizeEvent(QResizeEvent* event)
{
    QScrollArea::resizeEvent(event);
    setContentWidth(std::max(ContentWidth(), neededWidth()));
}

void KVXAnimationTimeLineWidget::repaintAll()
{
    m_timeScale->update();
    m_panel->update();
    update();
}
