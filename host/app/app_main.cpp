// kvxapp [FILE.kvx] [--endpoint URL] [--header "Name: value"]: the desktop
// application.

#include "KvxMainWindow.h"
#include "host/model/PfHostClasses.h"
#include "host/rx/PfRxModuleLoader.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QSettings>

namespace {
// Where the module's live cranes find the monitoring platform; given on the
// command line, they are kept in the settings for the next runs.
void keepLiveCraneOptions(const QCommandLineParser& parser, const QCommandLineOption& endpoint,
                          const QCommandLineOption& header)
{
    QSettings settings;
    if (parser.isSet(endpoint))
        settings.setValue(QStringLiteral("liveCranes/endpoint"), parser.value(endpoint));
    if (parser.isSet(header))
        settings.setValue(QStringLiteral("liveCranes/accessHeader"), parser.value(header));
}
} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("KVX"));
    QApplication::setApplicationName(QStringLiteral("kvxapp"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("The construction-site animation application."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("A document to open (.kvx)."), QStringLiteral("[FILE.kvx]"));
    const QCommandLineOption endpoint(QStringLiteral("endpoint"),
                                      QStringLiteral("The monitoring platform's latest-reading address for live cranes."),
                                      QStringLiteral("URL"));
    const QCommandLineOption header(QStringLiteral("header"),
                                    QStringLiteral("An access header sent with each reading request, \"Name: value\"."),
                                    QStringLiteral("HEADER"));
    parser.addOptions({endpoint, header});
    parser.process(application);
    keepLiveCraneOptions(parser, endpoint, header);

    PfHostRegisterClasses();
    // The animation module beside the application, as for the command line.
    PfRxModuleLoader module;
    module.LoadBesideProgram(QStringLiteral("../lib/libkvxanimation.so"));
    int code = 0;
    {
        KvxMainWindow window;
        const QStringList files = parser.positionalArguments();
        window.show();
        if (!files.isEmpty())
            window.OpenDocument(files.front());
        else
            window.OfferUnsavedRecovery();
        code = QApplication::exec();
    }
    return code;
}
