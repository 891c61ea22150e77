#include "KvxKeyFrameAnimationSettingDialog.h"

#include "KVXAnimationTimeLineWidget.h"
#include "KVXKeyFrameAnimationManager.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QPushButton>

#include <cmath>
#include <iterator>

namespace {
const int kTimeUnits[] = {100, 500, 1000, 5000, 10000, 12000};
const float kSpeeds[] = {0.25f, 0.5f, 1.0f, 2.0f, 4.0f};
constexpr int kDefaultIndex = 2;

KvxAnimationTimeScale* timeScale()
{
    auto* timeLine = dynamic_cast<KVXAnimationTimeLineWidget*>(KVXKeyFrameAnimationManager::GetTimeLineWidget());
    return timeLine ? timeLine->GetTimeScaleWidget() : nullptr;
}
} // namespace

KvxKeyFrameAnimationSettingDialog::KvxKeyFrameAnimationSettingDialog(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::WindowCloseButtonHint), m_timeScale(new QComboBox(this)),
      m_speed(new QComboBox(this)), m_style(new QComboBox(this))
{
    buildForm();
    load();
}

void KvxKeyFrameAnimationSettingDialog::buildForm()
{
    setWindowTitle(tr("设置"));
    setFont(QFont(QStringLiteral("微软雅黑"), 10));
    m_timeScale->addItems({QStringLiteral("0.1"), QStringLiteral("0.5"), QStringLiteral("1"), QStringLiteral("5"),
                           QStringLiteral("10"), QStringLiteral("12")});
    m_speed->addItems({QStringLiteral("1/4x"), QStringLiteral("1/2x"), QStringLiteral("1x"), QStringLiteral("2x"),
                       QStringLiteral("4x")});
    m_style->addItems({QStringLiteral("年\\月\\日"), QStringLiteral("年\\月\\周"), QStringLiteral("年\\月\\旬"),
                       QStringLiteral("年\\季度\\月")});
    auto* form = new QFormLayout(this);
    form->addRow(tr("时间刻度单位(S)"), m_timeScale);
    form->addRow(tr("动画预览倍速"), m_speed);
    form->addRow(tr("工期显示样式"), m_style);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setText(tr("确定"));
    buttons->button(QDialogButtonBox::Cancel)->setText(tr("取消"));
    connect(buttons, SIGNAL(accepted()), this, SLOT(accept()));
    connect(buttons, SIGNAL(rejected()), this, SLOT(reject()));
    form->addRow(buttons);
    setFixedSize(sizeHint());
}

int KvxKeyFrameAnimationSettingDialog::TimeUnitAt(int index)
{
    return index >= 0 && index < static_cast<int>(std::size(kTimeUnits)) ? kTimeUnits[index] : 1000;
}

float KvxKeyFrameAnimationSettingDialog::SpeedAt(int index)
{
    return index >= 0 && index < static_cast<int>(std::size(kSpeeds)) ? kSpeeds[index] : 1.0f;
}

void KvxKeyFrameAnimationSettingDialog::load()
{
    int speed = kDefaultIndex;
    if (KVXCameraAnimationClockTimer* clock = KVXKeyFrameAnimationManager::GetInstance()->GetCameraAnimationClockTimer())
        for (int i = 0; i < static_cast<int>(std::size(kSpeeds)); ++i)
            if (std::fabs(static_cast<double>(clock->GetScale()) - kSpeeds[i]) < 1e-12) {
                speed = i;
                break;
            }
    m_speed->setCurrentIndex(speed);

    KVXScheduleDateLine* dateLine = KVXKeyFrameAnimationManager::GetDateLineWidget();
    m_style->setCurrentIndex(dateLine ? dateLine->GetCalendarDisplayStyle() : 0);

    int unit = kDefaultIndex;
    if (KvxAnimationTimeScale* scale = timeScale())
        for (int i = 0; i < static_cast<int>(std::size(kTimeUnits)); ++i)
            if (scale->GetTimeUnit() == kTimeUnits[i])
                unit = i;
    m_timeScale->setCurrentIndex(unit);
}

void KvxKeyFrameAnimationSettingDialog::accept()
{
    if (KVXCameraAnimationClockTimer* clock = KVXKeyFrameAnimationManager::GetInstance()->GetCameraAnimationClockTimer())
        clock->SetScale(SpeedAt(m_speed->currentIndex()));
    if (KVXScheduleDateLine* dateLine = KVXKeyFrameAnimationManager::GetDateLineWidget())
        dateLine->SetCalendarDisplayStyle(m_style->currentIndex());
    if (KvxAnimationTimeScale* scale = timeScale())
        scale->SetTimeUnit(TimeUnitAt(m_timeScale->currentIndex()));
    QDialog::accept();
}
