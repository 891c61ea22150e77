// Builds the demo site with its construction schedule and saves it:
//   kvxdemo --out FILE.kvx

#include "KVXDemoSchedule.h"
#include "animation/KVXEntryPoint.h"
#include "host/app/KVXDemoSite.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDocManager.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfHostClasses.h"

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QTextStream err(stderr);
    err.setCodec("UTF-8");
    const QStringList arguments = application.arguments();
    const int out = arguments.indexOf(QStringLiteral("--out"));
    if (arguments.size() != 3 || out != 1) {
        err << "usage: kvxdemo --out FILE.kvx\n";
        return 2;
    }
    PfHostRegisterClasses();
    PfRxEntryPoint(1, nullptr);
    PfDbDocument* document = PfDocManagerPtr()->NewDocument();
    KVXDemoSite::Build(document->GetDatabase());
    PfGsModelView::Attach(document);
    if (!KVXDemoSchedule::Add(document)) {
        err << "kvxdemo: the demo site lacks an element of its schedule\n";
        return 1;
    }
    QString error;
    if (!document->Save(arguments[2], &error)) {
        err << "kvxdemo: " << error << '\n';
        return 1;
    }
    QTextStream(stdout) << "wrote the demo site and its schedule to " << arguments[2] << '\n';
    return 0;
}
