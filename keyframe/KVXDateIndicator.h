#pragma once

class QDate;

// What the date clock moves while the schedule plays: the indicator of a
// date timeline. Implemented by a QObject (the date timeline widget, a test's
// stand-in): a clock holds it through a KVXIndicatorLink and stops calling it
// once that object is destroyed.
class KVXDateIndicator {
public:
    // Silent: playback moves the indicator, the user did not.
    virtual void SetIndicator(const QDate& date) = 0;

protected:
    ~KVXDateIndicator() = default;
};
