#include "PfSchedule.h"

#include <QFile>
#include <QFileInfo>
#include <QTextCodec>

namespace {
QDate firstOf(const QDate& a, const QDate& b, const QDate& c) { return a.isValid() ? a : b.isValid() ? b : c; }
} // namespace

QDate PfScheduleTask::Start() const { return firstOf(actualStart, earlyStart, plannedStart); }

QDate PfScheduleTask::Finish() const { return firstOf(actualFinish, earlyFinish, plannedFinish); }

const PfScheduleTask* PfSchedule::Find(const QString& codeOrName) const
{
    for (const PfScheduleTask& task : tasks)
        if (task.code == codeOrName || task.name == codeOrName)
            return &task;
    return nullptr;
}

bool PfScheduleText::ReadFile(const QString& path,
                              const std::function<bool(const QByteArray&, PfSchedule&, QString*)>& read,
                              PfSchedule& schedule, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Fail(error, 0, QStringLiteral("%1: %2").arg(QFileInfo(path).fileName(), file.errorString()));
    QString reason;
    if (read(file.readAll(), schedule, &reason))
        return true;
    return Fail(error, 0, QStringLiteral("%1: %2").arg(QFileInfo(path).fileName(), reason));
}

bool PfScheduleText::Fail(QString* error, qint64 line, const QString& reason)
{
    if (error)
        *error = line > 0 ? QStringLiteral("line %1: %2").arg(line).arg(reason) : reason;
    return false;
}

QString PfScheduleText::Decode(const QByteArray& bytes, const char* fallback, QString& encoding)
{
    QTextCodec::ConverterState state;
    QString text = QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    if (state.invalidChars == 0) {
        encoding = QStringLiteral("UTF-8");
    } else {
        encoding = QLatin1String(fallback);
        text = QTextCodec::codecForName(fallback)->toUnicode(bytes);
    }
    if (text.startsWith(QChar(0xfeff)))
        text.remove(0, 1);
    return text;
}
