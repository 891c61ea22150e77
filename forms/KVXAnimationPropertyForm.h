#pragma once

#include "animation/KVXAnimation.h"

#include <QDate>
#include <QWidget>

#include <memory>

class KVXRecordEdit;
class QCheckBox;
class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QPushButton;

// The panel in which the user edits one schedule animation ("动画属性"):
// its dates and days, loop playback, the elevations of a vertical build,
// the angles of a rotation, the direction of a cut, the turn of a path,
// layered construction and, for a tower crane, its jacking data. Every edit
// is written straight into the record, as one step of the document's undo;
// an undo or redo shows the record again.
class KVXAnimationPropertyForm : public QWidget {
    Q_OBJECT
public:
    static KVXAnimationPropertyForm* getInstance();
    static void freeInstance();

    // Only stores it (updateData shows it); not owned.
    void setAnimation(KVXAnimation* animation);
    KVXAnimation* getAnimation() const { return m_animation; }
    // Loads the record into the controls; nothing without one.
    void updateData();
    // Typing in a field writes the record at every key but is one step of
    // the undo, closed here: when the field is left or Return pressed,
    // another field is edited, the form shows another record or is hidden.
    // The host's undo is refused while a step is open.
    void finishTyping();

    void setAnimationID(const QString& id);
    QString getAnimationID() const;
    void setStartDate(const QDate& date);
    QDate getStartDate() const;
    void setEndDate(const QDate& date);
    QDate getEndDate() const;
    void setDurationTime(const QString& days);
    QString getDurationTime() const;
    void setIsRepeat(bool repeat);
    bool getIsRepeat() const;
    void setRepeatEndDate(const QDate& date);
    QDate getRepeatEndDate() const;
    void setStartElevation(const QString& metres);
    QString getStartElevation() const;
    void setEndElevation(const QString& metres);
    QString getEndElevataion() const;
    void setStartRotate(const QString& degrees);
    QString getStartRotate() const;
    void setEndRotate(const QString& degrees);
    QString getEndRotate() const;
    void setTranslationType(KVXAnimation::TranslationType type);
    KVXAnimation::TranslationType getTranslationType() const;
    void setPathRotate(const QString& degrees);
    QString getPathRotate() const;
    void setIsLayering(bool layering);
    bool getIsLayering() const;

    // The controls, by row, for the host's layout and for tests.
    QLineEdit* durationEdit() const { return m_duration; }
    QDateEdit* startDateEdit() const { return m_startDate; }
    QDateEdit* endDateEdit() const { return m_endDate; }
    QDateEdit* repeatEndDateEdit() const { return m_repeatEndDate; }
    QCheckBox* repeatBox() const { return m_repeat; }
    QLineEdit* startElevationEdit() const { return m_startElevation; }
    QLineEdit* endElevationEdit() const { return m_endElevation; }
    QLineEdit* startAngleEdit() const { return m_startAngle; }
    QLineEdit* endAngleEdit() const { return m_endAngle; }
    QComboBox* translationCombo() const { return m_translation; }
    QLineEdit* pathRotateEdit() const { return m_pathRotate; }
    QPushButton* towerButton() const { return m_tower; }
    QCheckBox* layeringBox() const { return m_layering; }
    QLineEdit* layerHeightEdit() const { return m_layerHeight; }

public slots:
    void doStartDateChanged(const QDate& date);
    void doEndDateChanged(const QDate& date);
    void doDurationChanged(const QString& text);
    void doRepeatBoxChanged(int state);
    void doRepeatEndDateChanged(const QDate& date);
    void doStartElevationChanged(const QString& text);
    void doEndElevationChanged(const QString& text);
    void doStartAngleChanged(const QString& text);
    void doEndAngleChanged(const QString& text);
    void doTranslationTypeChanged(int index);
    void doPathRotateAngelChanged(const QString& text);
    void onTowerBtnClick();
    void doIsLayeringChanged(int state);
    void doLayerHeightChanged();

private:
    class UndoFollower;

    KVXAnimationPropertyForm();
    ~KVXAnimationPropertyForm() override;
    void initUI();
    void connectSlots();
    // A label and its editor on one row of the frame.
    template <class Editor>
    Editor* addRow(QWidget* frame, const QString& text, int y, Editor* editor, QLabel** label = nullptr);
    void showRows(QLabel* label, QWidget* editor, bool shown);
    // The step a write from a field belongs to: the typing step of that
    // field when the user types in it, the edit that set it off, or a step
    // of its own.
    std::unique_ptr<KVXRecordEdit> stepFor(QObject* field);
    void hideEvent(QHideEvent* event) override;
    // Whether the record's element is a tower crane in the current document.
    bool animatesTowerCrane() const;

    static KVXAnimationPropertyForm* s_instance;

    KVXAnimation* m_animation = nullptr;
    bool m_editGuard = true;
    QLineEdit* m_id = nullptr;
    QLineEdit* m_type = nullptr;
    QDateEdit* m_startDate = nullptr;
    QLineEdit* m_duration = nullptr;
    QDateEdit* m_endDate = nullptr;
    QCheckBox* m_repeat = nullptr;
    QDateEdit* m_repeatEndDate = nullptr;
    QLabel* m_startElevationLabel = nullptr;
    QLineEdit* m_startElevation = nullptr;
    QLabel* m_endElevationLabel = nullptr;
    QLineEdit* m_endElevation = nullptr;
    QLabel* m_startAngleLabel = nullptr;
    QLineEdit* m_startAngle = nullptr;
    QLabel* m_endAngleLabel = nullptr;
    QLineEdit* m_endAngle = nullptr;
    QLabel* m_translationLabel = nullptr;
    QComboBox* m_translation = nullptr;
    QLabel* m_pathRotateLabel = nullptr;
    QLineEdit* m_pathRotate = nullptr;
    QLabel* m_towerLabel = nullptr;
    QPushButton* m_tower = nullptr;
    QLabel* m_layeringLabel = nullptr;
    QCheckBox* m_layering = nullptr;
    QLabel* m_layerHeightLabel = nullptr;
    QLineEdit* m_layerHeight = nullptr;
    std::unique_ptr<UndoFollower> m_undoFollower;
    std::unique_ptr<KVXRecordEdit> m_typing;
    const QObject* m_typingIn = nullptr;
};
