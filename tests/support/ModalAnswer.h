#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QTimer>

#include <functional>
#include <memory>

// Answers the next modal window (a message box, a dialog) while it lives:
// as soon as one runs, the callback gets it and closes it. For tests that
// drive a widget whose slot runs a modal loop; a window that never comes
// is not waited for beyond the answer's life.
class ModalAnswer {
public:
    explicit ModalAnswer(std::function<void(QWidget*)> answer) : m_timer(std::make_unique<QTimer>())
    {
        m_timer->setInterval(0);
        // The timer, not this: an answer may be moved.
        QObject::connect(m_timer.get(), &QTimer::timeout, [timer = m_timer.get(), answer] {
            if (QWidget* modal = QApplication::activeModalWidget()) {
                timer->stop();
                answer(modal);
            }
        });
        m_timer->start();
    }
    ModalAnswer(const ModalAnswer&) = delete;
    ModalAnswer& operator=(const ModalAnswer&) = delete;

    // Closes a message box with OK, keeping its text.
    static ModalAnswer Acknowledge(QString* text)
    {
        return ModalAnswer([text](QWidget* modal) {
            auto* box = qobject_cast<QMessageBox*>(modal);
            if (text)
                *text = box ? box->text() : QString();
            if (box)
                box->accept();
            else
                modal->close();
        });
    }
    ModalAnswer(ModalAnswer&&) = default;

private:
    std::unique_ptr<QTimer> m_timer;
};
