#pragma once

#include <QString>

// What kvxhost and each of its commands do and take, with units, defaults
// and an example.
class KvxCommandLineHelp {
public:
    // One short line for a bare or unknown command.
    static QString Usage();
    // The usage block of a command; empty for an unknown one.
    static QString Of(const QString& command);
    // Every command's block, with the exit codes.
    static QString All();
};
