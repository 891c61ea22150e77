#include "host/vpe/ZVideoFFmpeg.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>

#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr QRgb kRed = 0xffff0000;
constexpr QRgb kBlue = 0xff0000ff;
// Lossy coding moves a flat colour by a few steps; a swapped channel or an
// upside-down picture moves it by more than 200.
constexpr int kColourTolerance = 12;

// A grey picture with a white bar that moves four pixels a frame, so that
// every frame differs from the one before.
QImage movingBar(int width, int height, int index)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(0xff404040);
    const int left = (index * 4) % width;
    for (int y = 0; y < height; ++y)
        for (int x = left; x < std::min(width, left + 8); ++x)
            image.setPixel(x, y, 0xffffffff);
    return image;
}

QImage topRedBottomBlue(int width, int height, QImage::Format format)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, y < height / 2 ? kRed : kBlue);
    return image.convertToFormat(format);
}

// RGBA bytes as OpenGL reads them back; the row padding holds junk that must
// never reach the picture.
std::vector<unsigned char> topRedBottomBlueRgba(int width, int height, int rowBytes, bool bottomUp)
{
    std::vector<unsigned char> bytes(std::size_t(rowBytes) * height, 0x7f);
    for (int row = 0; row < height; ++row) {
        const int y = bottomUp ? height - 1 - row : row;
        const QRgb colour = y < height / 2 ? kRed : kBlue;
        for (int x = 0; x < width; ++x) {
            unsigned char* pixel = &bytes[std::size_t(row) * rowBytes + x * 4];
            pixel[0] = qRed(colour);
            pixel[1] = qGreen(colour);
            pixel[2] = qBlue(colour);
            pixel[3] = 255;
        }
    }
    return bytes;
}

bool writeFrames(ZVideoFFmpeg& video, int width, int height, int count)
{
    for (int i = 0; i < count; ++i) {
        QString error;
        if (!video.WriteFrame(movingBar(width, height, i), &error)) {
            ADD_FAILURE() << "frame " << i << ": " << error.toStdString();
            return false;
        }
    }
    return true;
}

QMap<QString, QString> probe(const QString& path)
{
    QProcess ffprobe;
    ffprobe.start(QStringLiteral("ffprobe"),
                  {"-v", "error", "-count_frames", "-select_streams", "v:0", "-show_entries",
                   "stream=codec_name,width,height,r_frame_rate,nb_read_frames,pix_fmt", "-of", "default=nw=1", path});
    EXPECT_TRUE(ffprobe.waitForFinished(60000)) << "ffprobe did not finish";
    EXPECT_EQ(ffprobe.exitCode(), 0) << ffprobe.readAllStandardError().toStdString();
    QMap<QString, QString> fields;
    for (const QString& line : QString::fromUtf8(ffprobe.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts)) {
        const int equals = line.indexOf('=');
        fields.insert(line.left(equals), line.mid(equals + 1).trimmed());
    }
    return fields;
}

// The first frames of a video as packed RGB24, as a player would show them.
QByteArray decodeRgb(const QString& path, int frames)
{
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"), {"-v", "error", "-i", path, "-frames:v", QString::number(frames), "-f",
                                            "rawvideo", "-pix_fmt", "rgb24", "-"});
    EXPECT_TRUE(ffmpeg.waitForFinished(60000)) << "ffmpeg did not finish";
    EXPECT_EQ(ffmpeg.exitCode(), 0) << ffmpeg.readAllStandardError().toStdString();
    return ffmpeg.readAllStandardOutput();
}

::testing::AssertionResult isNear(const QByteArray& rgb, int offset, QRgb expected)
{
    if (offset + 3 > rgb.size())
        return ::testing::AssertionFailure() << "no pixel at byte " << offset << " of " << rgb.size();
    const int actual[] = {quint8(rgb[offset]), quint8(rgb[offset + 1]), quint8(rgb[offset + 2])};
    const int wanted[] = {qRed(expected), qGreen(expected), qBlue(expected)};
    for (int channel = 0; channel < 3; ++channel)
        if (std::abs(actual[channel] - wanted[channel]) > kColourTolerance)
            return ::testing::AssertionFailure() << "decoded " << actual[0] << ',' << actual[1] << ',' << actual[2]
                                                 << ", written " << wanted[0] << ',' << wanted[1] << ',' << wanted[2];
    return ::testing::AssertionSuccess();
}

// The names of the top-level boxes of an MP4 file, in file order. The files
// here are small, so every box has a plain 32-bit size.
QStringList topLevelBoxes(const QString& path)
{
    QFile file(path);
    QStringList names;
    if (!file.open(QIODevice::ReadOnly))
        return names;
    for (qint64 start = 0; start + 8 <= file.size();) {
        file.seek(start);
        const QByteArray header = file.read(8);
        const quint32 size = quint32(quint8(header[0])) << 24 | quint8(header[1]) << 16 | quint8(header[2]) << 8 |
                             quint8(header[3]);
        names << QString::fromLatin1(header.mid(4, 4));
        if (size < 8)
            break;
        start += size;
    }
    return names;
}

QStringList entriesUnder(const QString& directory)
{
    QStringList entries;
    QDirIterator it(directory, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        entries << it.next();
    entries.sort();
    return entries;
}

template <class Row>
std::string rowName(const ::testing::TestParamInfo<Row>& info)
{
    return info.param.name;
}

struct FormatRow {
    std::string name;
    int width, height, framesPerSecond, frames;
    QString probedWidth, probedHeight, probedRate;
};

class VideoFormat : public ::testing::TestWithParam<FormatRow> {};

TEST_P(VideoFormat, probesAsH264Yuv420pWithEveryFrame)
{
    const FormatRow& row = GetParam();
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("out.mp4"));
    ZVideoFFmpeg video;
    QString error;
    ASSERT_TRUE(video.Open(path, row.width, row.height, row.framesPerSecond, &error)) << error.toStdString();
    ASSERT_TRUE(writeFrames(video, row.width, row.height, row.frames));
    ASSERT_TRUE(video.Finish(&error)) << error.toStdString();
    EXPECT_FALSE(video.IsOpen());
    EXPECT_EQ(video.FramesWritten(), row.frames);

    const QMap<QString, QString> stream = probe(path);
    EXPECT_EQ(stream.value("codec_name"), "h264");
    EXPECT_EQ(stream.value("width"), row.probedWidth);
    EXPECT_EQ(stream.value("height"), row.probedHeight);
    EXPECT_EQ(stream.value("r_frame_rate"), row.probedRate);
    EXPECT_EQ(stream.value("nb_read_frames"), QString::number(row.frames));
    EXPECT_EQ(stream.value("pix_fmt"), "yuv420p");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, VideoFormat,
    ::testing::Values(FormatRow{"qvgaAt24", 320, 240, 24, 48, "320", "240", "24/1"},
                      FormatRow{"qvgaAt30", 320, 240, 30, 48, "320", "240", "30/1"},
                      FormatRow{"oddSizePaddedToEven", 333, 187, 24, 48, "334", "188", "24/1"},
                      FormatRow{"onePixel", 1, 1, 24, 5, "2", "2", "24/1"},
                      FormatRow{"widestStrip", 4094, 2, 24, 5, "4094", "2", "24/1"}),
    rowName<FormatRow>);

TEST(VideoFile, indexComesBeforeTheMediaData)
{
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("out.mp4"));
    ZVideoFFmpeg video;
    ASSERT_TRUE(video.Open(path, 160, 120, 24));
    ASSERT_TRUE(writeFrames(video, 160, 120, 24));
    ASSERT_TRUE(video.Finish());

    const QStringList boxes = topLevelBoxes(path);
    ASSERT_TRUE(boxes.contains("moov")) << boxes.join(' ').toStdString();
    ASSERT_TRUE(boxes.contains("mdat")) << boxes.join(' ').toStdString();
    EXPECT_LT(boxes.indexOf("moov"), boxes.indexOf("mdat")) << boxes.join(' ').toStdString();
}

struct PathRow {
    std::string name;
    // Makes the unwritable path inside a scratch directory.
    std::function<QString(const QDir&)> make;
    bool needsPermissions;
};

class UnwritablePath : public ::testing::TestWithParam<PathRow> {};

TEST_P(UnwritablePath, openFailsNamingThePathAndLeavesNoFile)
{
    if (GetParam().needsPermissions && geteuid() == 0)
        GTEST_SKIP() << "permissions do not bind the super-user";
    QTemporaryDir directory;
    const QString path = GetParam().make(QDir(directory.path()));
    const QStringList before = entriesUnder(directory.path());
    ZVideoFFmpeg video;
    QString error;
    EXPECT_FALSE(video.Open(path, 320, 240, 24, &error));
    EXPECT_FALSE(video.IsOpen());
    EXPECT_TRUE(error.contains(path)) << error.toStdString();
    EXPECT_EQ(entriesUnder(directory.path()), before);
}

QString touch(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    return path;
}

INSTANTIATE_TEST_SUITE_P(
    Rows, UnwritablePath,
    ::testing::Values(
        PathRow{"missingDirectory", [](const QDir& d) { return d.filePath("missing/out.mp4"); }, false},
        PathRow{"pathIsDirectory",
                [](const QDir& d) {
                    d.mkdir("video.mp4");
                    return d.filePath("video.mp4");
                },
                false},
        PathRow{"insideRegularFile", [](const QDir& d) { return touch(d.filePath("plain")) + "/out.mp4"; }, false},
        PathRow{"readOnlyDirectory",
                [](const QDir& d) {
                    d.mkdir("locked");
                    QFile::setPermissions(d.filePath("locked"), QFile::ReadOwner | QFile::ExeOwner);
                    return d.filePath("locked/out.mp4");
                },
                true}),
    rowName<PathRow>);

struct ParameterRow {
    std::string name;
    int width, height, framesPerSecond;
    QString mentioned;
};

class BadParameters : public ::testing::TestWithParam<ParameterRow> {};

TEST_P(BadParameters, openFailsAndLeavesNoFile)
{
    const ParameterRow& row = GetParam();
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("out.mp4"));
    ZVideoFFmpeg video;
    QString error;
    EXPECT_FALSE(video.Open(path, row.width, row.height, row.framesPerSecond, &error));
    EXPECT_TRUE(error.contains(row.mentioned)) << error.toStdString();
    EXPECT_FALSE(QFileInfo::exists(path));
}

INSTANTIATE_TEST_SUITE_P(Rows, BadParameters,
                         ::testing::Values(ParameterRow{"zeroWidth", 0, 240, 24, "0x240"},
                                           ParameterRow{"widthOverLimit", 4095, 240, 24, "4095x240"},
                                           ParameterRow{"negativeHeight", 320, -2, 24, "320x-2"},
                                           ParameterRow{"heightOverLimit", 320, 4095, 24, "320x4095"},
                                           ParameterRow{"zeroFrameRate", 320, 240, 0, "frame rate 0"},
                                           ParameterRow{"negativeFrameRate", 320, 240, -24, "frame rate -24"}),
                         rowName<ParameterRow>);

struct RefusedRow {
    std::string name;
    std::function<bool(ZVideoFFmpeg&, QString*)> write;
};

class RefusedFrame : public ::testing::TestWithParam<RefusedRow> {};

TEST_P(RefusedFrame, isReportedAndTheEarlierFramesStillFinish)
{
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("out.mp4"));
    ZVideoFFmpeg video;
    ASSERT_TRUE(video.Open(path, 64, 48, 24));
    ASSERT_TRUE(writeFrames(video, 64, 48, 6));
    QString error;
    EXPECT_FALSE(GetParam().write(video, &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(video.FramesWritten(), 6);
    ASSERT_TRUE(video.Finish(&error)) << error.toStdString();
    EXPECT_EQ(probe(path).value("nb_read_frames"), "6");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, RefusedFrame,
    ::testing::Values(
        RefusedRow{"imageOfAnotherSize",
                   [](ZVideoFFmpeg& v, QString* e) { return v.WriteFrame(movingBar(48, 64, 0), e); }},
        RefusedRow{"nullImage", [](ZVideoFFmpeg& v, QString* e) { return v.WriteFrame(QImage(), e); }},
        RefusedRow{"rowsShorterThanTheWidth",
                   [](ZVideoFFmpeg& v, QString* e) {
                       const std::vector<unsigned char> bytes(64 * 4 * 48);
                       return v.WriteFrame(bytes.data(), 63 * 4, false, e);
                   }},
        RefusedRow{"noPixels", [](ZVideoFFmpeg& v, QString* e) { return v.WriteFrame(nullptr, 64 * 4, false, e); }}),
    rowName<RefusedRow>);

TEST(VideoLifecycle, destroyingWithoutFinishRemovesThePartialFile)
{
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("out.mp4"));
    {
        ZVideoFFmpeg video;
        ASSERT_TRUE(video.Open(path, 64, 48, 24));
        ASSERT_TRUE(writeFrames(video, 64, 48, 10));
        EXPECT_TRUE(QFileInfo::exists(path));
    }
    EXPECT_FALSE(QFileInfo::exists(path));
}

TEST(VideoLifecycle, cancelRemovesThePartialFileAndAllowsANewVideo)
{
    QTemporaryDir directory;
    const QString cancelled = directory.filePath(QStringLiteral("cancelled.mp4"));
    const QString kept = directory.filePath(QStringLiteral("kept.mp4"));
    ZVideoFFmpeg video;
    ASSERT_TRUE(video.Open(cancelled, 64, 48, 24));
    ASSERT_TRUE(writeFrames(video, 64, 48, 10));
    video.Cancel();
    EXPECT_FALSE(video.IsOpen());
    EXPECT_FALSE(QFileInfo::exists(cancelled));

    ASSERT_TRUE(video.Open(kept, 64, 48, 24));
    ASSERT_TRUE(writeFrames(video, 64, 48, 3));
    ASSERT_TRUE(video.Finish());
    EXPECT_EQ(probe(kept).value("nb_read_frames"), "3");
}

TEST(VideoLifecycle, reopensAfterFinishWithAFreshCount)
{
    QTemporaryDir directory;
    const QString first = directory.filePath(QStringLiteral("first.mp4"));
    const QString second = directory.filePath(QStringLiteral("second.mp4"));
    ZVideoFFmpeg video;
    ASSERT_TRUE(video.Open(first, 64, 48, 24));
    ASSERT_TRUE(writeFrames(video, 64, 48, 5));
    ASSERT_TRUE(video.Finish());
    ASSERT_TRUE(video.Open(second, 96, 64, 30));
    EXPECT_EQ(video.FramesWritten(), 0);
    ASSERT_TRUE(writeFrames(video, 96, 64, 7));
    ASSERT_TRUE(video.Finish());

    EXPECT_EQ(probe(first).value("nb_read_frames"), "5");
    const QMap<QString, QString> stream = probe(second);
    EXPECT_EQ(stream.value("nb_read_frames"), "7");
    EXPECT_EQ(stream.value("width"), "96");
    EXPECT_EQ(stream.value("r_frame_rate"), "30/1");
}

TEST(VideoLifecycle, finishingWithoutFramesFailsAndRemovesTheFile)
{
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("out.mp4"));
    ZVideoFFmpeg video;
    ASSERT_TRUE(video.Open(path, 64, 48, 24));
    QString error;
    EXPECT_FALSE(video.Finish(&error));
    EXPECT_TRUE(error.contains(path)) << error.toStdString();
    EXPECT_FALSE(video.IsOpen());
    EXPECT_FALSE(QFileInfo::exists(path));
}

TEST(VideoLifecycle, callsOutOfOrderAreRefused)
{
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("out.mp4"));
    ZVideoFFmpeg video;
    QString error;
    EXPECT_FALSE(video.WriteFrame(movingBar(64, 48, 0), &error));
    EXPECT_FALSE(error.isEmpty());
    error.clear();
    EXPECT_FALSE(video.Finish(&error));
    EXPECT_FALSE(error.isEmpty());

    ASSERT_TRUE(video.Open(path, 64, 48, 24));
    error.clear();
    EXPECT_FALSE(video.Open(directory.filePath(QStringLiteral("other.mp4")), 64, 48, 24, &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(QFileInfo::exists(directory.filePath(QStringLiteral("other.mp4"))));
    ASSERT_TRUE(writeFrames(video, 64, 48, 2));
    EXPECT_TRUE(video.Finish());
    EXPECT_EQ(probe(path).value("nb_read_frames"), "2");
}

// Caps the size of files this process writes, so that writing fails as on a
// full disk; the signal that would end the process is ignored meanwhile.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &m_saved);
        m_savedHandler = signal(SIGXFSZ, SIG_IGN);
        rlimit limit = m_saved;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &m_saved);
        signal(SIGXFSZ, m_savedHandler);
    }

private:
    rlimit m_saved{};
    sighandler_t m_savedHandler;
};

// Pseudo-random pixels that the encoder cannot squeeze much.
QImage noise(int width, int height, quint32 seed)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        QRgb* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            seed = seed * 1664525u + 1013904223u;
            line[x] = 0xff000000 | (seed >> 8);
        }
    }
    return image;
}

TEST(VideoFailure, aWriteErrorIsFinalAndRemovesThePartialFile)
{
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("out.mp4"));
    ZVideoFFmpeg video;
    QString error;
    int accepted = 0;
    {
        FileSizeLimit limit(64 * 1024);
        ASSERT_TRUE(video.Open(path, 320, 240, 24, &error)) << error.toStdString();
        while (accepted < 100 && video.WriteFrame(noise(320, 240, accepted), &error))
            ++accepted;
        EXPECT_LT(accepted, 100) << "the size limit was never reached while writing";
        EXPECT_EQ(video.FramesWritten(), accepted);
        QString again;
        EXPECT_FALSE(video.WriteFrame(noise(320, 240, 0), &again));
        EXPECT_EQ(again, error);
        EXPECT_FALSE(video.Finish(&error));
    }
    EXPECT_TRUE(error.contains(path)) << error.toStdString();
    EXPECT_FALSE(video.IsOpen());
    EXPECT_FALSE(QFileInfo::exists(path));
}

struct ColourRow {
    std::string name;
    int width, height;
    // Writes one frame, red above and blue below.
    std::function<bool(ZVideoFFmpeg&, int width, int height, QString*)> write;
};

class DecodedColours : public ::testing::TestWithParam<ColourRow> {};

bool writeImage(ZVideoFFmpeg& video, int width, int height, QImage::Format format, QString* error)
{
    return video.WriteFrame(topRedBottomBlue(width, height, format), error);
}

bool writeRgba(ZVideoFFmpeg& video, int width, int height, int rowPadding, bool bottomUp, QString* error)
{
    const int rowBytes = width * 4 + rowPadding;
    const std::vector<unsigned char> bytes = topRedBottomBlueRgba(width, height, rowBytes, bottomUp);
    return video.WriteFrame(bytes.data(), rowBytes, bottomUp, error);
}

TEST_P(DecodedColours, redAboveBlueSurvivesTheRoundTrip)
{
    const ColourRow& row = GetParam();
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("out.mp4"));
    ZVideoFFmpeg video;
    QString error;
    ASSERT_TRUE(video.Open(path, row.width, row.height, 24, &error)) << error.toStdString();
    ASSERT_TRUE(row.write(video, row.width, row.height, &error)) << error.toStdString();
    ASSERT_TRUE(video.Finish(&error)) << error.toStdString();

    const int decodedWidth = row.width + row.width % 2;
    const QByteArray rgb = decodeRgb(path, 1);
    auto at = [&](int x, int y) { return (y * decodedWidth + x) * 3; };
    EXPECT_TRUE(isNear(rgb, at(row.width / 2, row.height / 4), kRed)) << "top middle";
    EXPECT_TRUE(isNear(rgb, at(0, 0), kRed)) << "top left corner";
    EXPECT_TRUE(isNear(rgb, at(row.width / 2, row.height * 3 / 4), kBlue)) << "bottom middle";
    EXPECT_TRUE(isNear(rgb, at(row.width - 1, row.height - 1), kBlue)) << "bottom right corner";
}

using namespace std::placeholders;

INSTANTIATE_TEST_SUITE_P(
    Rows, DecodedColours,
    ::testing::Values(
        ColourRow{"imageRgb32", 64, 48, std::bind(writeImage, _1, _2, _3, QImage::Format_RGB32, _4)},
        ColourRow{"imageRgba8888", 64, 48, std::bind(writeImage, _1, _2, _3, QImage::Format_RGBA8888, _4)},
        ColourRow{"imageRgb888Converted", 64, 48, std::bind(writeImage, _1, _2, _3, QImage::Format_RGB888, _4)},
        ColourRow{"rgbaBottomUp", 64, 48, std::bind(writeRgba, _1, _2, _3, 0, true, _4)},
        ColourRow{"rgbaTopDownPaddedRows", 64, 48, std::bind(writeRgba, _1, _2, _3, 12, false, _4)},
        ColourRow{"oddSizeRgbaBottomUp", 63, 47, std::bind(writeRgba, _1, _2, _3, 4, true, _4)},
        ColourRow{"oddSizeImage", 63, 47, std::bind(writeImage, _1, _2, _3, QImage::Format_RGB32, _4)}),
    rowName<ColourRow>);

// Frames are copied and encoded behind the caller's back: reusing one image
// for every frame must still give each frame its own picture, in order.
TEST(DecodedFrames, eachFrameKeepsItsOwnPictureInOrder)
{
    const QRgb colours[] = {0xffff0000, 0xff00ff00, 0xff0000ff, 0xffffffff, 0xff000000, 0xffffff00};
    const int frames = 18;
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("out.mp4"));
    ZVideoFFmpeg video;
    ASSERT_TRUE(video.Open(path, 32, 32, 24));
    QImage image(32, 32, QImage::Format_RGB32);
    for (int i = 0; i < frames; ++i) {
        image.fill(colours[i % 6]);
        ASSERT_TRUE(video.WriteFrame(image));
    }
    ASSERT_TRUE(video.Finish());

    const QByteArray rgb = decodeRgb(path, frames);
    ASSERT_EQ(rgb.size(), frames * 32 * 32 * 3);
    for (int i = 0; i < frames; ++i)
        EXPECT_TRUE(isNear(rgb, (i * 32 * 32 + 16 * 32 + 16) * 3, colours[i % 6])) << "frame " << i;
}

} // namespace
