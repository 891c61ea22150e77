#include "PfCraneSimulator.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <cmath>

namespace {

QByteArray statusText(int status)
{
    switch (status) {
    case 200: return "OK";
    case 404: return "Not Found";
    case 500: return "Internal Server Error";
    default: return "Status";
    }
}

} // namespace

PfCraneSimulator::PfCraneSimulator(QObject* parent) : QObject(parent)
{
    connect(&m_server, &QTcpServer::newConnection, this, &PfCraneSimulator::accept);
}

bool PfCraneSimulator::Listen(quint16 port, QString* error)
{
    // The loopback address only: a simulator is never reachable from outside.
    if (m_server.listen(QHostAddress::LocalHost, port))
        return true;
    if (error)
        *error = QStringLiteral("cannot listen on 127.0.0.1:%1: %2").arg(port).arg(m_server.errorString());
    return false;
}

bool PfCraneSimulator::LoadScript(const QString& path, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    std::vector<Reading> readings;
    int line = 0;
    while (!file.atEnd()) {
        const QByteArray text = file.readLine().trimmed();
        ++line;
        if (text.isEmpty())
            continue;
        const QJsonObject object = QJsonDocument::fromJson(text).object();
        if (object.isEmpty()) {
            if (error)
                *error = QStringLiteral("%1:%2: not a JSON object").arg(path).arg(line);
            return false;
        }
        Reading reading;
        reading.rotation = object.value(QStringLiteral("rotation")).toDouble();
        reading.height = object.value(QStringLiteral("height")).toDouble();
        reading.returnCode = object.value(QStringLiteral("returnCode")).toInt(0);
        reading.status = object.value(QStringLiteral("status")).toInt(200);
        reading.body = object.value(QStringLiteral("body")).toString().toUtf8();
        readings.push_back(reading);
    }
    if (readings.empty()) {
        if (error)
            *error = QStringLiteral("%1: no reading in it").arg(path);
        return false;
    }
    m_script = readings;
    return true;
}

PfCraneSimulator::Reading PfCraneSimulator::PatternReading(int index)
{
    Reading reading;
    // 0 to 150 degrees and back, 15 degrees a reading.
    const int phase = index % 20;
    reading.rotation = 15.0 * (phase <= 10 ? phase : 20 - phase);
    // Erected at 30 m, climbing 6 m every twelve readings up to 60 m.
    reading.height = std::min(60.0, 30.0 + 6.0 * (index / 12));
    return reading;
}

QByteArray PfCraneSimulator::ReplyBody(const Reading& reading)
{
    if (!reading.body.isEmpty())
        return reading.body;
    const QJsonObject reply{
        {QStringLiteral("returnCode"), reading.returnCode},
        {QStringLiteral("result"),
         QJsonObject{{QStringLiteral("status"), QJsonObject{{QStringLiteral("deviceId"), QStringLiteral("TC-SIM-1")}}},
                     {QStringLiteral("attributeMap"),
                      QJsonObject{{QStringLiteral("rotation"), QJsonObject{{QStringLiteral("value"), reading.rotation}}},
                                  {QStringLiteral("height"), QJsonObject{{QStringLiteral("value"), reading.height}}}}}}}};
    return QJsonDocument(reply).toJson(QJsonDocument::Compact);
}

void PfCraneSimulator::accept()
{
    while (QTcpSocket* socket = m_server.nextPendingConnection()) {
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
            // The request's head is all it needs: answer once it is in.
            if (!socket->property("answering").toBool() && socket->peek(65536).contains("\r\n\r\n")) {
                socket->setProperty("answering", true);
                socket->readAll();
                if (m_delay < 0)
                    return;
                QTimer::singleShot(m_delay, socket, [this, socket] { answer(socket); });
            }
        });
    }
}

void PfCraneSimulator::answer(QTcpSocket* socket)
{
    const int index = m_requests++;
    Reading reading = m_script.empty() ? PatternReading(index)
                                       : m_script[std::min<std::size_t>(index, m_script.size() - 1)];
    if (m_failEvery > 0 && (index + 1) % m_failEvery == 0)
        reading.status = 500;
    QByteArray body = reading.status == 200 ? ReplyBody(reading) : QByteArray("{\"error\":\"simulated\"}");
    if (m_damaged)
        body.truncate(body.size() / 2);
    socket->write("HTTP/1.1 " + QByteArray::number(reading.status) + ' ' + statusText(reading.status) +
                  "\r\nContent-Type: application/json\r\nContent-Length: " + QByteArray::number(body.size()) +
                  "\r\nConnection: close\r\n\r\n" + body);
    socket->disconnectFromHost();
    ++m_answered;
}
