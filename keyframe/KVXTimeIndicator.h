#pragma once

// What the camera clock moves while a key-frame animation plays: the
// indicator of the key-frame timeline, in milliseconds. Implemented by a
// QObject; held through a KVXIndicatorLink, as KVXDateIndicator is.
class KVXTimeIndicator {
public:
    virtual void SetTimeIndicator(unsigned int milliseconds) = 0;

protected:
    ~KVXTimeIndicator() = default;
};
