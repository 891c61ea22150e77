#include "KVXLiveCranes.h"

#include "animation/KVXPlatformAnimationManager.h"
#include "host/model/PfEdInformation.h"
#include "host/model/PfStatusBarTip.h"
#include "host/model/PfUiActionManager.h"
#include "host/net/PfPlatformReadingClient.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QSettings>
#include <QUrl>

const QString KVXLiveCranes::kEndpointKey = QStringLiteral("liveCranes/endpoint");
const QString KVXLiveCranes::kHeaderKey = QStringLiteral("liveCranes/accessHeader");

namespace {
const QString kActionName = QStringLiteral("KVX_LIVE_CRANES");
const QString kTitle = QStringLiteral("实时塔吊");

bool usableEndpoint(const QString& text)
{
    const QUrl url(text.trimmed(), QUrl::StrictMode);
    return url.isValid() && (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https")) &&
           !url.host().isEmpty();
}
} // namespace

KVXLiveCranes* KVXLiveCranes::Get()
{
    static KVXLiveCranes* instance = new KVXLiveCranes;
    return instance;
}

KVXLiveCranes::KVXLiveCranes() : m_client(new PfPlatformReadingClient(this))
{
    KVXPlatformAnimationManager* manager = KVXPlatformAnimationManager::getInstance();
    connect(manager, &KVXPlatformAnimationManager::requestData, m_client, &PfPlatformReadingClient::Request);
    connect(m_client, &PfPlatformReadingClient::ReadingReceived, manager,
            &KVXPlatformAnimationManager::setPlatformTowerData);
    connect(m_client, &PfPlatformReadingClient::ProblemOccurred, this, [](const QString& problem) {
        PfStatusBarTip::Show(QStringLiteral("实时塔吊数据：%1").arg(problem));
    });
    connect(manager, &KVXPlatformAnimationManager::isPalyingSignal, this, &KVXLiveCranes::showState);
}

bool KVXLiveCranes::IsOn() const
{
    return KVXPlatformAnimationManager::getInstance()->getPlayingState() != KVXPlatformAnimationManager::Stopped;
}

bool KVXLiveCranes::Toggle()
{
    if (IsOn()) {
        KVXPlatformAnimationManager::getInstance()->stop();
        return true;
    }
    const bool started = start();
    // A refused start leaves the checkable action as it was: off.
    showState(IsOn());
    return started;
}

bool KVXLiveCranes::start()
{
    if (!usableEndpoint(QSettings().value(kEndpointKey).toString()) && !EditSettings(QApplication::activeWindow()))
        return false;
    const QSettings settings;
    m_client->SetEndpoint(QUrl(settings.value(kEndpointKey).toString().trimmed()));
    if (!m_client->SetAccessHeader(settings.value(kHeaderKey).toString().trimmed())) {
        PfEdInformation(QStringLiteral("访问令牌须写成“名称: 值”，例如“Authorization: Bearer abc”。"), kTitle);
        return false;
    }
    KVXPlatformAnimationManager* manager = KVXPlatformAnimationManager::getInstance();
    manager->play();
    if (manager->getTowerCount() == 0) {
        manager->stop();
        PfEdInformation(QStringLiteral("当前文档中没有塔吊，无法接收实时数据。"), kTitle);
        return false;
    }
    PfStatusBarTip::Show(QStringLiteral("实时塔吊：每 5 秒从 %1 读取").arg(m_client->GetEndpoint().toDisplayString()));
    return true;
}

void KVXLiveCranes::showState(bool playing)
{
    if (QAction* action = PfUiActionManager::GetInstance()->FindAction(kActionName))
        action->setChecked(playing || IsOn());
}

bool KVXLiveCranes::EditSettings(QWidget* parent)
{
    QSettings settings;
    QDialog dialog(parent);
    dialog.setWindowTitle(QStringLiteral("实时塔吊设置"));
    auto* endpoint = new QLineEdit(settings.value(kEndpointKey).toString(), &dialog);
    endpoint->setObjectName(QStringLiteral("endpoint"));
    endpoint->setPlaceholderText(QStringLiteral("https://平台地址/最新读数"));
    endpoint->setMinimumWidth(360);
    auto* header = new QLineEdit(settings.value(kHeaderKey).toString(), &dialog);
    header->setObjectName(QStringLiteral("accessHeader"));
    header->setPlaceholderText(QStringLiteral("Authorization: Bearer 令牌（可不填）"));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    auto* layout = new QFormLayout(&dialog);
    layout->addRow(QStringLiteral("数据地址"), endpoint);
    layout->addRow(QStringLiteral("访问令牌"), header);
    layout->addRow(buttons);
    connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::accepted, &dialog, [&] {
        if (!usableEndpoint(endpoint->text()))
            PfEdInformation(QStringLiteral("数据地址须是 http 或 https 网址。"), kTitle);
        else
            dialog.accept();
    });
    if (dialog.exec() != QDialog::Accepted)
        return false;
    settings.setValue(kEndpointKey, endpoint->text().trimmed());
    settings.setValue(kHeaderKey, header->text().trimmed());
    return true;
}
