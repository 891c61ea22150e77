#pragma once

#include "PfModelReader.h"

#include <memory>

// The reader of mesh models (glTF, GLB, OBJ, STL): each node with meshes is
// one product, named after the node. The files are taken to be in metres
// with Y up, as glTF defines and as those formats are mostly written.
std::unique_ptr<PfModelReader> PfMakeAssimpReader();
