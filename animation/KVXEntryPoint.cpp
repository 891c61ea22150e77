#include "KVXEntryPoint.h"

#include "KVXRegisters.h"

extern "C" int PfRxEntryPoint(int message, void*)
{
    static KVXRegisters* registers = nullptr;
    if (!registers)
        registers = new KVXRegisters();
    switch (message) {
    case 1: return registers->Load();
    case 2: return registers->Unload();
    default: return 0;
    }
}
