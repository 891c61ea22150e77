#include "KVXTaskRecords.h"

#include "KVXAnimatorManager.h"

#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbTransaction.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/db/PfDocManager.h"

#include <map>

namespace {

using Key = std::pair<qint64, QString>; // element, task

struct Shape {
    KVXAnimation::AnimType type;
    KVXAnimation::TranslationType direction;
};

Shape shapeOf(PfTaskRecord::Kind kind)
{
    switch (kind) {
    case PfTaskRecord::Demolition: return {KVXAnimation::Demolition, KVXAnimation::TopDown};
    case PfTaskRecord::Emphasis: return {KVXAnimation::Emphasis, KVXAnimation::LeftToRight};
    case PfTaskRecord::Construction:
    case PfTaskRecord::Layered: break;
    }
    return {KVXAnimation::Construction, KVXAnimation::BottomUp};
}

std::map<Key, KVXAnimation*> recordsByTask()
{
    std::map<Key, KVXAnimation*> records;
    for (KVXAnimation* record : KVXAnimatorManager::getInstance()->getAnimationVector()) {
        const QString task = record->Property(PfTaskRecord::kTaskIdProperty);
        if (!task.isEmpty())
            records.emplace(Key{record->getObjId(), task}, record);
    }
    return records;
}

bool sameDays(const KVXAnimation* record, const PfTaskRecord& wanted)
{
    const bool layered = wanted.kind == PfTaskRecord::Layered;
    return record->getStartDate() == wanted.start && record->getEndDate() == wanted.finish.addDays(1) &&
           record->getAnimationType() == shapeOf(wanted.kind).type && record->getIsLayering() == layered &&
           (!layered || record->getLayerHeight() == wanted.layerHeight);
}

void shape(KVXAnimation* record, const PfTaskRecord& wanted)
{
    const Shape kind = shapeOf(wanted.kind);
    record->setAnimationType(kind.type);
    record->setTranslationType(kind.direction);
    record->setStartDate(wanted.start);
    // A task's finish is its last working day; a record ends when that
    // day does.
    record->setEndDate(wanted.finish.addDays(1));
    record->setDurationDays(static_cast<int>(wanted.start.daysTo(wanted.finish)) + 1);
    record->setIsLayering(wanted.kind == PfTaskRecord::Layered);
    record->setLayerHeight(wanted.kind == PfTaskRecord::Layered ? wanted.layerHeight : 0.0);
}

} // namespace

const wchar_t* const KVXTaskRecords::kCommandName = L"KVX_ADD_TASK_RECORDS";
const QString KVXTaskRecords::kUndoName = QStringLiteral("导入进度计划");

QString KVXTaskRecords::Outcome::Text() const
{
    return QStringLiteral("records: %1 added, %2 moved to the schedule's new dates, %3 unchanged")
        .arg(added)
        .arg(moved)
        .arg(unchanged);
}

Pfad::Error KVXTaskRecords::RunCommand(const QStringList& arguments, QString* message)
{
    std::vector<PfTaskRecord> records;
    records.reserve(static_cast<std::size_t>(arguments.size()));
    for (const QString& word : arguments) {
        PfTaskRecord record;
        if (!PfTaskRecord::FromWord(word, record)) {
            if (message)
                *message = QStringLiteral("not a task record: %1").arg(word.left(80));
            return Pfad::eInvalidInput;
        }
        records.push_back(record);
    }
    Outcome outcome;
    QString error;
    if (!Apply(PfDocManagerPtr()->CurrentDocument(), records, outcome, &error)) {
        if (message)
            *message = error;
        return Pfad::eNotApplicable;
    }
    if (message)
        *message = outcome.Text();
    return Pfad::eOk;
}

bool KVXTaskRecords::Apply(PfDbDocument* document, const std::vector<PfTaskRecord>& records, Outcome& outcome,
                           QString* error)
{
    outcome = Outcome();
    const auto fail = [error](const QString& why) {
        if (error)
            *error = why;
        return false;
    };
    if (!document)
        return fail(QStringLiteral("no document is open"));
    for (const PfTaskRecord& wanted : records) {
        const PfDbObject* element = document->GetItem(wanted.element);
        if (!element || element->IsErased())
            return fail(QStringLiteral("task %1 names element %2, which the document does not have")
                            .arg(wanted.taskName)
                            .arg(wanted.element));
    }
    std::map<Key, KVXAnimation*> existing = recordsByTask();
    KVXAnimatorManager* manager = KVXAnimatorManager::getInstance();
    PfDbTransactionManager* steps = document->GetDatabase()->TransactionManager();
    steps->StartTransaction()->SetName(kUndoName);
    for (const PfTaskRecord& wanted : records) {
        const auto objId = static_cast<qint64>(wanted.element);
        if (auto found = existing.find({objId, wanted.taskId}); found != existing.end()) {
            KVXAnimation* record = found->second;
            if (sameDays(record, wanted)) {
                ++outcome.unchanged;
                continue;
            }
            record->AssertWriteEnabled();
            shape(record, wanted);
            record->SetProperty(PfTaskRecord::kTaskNameProperty, wanted.taskName);
            ++outcome.moved;
            continue;
        }
        const Shape kind = shapeOf(wanted.kind);
        KVXAnimation* record = manager->addKvxAnimation(objId, kind.type, kind.direction);
        if (!record)
            continue;
        shape(record, wanted);
        record->SetProperty(PfTaskRecord::kTaskIdProperty, wanted.taskId);
        record->SetProperty(PfTaskRecord::kTaskNameProperty, wanted.taskName);
        existing.emplace(Key{objId, wanted.taskId}, record);
        ++outcome.added;
    }
    steps->EndTransaction();
    emit manager->dataChangedSignal();
    return true;
}
