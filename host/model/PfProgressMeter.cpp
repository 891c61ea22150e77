#include "PfProgressMeter.h"

#include <QTextStream>

#include <algorithm>

namespace {
PfProgressMeter::Listener* listener = nullptr;

void printLine(const QString& line)
{
    QTextStream err(stderr);
    err.setCodec("UTF-8");
    err << line << '\n';
}
} // namespace

PfProgressMeter::Listener* PfProgressMeter::InstallListener(Listener* next)
{
    Listener* previous = listener;
    listener = next;
    return previous;
}

void PfProgressMeter::Start(const QString& caption, int total)
{
    m_caption = caption;
    m_total = std::max(0, total);
    m_done = 0;
    m_reportedTenth = -1;
    m_running = true;
    if (listener)
        listener->started(caption, m_total);
    else
        printLine(QStringLiteral("%1 ...").arg(caption));
}

void PfProgressMeter::Step(int steps)
{
    if (!m_running)
        return;
    m_done = std::min(m_total, m_done + std::max(0, steps));
    if (listener) {
        listener->progressed(m_done, m_total);
        return;
    }
    const int tenth = m_total ? m_done * 10 / m_total : 10;
    if (tenth > m_reportedTenth && tenth > 0) {
        m_reportedTenth = tenth;
        printLine(QStringLiteral("%1 %2%").arg(m_caption).arg(tenth * 10));
    }
}

void PfProgressMeter::Stop()
{
    if (!m_running)
        return;
    m_running = false;
    if (listener)
        listener->stopped();
}
