#pragma once

// Registers every run-time class of the host, parents first, so that
// documents can re-create host objects by class name. Safe to call again.
void PfHostRegisterClasses();
