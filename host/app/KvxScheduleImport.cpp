#include "KvxScheduleImport.h"

#include "host/db/PfDbDocument.h"
#include "host/import/PfDraftSchedule.h"
#include "host/import/PfIfcScheduleReader.h"
#include "host/import/PfScheduleReader.h"
#include "host/rx/PfEdCommandStack.h"
#include "host/rx/PfRxDictionary.h"

#include <QFile>
#include <QFileInfo>

namespace {

bool fail(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return false;
}

// The model file's text when it is an IFC file with a work schedule of its
// own; empty otherwise. Read once: the schedule is read from the same bytes.
QByteArray ownSchedule(const QString& model)
{
    QFile file(model);
    if (QFileInfo(model).suffix().compare(QLatin1String("ifc"), Qt::CaseInsensitive) != 0 ||
        !file.open(QIODevice::ReadOnly))
        return QByteArray();
    QByteArray bytes = file.readAll();
    return PfIfcScheduleReader::HasSchedule(bytes) ? bytes : QByteArray();
}

bool readSchedule(PfDbDocument* document, const KvxScheduleImport::Request& request,
                  KvxScheduleImport::Result& result, QString* error)
{
    if (!request.schedule.isEmpty()) {
        result.source = KvxScheduleImport::Source::File;
        return PfScheduleReader::ReadFile(request.schedule, result.schedule, error);
    }
    if (const QByteArray bytes = ownSchedule(request.model); !bytes.isEmpty()) {
        result.source = KvxScheduleImport::Source::Model;
        QString reason;
        if (PfIfcScheduleReader::Read(bytes, result.schedule, &reason))
            return true;
        return fail(error, QStringLiteral("%1: %2").arg(QFileInfo(request.model).fileName(), reason));
    }
    result.source = KvxScheduleImport::Source::Draft;
    result.schedule = PfDraftSchedule::Make(document->GetDatabase(), request.draftStart);
    return true;
}

} // namespace

KvxScheduleImport::MakeRecords KvxScheduleImport::ModuleRecords()
{
    return [](const QStringList& words, QString& answer) {
        auto* commands = PfEdCommandStack::Cast(PfRxSysRegistry()->GetAt(kPfRxRegisteredCommandsName));
        if (!commands || !commands->HasGroup(L"KVXElement")) {
            answer = QStringLiteral("the animation module is not installed: no record can be made");
            return false;
        }
        return commands->RunCommand(L"KVXElement.KVX_ADD_TASK_RECORDS", words, &answer) == Pfad::eOk;
    };
}

QString KvxScheduleImport::Result::SourceText() const
{
    switch (source) {
    case Source::File: break;
    case Source::Model: return QStringLiteral("the model's own work schedule");
    case Source::Draft: return QStringLiteral("a DRAFT made from the model's storeys and element types");
    }
    return QStringLiteral("the schedule file");
}

bool KvxScheduleImport::Run(PfDbDocument* document, const Request& request, const MakeRecords& makeRecords,
                            Result& result, QString* error)
{
    result = Result();
    if (!document)
        return fail(error, QStringLiteral("no document is open"));
    PfScheduleLinkRules rules = PfScheduleLinkRules::Defaults();
    if (!request.rules.isEmpty() && !rules.ReadFile(request.rules, error))
        return false;
    if (request.rules.isEmpty() && !request.rulesText.isEmpty() &&
        !rules.Parse(request.rulesText, QFileInfo(request.schedule).absolutePath(), error))
        return false;
    if (!readSchedule(document, request, result, error))
        return false;
    const std::vector<PfTaskRecord> records =
        PfScheduleLinker(document->GetDatabase()).Link(result.schedule, rules, result.report);
    if (records.empty())
        return fail(error, QStringLiteral("no task could be linked to an element of the model: nothing imported"));
    QStringList words;
    words.reserve(static_cast<int>(records.size()));
    for (const PfTaskRecord& record : records)
        words << record.ToWord();
    if (!makeRecords(words, result.records))
        return fail(error, result.records);
    return true;
}
