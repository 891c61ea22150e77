#pragma once

#include "PfRxObject.h"
#include "PfadError.h"

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

    Pfad::Error AddCommand(const std::wstring& group, const std::wstring& name, Command command);
    Pfad::Error RemoveGroup(const std::wstring& group);
    bool HasGroup(const std::wstring& group) const;
    std::vector<std::wstring> CommandNames(const std::wstring& group) const;

    // eKeyNotFound when no group holds the command.
    Pfad::Error RunCommand(const std::wstring& fullName) const;

private:
    std::map<std::wstring, std::map<std::wstring, Command>> m_groups;
};
