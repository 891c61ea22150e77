// kvxapp [FILE.kvx]: the desktop application.

#include "KvxMainWindow.h"
#include "host/model/PfHostClasses.h"
#include "host/rx/PfRxModuleLoader.h"

#include <QApplication>

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("KVX"));
    QApplication::setApplicationName(QStringLiteral("kvxapp"));
    PfHostRegisterClasses();
    // The animation module beside the application, as for the command line.
    PfRxModuleLoader module;
    module.LoadBesideProgram(QStringLiteral("../lib/libkvxanimation.so"));
    int code = 0;
    {
        KvxMainWindow window;
        const QStringList arguments = QApplication::arguments();
        window.show();
        if (arguments.size() > 1)
            window.OpenDocument(arguments.at(1));
        else
            window.OfferUnsavedRecovery();
        code = QApplication::exec();
    }
    return code;
}
