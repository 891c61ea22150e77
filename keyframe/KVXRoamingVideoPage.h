#pragma once

#include <QWidget>

class KVXAnimationTimeLineWidget;
class KvxAnimationButtonsPanel;
class QPushButton;

// The roaming-video page: the key-frame timeline with its commands beside it
// (add and delete a key frame, play or pause, stop, the settings) and the
// export of the fly-through. While the page is shown the key frames are being
// edited: the manager keeps the view still between frames and holds off the
// document's own auto-save.
class KVXRoamingVideoPage : public QWidget {
    Q_OBJECT
public:
    explicit KVXRoamingVideoPage(QWidget* parent = nullptr);

    KVXAnimationTimeLineWidget* timeline() const { return m_timeline; }
    KvxAnimationButtonsPanel* buttons() const { return m_buttons; }
    QPushButton* exportButton() const { return m_export; }

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    KVXAnimationTimeLineWidget* m_timeline;
    KvxAnimationButtonsPanel* m_buttons;
    QPushButton* m_export;
};
