#include "KvxAnimationButtonsPanel.h"

#include "KVXKeyFrameAnimationManager.h"
#include "KvxKeyFrameAnimationSettingDialog.h"

#include <QIcon>
#include <QPushButton>

namespace {
struct ButtonSpec {
    const char* icon;
    const char* tip;
    const char* slot;
};

const ButtonSpec kButtons[] = {
    {":/KVX/RoamingVideoPage/Image/RoamingVideoPage/add_key_frame.png", "添加关键帧", SLOT(onCreateKeyFrame())},
    {":/KVX/RoamingVideoPage/Image/RoamingVideoPage/delete_key_frame.png", "删除关键帧", SLOT(onDeleteKeyFrame())},
    {":/KVX/RoamingVideoPage/Image/RoamingVideoPage/play.png", "预览", SLOT(onPlayOrPauseAnimation())},
    {":/KVX/RoamingVideoPage/Image/RoamingVideoPage/stop.png", "停止", SLOT(onStopAnimation())},
    {":/KVX/VirtualConstructionPage/Image/VirtualConstructionPage/setting.png", "设置", SLOT(onSettingOptions())},
};
} // namespace

KvxAnimationButtonsPanel::KvxAnimationButtonsPanel(QWidget* parent) : QWidget(parent)
{
    for (int i = 0; i < ButtonCount; ++i) {
        auto* button = new QPushButton(this);
        button->setIcon(QIcon(QString::fromLatin1(kButtons[i].icon)));
        button->setToolTip(QString::fromUtf8(kButtons[i].tip));
        connect(button, SIGNAL(clicked()), this, kButtons[i].slot);
        m_buttons[i] = button;
    }
    m_buttons[PlayOrPause]->setCheckable(true);
    KVXKeyFrameAnimationManager::SetPlayButton(m_buttons[PlayOrPause]);
    setMinimumSize(64, 72);
}

void KvxAnimationButtonsPanel::resizeEvent(QResizeEvent* event)
{
    const int column = width() / 2;
    const int row = height() / 3;
    for (int i = 0; i < Settings; ++i)
        m_buttons[i]->setGeometry((i % 2) * column, (i / 2) * row, column, row);
    m_buttons[Settings]->setGeometry(0, 2 * row, 2 * column, row);
    QWidget::resizeEvent(event);
}

void KvxAnimationButtonsPanel::onCreateKeyFrame() { KVXKeyFrameAnimationManager::GetInstance()->CreateKeyFrame(); }

void KvxAnimationButtonsPanel::onDeleteKeyFrame() { KVXKeyFrameAnimationManager::GetInstance()->DeleteKeyFrame(); }

void KvxAnimationButtonsPanel::onPlayOrPauseAnimation()
{
    KVXKeyFrameAnimationManager::GetInstance()->PlayOrPauseAnimation();
}

void KvxAnimationButtonsPanel::onStopAnimation() { KVXKeyFrameAnimationManager::GetInstance()->StopAnimation(); }

void KvxAnimationButtonsPanel::onSettingOptions()
{
    KvxKeyFrameAnimationSettingDialog dialog(this);
    dialog.exec();
}
