#pragma once

#include "PfModelReader.h"

#include <memory>

// A reader of IFC files in STEP form (IFC2x3 and IFC4). It keeps the physical
// elements (walls, slabs, doors, furniture, …) and leaves out spaces,
// openings and the spatial structure itself. The library behind it keeps
// global state while it reads: run one reader at a time, best in a process
// of its own.
std::unique_ptr<PfModelReader> PfMakeIfcReader();
