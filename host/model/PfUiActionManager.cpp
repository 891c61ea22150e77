#include "PfUiActionManager.h"

#include <QAction>

PfUiActionManager* PfUiActionManager::GetInstance()
{
    static PfUiActionManager instance;
    return &instance;
}

void PfUiActionManager::AddAction(const QString& name, QAction* action) { m_actions[name] = action; }

void PfUiActionManager::RemoveAction(const QString& name) { m_actions.erase(name); }

QAction* PfUiActionManager::FindAction(const QString& name) const
{
    auto it = m_actions.find(name);
    return it == m_actions.end() ? nullptr : it->second.data();
}
