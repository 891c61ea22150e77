#include "ZVideoFFmpeg.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QImage>

#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/error.h>
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

namespace {

// Frames waiting for the encoding thread; one more is being encoded, so the
// caller runs at most three frames ahead of the encoder.
constexpr std::size_t kQueuedFrames = 2;
constexpr int kBytesPerPixel = 4;
constexpr const char* kEncoderName = "libx264";
constexpr const char* kPreset = "veryfast";
// Visually clean for renders with thin lines at a modest size; x264's default
// of 23 smears edges of distant objects.
constexpr const char* kQuality = "20";
constexpr int kKeyFrameSeconds = 2;

bool fail(QString* error, const QString& message)
{
    if (error)
        *error = message;
    return false;
}

QString avErrorText(int code)
{
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text);
    return QString::fromLocal8Bit(text);
}

// The host is the only user of FFmpeg in the process; its informational
// output (encoder statistics on every close) would only clutter the console.
void quietFFmpegLogOnce()
{
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_level(AV_LOG_WARNING); });
}

// How the bytes of one pixel are ordered in a staged frame.
enum class SourceLayout {
    QtRgb32, // QImage::Format_RGB32 and ARGB32: 0xAARRGGBB in native byte order
    Rgba8,   // R, G, B, A bytes
};

AVPixelFormat avFormatOf(SourceLayout layout)
{
    return layout == SourceLayout::QtRgb32 ? AV_PIX_FMT_RGB32 : AV_PIX_FMT_RGBA;
}

// A frame copied from the caller: top-down rows, packed, at the even size the
// encoder takes.
struct StagedFrame {
    std::vector<unsigned char> pixels;
    SourceLayout layout = SourceLayout::Rgba8;
};

struct CodecContextDeleter {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FrameDeleter {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct PacketDeleter {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct ScalerDeleter {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};
// Closes the file too, so that dropping the container never leaks a handle.
struct FormatContextDeleter {
    void operator()(AVFormatContext* format) const
    {
        if (!(format->oformat->flags & AVFMT_NOFILE))
            avio_closep(&format->pb);
        avformat_free_context(format);
    }
};

// The FFmpeg side: RGB to YUV conversion, the H.264 encoder and the MP4 muxer
// of one file. Used from one thread at a time.
class H264Mp4Writer {
public:
    ~H264Mp4Writer() { abort(); }

    // width and height must be even.
    bool open(const QString& path, int width, int height, int framesPerSecond, QString* error);
    bool writeFrame(const unsigned char* pixels, SourceLayout layout, QString* error);
    // Flushes the encoder and completes the file; on failure the file is removed.
    bool finish(QString* error);
    // Drops everything and removes the file when this writer created it.
    void abort();

private:
    bool createEncoder(int width, int height, int framesPerSecond, QString* error);
    bool createContainer(QString* error);
    bool createFile(QString* error);
    bool prepareScaler(SourceLayout layout, QString* error);
    bool encode(const AVFrame* frame, QString* error);
    bool writePackets(QString* error);

    QString m_path;
    QByteArray m_url;
    bool m_fileCreated = false;
    std::unique_ptr<AVCodecContext, CodecContextDeleter> m_encoder;
    std::unique_ptr<AVFormatContext, FormatContextDeleter> m_format;
    AVStream* m_stream = nullptr;
    std::unique_ptr<AVFrame, FrameDeleter> m_frame;
    std::unique_ptr<AVPacket, PacketDeleter> m_packet;
    std::unique_ptr<SwsContext, ScalerDeleter> m_scaler;
    SourceLayout m_scalerLayout = SourceLayout::Rgba8;
    int64_t m_nextPts = 0;
};

bool H264Mp4Writer::open(const QString& path, int width, int height, int framesPerSecond, QString* error)
{
    m_path = path;
    // The "file:" prefix keeps a colon in the name from being read as a
    // protocol; the muxer reopens the same URL to move the index to the front.
    m_url = "file:" + QFile::encodeName(QFileInfo(path).absoluteFilePath());
    m_nextPts = 0;
    bool ok = createEncoder(width, height, framesPerSecond, error) && createContainer(error) && createFile(error);
    if (ok) {
        m_frame.reset(av_frame_alloc());
        m_packet.reset(av_packet_alloc());
        ok = (m_frame && m_packet) || fail(error, QStringLiteral("Out of memory for the video encoder"));
    }
    if (ok) {
        m_frame->format = AV_PIX_FMT_YUV420P;
        m_frame->width = width;
        m_frame->height = height;
        const int code = av_frame_get_buffer(m_frame.get(), 0);
        ok = code >= 0 || fail(error, QStringLiteral("Cannot allocate a video frame: %1").arg(avErrorText(code)));
    }
    if (!ok)
        abort();
    return ok;
}

bool H264Mp4Writer::createEncoder(int width, int height, int framesPerSecond, QString* error)
{
    const AVCodec* codec = avcodec_find_encoder_by_name(kEncoderName);
    if (!codec)
        return fail(error, QStringLiteral("The H.264 encoder %1 is not available").arg(kEncoderName));
    m_encoder.reset(avcodec_alloc_context3(codec));
    if (!m_encoder)
        return fail(error, QStringLiteral("Out of memory for the video encoder"));
    AVCodecContext* encoder = m_encoder.get();
    encoder->width = width;
    encoder->height = height;
    encoder->sample_aspect_ratio = AVRational{1, 1};
    encoder->pix_fmt = AV_PIX_FMT_YUV420P;
    encoder->time_base = AVRational{1, framesPerSecond};
    encoder->framerate = AVRational{framesPerSecond, 1};
    encoder->gop_size = kKeyFrameSeconds * framesPerSecond;
    // 0 lets x264 use every core; FFmpeg's default is a single thread.
    encoder->thread_count = 0;
    // Tagged, so that players do not guess between BT.601 and BT.709.
    encoder->color_range = AVCOL_RANGE_MPEG;
    encoder->colorspace = AVCOL_SPC_BT709;
    encoder->color_primaries = AVCOL_PRI_BT709;
    encoder->color_trc = AVCOL_TRC_BT709;
    // MP4 keeps the parameter sets in its header, not in the stream.
    encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "preset", kPreset, 0);
    av_dict_set(&options, "crf", kQuality, 0);
    const int code = avcodec_open2(encoder, codec, &options);
    av_dict_free(&options);
    if (code < 0)
        return fail(error, QStringLiteral("Cannot start the H.264 encoder at %1x%2: %3")
                               .arg(width).arg(height).arg(avErrorText(code)));
    return true;
}

bool H264Mp4Writer::createContainer(QString* error)
{
    AVFormatContext* format = nullptr;
    const int code = avformat_alloc_output_context2(&format, nullptr, "mp4", m_url.constData());
    if (code < 0)
        return fail(error, QStringLiteral("Cannot set up the MP4 container: %1").arg(avErrorText(code)));
    m_format.reset(format);
    m_stream = avformat_new_stream(format, nullptr);
    if (!m_stream)
        return fail(error, QStringLiteral("Out of memory for the MP4 container"));
    m_stream->time_base = m_encoder->time_base;
    m_stream->avg_frame_rate = m_encoder->framerate;
    const int copied = avcodec_parameters_from_context(m_stream->codecpar, m_encoder.get());
    if (copied < 0)
        return fail(error, QStringLiteral("Cannot set up the MP4 container: %1").arg(avErrorText(copied)));
    return true;
}

bool H264Mp4Writer::createFile(QString* error)
{
    const int opened = avio_open(&m_format->pb, m_url.constData(), AVIO_FLAG_WRITE);
    if (opened < 0)
        return fail(error, QStringLiteral("Cannot create the video file \"%1\": %2").arg(m_path, avErrorText(opened)));
    m_fileCreated = true;
    AVDictionary* options = nullptr;
    av_dict_set(&options, "movflags", "+faststart", 0);
    const int written = avformat_write_header(m_format.get(), &options);
    av_dict_free(&options);
    if (written < 0)
        return fail(error, QStringLiteral("Cannot write the video file \"%1\": %2").arg(m_path, avErrorText(written)));
    return true;
}

bool H264Mp4Writer::writeFrame(const unsigned char* pixels, SourceLayout layout, QString* error)
{
    if (!prepareScaler(layout, error))
        return false;
    // The encoder may still hold the previous picture.
    const int writable = av_frame_make_writable(m_frame.get());
    if (writable < 0)
        return fail(error, QStringLiteral("Cannot reuse the video frame: %1").arg(avErrorText(writable)));
    const uint8_t* source[] = {pixels};
    const int sourceStride[] = {m_frame->width * kBytesPerPixel};
    sws_scale(m_scaler.get(), source, sourceStride, 0, m_frame->height, m_frame->data, m_frame->linesize);
    m_frame->pts = m_nextPts++;
    return encode(m_frame.get(), error);
}

bool H264Mp4Writer::prepareScaler(SourceLayout layout, QString* error)
{
    if (m_scaler && m_scalerLayout == layout)
        return true;
    const int width = m_frame->width;
    const int height = m_frame->height;
    m_scaler.reset(sws_getContext(width, height, avFormatOf(layout), width, height, AV_PIX_FMT_YUV420P,
                                  SWS_BILINEAR, nullptr, nullptr, nullptr));
    if (!m_scaler)
        return fail(error, QStringLiteral("Cannot set up the colour conversion of the video"));
    m_scalerLayout = layout;
    // Full-range RGB in, limited-range BT.709 out, as the stream is tagged.
    const int* bt709 = sws_getCoefficients(SWS_CS_ITU709);
    sws_setColorspaceDetails(m_scaler.get(), bt709, 1, bt709, 0, 0, 1 << 16, 1 << 16);
    return true;
}

// frame null: drain the encoder.
bool H264Mp4Writer::encode(const AVFrame* frame, QString* error)
{
    const int code = avcodec_send_frame(m_encoder.get(), frame);
    if (code < 0)
        return fail(error, QStringLiteral("The H.264 encoder failed: %1").arg(avErrorText(code)));
    return writePackets(error);
}

bool H264Mp4Writer::writePackets(QString* error)
{
    for (;;) {
        const int received = avcodec_receive_packet(m_encoder.get(), m_packet.get());
        if (received == AVERROR(EAGAIN) || received == AVERROR_EOF)
            return true;
        if (received < 0)
            return fail(error, QStringLiteral("The H.264 encoder failed: %1").arg(avErrorText(received)));
        if (m_packet->duration == 0)
            m_packet->duration = 1;
        av_packet_rescale_ts(m_packet.get(), m_encoder->time_base, m_stream->time_base);
        m_packet->stream_index = m_stream->index;
        const int written = av_interleaved_write_frame(m_format.get(), m_packet.get());
        if (written < 0)
            return fail(error, QStringLiteral("Cannot write the video file \"%1\": %2")
                                   .arg(m_path, avErrorText(written)));
    }
}

bool H264Mp4Writer::finish(QString* error)
{
    bool ok = encode(nullptr, error);
    if (ok) {
        const int code = av_write_trailer(m_format.get());
        ok = code >= 0 || fail(error, QStringLiteral("Cannot complete the video file \"%1\": %2")
                                          .arg(m_path, avErrorText(code)));
    }
    if (ok) {
        const int code = avio_closep(&m_format->pb);
        ok = code >= 0 || fail(error, QStringLiteral("Cannot close the video file \"%1\": %2")
                                          .arg(m_path, avErrorText(code)));
    }
    if (ok)
        m_fileCreated = false;
    abort();
    return ok;
}

void H264Mp4Writer::abort()
{
    m_scaler.reset();
    m_packet.reset();
    m_frame.reset();
    m_format.reset();
    m_stream = nullptr;
    m_encoder.reset();
    // Only a regular file: the path may name a device that was opened, not made.
    if (m_fileCreated && QFileInfo(m_path).isFile())
        QFile::remove(m_path);
    m_fileCreated = false;
}

// The hand-over between the caller and the encoding thread: a bounded queue of
// staged frames, and the buffers coming back after encoding, so that a
// recording allocates only a few frame buffers however long it runs.
class FrameQueue {
public:
    // Caller: a buffer to stage into, empty when none has come back yet.
    std::vector<unsigned char> takeSpare();
    // Caller: blocks while the queue is full. False, with the encoding
    // thread's reason, once that thread has failed.
    bool push(StagedFrame frame, QString* error);
    // Encoding thread: blocks while the queue is empty. False when closed and
    // drained, or cancelled.
    bool pop(StagedFrame* frame);
    void recycle(std::vector<unsigned char> buffer);
    // No more frames: the encoding thread drains the queue and stops.
    void close();
    // Stop now, dropping what is queued.
    void cancel();
    // Encoding thread: the file is lost; wakes a blocked push.
    void setFailure(const QString& reason);
    QString failure() const;

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<StagedFrame> m_frames;
    std::vector<std::vector<unsigned char>> m_spare;
    QString m_failure;
    bool m_closed = false;
    bool m_cancelled = false;
};

std::vector<unsigned char> FrameQueue::takeSpare()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_spare.empty())
        return {};
    std::vector<unsigned char> buffer = std::move(m_spare.back());
    m_spare.pop_back();
    return buffer;
}

bool FrameQueue::push(StagedFrame frame, QString* error)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_frames.size() < kQueuedFrames || !m_failure.isEmpty(); });
    if (!m_failure.isEmpty())
        return fail(error, m_failure);
    m_frames.push_back(std::move(frame));
    m_changed.notify_all();
    return true;
}

bool FrameQueue::pop(StagedFrame* frame)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_frames.empty() || m_closed || m_cancelled; });
    if (m_cancelled || m_frames.empty())
        return false;
    *frame = std::move(m_frames.front());
    m_frames.pop_front();
    m_changed.notify_all();
    return true;
}

void FrameQueue::recycle(std::vector<unsigned char> buffer)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_spare.push_back(std::move(buffer));
}

void FrameQueue::close()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_closed = true;
    m_changed.notify_all();
}

void FrameQueue::cancel()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_cancelled = true;
    m_changed.notify_all();
}

void FrameQueue::setFailure(const QString& reason)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_failure = reason;
    m_changed.notify_all();
}

QString FrameQueue::failure() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_failure;
}

// Copies a frame into the encoder's layout: rows top-down, packed, an odd
// last column and row repeated to reach the even size.
void stagePixels(const unsigned char* source, int rowBytes, bool bottomUp, int width, int height,
                 unsigned char* target, int targetWidth, int targetHeight)
{
    const std::size_t rowLength = std::size_t(width) * kBytesPerPixel;
    const std::size_t targetRowLength = std::size_t(targetWidth) * kBytesPerPixel;
    for (int y = 0; y < height; ++y) {
        const unsigned char* from = source + std::ptrdiff_t(bottomUp ? height - 1 - y : y) * rowBytes;
        unsigned char* to = target + y * targetRowLength;
        std::memcpy(to, from, rowLength);
        if (targetWidth > width)
            std::memcpy(to + rowLength, to + rowLength - kBytesPerPixel, kBytesPerPixel);
    }
    if (targetHeight > height)
        std::memcpy(target + height * targetRowLength, target + (height - 1) * targetRowLength, targetRowLength);
}

int evenUp(int value) { return value + (value & 1); }

} // namespace

struct ZVideoFFmpeg::Impl {
    H264Mp4Writer writer;
    std::unique_ptr<FrameQueue> queue;
    std::thread encodingThread;
    bool open = false;
    QString path;
    int width = 0;
    int height = 0;
    int framesWritten = 0;

    bool startEncoder(QString* error);
    void encodeQueuedFrames();
    void stopEncoder();
    bool checkWritable(QString* error) const;
    bool stage(const unsigned char* pixels, int rowBytes, bool bottomUp, SourceLayout layout, QString* error);
};

bool ZVideoFFmpeg::Impl::startEncoder(QString* error)
{
    queue = std::make_unique<FrameQueue>();
    try {
        encodingThread = std::thread(&Impl::encodeQueuedFrames, this);
    } catch (const std::system_error& exception) {
        return fail(error, QStringLiteral("Cannot start the video encoding thread: %1").arg(exception.what()));
    }
    return true;
}

// The encoding thread. It alone touches the writer between Open and Finish.
void ZVideoFFmpeg::Impl::encodeQueuedFrames()
{
    StagedFrame frame;
    while (queue->pop(&frame)) {
        QString reason;
        if (!writer.writeFrame(frame.pixels.data(), frame.layout, &reason)) {
            queue->setFailure(reason);
            return;
        }
        queue->recycle(std::move(frame.pixels));
    }
}

void ZVideoFFmpeg::Impl::stopEncoder()
{
    if (encodingThread.joinable())
        encodingThread.join();
    open = false;
}

bool ZVideoFFmpeg::Impl::checkWritable(QString* error) const
{
    if (!open)
        return fail(error, QStringLiteral("No video is open"));
    const QString failure = queue->failure();
    return failure.isEmpty() || fail(error, failure);
}

bool ZVideoFFmpeg::Impl::stage(const unsigned char* pixels, int rowBytes, bool bottomUp, SourceLayout layout,
                               QString* error)
{
    const int targetWidth = evenUp(width);
    const int targetHeight = evenUp(height);
    StagedFrame frame;
    frame.layout = layout;
    frame.pixels = queue->takeSpare();
    frame.pixels.resize(std::size_t(targetWidth) * targetHeight * kBytesPerPixel);
    stagePixels(pixels, rowBytes, bottomUp, width, height, frame.pixels.data(), targetWidth, targetHeight);
    if (!queue->push(std::move(frame), error))
        return false;
    ++framesWritten;
    return true;
}

ZVideoFFmpeg::ZVideoFFmpeg() : m(std::make_unique<Impl>()) {}

ZVideoFFmpeg::~ZVideoFFmpeg() { Cancel(); }

bool ZVideoFFmpeg::Open(const QString& filePath, int width, int height, int framesPerSecond, QString* error)
{
    if (m->open)
        return fail(error, QStringLiteral("A video is already being written"));
    if (width < 1 || width > kMaxSide || height < 1 || height > kMaxSide)
        return fail(error, QStringLiteral("The video size %1x%2 is outside 1 to %3 pixels a side")
                               .arg(width).arg(height).arg(kMaxSide));
    if (framesPerSecond < 1 || framesPerSecond > kMaxFramesPerSecond)
        return fail(error, QStringLiteral("The frame rate %1 is outside 1 to %2 frames per second")
                               .arg(framesPerSecond).arg(kMaxFramesPerSecond));
    if (filePath.isEmpty())
        return fail(error, QStringLiteral("No video file name was given"));
    quietFFmpegLogOnce();
    if (!m->writer.open(filePath, evenUp(width), evenUp(height), framesPerSecond, error))
        return false;
    if (!m->startEncoder(error)) {
        m->writer.abort();
        return false;
    }
    m->open = true;
    m->path = filePath;
    m->width = width;
    m->height = height;
    m->framesWritten = 0;
    return true;
}

bool ZVideoFFmpeg::WriteFrame(const QImage& frame, QString* error)
{
    if (!m->checkWritable(error))
        return false;
    if (frame.width() != m->width || frame.height() != m->height)
        return fail(error, QStringLiteral("The frame is %1x%2 pixels, the video %3x%4")
                               .arg(frame.width()).arg(frame.height()).arg(m->width).arg(m->height));
    switch (frame.format()) {
    case QImage::Format_RGB32:
    case QImage::Format_ARGB32:
    case QImage::Format_ARGB32_Premultiplied:
        return m->stage(frame.constBits(), frame.bytesPerLine(), false, SourceLayout::QtRgb32, error);
    case QImage::Format_RGBA8888:
    case QImage::Format_RGBX8888:
    case QImage::Format_RGBA8888_Premultiplied:
        return m->stage(frame.constBits(), frame.bytesPerLine(), false, SourceLayout::Rgba8, error);
    default: {
        const QImage converted = frame.convertToFormat(QImage::Format_RGB32);
        return m->stage(converted.constBits(), converted.bytesPerLine(), false, SourceLayout::QtRgb32, error);
    }
    }
}

bool ZVideoFFmpeg::WriteFrame(const unsigned char* rgba, int rowBytes, bool bottomUp, QString* error)
{
    if (!m->checkWritable(error))
        return false;
    if (!rgba)
        return fail(error, QStringLiteral("The frame has no pixels"));
    if (rowBytes < m->width * kBytesPerPixel)
        return fail(error, QStringLiteral("A row of %1 bytes cannot hold %2 RGBA pixels").arg(rowBytes).arg(m->width));
    return m->stage(rgba, rowBytes, bottomUp, SourceLayout::Rgba8, error);
}

bool ZVideoFFmpeg::Finish(QString* error)
{
    if (!m->open)
        return fail(error, QStringLiteral("No video is open"));
    m->queue->close();
    m->stopEncoder();
    QString failure = m->queue->failure();
    // An MP4 without a single frame plays nowhere; do not leave one behind.
    if (failure.isEmpty() && m->framesWritten == 0)
        failure = QStringLiteral("No frame was written to \"%1\"").arg(m->path);
    if (!failure.isEmpty()) {
        m->writer.abort();
        return fail(error, failure);
    }
    return m->writer.finish(error);
}

void ZVideoFFmpeg::Cancel()
{
    if (!m->open)
        return;
    m->queue->cancel();
    m->stopEncoder();
    m->writer.abort();
}

bool ZVideoFFmpeg::IsOpen() const { return m->open; }

int ZVideoFFmpeg::FramesWritten() const { return m->framesWritten; }
