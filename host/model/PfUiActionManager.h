#pragma once

#include <QPointer>
#include <QString>

#include <map>

class QAction;

// The application's user-interface actions by name. The application makes
// an action for each command it puts in a menu or a toolbar and registers it
// here; whoever must change what an action shows (its text, check state,
// icon) finds it by name, without knowing the window that holds it.
class PfUiActionManager {
public:
    static PfUiActionManager* GetInstance();

    // An action registered under the name before is replaced (not deleted:
    // its parent owns it).
    void AddAction(const QString& name, QAction* action);
    void RemoveAction(const QString& name);
    // Null for an unknown name and for an action that was destroyed.
    QAction* FindAction(const QString& name) const;

private:
    std::map<QString, QPointer<QAction>> m_actions;
};
