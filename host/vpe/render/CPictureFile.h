#pragma once

#include <QImage>
#include <QString>

namespace vpe {

// Writes pictures the way a user can trust: the format is the one the file's
// extension names (PNG, JPEG or BMP), the picture goes to a temporary file
// beside the target that takes its place only once every byte is on disk,
// so a full disk or an interrupted run leaves an earlier picture as it was.
class CPictureFile {
public:
    // The format the path's extension names ("png", "jpg", "bmp"); empty with
    // the reason for any other extension.
    static QByteArray FormatOf(const QString& path, QString* error = nullptr);
    // Whether the path could be written: a known extension and a folder that
    // exists and can be written. For checks before long work.
    static bool CanWrite(const QString& path, QString* error = nullptr);
    // False with the reason; the target is then as it was.
    static bool Save(const QImage& picture, const QString& path, QString* error = nullptr);
};

} // namespace vpe
