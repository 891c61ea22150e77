#pragma once

#include <QDialog>

class QComboBox;

// The roaming-video page's settings: the key-frame timeline's time per step,
// the preview's speed, and how the date timeline's calendar divides time.
// Read from the live timelines and camera clock when it opens, written back
// on OK; it keeps nothing itself.
class KvxKeyFrameAnimationSettingDialog : public QDialog {
    Q_OBJECT
public:
    explicit KvxKeyFrameAnimationSettingDialog(QWidget* parent = nullptr);

    QComboBox* GetTimeScaleBox() const { return m_timeScale; }
    QComboBox* GetSpeedBox() const { return m_speed; }
    QComboBox* GetStyleBox() const { return m_style; }

    // The value of an item; out of range gives the default (1 s, 1x).
    static int TimeUnitAt(int index);
    static float SpeedAt(int index);

public slots:
    void accept() override;

private:
    void buildForm();
    void load();

    QComboBox* m_timeScale;
    QComboBox* m_speed;
    QComboBox* m_style;
};
