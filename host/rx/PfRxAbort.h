#pragma once

// Ends the process after printing the message: used where the class system is
// inconsistent and going on would corrupt documents.
[[noreturn]] void PfRxAbort(const char* message);
