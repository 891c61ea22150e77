#pragma once

#include "host/model/PfEdInformation.h"

class QWidget;

// The application's information boxes: a modal message box over the main
// window with an OK button, in the application's font.
class PfEdMessageBoxSink : public PfEdInformationSink {
public:
    explicit PfEdMessageBoxSink(QWidget* parent = nullptr) : m_parent(parent) {}
    void Show(const QString& title, const QString& text) override;

private:
    QWidget* m_parent;
};
