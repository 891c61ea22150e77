#pragma once

#include <QString>

#include <memory>

class QImage;

// Writes frames into an MP4 file as H.264 video (libx264, preset veryfast,
// CRF 20, yuv420p, BT.709 limited range, a key frame every two seconds, the
// index at the front of the file so that players can start before the end has
// arrived). Frame i is shown at i / frames-per-second seconds.
//
// Life: Open, any number of WriteFrame, then Finish for a complete file, or
// Cancel (or destruction) to drop it: the partial file is removed. After
// Finish or Cancel the object can be opened again.
//
// What a false return guarantees: a refused Open leaves no file behind (an
// existing file it could not open is left alone). A refused frame (not open,
// wrong size, bad row length) changes nothing: the recording goes on and
// Finish still writes the frames accepted before. A failure of the encoder or
// the disk is final: that call, and every WriteFrame and Finish after it,
// returns the reason, and the partial file is removed.
//
// Threading: frames are converted and encoded on a background thread while the
// caller renders the next one. WriteFrame copies the pixels (the caller's
// buffer may be reused at once) and only blocks while two frames are already
// waiting. An encoding failure on that thread is reported by the next
// WriteFrame or Finish. One object is meant for one calling thread.
//
// Odd sizes: yuv420p needs an even width and height, so an odd side is padded
// by one pixel that repeats the last column or row; a 333x187 recording gives
// a 334x188 video. Nothing is scaled.
//
// Pixels: alpha is ignored, so a frame with a transparent background records
// its colour values as they are.
class ZVideoFFmpeg {
public:
    static constexpr int kMaxSide = 4094;
    // The side a video of that side is written with: odd sides grow by one.
    static constexpr int WrittenSide(int side) { return side + (side & 1); }
    static constexpr int kMaxFramesPerSecond = 240;

    ZVideoFFmpeg();
    // Cancels an unfinished recording.
    ~ZVideoFFmpeg();
    ZVideoFFmpeg(const ZVideoFFmpeg&) = delete;
    ZVideoFFmpeg& operator=(const ZVideoFFmpeg&) = delete;

    // Creates (or overwrites) filePath as an MP4 file, whatever its extension.
    // width and height: 1 to kMaxSide; framesPerSecond: 1 to
    // kMaxFramesPerSecond. False with the reason, naming the path where the
    // file could not be created, or when a recording is already open.
    bool Open(const QString& filePath, int width, int height, int framesPerSecond, QString* error = nullptr);

    // Appends a frame of exactly the opened size, rows top-down. RGB32, ARGB32,
    // ARGB32_Premultiplied and RGBA8888 are taken as they are; other formats
    // are converted first.
    bool WriteFrame(const QImage& frame, QString* error = nullptr);
    // Appends a frame of RGBA bytes (as OpenGL reads them back) of the opened
    // size; rowBytes: the distance between rows in memory, at least 4 x width;
    // bottomUp: the first row in memory is the bottom of the picture.
    bool WriteFrame(const unsigned char* rgba, int rowBytes, bool bottomUp, QString* error = nullptr);

    // Encodes what is still waiting, completes the file and closes it. Fails
    // when no frame was written. On failure the partial file is removed.
    // Either way the object is closed.
    bool Finish(QString* error = nullptr);
    // Stops at once and removes the partial file; nothing happens when no
    // recording is open.
    void Cancel();

    bool IsOpen() const;
    // Frames accepted since the last Open; all of them are in the file after a
    // successful Finish.
    int FramesWritten() const;

private:
    struct Impl;
    std::unique_ptr<Impl> m;
};
