#pragma once

#include <QString>
#include <Qt>

#include <functional>
#include <vector>

class QWidget;

// The pages a module offers the application's main window (its panels: a
// list, a property form, a timeline), each by an id that names it in the
// saved window layout and a title for its dock. The module registers them
// when it is loaded and takes them back when it is unloaded; the window
// makes each page once and owns it from then on.
class PfUiPages {
public:
    struct Page {
        QString id;
        QString title;
        std::function<QWidget*()> make;
        // Where its dock goes first.
        Qt::DockWidgetArea area = Qt::RightDockWidgetArea;
    };

    static void Register(const Page& page);
    static void Unregister(const QString& id);
    static const std::vector<Page>& Pages();
};
