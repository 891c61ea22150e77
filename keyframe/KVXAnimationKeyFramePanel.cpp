#include "KVXAnimationKeyFramePanel.h"

#include "KVXCameraKeyFrame.h"
#include "KvxAnimationTimeScale.h"

#include <QFileInfo>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPolygon>
#include <QToolTip>
#include <QUrl>

namespace {
constexpr int kHalfWidth = 6;
const QColor kBackground(42, 42, 42);
const QColor kCameraColour(80, 160, 255);
const QColor kDateColour(255, 170, 40);
const QColor kPickedColour(255, 230, 60);
const QColor kIndicatorColour(255, 64, 64);
} // namespace

KVXAnimationKeyFramePanel::KVXAnimationKeyFramePanel(const KvxAnimationTimeScale* timeScale,
                                                     std::vector<KVXKeyFrameButton>* buttons, QWidget* parent)
    : QWidget(parent), m_timeScale(timeScale), m_buttons(buttons)
{
    setMinimumHeight(32);
}

QRect KVXAnimationKeyFramePanel::ButtonRect(const KVXKeyFrameButton& button) const
{
    const int x = m_timeScale->XForTime(static_cast<Time_Ms>(qMax(0, button.Time())));
    const int half = height() / 2;
    const int top = button.cameraKeyFrame ? 0 : half;
    const int bottom = button.dateKeyFrame ? height() : half;
    return QRect(x - kHalfWidth, top, 2 * kHalfWidth + 1, bottom - top);
}

int KVXAnimationKeyFramePanel::ButtonAt(const QPoint& point) const
{
    // The last drawn is on top.
    for (int i = static_cast<int>(m_buttons->size()) - 1; i >= 0; --i)
        if (ButtonRect((*m_buttons)[i]).contains(point))
            return i;
    return -1;
}

void KVXAnimationKeyFramePanel::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return QWidget::mousePressEvent(event);
    const int hit = ButtonAt(event->pos());
    for (std::size_t i = 0; i < m_buttons->size(); ++i)
        (*m_buttons)[i].picked = static_cast<int>(i) == hit;
    update();
}

bool KVXAnimationKeyFramePanel::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip) {
        auto* help = static_cast<QHelpEvent*>(event);
        showThumbnail(help->pos(), help->globalPos());
        return true;
    }
    return QWidget::event(event);
}

void KVXAnimationKeyFramePanel::showThumbnail(const QPoint& position, const QPoint& globalPosition)
{
    const int hit = ButtonAt(position);
    if (hit < 0) {
        QToolTip::hideText();
        return;
    }
    const KVXKeyFrameButton& button = (*m_buttons)[hit];
    QString text = KvxAnimationTimeScale::FormatTime(static_cast<Time_Ms>(qMax(0, button.Time())));
    if (button.cameraKeyFrame) {
        const QString image = QString::fromStdWString(button.cameraKeyFrame->GetSceneImagePath());
        if (QFileInfo::exists(image))
            text += QStringLiteral("<br><img src=\"%1\" width=\"160\">")
                        .arg(QUrl::fromLocalFile(image).toString().toHtmlEscaped());
    }
    QToolTip::showText(globalPosition, text, this);
}

void KVXAnimationKeyFramePanel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), kBackground);
    painter.setRenderHint(QPainter::Antialiasing);
    for (const KVXKeyFrameButton& button : *m_buttons)
        paintButton(painter, button);
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(kIndicatorColour);
    const int x = m_timeScale->XForTime(m_timeScale->GetCurrentTime());
    painter.drawLine(x, 0, x, height());
}

void KVXAnimationKeyFramePanel::paintButton(QPainter& painter, const KVXKeyFrameButton& button) const
{
    const QRect box = ButtonRect(button);
    const int x = box.center().x();
    const int half = height() / 2;
    painter.setPen(QPen(button.picked ? Qt::white : Qt::black, 1));
    if (button.cameraKeyFrame) {
        const int middle = half / 2;
        const QPolygon diamond({QPoint(x, middle - kHalfWidth), QPoint(x + kHalfWidth, middle),
                                QPoint(x, middle + kHalfWidth), QPoint(x - kHalfWidth, middle)});
        painter.setBrush(button.picked ? kPickedColour : kCameraColour);
        painter.drawPolygon(diamond);
    }
    if (button.dateKeyFrame) {
        painter.setBrush(button.picked ? kPickedColour : kDateColour);
        painter.drawEllipse(QPoint(x, half + half / 2), kHalfWidth - 1, kHalfWidth - 1);
    }
}
