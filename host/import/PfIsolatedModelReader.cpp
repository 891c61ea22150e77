#include "PfIsolatedModelReader.h"

#include "PfAssimpReader.h"
#include "PfIfcReader.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QDataStream>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>

#include <utility>

namespace {

// What the child streams: each message its length, then its kind and body.
enum Kind : quint8 { ProductMessage = 'P', ProgressMessage = 'G', SummaryMessage = 'S', ErrorMessage = 'E' };

// No message comes near this; a longer one is a child gone wrong.
constexpr quint32 kLongestMessage = 1u << 30;

void send(QIODevice& out, Kind kind, const std::function<void(QDataStream&)>& body)
{
    QByteArray message;
    {
        QDataStream stream(&message, QIODevice::WriteOnly);
        stream << quint8(kind);
        body(stream);
    }
    QDataStream(&out) << quint32(message.size());
    out.write(message);
}


QString& defaultProgram()
{
    static QString program;
    return program;
}

} // namespace

QString PfIsolatedModelReader::DefaultProgram()
{
    return defaultProgram().isEmpty() ? QCoreApplication::applicationDirPath() + QStringLiteral("/kvxhost")
                                      : defaultProgram();
}

void PfIsolatedModelReader::SetDefaultProgram(const QString& program) { defaultProgram() = program; }

const QString PfIsolatedModelReader::kCancelled = QStringLiteral("the import was cancelled");

PfIsolatedModelReader::PfIsolatedModelReader(QString program, int silence)
    : m_program(std::move(program)), m_silence(silence)
{
}

std::unique_ptr<PfModelReader> PfIsolatedModelReader::ReaderFor(const QString& path)
{
    const QString kind = QFileInfo(path).suffix().toLower();
    if (kind == QLatin1String("ifc"))
        return PfMakeIfcReader();
    if (QStringList{"glb", "gltf", "obj", "stl"}.contains(kind))
        return PfMakeAssimpReader();
    return nullptr;
}

bool PfIsolatedModelReader::Serve(const QString& path, QIODevice& out)
{
    Summary summary;
    QString error;
    std::unique_ptr<PfModelReader> reader = ReaderFor(path);
    bool read = false;
    if (!reader)
        error = QStringLiteral("%1: not a model kind that can be imported (.ifc, .glb, .gltf, .obj, .stl)").arg(QFileInfo(path).fileName());
    else
        read = reader->Read(
            path,
            [&out](PfImportedProduct&& product) {
                send(out, ProductMessage, [&product](QDataStream& s) { s << product; });
            },
            [&out](int done, int found) {
                send(out, ProgressMessage, [=](QDataStream& s) { s << qint32(done) << qint32(found); });
            },
            summary, &error);
    if (read)
        send(out, SummaryMessage, [&summary](QDataStream& s) {
            s << qint32(summary.found) << qint32(summary.read) << summary.skipped;
        });
    else
        send(out, ErrorMessage, [&error](QDataStream& s) { s << error; });
    return read;
}

bool PfIsolatedModelReader::Read(const QString& path, const Take& take, const Progress& progress, Summary& summary,
                                 QString* error)
{
    const auto fail = [error](const QString& reason) {
        if (error)
            *error = reason;
        return false;
    };
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(m_program, {QStringLiteral("read-model"), path});
    if (!child.waitForStarted())
        return fail(QStringLiteral("the model reader %1 could not be started: %2").arg(m_program, child.errorString()));
    QByteArray pending;
    bool summarised = false;
    QString childError;
    bool damaged = false;
    QElapsedTimer quiet;
    quiet.start();
    int lastDone = 0, lastFound = 0;
    // With someone waiting, shorter waits: a window repaints between them.
    const int wait = m_waiting ? 40 : 250;
    // Takes the complete messages off the front of what came.
    const auto takeMessages = [&] {
        int at = 0;
        while (!damaged && pending.size() - at >= 4) {
            quint32 length = 0;
            QDataStream(pending.mid(at, 4)) >> length;
            if (length == 0 || length > kLongestMessage) {
                damaged = true;
                break;
            }
            if (quint32(pending.size() - at - 4) < length)
                break;
            QDataStream message(pending.mid(at + 4, int(length)));
            at += 4 + int(length);
            quint8 kind = 0;
            message >> kind;
            if (kind == ProductMessage) {
                PfImportedProduct product;
                message >> product;
                if (message.status() == QDataStream::Ok)
                    take(std::move(product));
            } else if (kind == ProgressMessage) {
                qint32 done = 0, found = 0;
                message >> done >> found;
                progress(done, found);
                lastDone = done;
                lastFound = found;
            } else if (kind == SummaryMessage) {
                qint32 found = 0, read = 0;
                message >> found >> read >> summary.skipped;
                summary.found = found;
                summary.read = read;
                summarised = true;
            } else if (kind == ErrorMessage) {
                message >> childError;
            }
            damaged = damaged || message.status() != QDataStream::Ok;
        }
        pending.remove(0, at);
    };
    while (child.state() != QProcess::NotRunning && !damaged) {
        if (m_waiting && !m_waiting(lastDone, lastFound)) {
            child.kill();
            child.waitForFinished();
            return fail(kCancelled);
        }
        if (child.waitForReadyRead(wait)) {
            pending += child.readAllStandardOutput();
            takeMessages();
            quiet.restart();
        } else if (quiet.elapsed() > m_silence) {
            child.kill();
            child.waitForFinished();
            return fail(QStringLiteral("%1: the model reader stopped answering").arg(QFileInfo(path).fileName()));
        }
    }
    child.waitForFinished();
    pending += child.readAllStandardOutput();
    takeMessages();
    if (damaged) {
        child.kill();
        return fail(QStringLiteral("%1: the model reader sent damaged data").arg(QFileInfo(path).fileName()));
    }
    if (!childError.isEmpty()) {
        const QString name = QFileInfo(path).fileName();
        return fail(childError.startsWith(name) ? childError : name + QStringLiteral(": ") + childError);
    }
    if (child.exitStatus() != QProcess::NormalExit || !summarised)
        return fail(QStringLiteral("%1: the model reader failed on this file (it stopped without finishing)")
                        .arg(QFileInfo(path).fileName()));
    return true;
}
