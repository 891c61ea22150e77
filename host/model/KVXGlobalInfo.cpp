#include "KVXGlobalInfo.h"

#include <QCoreApplication>
#include <QDir>

KVXGlobalInfo* KVXGlobalInfo::getInstance()
{
    static KVXGlobalInfo instance;
    return &instance;
}

std::wstring KVXGlobalInfo::getTempProjectPath()
{
    if (m_tempProjectPath.empty()) {
        const QString path =
            QDir::temp().filePath(QStringLiteral("kvx-project-%1").arg(QCoreApplication::applicationPid()));
        m_tempProjectPath = path.toStdWString();
        m_ownDirectory = m_tempProjectPath;
    }
    if (!QDir().mkpath(QString::fromStdWString(m_tempProjectPath)))
        return std::wstring();
    return m_tempProjectPath;
}

KVXGlobalInfo::~KVXGlobalInfo()
{
    if (!m_ownDirectory.empty())
        QDir(QString::fromStdWString(m_ownDirectory)).removeRecursively();
}

void KVXGlobalInfo::setTempProjectPath(const std::wstring& path)
{
    std::wstring trimmed = path;
    while (trimmed.size() > 1 && (trimmed.back() == L'/' || trimmed.back() == L'\\'))
        trimmed.pop_back();
    m_tempProjectPath = trimmed;
}
