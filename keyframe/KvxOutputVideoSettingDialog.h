#pragma once

#include "KVXKeyFrameAnimationManager.h"

#include <QDialog>

class QComboBox;
class QLineEdit;
class QPushButton;

// Asks how to export the fly-through: the video's resolution (one of five,
// or typed) and its file. OK is refused, with a notice, until both pass
// KVXVideoSettings; the frame rate is always 24.
class KvxOutputVideoSettingDialog : public QDialog {
    Q_OBJECT
public:
    explicit KvxOutputVideoSettingDialog(QWidget* parent = nullptr);

    bool isSettingValid() const;
    bool IsAccepted() const { return m_accepted; }
    KVXKeyFrameAnimationManager::VideoOptions GetVideoOptions() const;

    QComboBox* GetResolutionBox() const { return m_resolution; }
    QLineEdit* GetPathEdit() const { return m_path; }

    // Shows the dialog modally; the options when the user accepted.
    static bool Ask(KVXKeyFrameAnimationManager::VideoOptions& options);

public slots:
    void accept() override;
    void onSelectVideoPath();

private:
    QComboBox* m_resolution;
    QLineEdit* m_path;
    QPushButton* m_browse;
    bool m_accepted = false;
};
