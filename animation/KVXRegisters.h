#pragma once

#include <string>

// The module's registration object: registers the module's persisted classes
// when the host loads the module and removes them (and the module's command
// group) when it unloads it. Made on the first call of the entry point and
// kept for the life of the process.
class KVXRegisters {
public:
    KVXRegisters();
    virtual ~KVXRegisters();
    virtual int Load();
    virtual int Unload();

    const std::wstring& GetGroupName() const { return m_groupName; }
    const std::wstring& GetVersion() const { return m_version; }
    bool IsLoaded() const { return m_loaded; }

private:
    // The module's commands, in the group its unloading removes.
    void addCommands();

    std::wstring m_groupName;
    std::wstring m_secondName;
    std::wstring m_version;
    bool m_loaded;
};
