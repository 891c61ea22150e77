#include "host/vpe/video/ZVideoFFmpeg.h"
#include "tests/support/QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QtEndian>

#include <signal.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr QRgb kRed = 0xffff0000;
constexpr QRgb kBlue = 0xff0000ff;
// Each colour is far from its neighbours in some channel, so a frame lost,
// repeated or swapped with the next shows in the decoded colour.
constexpr QRgb kCycle[] = {0xffff0000, 0xff00ff00, 0xff0000ff, 0xffffffff, 0xff000000, 0xffffff00};

// One image refilled for every frame, as a renderer does: the encoder must
// take its own copy before WriteFrame returns.
::testing::AssertionResult writeFrames(ZVideoFFmpeg& video, int width, int height, int count)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int i = 0; i < count; ++i) {
        image.fill(kCycle[i % 6]);
        QString error;
        if (!video.WriteFrame(image, &error))
            return ::testing::AssertionFailure() << "frame " << i << ": " << error;
    }
    return ::testing::AssertionSuccess();
}

QByteArray runTool(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(60000)) << program << " did not finish";
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    return process.readAllStandardOutput();
}

// "codec,width,height,pixel format,frame rate,frames counted by decoding".
QString probe(const QString& path)
{
    return QString::fromUtf8(runTool("ffprobe", {"-v", "error", "-count_frames", "-select_streams", "v:0",
                                                 "-show_entries", "stream=codec_name,width,height,pix_fmt,"
                                                 "r_frame_rate,nb_read_frames", "-of", "csv=p=0", path}))
        .trimmed();
}

// Every frame as packed RGB24, as a player shows it.
QByteArray decodeRgb(const QString& path)
{
    return runTool("ffmpeg", {"-v", "error", "-i", path, "-f", "rawvideo", "-pix_fmt", "rgb24", "-"});
}

// Lossy coding moves a flat colour by a few steps; a swapped channel or a
// misplaced row moves it by more than 200.
::testing::AssertionResult isNear(const QByteArray& rgb, int offset, QRgb expected)
{
    const QRgb actual = qRgb(quint8(rgb[offset]), quint8(rgb[offset + 1]), quint8(rgb[offset + 2]));
    if (std::max({std::abs(qRed(actual) - qRed(expected)), std::abs(qGreen(actual) - qGreen(expected)),
                  std::abs(qBlue(actual) - qBlue(expected))}) <= 12)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << std::hex << "decoded " << actual << ", written " << expected;
}

TEST(VideoFile, holdsEveryFrameInOrderWithTheIndexFirst)
{
    const struct { int width, height, framesPerSecond, frames; const char* probed; } rows[] = {
        {320, 240, 30, 48, "h264,320,240,yuv420p,30/1,48"},
        {333, 187, 24, 48, "h264,334,188,yuv420p,24/1,48"}, // odd sides padded to even
        {4094, 1, 24, 6, "h264,4094,2,yuv420p,24/1,6"}};
    QTemporaryDir directory;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.probed);
        const QString path = directory.filePath(QStringLiteral("%1x%2.mp4").arg(row.width).arg(row.height));
        ZVideoFFmpeg video;
        QString error;
        ASSERT_TRUE(video.Open(path, row.width, row.height, row.framesPerSecond, &error)) << error;
        ASSERT_TRUE(writeFrames(video, row.width, row.height, row.frames));
        ASSERT_TRUE(video.Finish(&error)) << error;
        EXPECT_FALSE(video.IsOpen());
        EXPECT_EQ(probe(path), row.probed);

        // Players can start before the end has arrived only when the index
        // directly follows the file type box.
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray head = file.read(4096);
        EXPECT_EQ(QString(head.mid(qFromBigEndian<quint32>(head.constData()) + 4, 4)), "moov");

        const int paddedWidth = row.width + row.width % 2;
        const int frameBytes = paddedWidth * (row.height + row.height % 2) * 3;
        const QByteArray rgb = decodeRgb(path);
        ASSERT_EQ(rgb.size(), row.frames * frameBytes);
        for (int i = 0; i < row.frames; ++i)
            EXPECT_TRUE(isNear(rgb, i * frameBytes + (row.height / 2 * paddedWidth + row.width / 2) * 3, kCycle[i % 6]))
                << "frame " << i;
    }
}

TEST(VideoFile, refusedOpenNamesTheCauseAndLeavesNoFile)
{
    QTemporaryDir directory;
    const QDir scratch(directory.path());
    ASSERT_TRUE(scratch.mkdir("video.mp4"));
    ASSERT_TRUE(QFile(scratch.filePath("plain")).open(QIODevice::WriteOnly));
    const QStringList before = scratch.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden);
    // mentioned: what the reason must name; null for the path.
    const struct { const char* path; int width, height, framesPerSecond; const char* mentioned; } rows[] = {
        {"missing/out.mp4", 320, 240, 24, nullptr}, {"video.mp4", 320, 240, 24, nullptr},
        {"plain/out.mp4", 320, 240, 24, nullptr},   {"out.mp4", 4095, 240, 24, "4095x240"},
        {"out.mp4", 320, 0, 24, "320x0"},           {"out.mp4", 320, 240, 241, "frame rate 241"}};
    for (const auto& row : rows) {
        const QString path = scratch.filePath(row.path);
        SCOPED_TRACE(row.mentioned ? row.mentioned : row.path);
        ZVideoFFmpeg video;
        QString error;
        EXPECT_FALSE(video.Open(path, row.width, row.height, row.framesPerSecond, &error));
        EXPECT_FALSE(video.IsOpen());
        EXPECT_TRUE(error.contains(row.mentioned ? QString(row.mentioned) : path)) << error;
        EXPECT_EQ(scratch.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden), before);
    }
}

TEST(VideoFile, refusedCallsChangeNothingAndAbandoningRemovesIt)
{
    QTemporaryDir directory;
    const QString path = directory.filePath("out.mp4");
    const QString other = directory.filePath("other.mp4");
    auto video = std::make_unique<ZVideoFFmpeg>();
    ASSERT_TRUE(video->Open(path, 64, 48, 24));
    ASSERT_TRUE(writeFrames(*video, 64, 48, 10));
    EXPECT_TRUE(QFile::exists(path));
    video = std::make_unique<ZVideoFFmpeg>(); // destroys the unfinished one
    EXPECT_FALSE(QFile::exists(path));

    QString reasons[7];
    EXPECT_FALSE(video->WriteFrame(QImage(64, 48, QImage::Format_RGB32), &reasons[0]));
    EXPECT_FALSE(video->Finish(&reasons[1]));
    ASSERT_TRUE(video->Open(path, 64, 48, 24));
    ASSERT_TRUE(writeFrames(*video, 64, 48, 10));
    video->Cancel();
    EXPECT_FALSE(video->IsOpen());
    EXPECT_FALSE(QFile::exists(path));
    // An MP4 without a frame plays nowhere.
    ASSERT_TRUE(video->Open(path, 64, 48, 24));
    EXPECT_FALSE(video->Finish(&reasons[2]));
    EXPECT_TRUE(reasons[2].contains(path)) << reasons[2];
    EXPECT_FALSE(QFile::exists(path));

    ASSERT_TRUE(video->Open(path, 64, 48, 24));
    EXPECT_FALSE(video->Open(other, 64, 48, 24, &reasons[3]));
    EXPECT_FALSE(QFile::exists(other));
    ASSERT_TRUE(writeFrames(*video, 64, 48, 6));
    EXPECT_FALSE(video->WriteFrame(QImage(48, 64, QImage::Format_RGB32), &reasons[4]));
    EXPECT_FALSE(video->WriteFrame(std::vector<unsigned char>(64 * 4 * 48).data(), 63 * 4, false, &reasons[5]));
    EXPECT_FALSE(video->WriteFrame(nullptr, 64 * 4, false, &reasons[6]));
    for (const QString& reason : reasons)
        EXPECT_FALSE(reason.isEmpty());
    EXPECT_EQ(video->FramesWritten(), 6);
    ASSERT_TRUE(video->Finish());
    EXPECT_EQ(probe(path), "h264,64,48,yuv420p,24/1,6");
}

TEST(VideoFile, aWriteErrorIsFinalAndRemovesIt)
{
    QTemporaryDir directory;
    const QString path = directory.filePath("out.mp4");
    // Pseudo-random pixels, which the encoder cannot squeeze much.
    QImage noise(320, 240, QImage::Format_RGB32);
    auto nextNoise = [&, random = std::minstd_rand()]() mutable {
        std::generate_n(reinterpret_cast<QRgb*>(noise.bits()), 320 * 240, std::ref(random));
        return noise;
    };
    // Capping the size of files this process writes fails writing as a full
    // disk does; the signal that would end the process is ignored meanwhile.
    rlimit saved{};
    getrlimit(RLIMIT_FSIZE, &saved);
    const rlimit capped{64 * 1024, saved.rlim_max};
    const sighandler_t savedHandler = signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &capped);
    ZVideoFFmpeg video;
    QString error, again, finishError;
    int accepted = 0;
    const bool opened = video.Open(path, 320, 240, 24, &error);
    while (opened && accepted < 100 && video.WriteFrame(nextNoise(), &error))
        ++accepted;
    const bool writtenAfter = video.WriteFrame(nextNoise(), &again);
    const bool finished = video.Finish(&finishError);
    setrlimit(RLIMIT_FSIZE, &saved);
    signal(SIGXFSZ, savedHandler);

    ASSERT_TRUE(opened) << error;
    EXPECT_LT(accepted, 100) << "the size limit was never reached while writing";
    EXPECT_FALSE(writtenAfter);
    EXPECT_EQ(again, error);
    EXPECT_FALSE(finished);
    EXPECT_TRUE(finishError.contains(path)) << finishError;
    EXPECT_FALSE(video.IsOpen());
    EXPECT_FALSE(QFile::exists(path));
}

TEST(VideoFile, redAboveBlueSurvivesTheRoundTrip)
{
    // Format_Invalid: raw RGBA bytes, as OpenGL reads them back.
    const struct { const char* name; int width, height; QImage::Format format; bool bottomUp; int padding; } rows[] = {
        {"image RGB32", 64, 48, QImage::Format_RGB32, false, 0},
        {"image RGBA8888, odd size", 63, 47, QImage::Format_RGBA8888, false, 0},
        {"image RGB888, converted", 64, 48, QImage::Format_RGB888, false, 0},
        {"raw bottom-up, odd size", 63, 47, QImage::Format_Invalid, true, 4},
        {"raw top-down, wide row padding", 64, 48, QImage::Format_Invalid, false, 256}};
    QTemporaryDir directory;
    const QString path = directory.filePath("out.mp4");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QImage picture(row.width, row.height, QImage::Format_RGB32);
        for (int y = 0; y < row.height; ++y)
            std::fill_n(reinterpret_cast<QRgb*>(picture.scanLine(y)), row.width, y < row.height / 2 ? kRed : kBlue);
        ZVideoFFmpeg video;
        QString error;
        ASSERT_TRUE(video.Open(path, row.width, row.height, 24, &error)) << error;
        if (row.format != QImage::Format_Invalid) {
            ASSERT_TRUE(video.WriteFrame(picture.convertToFormat(row.format), &error)) << error;
        } else {
            // The row padding holds junk that must never reach the picture.
            const QImage rgba = picture.convertToFormat(QImage::Format_RGBA8888).mirrored(false, row.bottomUp);
            const int rowBytes = row.width * 4 + row.padding;
            std::vector<unsigned char> bytes(std::size_t(rowBytes) * row.height, 0x7f);
            for (int y = 0; y < row.height; ++y)
                std::memcpy(&bytes[std::size_t(y) * rowBytes], rgba.constScanLine(y), row.width * 4);
            ASSERT_TRUE(video.WriteFrame(bytes.data(), rowBytes, row.bottomUp, &error)) << error;
        }
        ASSERT_TRUE(video.Finish(&error)) << error;

        const int paddedWidth = row.width + row.width % 2;
        const QByteArray rgb = decodeRgb(path);
        ASSERT_EQ(rgb.size(), paddedWidth * (row.height + row.height % 2) * 3);
        auto at = [&](int x, int y) { return (y * paddedWidth + x) * 3; };
        EXPECT_TRUE(isNear(rgb, at(row.width / 2, row.height / 4), kRed)) << "top middle";
        EXPECT_TRUE(isNear(rgb, at(0, 0), kRed)) << "top left corner";
        EXPECT_TRUE(isNear(rgb, at(row.width / 2, row.height * 3 / 4), kBlue)) << "bottom middle";
        EXPECT_TRUE(isNear(rgb, at(row.width - 1, row.height - 1), kBlue)) << "bottom right corner";
    }
}

} // namespace
