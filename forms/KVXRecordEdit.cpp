#include "KVXRecordEdit.h"

#include "animation/KVXAnimation.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbTransaction.h"
#include "host/db/PfDbTransactionManager.h"

namespace {
int openEdits = 0;
}

int KVXRecordEdit::Depth() { return openEdits; }

KVXRecordEditNotifier* KVXRecordEditNotifier::Get()
{
    static KVXRecordEditNotifier notifier;
    return &notifier;
}

KVXRecordEdit::KVXRecordEdit(KVXAnimation* record) : m_record(record)
{
    ++openEdits;
    PfDbDatabase* database = record ? record->GetDatabase() : nullptr;
    if (!database)
        return;
    database->TransactionManager()->StartTransaction()->SetName(
        QStringLiteral("修改动画 %1").arg(record->getNumber()));
    m_inTransaction = true;
    record->AssertWriteEnabled();
}

KVXRecordEdit::~KVXRecordEdit()
{
    --openEdits;
    if (m_inTransaction)
        m_record->GetDatabase()->TransactionManager()->EndTransaction();
    if (openEdits == 0 && m_record)
        emit KVXRecordEditNotifier::Get()->recordsEdited();
}
