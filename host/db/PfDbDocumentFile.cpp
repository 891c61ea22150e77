#include "PfDbDocumentFile.h"

#include "PfDbDatabase.h"
#include "PfDbDocumentReader.h"
#include "PfDbDocumentWriter.h"
#include "host/vpe/core/CAtomicFile.h"

#include <QFile>

bool PfDbDocumentFile::Write(PfDbDatabase& database, const QString& filePath, QString* error)
{
    vpe::CAtomicFile file(filePath);
    if (!file.Open(error))
        return false;
    if (!Write(database, file.Device(), error)) {
        file.Cancel();
        return false;
    }
    return file.Commit(error);
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
