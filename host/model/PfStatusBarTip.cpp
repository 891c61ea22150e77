#include "PfStatusBarTip.h"

namespace {
PfStatusBarTip::Display display = nullptr;
QString current;
} // namespace

void PfStatusBarTip::SetDisplay(Display next) { display = next; }

void PfStatusBarTip::Show(const QString& tip)
{
    current = tip;
    if (display)
        display(tip);
}

QString PfStatusBarTip::Current() { return current; }
