#pragma once

#include <QString>

// A line on the application's command prompt ("正在导出视频：第12帧 / …").
// Without a prompt window (command line, tests) the lines go to standard
// error; the last one is kept either way.
class PfEdPrompt {
public:
    using Display = void (*)(const QString& line);
    // The application's prompt window; null puts standard error back.
    static void SetDisplay(Display display);
    static void Show(const QString& line);
    static QString Last();
};
