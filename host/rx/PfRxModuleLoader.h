#pragma once

#include <QLibrary>
#include <QString>

#include <memory>

// Loads one module library and drives its life through the unmangled entry
// point PfRxEntryPoint(message, packet): message 1 after loading, message 2
// before unloading. The destructor unloads a module that is still loaded.
class PfRxModuleLoader {
public:
    static constexpr int kLoadMessage = 1;
    static constexpr int kUnloadMessage = 2;

    PfRxModuleLoader() = default;
    ~PfRxModuleLoader();
    PfRxModuleLoader(const PfRxModuleLoader&) = delete;
    PfRxModuleLoader& operator=(const PfRxModuleLoader&) = delete;

    // False with a message when the library cannot be opened, has no entry
    // point, or its entry point answers a non-zero code (it is then unloaded).
    bool Load(const QString& path, QString* error = nullptr);
    // The module installed beside the program (a path relative to the
    // program's folder), when it is there; false when it is not or fails.
    bool LoadBesideProgram(const QString& relativePath, QString* error = nullptr);
    // Sends message 2; answers its result code (0 when nothing is loaded).
    int Unload();
    bool IsLoaded() const { return m_entryPoint != nullptr; }
    QString FileName() const;

private:
    using EntryPoint = int (*)(int, void*);

    std::unique_ptr<QLibrary> m_library;
    EntryPoint m_entryPoint = nullptr;
};
