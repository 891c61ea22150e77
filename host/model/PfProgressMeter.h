#pragma once

#include <QString>

// Progress of a long operation (a video export, a big document): started
// with a caption and a number of steps, stepped, stopped. A listener shows
// it (a progress dialog, a line of text); without one, lines go to standard
// error at every tenth. The listener is not owned.
class PfProgressMeter {
public:
    class Listener {
    public:
        virtual ~Listener() = default;
        virtual void started(const QString& caption, int total) = 0;
        virtual void progressed(int done, int total) = 0;
        virtual void stopped() = 0;
    };

    static Listener* InstallListener(Listener* listener);

    void Start(const QString& caption, int total);
    void Step(int steps = 1);
    void Stop();
    int Done() const { return m_done; }
    int Total() const { return m_total; }
    bool IsRunning() const { return m_running; }

private:
    QString m_caption;
    int m_total = 0;
    int m_done = 0;
    int m_reportedTenth = -1;
    bool m_running = false;
};
