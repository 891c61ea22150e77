#pragma once

#include <cstdint>

// The 64-bit handle of a database object: unique within its database and
// never reused, even after the object is erased. All ones means "none".
using PfDbHandle = std::uint64_t;

constexpr PfDbHandle kPfDbNullHandle = ~PfDbHandle(0);
