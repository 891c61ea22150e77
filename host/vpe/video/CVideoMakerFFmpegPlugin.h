#pragma once

namespace vpe {

// The video plug-in: FFmpeg's H.264 encoder behind every CVideoMaker made
// after it is loaded. Loading twice is harmless.
class CVideoMakerFFmpegPlugin {
public:
    static bool LoadPlugin();
    static bool IsLoaded();
};

} // namespace vpe
