#pragma once

#include <QString>

// The rules a fly-through export's settings must pass, for the output
// settings dialog and the command line alike: a video file given by an
// absolute path, and a resolution "WIDTHxHEIGHT" of 1 to 4094 pixels a side.
class KVXVideoSettings {
public:
    static constexpr unsigned int kMaxSide = 4094;

    // The notice for the first rule the settings break, in the order the
    // user is told them; empty when they pass.
    static QString Problem(const QString& path, const QString& resolution);
    // The two numbers of a resolution that passes; false otherwise.
    static bool ParseResolution(const QString& resolution, unsigned int& width, unsigned int& height);
};
