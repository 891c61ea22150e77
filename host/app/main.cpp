#include "KvxHostCommandLine.h"
#include "host/model/PfHostClasses.h"
#include "host/rx/PfRxModuleLoader.h"

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    PfHostRegisterClasses();
    // The animation module, when it is installed beside the host, so that
    // documents with animation records open whole.
    PfRxModuleLoader module;
    module.LoadBesideProgram(QStringLiteral("../lib/libkvxanimation.so"));
    QTextStream out(stdout);
    QTextStream err(stderr);
    out.setCodec("UTF-8");
    err.setCodec("UTF-8");
    QStringList arguments = application.arguments();
    arguments.removeFirst();
    return KvxHostCommandLine(out, err).Run(arguments);
}
