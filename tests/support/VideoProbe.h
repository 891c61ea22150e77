#pragma once

#include <QDir>
#include <QImage>
#include <QProcess>
#include <QString>

// What ffprobe reads of a video's first stream, frames counted:
// "codec_name=h264\nwidth=...\nheight=...\nr_frame_rate=24/1\nnb_read_frames=..."
inline QString probeVideo(const QString& path)
{
    QProcess ffprobe;
    ffprobe.start(QStringLiteral("ffprobe"),
                  {"-v", "error", "-count_frames", "-select_streams", "v:0", "-show_entries",
                   "stream=codec_name,width,height,r_frame_rate,nb_read_frames", "-of", "default=nw=1", path});
    ffprobe.waitForFinished(60000);
    return QString::fromUtf8(ffprobe.readAllStandardOutput());
}

// Frame n of a video, decoded by ffmpeg into folder; null when it cannot be.
inline QImage decodedFrame(const QString& video, int n, const QString& folder)
{
    const QString picture = QDir(folder).filePath(QStringLiteral("frame-%1.png").arg(n));
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"), {"-v", "error", "-y", "-i", video, "-vf",
                                            QStringLiteral("select=eq(n\\,%1)").arg(n), "-vframes", "1", picture});
    ffmpeg.waitForFinished(60000);
    return QImage(picture);
}
