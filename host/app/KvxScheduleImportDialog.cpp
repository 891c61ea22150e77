#include "KvxScheduleImportDialog.h"

#include "KvxScheduleImport.h"

#include "host/import/PfScheduleLinkRules.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
const QString kTitle = QStringLiteral("导入进度计划");
}

KvxScheduleImportDialog::KvxScheduleImportDialog(PfDbDocument* document, QWidget* parent)
    : QDialog(parent), m_document(document), m_path(new QLineEdit(this)), m_rules(new QPlainTextEdit(this)),
      m_report(new QPlainTextEdit(this)), m_import(new QPushButton(QStringLiteral("导入"), this))
{
    setWindowTitle(kTitle);
    auto* browse = new QPushButton(QStringLiteral("浏览…"), this);
    connect(browse, &QPushButton::clicked, this, &KvxScheduleImportDialog::browse);
    auto* file = new QHBoxLayout;
    file->addWidget(m_path, 1);
    file->addWidget(browse);
    m_rules->setPlainText(PfScheduleLinkRules::kDefaultText);
    m_rules->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_report->setReadOnly(true);
    m_report->setPlaceholderText(QStringLiteral("导入后在此显示关联报告"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->addButton(m_import, QDialogButtonBox::ActionRole);
    connect(m_import, &QPushButton::clicked, this, &KvxScheduleImportDialog::Import);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("进度计划文件"), file);
    form->addRow(QStringLiteral("关联规则"), m_rules);
    form->addRow(QStringLiteral("关联报告"), m_report);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
    resize(640, 560);
}

void KvxScheduleImportDialog::SetSchedulePath(const QString& path) { m_path->setText(path); }

void KvxScheduleImportDialog::SetRulesText(const QString& text) { m_rules->setPlainText(text); }

QString KvxScheduleImportDialog::ReportText() const { return m_report->toPlainText(); }

void KvxScheduleImportDialog::browse()
{
    const QString path =
        QFileDialog::getOpenFileName(this, kTitle, m_path->text(),
                                     QStringLiteral("进度计划 (*.xer *.xml *.csv *.txt *.ifc);;所有文件 (*)"));
    if (!path.isEmpty())
        m_path->setText(path);
}

bool KvxScheduleImportDialog::Import()
{
    KvxScheduleImport::Request request;
    request.schedule = m_path->text().trimmed();
    request.rulesText = m_rules->toPlainText();
    if (request.schedule.isEmpty()) {
        QMessageBox::warning(this, kTitle, QStringLiteral("请选择进度计划文件"));
        return false;
    }
    KvxScheduleImport::Result result;
    QString error;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool done =
        KvxScheduleImport::Run(m_document, request, KvxScheduleImport::ModuleRecords(), result, &error);
    QApplication::restoreOverrideCursor();
    QString report = result.schedule.tasks.empty() ? QString() : result.report.Text();
    if (done)
        report += QLatin1Char('\n') + result.records;
    m_report->setPlainText(report);
    if (!done)
        QMessageBox::warning(this, kTitle, QStringLiteral("未能导入进度计划：%1").arg(error));
    return done;
}
