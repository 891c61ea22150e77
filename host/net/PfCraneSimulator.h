#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QObject>
#include <QString>
#include <QTcpServer>

#include <vector>

class QTcpSocket;

// A stand-in for the site monitoring platform, for the demo and the tests:
// an HTTP server on the loopback address only that answers every GET with a
// crane reading in the platform's reply shape. By default the crane slews
// back and forth and climbs 6 m every twelve readings; a script (JSON lines,
// one reading each: {"rotation": degrees, "height": metres} and optionally
// "returnCode", "status" (an HTTP status) or "body" (sent as it is)) is
// replayed instead, its last line repeating. It can also answer late (or
// never), fail every n-th time, or send damaged bodies.
class PfCraneSimulator : public QObject {
    Q_OBJECT
public:
    struct Reading {
        double rotation = 0.0;
        double height = 0.0;
        int returnCode = 0;
        int status = 200;
        // Sent instead of the reading when not empty.
        QByteArray body;
    };

    explicit PfCraneSimulator(QObject* parent = nullptr);

    // Port 0 takes a free one; false with the reason.
    bool Listen(quint16 port, QString* error = nullptr);
    quint16 Port() const { return m_server.serverPort(); }
    // False with the reason for a line that is no reading.
    bool LoadScript(const QString& path, QString* error = nullptr);
    void SetScript(const std::vector<Reading>& readings) { m_script = readings; }
    // Milliseconds before answering; below 0: never.
    void SetDelay(int milliseconds) { m_delay = milliseconds; }
    // Every n-th answer is an HTTP 500 (0: none).
    void SetFailEvery(int n) { m_failEvery = n; }
    // Bodies cut in half.
    void SetDamaged(bool damaged) { m_damaged = damaged; }
    int Answered() const { return m_answered; }

    // The reading of the n-th request (from 0) by the default pattern.
    static Reading PatternReading(int index);
    // The platform's reply for a reading.
    static QByteArray ReplyBody(const Reading& reading);

private:
    void accept();
    void answer(QTcpSocket* socket);

    QTcpServer m_server;
    std::vector<Reading> m_script;
    int m_delay = 0;
    int m_failEvery = 0;
    bool m_damaged = false;
    int m_requests = 0;
    int m_answered = 0;
};
