#include "PfRxModuleLoader.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

PfRxModuleLoader::~PfRxModuleLoader() { Unload(); }

bool PfRxModuleLoader::Load(const QString& path, QString* error)
{
    auto fail = [error](const QString& message) {
        if (error)
            *error = message;
        return false;
    };
    if (IsLoaded())
        return fail(QStringLiteral("a module is loaded already: %1").arg(FileName()));

    auto library = std::make_unique<QLibrary>(path);
    if (!library->load())
        return fail(QStringLiteral("cannot open module %1: %2").arg(path, library->errorString()));
    auto entry = reinterpret_cast<EntryPoint>(library->resolve("PfRxEntryPoint"));
    if (!entry) {
        library->unload();
        return fail(QStringLiteral("module %1 has no entry point PfRxEntryPoint").arg(path));
    }
    const int result = entry(kLoadMessage, nullptr);
    if (result != 0) {
        library->unload();
        return fail(QStringLiteral("module %1 refused to load (code %2)").arg(path).arg(result));
    }
    m_library = std::move(library);
    m_entryPoint = entry;
    return true;
}

int PfRxModuleLoader::Unload()
{
    if (!IsLoaded())
        return 0;
    const int result = m_entryPoint(kUnloadMessage, nullptr);
    m_entryPoint = nullptr;
    // The module keeps singletons alive for the life of the process (its
    // registration object and managers), so its code must stay mapped.
    m_library.reset();
    return result;
}

QString PfRxModuleLoader::FileName() const { return m_library ? m_library->fileName() : QString(); }

bool PfRxModuleLoader::LoadBesideProgram(const QString& relativePath, QString* error)
{
    const QString path = QDir(QCoreApplication::applicationDirPath()).filePath(relativePath);
    if (!QFileInfo::exists(path)) {
        if (error)
            *error = QStringLiteral("no module at %1").arg(path);
        return false;
    }
    return Load(path, error);
}
