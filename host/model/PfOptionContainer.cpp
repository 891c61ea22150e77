#include "PfOptionContainer.h"

PfOptionContainer* PfOptionContainer::GetInstance()
{
    static PfOptionContainer instance;
    return &instance;
}
