#include "KVXRoamingVideoPage.h"

#include "KVXAnimationTimeLineWidget.h"
#include "KVXKeyFrameAnimationManager.h"
#include "KvxAnimationButtonsPanel.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

KVXRoamingVideoPage::KVXRoamingVideoPage(QWidget* parent)
    : QWidget(parent),
      m_timeline(new KVXAnimationTimeLineWidget(this)),
      m_buttons(new KvxAnimationButtonsPanel(this)),
      m_export(new QPushButton(QStringLiteral("导出视频"), this))
{
    KVXKeyFrameAnimationManager* manager = KVXKeyFrameAnimationManager::GetInstance();
    KVXKeyFrameAnimationManager::SetTimeLineWidget(m_timeline);
    connect(m_export, &QPushButton::clicked, this, [manager] { manager->OutputVideo(); });
    auto* commands = new QVBoxLayout;
    commands->addWidget(m_buttons, 1);
    commands->addWidget(m_export);
    auto* layout = new QHBoxLayout(this);
    layout->addLayout(commands);
    layout->addWidget(m_timeline, 1);
    m_buttons->setFixedWidth(96);
    m_export->setFixedWidth(96);
}


void KVXRoamingVideoPage::showEvent(QShowEvent* event)
{
    KVXKeyFrameAnimationManager* manager = KVXKeyFrameAnimationManager::GetInstance();
    if (!manager->IsEditing())
        manager->BeginEditKeyFrameAnimation();
    QWidget::showEvent(event);
}

void KVXRoamingVideoPage::hideEvent(QHideEvent* event)
{
    KVXKeyFrameAnimationManager* manager = KVXKeyFrameAnimationManager::GetInstance();
    if (manager->IsEditing())
        manager->EndEditKeyFrameAnimation();
    QWidget::hideEvent(event);
}
