#include "PfEdCommandStack.h"

#include "PfRxClass.h"

PFRX_DEFINE_HOST_MEMBERS(PfEdCommandStack, PfRxObject, nullptr)

Pfad::Error PfEdCommandStack::AddCommand(const std::wstring& group, const std::wstring& name, Command command)
{
    if (!command)
        return Pfad::eInvalidInput;
    return AddCommand(group, name, [command](const QStringList&, QString*) {
        command();
        return Pfad::eOk;
    });
}

Pfad::Error PfEdCommandStack::AddCommand(const std::wstring& group, const std::wstring& name, ArgumentCommand command)
{
    if (group.empty() || name.empty() || !command || group.find(L'.') != std::wstring::npos)
        return Pfad::eInvalidInput;
    auto& commands = m_groups[group];
    if (commands.count(name))
        return Pfad::eDuplicateKey;
    commands.emplace(name, std::move(command));
    return Pfad::eOk;
}

Pfad::Error PfEdCommandStack::RemoveGroup(const std::wstring& group)
{
    return m_groups.erase(group) ? Pfad::eOk : Pfad::eKeyNotFound;
}

bool PfEdCommandStack::HasGroup(const std::wstring& group) const { return m_groups.count(group) != 0; }

std::vector<std::wstring> PfEdCommandStack::CommandNames(const std::wstring& group) const
{
    std::vector<std::wstring> names;
    auto it = m_groups.find(group);
    if (it != m_groups.end()) {
        for (const auto& command : it->second)
            names.push_back(command.first);
    }
    return names;
}

Pfad::Error PfEdCommandStack::RunCommand(const std::wstring& fullName) const
{
    return RunCommand(fullName, {}, nullptr);
}

Pfad::Error PfEdCommandStack::RunCommand(const std::wstring& fullName, const QStringList& arguments,
                                         QString* message) const
{
    const std::size_t dot = fullName.find(L'.');
    if (dot == std::wstring::npos)
        return Pfad::eKeyNotFound;
    auto group = m_groups.find(fullName.substr(0, dot));
    if (group == m_groups.end())
        return Pfad::eKeyNotFound;
    auto command = group->second.find(fullName.substr(dot + 1));
    if (command == group->second.end())
        return Pfad::eKeyNotFound;
    // A copy: the command may remove its own group while it runs.
    const ArgumentCommand run = command->second;
    return run(arguments, message);
}
