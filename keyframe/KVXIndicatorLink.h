#pragma once

#include <QObject>
#include <QPointer>

// A clock's hold on a timeline's indicator interface: the interface is
// answered only while the QObject that implements it lives, so a timeline
// closed by the user is never called again. An indicator that is not a
// QObject cannot be watched and is not taken.
template <class Indicator>
class KVXIndicatorLink {
public:
    KVXIndicatorLink() = default;
    explicit KVXIndicatorLink(Indicator* indicator)
        : m_object(dynamic_cast<QObject*>(indicator)), m_indicator(m_object ? indicator : nullptr)
    {
    }

    // Null once the indicator's object is gone (or when none was set).
    Indicator* get() const { return m_object ? m_indicator : nullptr; }

private:
    QPointer<QObject> m_object;
    Indicator* m_indicator = nullptr;
};
