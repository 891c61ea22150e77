#pragma once

#include <QObject>
#include <QString>

class PfPlatformReadingClient;
class QWidget;

// The application's "live cranes" switch: while on, the document's tower
// cranes follow the site monitoring platform's readings, fetched from the
// endpoint of the application's settings (with its optional access-token
// header) every five seconds. A failed fetch is told once in the status bar
// and the log; the cranes keep the last good reading.
class KVXLiveCranes : public QObject {
    Q_OBJECT
public:
    // The settings' keys.
    static const QString kEndpointKey;
    static const QString kHeaderKey;

    static KVXLiveCranes* Get();

    // Switches live cranes on (asking for an endpoint first when none is
    // set) or off; false when nothing changed (no endpoint given, no crane
    // in the document).
    bool Toggle();
    bool IsOn() const;
    // Asks for the endpoint and the header and keeps them in the settings;
    // false when the user cancelled.
    bool EditSettings(QWidget* parent = nullptr);

private:
    KVXLiveCranes();
    bool start();
    void showState(bool playing);

    PfPlatformReadingClient* m_client;
};
