#include "KVXVideoRecordClockTimer.h"

#include "KVXClockTimers.h"
#include "KVXKeyFramePlayback.h"
#include "PfApGrxEventFilter.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDocManager.h"
#include "host/model/PfEdPrompt.h"
#include "host/model/PfStatusBarTip.h"

#include <QCoreApplication>

#include <cmath>

namespace {
bool progressInStatusBar = true;

PfApGrxEventFilter* eventFilter()
{
    static PfApGrxEventFilter* filter = new PfApGrxEventFilter();
    return filter;
}
} // namespace

KVXVideoRecordClockTimer::KVXVideoRecordClockTimer(vpe::CRefPtr<vpe::CClock> clock, std::string name)
    : vpe::CClockTimer(std::move(clock), std::move(name))
{
    Pause(true);
}

KVXVideoRecordClockTimer::KVXVideoRecordClockTimer(const KVXVideoRecordClockTimer& other)
    : vpe::CClockTimer(other.GetClock(), other.GetName()), m_length(other.m_length),
      m_frameRate(other.m_frameRate), m_keyFrames(other.m_keyFrames)
{
    Pause(other.IsPaused());
}

KVXVideoRecordClockTimer& KVXVideoRecordClockTimer::operator=(const KVXVideoRecordClockTimer& other)
{
    m_length = other.m_length;
    m_frameRate = other.m_frameRate;
    m_keyFrames = other.m_keyFrames;
    Pause(other.IsPaused());
    return *this;
}

KVXVideoRecordClockTimer* KVXVideoRecordClockTimer::GetOrCreateClockTimer(const std::string& name)
{
    return KVXClockTimers::GetOrCreate<KVXVideoRecordClockTimer>(name);
}

bool KVXVideoRecordClockTimer::IsProgressInStatusBar() { return progressInStatusBar; }

QString KVXVideoRecordClockTimer::ProgressText(int frame, double seconds, unsigned int framesPerSecond)
{
    return QStringLiteral("正在导出视频：第%1帧 / 共%2帧（%3秒）")
        .arg(frame)
        .arg(static_cast<int>(seconds * framesPerSecond))
        .arg(static_cast<int>(seconds));
}

void KVXVideoRecordClockTimer::BeginRecord(double seconds, unsigned int framesPerSecond)
{
    m_length = seconds;
    m_frameRate = framesPerSecond;
    Reset();
    Pause(false);
    if (QCoreApplication* application = QCoreApplication::instance())
        application->installEventFilter(eventFilter());
    PfDbDocument* document = PfDocManagerPtr()->CurrentDocument();
    progressInStatusBar = !(document && document->GetPromptOnly());
    const QString text = ProgressText(0, seconds, framesPerSecond);
    m_shownFrame = 0;
    if (!progressInStatusBar) {
        PfEdPrompt::Show(text);
        return;
    }
    m_progress.Start(QStringLiteral("导出视频"), static_cast<int>(framesPerSecond * seconds));
    PfStatusBarTip::Show(text);
}

void KVXVideoRecordClockTimer::showProgress(int frame)
{
    // A frame that holds the time (the recording's first) is told once.
    if (frame == m_shownFrame)
        return;
    m_shownFrame = frame;
    const QString text = ProgressText(frame, m_length, m_frameRate);
    if (!progressInStatusBar) {
        PfEdPrompt::Show(text);
        return;
    }
    m_progress.Step(frame - m_progress.Done());
    PfStatusBarTip::Show(text);
}

void KVXVideoRecordClockTimer::Update(unsigned int message, void* data)
{
    vpe::CClockTimer::Update(message, data);
    if (m_length == 0.0 || m_frameRate == 0)
        return;
    // Frames counted with a little tolerance: the value is a sum of frame
    // periods and may fall a hair short of a whole frame.
    const int frame = static_cast<int>(std::floor(m_frameRate * GetValue() + 1e-6));
    if (frame < static_cast<int>(m_frameRate * m_length))
        showProgress(frame);
    else if (m_keyFrames)
        m_keyFrames->EndRecordVideo();
}

void KVXVideoRecordClockTimer::EndRecord()
{
    m_length = 0.0;
    m_frameRate = 0;
    Reset();
    Pause(true);
    if (progressInStatusBar) {
        m_progress.Stop();
        PfStatusBarTip::Clear();
    } else {
        PfEdPrompt::Show(QStringLiteral("导出视频完成"));
    }
    if (QCoreApplication* application = QCoreApplication::instance())
        application->removeEventFilter(eventFilter());
}
