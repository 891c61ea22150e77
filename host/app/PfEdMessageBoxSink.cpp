#include "PfEdMessageBoxSink.h"

#include <QMessageBox>

void PfEdMessageBoxSink::Show(const QString& title, const QString& text)
{
    QMessageBox box(QMessageBox::Information, title, text, QMessageBox::Ok, m_parent);
    box.exec();
}
