#pragma once

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

class QNetworkAccessManager;
class QNetworkReply;

// Fetches the latest device reading from the site monitoring platform: an
// HTTP(S) GET of a configured endpoint, with an optional access-token
// header. Requests never overlap: one still unanswered when the next is due
// is dropped as too late. A good reply (a JSON object with returnCode 0 and
// a result) is handed on as it came; a failure (refused, too late, an HTTP
// error, not JSON, a wrong shape, a non-zero returnCode, too large) is told
// once in the status bar and the log until a good reply comes, and the last
// good reading stays where it was taken.
class PfPlatformReadingClient : public QObject {
    Q_OBJECT
public:
    // More than any reading needs: a larger reply is refused unread.
    static constexpr qint64 kLargestReply = 1024 * 1024;

    explicit PfPlatformReadingClient(QObject* parent = nullptr);
    ~PfPlatformReadingClient() override;

    void SetEndpoint(const QUrl& endpoint) { m_endpoint = endpoint; }
    const QUrl& GetEndpoint() const { return m_endpoint; }
    // "Header: value", for instance "Authorization: Bearer abc"; empty for
    // none. False for text that is no header.
    bool SetAccessHeader(const QString& header);
    // The failure told last; empty after a good reply.
    const QString& LastProblem() const { return m_problem; }
    bool IsWaiting() const { return !m_reply.isNull(); }

public slots:
    // Asks for the latest reading (dropping one still unanswered).
    void Request();

signals:
    void ReadingReceived(const QByteArray& reply);
    // A failure, told once until a good reply clears it.
    void ProblemOccurred(const QString& problem);

private:
    void finished(QNetworkReply* reply);
    // Why the body is no reading; empty when it is one.
    static QString shapeProblem(const QByteArray& body);
    void tell(const QString& problem);

    QNetworkAccessManager* m_network;
    QUrl m_endpoint;
    QByteArray m_headerName;
    QByteArray m_headerValue;
    QPointer<QNetworkReply> m_reply;
    QString m_problem;
};
