#pragma once

#include <QDate>
#include <QDialog>

class QDateEdit;

// Asks for a date to put the date timeline's indicator on ("定位日期").
class KVXDateEditDialog : public QDialog {
    Q_OBJECT
public:
    explicit KVXDateEditDialog(const QDate& date, QWidget* parent = nullptr);

    QDate GetDate() const;
    QDateEdit* GetDateEdit() const { return m_edit; }

private:
    QDateEdit* m_edit;
};
