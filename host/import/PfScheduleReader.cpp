#include "PfScheduleReader.h"

#include "PfCsvScheduleReader.h"
#include "PfIfcScheduleReader.h"
#include "PfMspdiReader.h"
#include "PfXerReader.h"

#include <QFileInfo>

QStringList PfScheduleReader::Suffixes()
{
    return {QStringLiteral("xer"), QStringLiteral("xml"), QStringLiteral("csv"), QStringLiteral("txt"),
            QStringLiteral("ifc")};
}

bool PfScheduleReader::ReadFile(const QString& path, PfSchedule& schedule, QString* error)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("xer"))
        return PfXerReader::ReadFile(path, schedule, error);
    if (suffix == QLatin1String("xml"))
        return PfMspdiReader::ReadFile(path, schedule, error);
    if (suffix == QLatin1String("csv") || suffix == QLatin1String("txt"))
        return PfCsvScheduleReader::ReadFile(path, schedule, error);
    if (suffix == QLatin1String("ifc"))
        return PfIfcScheduleReader::ReadFile(path, schedule, error);
    if (error)
        *error = QStringLiteral("%1: not a schedule this program reads (%2)")
                     .arg(QFileInfo(path).fileName(), Suffixes().join(QStringLiteral(", ")));
    return false;
}
