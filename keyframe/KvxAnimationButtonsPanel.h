#pragma once

#include <QWidget>

class QPushButton;

// The commands beside the key-frame timeline, in a grid of two columns: add
// and delete a key frame, play or pause and stop the fly-through, and the
// settings in the last row. The play button shows pause while playing.
class KvxAnimationButtonsPanel : public QWidget {
    Q_OBJECT
public:
    explicit KvxAnimationButtonsPanel(QWidget* parent = nullptr);

    enum Button { AddKeyFrame, DeleteKeyFrame, PlayOrPause, Stop, Settings, ButtonCount };
    QPushButton* GetButton(Button button) const { return m_buttons[button]; }

public slots:
    void onCreateKeyFrame();
    void onDeleteKeyFrame();
    void onPlayOrPauseAnimation();
    void onStopAnimation();
    void onSettingOptions();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QPushButton* m_buttons[ButtonCount];
};
