#pragma once

#include "PfRxObject.h"
#include "PfadError.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <map>
#include <string>
#include <vector>

// The host's registered commands, grouped by the module that added them. A
// command's full name is "<group>.<command>"; a module removes its whole group
// when it unloads.
class PfEdCommandStack : public PfRxObject {
    PFRX_DECLARE_MEMBERS(PfEdCommandStack)
public:
    using Command = std::function<void()>;
    // A command that takes words (a command line's, after the command's
    // name) and answers eOk, or an error with a sentence for the user.
    using ArgumentCommand = std::function<Pfad::Error(const QStringList& arguments, QString* message)>;

    Pfad::Error AddCommand(const std::wstring& group, const std::wstring& name, Command command);
    Pfad::Error AddCommand(const std::wstring& group, const std::wstring& name, ArgumentCommand command);
    Pfad::Error RemoveGroup(const std::wstring& group);
    bool HasGroup(const std::wstring& group) const;
    std::vector<std::wstring> CommandNames(const std::wstring& group) const;

    // eKeyNotFound when no group holds the command; otherwise what the
    // command answers (a plain command answers eOk).
    Pfad::Error RunCommand(const std::wstring& fullName) const;
    Pfad::Error RunCommand(const std::wstring& fullName, const QStringList& arguments, QString* message) const;

private:
    std::map<std::wstring, std::map<std::wstring, ArgumentCommand>> m_groups;
};
