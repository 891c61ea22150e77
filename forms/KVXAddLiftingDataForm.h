#pragma once

#include <QDate>
#include <QDialog>

class KVXAnimation;
class QDateEdit;
class QLineEdit;

// Asks for one jacking row of a tower crane ("添加塔吊顶升数据"): a date within
// the record's days and a tower height of 10000 mm at least. It stays open
// with an information box while either is wrong.
class KVXAddLiftingDataForm : public QDialog {
    Q_OBJECT
public:
    explicit KVXAddLiftingDataForm(KVXAnimation* animation, QWidget* parent = nullptr);

    QDate getDate() const;
    int getHeight() const;
    QDateEdit* dateEdit() const { return m_date; }
    QLineEdit* heightEdit() const { return m_height; }

public slots:
    void onBtnOk();
    void onBtnCancel();

private:
    KVXAnimation* m_animation;
    QDateEdit* m_date;
    QLineEdit* m_height;
};
