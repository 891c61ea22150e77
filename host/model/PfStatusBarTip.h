#pragma once

#include <QString>

// A short tip in the application's status bar ("拖动以旋转视图"). Without a
// status bar (command line, tests) the last tip is only kept.
class PfStatusBarTip {
public:
    using Display = void (*)(const QString& tip);

    // The application's status bar; null keeps tips without showing them.
    static void SetDisplay(Display display);
    static void Show(const QString& tip);
    static void Clear() { Show(QString()); }
    static QString Current();
};
