#include "PfAutoSave.h"

#include "host/rx/PfEdCommandStack.h"

namespace {
int stops = 0;
}

void PfAutoSave::Stop() { ++stops; }

void PfAutoSave::Start()
{
    if (stops > 0)
        --stops;
}

bool PfAutoSave::IsEnabled() { return stops == 0; }

void PfAutoSave::AddCommands(PfEdCommandStack* commands)
{
    if (!commands)
        return;
    commands->AddCommand(L"KVX", L"KVX_STOP_AUTO_SAVE", PfEdCommandStack::Command(&PfAutoSave::Stop));
    commands->AddCommand(L"KVX", L"KVX_START_AUTO_SAVE", PfEdCommandStack::Command(&PfAutoSave::Start));
}
