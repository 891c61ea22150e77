#pragma once

#include "KVXKeyFrameButton.h"
#include "KVXKeyFrameTimeLine.h"
#include "KvxAnimationTimeScale.h"

#include <QScrollArea>

#include <vector>

class KVXAnimationKeyFramePanel;

// The key-frame timeline of the roaming-video page: the ruler with its play
// indicator over the strip of key-frame buttons, scrolled sideways. The
// camera clock moves the indicator while the fly-through plays; the view
// follows it. The wheel scrolls, Ctrl+wheel zooms; scrolling to the right
// end makes room for more time.
class KVXAnimationTimeLineWidget : public QScrollArea, public KVXKeyFrameTimeLine {
    Q_OBJECT
public:
    explicit KVXAnimationTimeLineWidget(QWidget* parent = nullptr);

    // Silent: for the playing clock; the view follows the indicator.
    void SetTimeIndicator(unsigned int milliseconds) override;
    unsigned int GetTimeIndicator() const override;
    KvxAnimationTimeScale* GetTimeScaleWidget() const { return m_timeScale; }
    KVXAnimationKeyFramePanel* GetKeyFramePanel() const { return m_panel; }

    KVXCameraKeyFrame* GetPickedCameraKeyFrame() const override;
    KVXDateKeyFrame* GetPickedDateKeyFrame() const override;
    void CreateKeyFrameButton(KVXCameraKeyFrame* camera, KVXDateKeyFrame* date) override;
    void CreateCameraKeyFrameButton(KVXCameraKeyFrame* keyFrame) override;
    void CreateDateKeyFrameButton(KVXDateKeyFrame* keyFrame) override;
    void DeleteKeyFrameButton() override;
    void ClearAllKeyFrameButtons() override;
    const std::vector<KVXKeyFrameButton>& GetKeyFrameButtons() const { return m_buttons; }

    // The width of the scrolled content, in pixels.
    int ContentWidth() const;

signals:
    // Every wheel event over the timeline, before it scrolls or zooms.
    void mouseWheel(QWheelEvent* event);

public slots:
    void onIndicatorMoved(Time_Ms milliseconds);
    // Ctrl zooms, otherwise it scrolls.
    void wheelEvent(QWheelEvent* event) override;

protected:
    bool viewportEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private slots:
    void onScrolled(int value);
    void onScaleChanged();

private:
    const KVXKeyFrameButton* pickedButton() const;
    void addButton(KVXCameraKeyFrame* camera, KVXDateKeyFrame* date);
    // Wide enough for the view, the last key frame and the indicator, with
    // room after them.
    int neededWidth() const;
    void setContentWidth(int width);
    void keepIndicatorInView();
    void zoom(int notches);
    void repaintAll();

    QWidget* m_content;
    KvxAnimationTimeScale* m_timeScale;
    KVXAnimationKeyFramePanel* m_panel;
    std::vector<KVXKeyFrameButton> m_buttons;
};
