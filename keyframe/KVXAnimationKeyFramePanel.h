#pragma once

#include "KVXKeyFrameButton.h"

#include <QWidget>

#include <vector>

class KvxAnimationTimeScale;

// The strip under the ruler that shows the key frames: a camera key frame as
// a blue diamond in the upper half, a date key frame as an orange disc in
// the lower half (so both are seen at one moment), the picked one filled
// yellow, and the indicator's line over them. A click picks the button under
// it; hovering a camera key frame shows its thumbnail.
class KVXAnimationKeyFramePanel : public QWidget {
    Q_OBJECT
public:
    KVXAnimationKeyFramePanel(const KvxAnimationTimeScale* timeScale, std::vector<KVXKeyFrameButton>* buttons,
                              QWidget* parent = nullptr);

    // Where a button is drawn and answers the mouse.
    QRect ButtonRect(const KVXKeyFrameButton& button) const;
    // The index of the button under the point, -1 when none.
    int ButtonAt(const QPoint& point) const;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void paintButton(QPainter& painter, const KVXKeyFrameButton& button) const;
    void showThumbnail(const QPoint& position, const QPoint& globalPosition);

    const KvxAnimationTimeScale* m_timeScale;
    std::vector<KVXKeyFrameButton>* m_buttons;
};
