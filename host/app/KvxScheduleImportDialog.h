#pragma once

#include <QDialog>

class PfDbDocument;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;

// File ▸ 导入进度计划: the schedule file, the rules that link its tasks to
// the model (shown as text a planner can edit, the default rules to start
// with) and, once imported, the link report. The records come in one undo
// step; the dialog stays open on the report until closed.
class KvxScheduleImportDialog : public QDialog {
    Q_OBJECT
public:
    KvxScheduleImportDialog(PfDbDocument* document, QWidget* parent = nullptr);

    void SetSchedulePath(const QString& path);
    void SetRulesText(const QString& text);
    QString ReportText() const;
    // Imports with what the dialog shows; false (with a message box) when
    // nothing was imported.
    bool Import();

private:
    void browse();

    PfDbDocument* m_document;
    QLineEdit* m_path;
    QPlainTextEdit* m_rules;
    QPlainTextEdit* m_report;
    QPushButton* m_import;
};
