#include "CPictureFile.h"

#include <QFileInfo>
#include <QImageWriter>
#include <QSaveFile>

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
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return fail(error, QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
    QImageWriter writer(&file, format);
    if (format == "jpg")
        writer.setQuality(92);
    // JPEG and BMP have no transparency: the picture is flattened first.
    const QImage written = format == "png" ? picture : picture.convertToFormat(QImage::Format_RGB32);
    if (!writer.write(written)) {
        file.cancelWriting();
        return fail(error, QStringLiteral("cannot write %1: %2").arg(path, writer.errorString()));
    }
    if (!file.commit())
        return fail(error, QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
    return true;
}

} // namespace vpe
