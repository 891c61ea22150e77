#include "CPictureFile.h"

#include "host/vpe/core/CAtomicFile.h"

#include <QFileInfo>
#include <QImageWriter>

namespace vpe {

namespace {

bool fail(QString* error, const QString& reason)
{
    if (error)
        *error = reason;
    return false;
}

} // namespace

QByteArray CPictureFile::FormatOf(const QString& path, QString* error)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (suffix == QLatin1String("png") || suffix == QLatin1String("bmp"))
        return suffix.toLatin1();
    if (suffix == QLatin1String("jpg") || suffix == QLatin1String("jpeg"))
        return QByteArrayLiteral("jpg");
    fail(error, QStringLiteral("%1: pictures are written as .png, .jpg or .bmp, not \"%2\"")
                    .arg(path, suffix.isEmpty() ? QStringLiteral("no extension") : QStringLiteral(".") + suffix));
    return QByteArray();
}

bool CPictureFile::CanWrite(const QString& path, QString* error)
{
    if (FormatOf(path, error).isEmpty())
        return false;
    const QFileInfo folder(QFileInfo(path).absolutePath());
    if (!folder.isDir())
        return fail(error, QStringLiteral("cannot write %1: its folder %2 does not exist").arg(path, folder.filePath()));
    if (!folder.isWritable())
        return fail(error, QStringLiteral("cannot write %1: its folder %2 is not writable").arg(path, folder.filePath()));
    return true;
}

bool CPictureFile::Save(const QImage& picture, const QString& path, QString* error)
{
    const QByteArray format = FormatOf(path, error);
    if (format.isEmpty())
        return false;
    if (picture.isNull())
        return fail(error, QStringLiteral("cannot write %1: there is no picture").arg(path));
    CAtomicFile file(path);
    if (!file.Open(error))
        return false;
    QImageWriter writer(&file.Device(), format);
    if (format == "jpg")
        writer.setQuality(92);
    // JPEG and BMP have no transparency: the picture is flattened first.
    const QImage written = format == "png" ? picture : picture.convertToFormat(QImage::Format_RGB32);
    if (!writer.write(written)) {
        // The device's own reason (a full disk) says more than the writer's.
        const QString reason = file.Device().error() != QFileDevice::NoError ? file.Device().errorString()
                                                                             : writer.errorString();
        file.Cancel();
        return fail(error, QStringLiteral("cannot write %1: %2").arg(path, reason));
    }
    return file.Commit(error);
}

} // namespace vpe
