#pragma once

// The module's entry point, called by the host's module loader: message 1
// registers the module, message 2 unregisters it; other messages are
// answered with 0 and ignored.
extern "C" int PfRxEntryPoint(int message, void* packet);
