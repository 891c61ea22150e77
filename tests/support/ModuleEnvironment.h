#pragma once

#include "animation/KVXEntryPoint.h"

#include <gtest/gtest.h>

// Loads the module once before the tests of an executable run: its classes
// are unknown to the host (Desc() null, Cast() failing) until then.
class ModuleEnvironment : public ::testing::Environment {
public:
    void SetUp() override { ASSERT_EQ(PfRxEntryPoint(1, nullptr), 0); }
};

inline ::testing::Environment* const kModuleEnvironment =
    ::testing::AddGlobalTestEnvironment(new ModuleEnvironment);
