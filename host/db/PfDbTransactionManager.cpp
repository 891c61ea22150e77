#include "PfDbTransactionManager.h"

#include "PfDbTransaction.h"
#include "PfDbTransactionReactor.h"

#include <algorithm>

namespace {
std::vector<PfDbTransactionReactor*>& globalReactors()
{
    static std::vector<PfDbTransactionReactor*> reactors;
    return reactors;
}

void addOnce(std::vector<PfDbTransactionReactor*>& reactors, PfDbTransactionReactor* reactor)
{
    if (reactor && std::find(reactors.begin(), reactors.end(), reactor) == reactors.end())
        reactors.push_back(reactor);
}

void remove(std::vector<PfDbTransactionReactor*>& reactors, PfDbTransactionReactor* reactor)
{
    reactors.erase(std::remove(reactors.begin(), reactors.end(), reactor), reactors.end());
}
} // namespace

PfDbTransactionManager::PfDbTransactionManager(PfDbDatabase* database) : m_database(database) {}

PfDbTransactionManager::~PfDbTransactionManager() = default;

template <class Call>
void PfDbTransactionManager::notify(Call call)
{
    // A copy: a reactor may detach itself while being told.
    std::vector<PfDbTransactionReactor*> reactors = m_reactors;
    reactors.insert(reactors.end(), globalReactors().begin(), globalReactors().end());
    for (PfDbTransactionReactor* reactor : reactors)
        call(reactor);
}

PfDbTransaction* PfDbTransactionManager::StartTransaction()
{
    notify([this](PfDbTransactionReactor* r) { r->TransactionAboutToStart(m_database); });
    m_active.push_back(std::make_unique<PfDbTransaction>(m_database));
    notify([this](PfDbTransactionReactor* r) { r->TransactionStarted(m_database); });
    return m_active.back().get();
}

Pfad::Error PfDbTransactionManager::EndTransaction()
{
    if (m_active.empty())
        return Pfad::eNotInTransaction;
    notify([this](PfDbTransactionReactor* r) { r->TransactionAboutToEnd(m_database); });
    std::unique_ptr<PfDbTransaction> ended = std::move(m_active.back());
    m_active.pop_back();
    if (!m_active.empty()) {
        ended->mergeInto(*m_active.back());
    } else {
        notify([this](PfDbTransactionReactor* r) { r->EndCalledOnOutermostTransaction(m_database); });
        if (!ended->IsEmpty()) {
            m_undo.push_back(std::move(ended));
            m_redo.clear();
        }
    }
    notify([this](PfDbTransactionReactor* r) { r->TransactionEnded(m_database); });
    return Pfad::eOk;
}

Pfad::Error PfDbTransactionManager::AbortTransaction()
{
    if (m_active.empty())
        return Pfad::eNotInTransaction;
    notify([this](PfDbTransactionReactor* r) { r->TransactionAboutToAbort(m_database); });
    std::unique_ptr<PfDbTransaction> aborted = std::move(m_active.back());
    m_active.pop_back();
    m_restoring = true;
    ++m_changes;
    aborted->restore(true);
    m_restoring = false;
    notify([this](PfDbTransactionReactor* r) { r->TransactionAborted(m_database); });
    return Pfad::eOk;
}

PfDbTransaction* PfDbTransactionManager::TopTransaction() const
{
    return m_active.empty() ? nullptr : m_active.back().get();
}

bool PfDbTransactionManager::Undo(int count)
{
    if (!CanUndo() || count < 1)
        return false;
    const std::vector<PfDbTransaction*> undone = replay(m_undo, m_redo, count, true);
    notify([&](PfDbTransactionReactor* r) { r->TransactionUndone(m_database, undone); });
    return true;
}

bool PfDbTransactionManager::Redo(int count)
{
    if (!CanRedo() || count < 1)
        return false;
    const std::vector<PfDbTransaction*> redone = replay(m_redo, m_undo, count, false);
    notify([&](PfDbTransactionReactor* r) { r->TransactionRedone(m_database, redone); });
    return true;
}

std::vector<PfDbTransaction*> PfDbTransactionManager::replay(Steps& from, Steps& to, int count, bool before)
{
    std::vector<PfDbTransaction*> replayed;
    m_restoring = true;
    while (count-- > 0 && !from.empty()) {
        ++m_changes;
        if (before)
            from.back()->undo();
        else
            from.back()->restore(false);
        replayed.push_back(from.back().get());
        to.push_back(std::move(from.back()));
        from.pop_back();
    }
    m_restoring = false;
    return replayed;
}

QString PfDbTransactionManager::UndoName() const { return m_undo.empty() ? QString() : m_undo.back()->GetName(); }

QString PfDbTransactionManager::RedoName() const { return m_redo.empty() ? QString() : m_redo.back()->GetName(); }

void PfDbTransactionManager::ClearUndoHistory()
{
    m_undo.clear();
    m_redo.clear();
}

void PfDbTransactionManager::AddReactor(PfDbTransactionReactor* reactor) { addOnce(m_reactors, reactor); }

void PfDbTransactionManager::RemoveReactor(PfDbTransactionReactor* reactor) { remove(m_reactors, reactor); }

void PfDbTransactionManager::AddGlobalReactor(PfDbTransactionReactor* reactor) { addOnce(globalReactors(), reactor); }

void PfDbTransactionManager::RemoveGlobalReactor(PfDbTransactionReactor* reactor)
{
    remove(globalReactors(), reactor);
}

void PfDbTransactionManager::ObjectTouched(PfDbObject* object, bool isNew)
{
    ++m_changes;
    if (m_active.empty() || m_restoring)
        return;
    m_active.back()->record(object, isNew);
}
