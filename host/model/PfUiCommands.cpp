#include "PfUiCommands.h"

#include <algorithm>

namespace {
std::vector<PfUiCommands::Command>& commands()
{
    static std::vector<PfUiCommands::Command> all;
    return all;
}
} // namespace

void PfUiCommands::Register(const Command& command)
{
    auto& all = commands();
    auto it = std::find_if(all.begin(), all.end(), [&command](const Command& each) { return each.name == command.name; });
    if (it != all.end())
        *it = command;
    else
        all.push_back(command);
}

void PfUiCommands::Unregister(const QString& name)
{
    auto& all = commands();
    all.erase(std::remove_if(all.begin(), all.end(), [&name](const Command& each) { return each.name == name; }),
              all.end());
}

const std::vector<PfUiCommands::Command>& PfUiCommands::Commands() { return commands(); }
