#include "PfDbDocumentFile.h"

#include "PfDbDatabase.h"
#include "PfDbDocumentReader.h"
#include "PfDbDocumentWriter.h"

#include <QFile>
#include <QSaveFile>

bool PfDbDocumentFile::Write(PfDbDatabase& database, const QString& filePath, QString* error)
{
    QSaveFile file(filePath);
    if (!file.open(QIODevice::WriteOnly)) {
        if (error)
            *error = QStringLiteral("cannot write %1: %2").arg(filePath, file.errorString());
        return false;
    }
    if (!Write(database, file, error)) {
        file.cancelWriting();
        return false;
    }
    if (!file.commit()) {
        if (error)
            *error = QStringLiteral("cannot write %1: %2").arg(filePath, file.errorString());
        return false;
    }
    return true;
}

bool PfDbDocumentFile::Write(PfDbDatabase& database, QIODevice& device, QString* error)
{
    return PfDbDocumentWriter(device).Write(database, error);
}

std::unique_ptr<PfDbDatabase> PfDbDocumentFile::Read(const QString& filePath, PfDbLoadReport* report, QString* error)
{
    QFile file(filePath);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QStringLiteral("cannot open %1: %2").arg(filePath, file.errorString());
        return nullptr;
    }
    QString reason;
    std::unique_ptr<PfDbDatabase> database = Read(file, report, &reason);
    if (!database && error)
        *error = QStringLiteral("%1: %2").arg(filePath, reason);
    return database;
}

std::unique_ptr<PfDbDatabase> PfDbDocumentFile::Read(QIODevice& device, PfDbLoadReport* report, QString* error)
{
    const QByteArray content = device.readAll();
    return PfDbDocumentReader(content, report).Read(error);
}
