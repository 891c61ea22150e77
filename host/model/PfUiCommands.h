#pragma once

#include <QKeySequence>
#include <QString>

#include <functional>
#include <vector>

// The commands a module offers the application's menus and toolbars, each by
// the name under which the application registers its action with
// PfUiActionManager (so that the module can find the action again to change
// its text, icon or check state). The module registers them when it is
// loaded and takes them back when it is unloaded.
class PfUiCommands {
public:
    struct Command {
        QString name;
        QString text;
        // The menu it goes in, by title, a submenu after a slash ("动画/添加");
        // commands of one menu keep their order of registration.
        QString menu;
        QString icon;
        QKeySequence shortcut;
        bool checkable = false;
        // Also on the application's toolbar.
        bool onToolBar = false;
        // False when there was nothing to do (a stop with nothing playing),
        // so that the window may give the key its other meaning.
        std::function<bool()> run;
    };

    static void Register(const Command& command);
    static void Unregister(const QString& name);
    static const std::vector<Command>& Commands();
};
