#pragma once

#include <string>

// Process-wide facts of the running application. The temporary project
// directory holds what a project makes while it is open (key-frame
// thumbnails, for instance); it is created when first asked for and, unless
// another one was chosen, removed when the process ends.
class KVXGlobalInfo {
public:
    static KVXGlobalInfo* getInstance();

    // No trailing separator. Empty only when the directory cannot be made.
    std::wstring getTempProjectPath();
    // Chooses another directory (tests, or a project that keeps its own).
    void setTempProjectPath(const std::wstring& path);

private:
    KVXGlobalInfo() = default;
    // Removes the directory made for this process, when it chose it itself:
    // its thumbnails are of no use to another process.
    ~KVXGlobalInfo();

    std::wstring m_tempProjectPath;
    std::wstring m_ownDirectory;
};
