#include "CAtomicFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace vpe {

namespace {

// The system's words for the last failure ("No space left on device").
QString systemReason() { return QString::fromLocal8Bit(std::strerror(errno)); }

bool processIsGone(qint64 pid) { return pid > 0 && ::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH; }

// Makes a rename in the folder durable.
void syncFolder(const QString& folder)
{
    const int descriptor = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY);
    if (descriptor < 0)
        return;
    ::fsync(descriptor);
    ::close(descriptor);
}

} // namespace

CAtomicFile::CAtomicFile(const QString& target) : m_target(target), m_partial(PartialPathFor(target)) {}

CAtomicFile::~CAtomicFile()
{
    if (!m_committed)
        Cancel();
}

QString CAtomicFile::PartialPathFor(const QString& target)
{
    const QFileInfo file(target);
    return file.dir().filePath(
        QStringLiteral(".%1.%2.part").arg(file.fileName()).arg(QCoreApplication::applicationPid()));
}

void CAtomicFile::RemoveStalePartials(const QString& target)
{
    const QFileInfo file(target);
    const QString prefix = QStringLiteral(".%1.").arg(file.fileName());
    QDir folder = file.dir();
    const QStringList partials =
        folder.entryList({prefix + QStringLiteral("*.part")}, QDir::Files | QDir::Hidden | QDir::System);
    for (const QString& name : partials) {
        bool number = false;
        const qint64 pid = name.mid(prefix.size(), name.size() - prefix.size() - 5).toLongLong(&number);
        if (number && processIsGone(pid))
            folder.remove(name);
    }
}

bool CAtomicFile::fail(QString* error, const QString& reason)
{
    if (error)
        *error = QStringLiteral("cannot write %1: %2").arg(m_target, reason);
    return false;
}

bool CAtomicFile::Open(QString* error)
{
    const QFileInfo target(m_target);
    if (target.exists() && !target.isFile())
        return fail(error, target.isDir() ? QStringLiteral("it is a folder") : QStringLiteral("it is not a plain file"));
    RemoveStalePartials(m_target);
    if (!m_partial.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return fail(error, m_partial.errorString());
    return true;
}

bool CAtomicFile::Commit(QString* error)
{
    if (!m_partial.isOpen())
        return fail(error, QStringLiteral("it was not opened"));
    if (!m_partial.flush()) {
        const QString reason = m_partial.errorString();
        Cancel();
        return fail(error, reason);
    }
    if (::fsync(m_partial.handle()) != 0) {
        const QString reason = systemReason();
        Cancel();
        return fail(error, reason);
    }
    m_partial.close();
    if (std::rename(QFile::encodeName(m_partial.fileName()).constData(), QFile::encodeName(m_target).constData()) !=
        0) {
        const QString reason = systemReason();
        Cancel();
        return fail(error, reason);
    }
    m_committed = true;
    syncFolder(QFileInfo(m_target).absolutePath());
    return true;
}

void CAtomicFile::Cancel()
{
    if (m_partial.isOpen())
        m_partial.close();
    if (!m_committed)
        QFile::remove(m_partial.fileName());
}

} // namespace vpe
