#pragma once

class PfEdCommandStack;

// Whether the application may save documents by itself now. A long job that
// a save must not interrupt (a video export) stops it and starts it again
// through the host commands "KVX.KVX_STOP_AUTO_SAVE" and
// "KVX.KVX_START_AUTO_SAVE"; stops nest, so that two such jobs need two
// starts. The application's auto-save timer asks IsEnabled.
class PfAutoSave {
public:
    static void Stop();
    // A start without a stop before it is ignored.
    static void Start();
    static bool IsEnabled();
    // Adds the two commands to the host's command group "KVX".
    static void AddCommands(PfEdCommandStack* commands);
};
