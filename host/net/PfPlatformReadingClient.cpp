#include "PfPlatformReadingClient.h"

#include "host/model/PfStatusBarTip.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTextStream>

#include <cstdio>

PfPlatformReadingClient::PfPlatformReadingClient(QObject* parent)
    : QObject(parent), m_network(new QNetworkAccessManager(this))
{
}

PfPlatformReadingClient::~PfPlatformReadingClient()
{
    if (m_reply)
        m_reply->abort();
}

bool PfPlatformReadingClient::SetAccessHeader(const QString& header)
{
    if (header.isEmpty()) {
        m_headerName.clear();
        m_headerValue.clear();
        return true;
    }
    const int colon = header.indexOf(QLatin1Char(':'));
    const QString name = header.left(colon).trimmed();
    if (colon <= 0 || name.contains(QLatin1Char(' ')) || header.contains(QLatin1Char('\n')))
        return false;
    m_headerName = name.toLatin1();
    m_headerValue = header.mid(colon + 1).trimmed().toUtf8();
    return true;
}

void PfPlatformReadingClient::Request()
{
    if (m_reply) {
        // Unanswered by the time the next reading is due: too late to show.
        QNetworkReply* late = m_reply;
        m_reply = nullptr;
        late->disconnect(this);
        late->abort();
        late->deleteLater();
        tell(QStringLiteral("no answer from %1 before the next request").arg(m_endpoint.toString()));
    }
    if (!m_endpoint.isValid() || m_endpoint.isRelative()) {
        tell(QStringLiteral("no monitoring platform endpoint is set"));
        return;
    }
    QNetworkRequest request(m_endpoint);
    if (!m_headerName.isEmpty())
        request.setRawHeader(m_headerName, m_headerValue);
    QNetworkReply* reply = m_network->get(request);
    m_reply = reply;
    connect(reply, &QNetworkReply::finished, this, [this, reply] { finished(reply); });
    connect(reply, &QNetworkReply::downloadProgress, this, [this, reply](qint64 received, qint64 total) {
        if (received > kLargestReply || total > kLargestReply) {
            // finished() tells why.
            reply->setProperty("tooLarge", true);
            reply->abort();
        }
    });
}

void PfPlatformReadingClient::finished(QNetworkReply* reply)
{
    reply->deleteLater();
    if (reply != m_reply)
        return;
    m_reply = nullptr;
    if (reply->property("tooLarge").toBool()) {
        tell(QStringLiteral("the reply is larger than %1 bytes").arg(kLargestReply));
        return;
    }
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (reply->error() != QNetworkReply::NoError && status == 0) {
        tell(QStringLiteral("%1: %2").arg(m_endpoint.toString(), reply->errorString()));
        return;
    }
    if (status != 200) {
        tell(QStringLiteral("%1 answered HTTP %2").arg(m_endpoint.toString()).arg(status));
        return;
    }
    const QByteArray body = reply->readAll();
    const QString problem = shapeProblem(body);
    if (!problem.isEmpty()) {
        tell(problem);
        return;
    }
    if (!m_problem.isEmpty()) {
        m_problem.clear();
        PfStatusBarTip::Clear();
    }
    emit ReadingReceived(body);
}

QString PfPlatformReadingClient::shapeProblem(const QByteArray& body)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(body, &error);
    if (error.error != QJsonParseError::NoError)
        return QStringLiteral("the reply is not JSON (%1)").arg(error.errorString());
    if (!document.isObject())
        return QStringLiteral("the reply is not a JSON object");
    const QJsonObject root = document.object();
    const QJsonValue code = root.value(QStringLiteral("returnCode"));
    if (!code.isDouble())
        return QStringLiteral("the reply has no returnCode");
    if (code.toInt() != 0)
        return QStringLiteral("the platform answered returnCode %1").arg(code.toInt());
    if (root.value(QStringLiteral("result")).toObject().isEmpty())
        return QStringLiteral("the reply has no result");
    return QString();
}

void PfPlatformReadingClient::tell(const QString& problem)
{
    if (problem == m_problem)
        return;
    m_problem = problem;
    const QString line = QStringLiteral("live cranes: %1").arg(problem);
    PfStatusBarTip::Show(line);
    std::fprintf(stderr, "%s\n", line.toUtf8().constData());
    emit ProblemOccurred(problem);
}
