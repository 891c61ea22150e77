#include "KVXVideoSettings.h"

#include <QFileInfo>
#include <QStringList>

namespace {
const QString kInvalid = QStringLiteral("分辨率设置不合法！");

// Both numbers, each a base-10 integer; false for anything else.
bool readResolution(const QString& resolution, qlonglong& width, qlonglong& height)
{
    const QStringList parts = resolution.split(QLatin1Char('x'), Qt::SkipEmptyParts);
    if (parts.size() != 2)
        return false;
    bool okWidth = false, okHeight = false;
    width = parts[0].toLongLong(&okWidth, 10);
    height = parts[1].toLongLong(&okHeight, 10);
    return okWidth && okHeight;
}

bool inRange(qlonglong side) { return side >= 1 && side <= KVXVideoSettings::kMaxSide; }
} // namespace

QString KVXVideoSettings::Problem(const QString& path, const QString& resolution)
{
    if (path.isEmpty())
        return QStringLiteral("视频文件不能为空！");
    if (QFileInfo(path).isRelative())
        return QStringLiteral("文件路径不合法，请重新输入！");
    qlonglong width = 0, height = 0;
    if (!readResolution(resolution, width, height))
        return kInvalid;
    if (!inRange(width) || !inRange(height))
        return QStringLiteral("分辨率设置范围为：1 ~ 4094, 请重新设置！");
    return QString();
}

bool KVXVideoSettings::ParseResolution(const QString& resolution, unsigned int& width, unsigned int& height)
{
    qlonglong w = 0, h = 0;
    if (!readResolution(resolution, w, h) || !inRange(w) || !inRange(h))
        return false;
    width = static_cast<unsigned int>(w);
    height = static_cast<unsigned int>(h);
    return true;
}
