#include "KvxHostCommandLine.h"

#include "host/import/PfDraftSchedule.h"
#include "host/import/PfIsolatedModelReader.h"
#include "host/import/PfModelImport.h"

#include "KVXDemoSite.h"
#include "KvxCommandLineHelp.h"
#include "KvxCommandLineOptions.h"
#include "KvxScheduleImport.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbElement.h"
#include "host/db/PfDbLoadReport.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3DElementObject.h"
#include "host/model/KVXBaseObject.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfProgressMeter.h"
#include "host/rx/PfEdCommandStack.h"
#include "host/rx/PfRxClass.h"
#include "host/rx/PfRxDictionary.h"
#include "host/vpe/render/CPictureFile.h"
#include "host/vpe/render/CViewer.h"
#include "host/vpe/scene/CViewFraming.h"
#include "host/net/PfCraneSimulator.h"
#include "host/vpe/video/ZVideoFFmpeg.h"

#include <QCoreApplication>
#include <QDate>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>

#include <osg/ComputeBoundsVisitor>

namespace {

// The animation module's commands the command line drives.
const wchar_t* const kScheduleVideoCommand = L"KVXElement.KVX_EXPORT_SCHEDULE_VIDEO";
const wchar_t* const kKeyFramesCommand = L"KVXElement.KVX_KEY_FRAMES";
const wchar_t* const kExportCommand = L"KVXElement.KVX_EXPORT_FLY_THROUGH";
const wchar_t* const kShowDateCommand = L"KVXElement.KVX_SHOW_SCHEDULE_AT";
const wchar_t* const kCheckCommand = L"KVXElement.KVX_CHECK_SCHEDULE";
const wchar_t* const kListCommand = L"KVXElement.KVX_LIST_SCHEDULE";
const wchar_t* const kDemoScheduleCommand = L"KVXElement.KVX_ADD_DEMO_SCHEDULE";
const wchar_t* const kLiveCommand = L"KVXElement.KVX_FILM_LIVE_CRANES";

// The largest still the renderer draws, a side.
constexpr int kMaxPictureSide = 8192;

enum class OutputKind { Picture, Video, Document };

bool filmsVideo(const QString& command)
{
    return command == QLatin1String("play") || command == QLatin1String("export") ||
           command == QLatin1String("live") || command == QLatin1String("4d");
}

// The caption words of the module's film commands.
QStringList captionWords(bool caption, const QString& title)
{
    QStringList words;
    if (!caption)
        words << QStringLiteral("caption=off");
    if (!title.isEmpty())
        words << QStringLiteral("title=%1").arg(title);
    return words;
}

// Prints how far a long job has come, a line per tenth: a bar, the steps
// (frames, products) done, the time it has taken and about how long is left.
class ProgressPrinter : public PfProgressMeter::Listener {
public:
    ProgressPrinter(QTextStream& out, const QString& label, const QString& unit)
        : m_out(out), m_label(label), m_unit(unit)
    {
    }
    void started(const QString&, int total) override
    {
        // A job that does not know its size yet tells it when it does.
        if (total > 0)
            m_out << m_label << ": " << total << ' ' << m_unit << '\n';
        m_out.flush();
        m_tenth = 0;
        m_clock.start();
    }
    void progressed(int done, int total) override
    {
        const int tenth = total > 0 ? done * 10 / total : 10;
        if (tenth == m_tenth)
            return;
        m_tenth = tenth;
        const double elapsed = m_clock.elapsed() / 1000.0;
        const double left = done > 0 ? elapsed * (total - done) / done : 0.0;
        m_out << "  [" << QString(tenth, QLatin1Char('#')) << QString(10 - tenth, QLatin1Char('.')) << "] " << done
              << " / " << total << ", " << QString::number(elapsed, 'f', 1) << " s, about "
              << QString::number(left, 'f', 0) << " s left\n";
        m_out.flush();
    }
    void stopped() override {}

private:
    QTextStream& m_out;
    QString m_label;
    QString m_unit;
    int m_tenth = 0;
    QElapsedTimer m_clock;
};

// Listens to the progress meter while it lives.
class ProgressScope {
public:
    ProgressScope(QTextStream& out, const QString& label, const QString& unit = QStringLiteral("frames"))
        : m_printer(out, label, unit), m_previous(PfProgressMeter::InstallListener(&m_printer))
    {
    }
    ~ProgressScope() { PfProgressMeter::InstallListener(m_previous); }
    ProgressScope(const ProgressScope&) = delete;
    ProgressScope& operator=(const ProgressScope&) = delete;

private:
    ProgressPrinter m_printer;
    PfProgressMeter::Listener* m_previous;
};

// The file a path names once links are followed, whether it exists or not.
QString resolvedPath(const QString& path)
{
    const QFileInfo file(path);
    if (file.exists())
        return file.canonicalFilePath();
    const QString folder = QFileInfo(file.absolutePath()).canonicalFilePath();
    return folder.isEmpty() ? file.absoluteFilePath() : QDir(folder).filePath(file.fileName());
}

// The host's commands when the animation module has added its own; null
// without the module.
PfEdCommandStack* moduleCommands()
{
    auto* commands = PfEdCommandStack::Cast(PfRxSysRegistry()->GetAt(kPfRxRegisteredCommandsName));
    return commands && commands->HasGroup(L"KVXElement") ? commands : nullptr;
}

// Why the output's name does not fit what is written into it; empty when it
// does.
QString formatProblem(const QString& path, OutputKind kind)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    switch (kind) {
    case OutputKind::Picture: {
        QString problem;
        vpe::CPictureFile::FormatOf(path, &problem);
        return problem;
    }
    case OutputKind::Video:
        return suffix == QLatin1String("mp4")
                   ? QString()
                   : QStringLiteral("%1: videos are written as H.264 MP4, name it .mp4").arg(path);
    case OutputKind::Document:
        return suffix == QLatin1String("kvx") ? QString()
                                              : QStringLiteral("%1: documents are written as .kvx").arg(path);
    }
    return QString();
}

QString sizeText(int width, int height) { return QStringLiteral("%1x%2").arg(width).arg(height); }

// The size a video of the options' size is written at.
QString videoSizeText(const KvxCommandLineOptions& options)
{
    return sizeText(ZVideoFFmpeg::WrittenSide(options.width), ZVideoFFmpeg::WrittenSide(options.height));
}

osg::BoundingBox modelBounds(vpe::CViewer* viewer)
{
    osg::ComputeBoundsVisitor bounds;
    viewer->GetScene()->GetRootNode()->accept(bounds);
    return bounds.getBoundingBox();
}

} // namespace

KvxHostCommandLine::KvxHostCommandLine(QTextStream& out, QTextStream& err) : m_out(out), m_err(err) {}

int KvxHostCommandLine::fail(const QString& message, int code)
{
    m_err << "kvxhost: " << message << '\n';
    m_err.flush();
    return code;
}

int KvxHostCommandLine::exitCodeOf(Pfad::Error result)
{
    return result == Pfad::eOk ? 0 : result == Pfad::eInvalidInput ? 2 : 1;
}

int KvxHostCommandLine::help(const QString& command)
{
    const QString text = KvxCommandLineHelp::Of(command);
    if (text.isEmpty())
        return fail(QStringLiteral("unknown command %1; %2").arg(command, KvxCommandLineHelp::Usage()), 2);
    m_out << text;
    return 0;
}

int KvxHostCommandLine::Run(const QStringList& arguments)
{
    if (arguments.value(0) == QLatin1String("--help")) {
        m_out << KvxCommandLineHelp::All();
        return 0;
    }
    const QString command = arguments.value(0);
    if (command.isEmpty())
        return fail(KvxCommandLineHelp::Usage(), 2);
    if (!KvxCommandLineOptions::Commands().contains(command))
        return fail(QStringLiteral("unknown command %1; %2").arg(command, KvxCommandLineHelp::Usage()), 2);
    Options options;
    QString error;
    if (!options.Parse(arguments, error))
        return fail(error, 2);
    if (options.help)
        return help(command);
    if (KvxCommandLineOptions::TakesDocument(command) && options.input.isEmpty())
        return fail(QStringLiteral("%1 wants a document: kvxhost %1 FILE.kvx ...").arg(command), 2);
    const bool needsOut = command == QLatin1String("demo-site") || command == QLatin1String("render") ||
                          filmsVideo(command);
    if (needsOut && options.out.isEmpty())
        return fail(QStringLiteral("%1 wants --out FILE; kvxhost %1 --help tells more").arg(command), 2);
    if (const int refused = checkSize(options))
        return refused;
    if (const int refused = checkOutputs(options))
        return refused;
    if (command == QLatin1String("demo-site"))
        return demoSite(options);
    if (command == QLatin1String("render"))
        return render(options);
    if (command == QLatin1String("play"))
        return play(options);
    if (command == QLatin1String("keyframes"))
        return keyFrames(options);
    if (command == QLatin1String("export"))
        return exportFlyThrough(options);
    if (command == QLatin1String("check"))
        return check(options);
    if (command == QLatin1String("crane-sim"))
        return craneSimulator(options);
    if (command == QLatin1String("live"))
        return live(options);
    if (command == QLatin1String("import"))
        return importModel(options);
    if (command == QLatin1String("read-model"))
        return readModel(options);
    if (command == QLatin1String("schedule"))
        return linkSchedule(options);
    if (command == QLatin1String("4d"))
        return film4d(options);
    return list(options);
}

int KvxHostCommandLine::importModel(const Options& options)
{
    if (options.model.isEmpty())
        return fail(QStringLiteral("import wants a model: kvxhost import FILE.kvx MODEL.ifc"), 2);
    if (!QFileInfo(options.model).isFile())
        return fail(QStringLiteral("%1: no such file").arg(options.model));
    QString error;
    PfDbDocument* document = nullptr;
    if (QFileInfo::exists(options.input)) {
        PfDbLoadReport report;
        document = PfDocManagerPtr()->OpenDocument(options.input, &report, &error);
        if (!document)
            return fail(error);
    } else {
        document = PfDocManagerPtr()->NewDocument();
    }
    const QString out = options.out.isEmpty() ? options.input : options.out;
    const bool done = importInto(document, options.model, error) && document->Save(out, &error);
    PfDocManagerPtr()->CloseDocument(document);
    if (!done)
        return fail(error);
    m_out << "wrote " << out << '\n';
    return 0;
}

bool KvxHostCommandLine::importInto(PfDbDocument* document, const QString& model, QString& error)
{
    PfIsolatedModelReader reader(QCoreApplication::applicationFilePath());
    PfModelImport::Report report;
    bool done = false;
    {
        ProgressScope progress(m_out, QStringLiteral("importing %1").arg(QFileInfo(model).fileName()),
                               QStringLiteral("products"));
        done = PfModelImport::Import(document->GetDatabase(), reader, model, report, &error);
    }
    if (done)
        m_out << report.Text() << '\n';
    return done;
}

bool KvxHostCommandLine::importSchedule(PfDbDocument* document, const Options& options, QString& error)
{
    KvxScheduleImport::Request request;
    request.schedule = options.schedule;
    request.model = options.model;
    request.rules = options.rules;
    request.draftStart = QDate::currentDate();
    KvxScheduleImport::Result result;
    const bool done = KvxScheduleImport::Run(document, request, KvxScheduleImport::ModuleRecords(), result, &error);
    m_draftSchedule = result.source == KvxScheduleImport::Source::Draft;
    if (result.source != KvxScheduleImport::Source::File)
        m_out << "schedule: " << result.SourceText() << '\n';
    if (!result.schedule.tasks.empty())
        m_out << result.report.Text() << '\n';
    if (done)
        m_out << result.records << '\n';
    m_out.flush();
    return done;
}

int KvxHostCommandLine::linkSchedule(const Options& options)
{
    if (options.schedule.isEmpty())
        return fail(QStringLiteral("schedule wants a schedule: kvxhost schedule FILE.kvx SCHEDULE.xer|.xml|.csv|.ifc"),
                    2);
    if (!moduleCommands())
        return fail(QStringLiteral("the animation module is not installed: no schedule can be linked"));
    QString error;
    PfDbDocument* document = openAndShow(options, error);
    if (!document)
        return fail(error);
    const QString out = options.out.isEmpty() ? options.input : options.out;
    const bool done = importSchedule(document, options, error) && document->Save(out, &error);
    PfDocManagerPtr()->CloseDocument(document);
    if (!done)
        return fail(error);
    m_out << "wrote " << out << '\n';
    return 0;
}

int KvxHostCommandLine::film4d(const Options& options)
{
    if (options.model.isEmpty())
        return fail(QStringLiteral("4d wants a model: kvxhost 4d MODEL.ifc [SCHEDULE] --out FILM.mp4"), 2);
    if (!QFileInfo(options.model).isFile())
        return fail(QStringLiteral("%1: no such file").arg(options.model));
    if (!moduleCommands())
        return fail(QStringLiteral("the animation module is not installed: no film can be made"));
    QElapsedTimer clock;
    const auto step = [this, &clock](const QString& name) {
        m_out << "== " << name << " (at " << QString::number(clock.elapsed() / 1000.0, 'f', 1) << " s)\n";
        m_out.flush();
    };
    clock.start();
    QString error;
    PfDbDocument* document = PfDocManagerPtr()->NewDocument();
    step(QStringLiteral("model"));
    bool done = importInto(document, options.model, error);
    if (done) {
        show(document, options);
        step(QStringLiteral("schedule"));
        done = importSchedule(document, options, error);
    }
    if (done) {
        step(QStringLiteral("check"));
        done = printCheck(options, false) == 0;
        if (!done)
            error = m_unfilmable ? QStringLiteral("not filmed")
                                 : QStringLiteral("not filmed: mend the problems above, or film anyway with --force");
    }
    if (done) {
        step(QStringLiteral("film"));
        // A film of a draft says so over its date.
        Options filmed = options;
        if (m_draftSchedule && filmed.title.isEmpty())
            filmed.title = PfDraftSchedule::kProject;
        done = film(filmed, error);
    }
    PfDocManagerPtr()->CloseDocument(document);
    if (!done)
        return fail(error);
    step(QStringLiteral("done"));
    m_out << "wrote the 4D film of " << options.model << " to " << options.out << " (" << videoSizeText(options)
          << ", 24 frames a second)\n";
    return 0;
}

int KvxHostCommandLine::readModel(const Options& options)
{
    QFile out;
    if (options.model.isEmpty() || !out.open(stdout, QIODevice::WriteOnly))
        return fail(QStringLiteral("read-model wants a model file"), 2);
    return PfIsolatedModelReader::Serve(options.model, out) ? 0 : 1;
}

int KvxHostCommandLine::live(const Options& options)
{
    if (options.endpoint.isEmpty())
        return fail(QStringLiteral("live wants --endpoint URL, the platform's latest-reading address"), 2);
    if (!moduleCommands())
        return fail(QStringLiteral("the animation module is not installed: no crane can be filmed"));
    QString error;
    PfDbDocument* document = openAndShow(options, error);
    if (!document)
        return fail(error);
    QStringList words{QStringLiteral("endpoint=%1").arg(options.endpoint), QStringLiteral("out=%1").arg(options.out),
                      QStringLiteral("size=%1").arg(sizeText(options.width, options.height))};
    if (!options.header.isEmpty())
        words << QStringLiteral("header=%1").arg(options.header);
    if (!options.seconds.isEmpty())
        words << QStringLiteral("seconds=%1").arg(options.seconds);
    words << captionWords(options.caption, options.title);
    Pfad::Error result;
    {
        ProgressScope progress(m_out, QStringLiteral("filming the live cranes"));
        result = runModuleCommand(kLiveCommand, words, error);
    }
    PfDocManagerPtr()->CloseDocument(document);
    if (result != Pfad::eOk)
        return fail(error, exitCodeOf(result));
    m_out << "wrote the live cranes of " << options.input << " to " << options.out << " (" << videoSizeText(options)
          << ", 24 frames a second)\n";
    return 0;
}

int KvxHostCommandLine::craneSimulator(const Options& options)
{
    if (options.port < 0)
        return fail(QStringLiteral("crane-sim wants --port N (0 for any free one)"), 2);
    PfCraneSimulator simulator;
    QString error;
    if (!options.script.isEmpty() && !simulator.LoadScript(options.script, &error))
        return fail(error, 2);
    simulator.SetDelay(options.delay);
    simulator.SetFailEvery(options.failEvery);
    simulator.SetDamaged(options.damaged);
    if (!simulator.Listen(static_cast<quint16>(options.port), &error))
        return fail(error);
    m_out << "serving crane readings on http://127.0.0.1:" << simulator.Port() << "/ until stopped\n";
    m_out.flush();
    return QCoreApplication::exec();
}

int KvxHostCommandLine::checkSize(const Options& options)
{
    const bool video = filmsVideo(options.command);
    const int limit = video ? ZVideoFFmpeg::kMaxSide : kMaxPictureSide;
    if (options.width > limit || options.height > limit)
        return fail(QStringLiteral("%1 is too large: %2 are 1 to %3 pixels a side")
                        .arg(sizeText(options.width, options.height),
                             video ? QStringLiteral("videos") : QStringLiteral("pictures"))
                        .arg(limit),
                    2);
    return 0;
}

int KvxHostCommandLine::checkOutputs(const Options& options)
{
    const bool video = filmsVideo(options.command);
    const OutputKind outKind = options.command == QLatin1String("render") ? OutputKind::Picture
                               : video                                     ? OutputKind::Video
                                                                           : OutputKind::Document;
    struct Output {
        QString path;
        OutputKind kind;
    };
    const Output outputs[] = {{options.out, outKind}, {options.poster, OutputKind::Picture}};
    // keyframes writes the document itself, on purpose.
    const bool intoInput = options.command == QLatin1String("keyframes");
    const QString input = options.input.isEmpty() ? QString() : resolvedPath(options.input);
    for (const Output& output : outputs) {
        if (output.path.isEmpty())
            continue;
        if (!intoInput && resolvedPath(output.path) == input)
            return fail(QStringLiteral("%1 is the input document: choose another output").arg(output.path), 2);
        const QString problem = formatProblem(output.path, output.kind);
        if (!problem.isEmpty())
            return fail(problem, 2);
        if (QFileInfo(output.path).isDir())
            return fail(QStringLiteral("%1 is a folder: name a file").arg(output.path), 2);
        const QFileInfo folder(QFileInfo(output.path).absolutePath());
        if (!folder.isDir() || !folder.isWritable())
            return fail(QStringLiteral("cannot write %1: its folder %2")
                            .arg(output.path, folder.isDir() ? QStringLiteral("is not writable")
                                                             : QStringLiteral("does not exist")));
    }
    if (!options.poster.isEmpty() && resolvedPath(options.poster) == resolvedPath(options.out))
        return fail(QStringLiteral("the poster and the video are both %1").arg(options.out), 2);
    return 0;
}

Pfad::Error KvxHostCommandLine::runModuleCommand(const wchar_t* name, const QStringList& words, QString& message)
{
    PfEdCommandStack* commands = moduleCommands();
    if (!commands) {
        message = QStringLiteral("the animation module is not installed");
        return Pfad::eNotApplicable;
    }
    message.clear();
    const Pfad::Error result = commands->RunCommand(name, words, &message);
    if (result == Pfad::eKeyNotFound && message.isEmpty())
        message = QStringLiteral("the animation module lacks the command %1").arg(QString::fromWCharArray(name));
    return result;
}

PfDbDocument* KvxHostCommandLine::openAndShow(const Options& options, QString& error)
{
    PfDbLoadReport report;
    PfDbDocument* document = PfDocManagerPtr()->OpenDocument(options.input, &report, &error);
    if (!document)
        return nullptr;
    for (const QString& note : report.Messages())
        m_err << "kvxhost: note: " << note << '\n';
    show(document, options);
    return document;
}

void KvxHostCommandLine::show(PfDbDocument* document, const Options& options)
{
    PfGsModelView* view = PfGsModelView::Attach(document);
    vpe::CViewer* viewer = view->GetViewer();
    viewer->SetActiveViewportSize(options.width, options.height);
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
    const double aspect = double(options.width) / double(options.height);
    camera->SetAspectRatio(float(aspect));
    osg::Vec3d eye = options.eye, target = options.target;
    if (!options.hasCamera) {
        const QString preset = options.view.isEmpty() ? QStringLiteral("overview") : options.view;
        const std::vector<osg::Vec3d> corners = vpe::CViewFraming::Corners(viewer->GetScene()->GetRootNode());
        if (!vpe::CViewFraming::Frame(corners, preset, aspect, camera->GetFieldOfView(), eye, target)) {
            eye.set(-10000.0, -10000.0, 10000.0);
            target.set(0.0, 0.0, 0.0);
        }
    }
    camera->SetLookAt(eye, target);
    viewer->SetCamera(*camera);
}

int KvxHostCommandLine::demoSite(const Options& options)
{
    PfDbDocument* document = PfDocManagerPtr()->NewDocument();
    KVXDemoSite::Build(document->GetDatabase());
    // The schedule's records take their elements' levels from a view.
    PfGsModelView::Attach(document);
    QString message;
    const bool scheduled = moduleCommands() && runModuleCommand(kDemoScheduleCommand, {}, message) == Pfad::eOk;
    QString error;
    const bool saved = document->Save(options.out, &error);
    PfDocManagerPtr()->CloseDocument(document);
    if (!saved)
        return fail(error);
    if (scheduled)
        m_out << "wrote the demo site and its schedule to " << options.out << '\n';
    else
        m_out << "wrote the demo site to " << options.out << " (no schedule: " << message << ")\n";
    return 0;
}

int KvxHostCommandLine::render(const Options& options)
{
    QString error;
    PfDbDocument* document = openAndShow(options, error);
    if (!document)
        return fail(error);
    if (!options.date.isEmpty()) {
        const QStringList words =
            QStringList{QStringLiteral("date=%1").arg(options.date)} + captionWords(options.caption, options.title);
        const Pfad::Error shown = runModuleCommand(kShowDateCommand, words, error);
        if (shown != Pfad::eOk) {
            PfDocManagerPtr()->CloseDocument(document);
            return fail(error, exitCodeOf(shown));
        }
    }
    QImage picture;
    const bool done = document->GetActiveView()->GetViewer()->RenderFrame(picture, &error) &&
                      vpe::CPictureFile::Save(picture, options.out, &error);
    PfDocManagerPtr()->CloseDocument(document);
    if (!done)
        return fail(error);
    m_out << "rendered " << options.input << " to " << options.out << " ("
          << sizeText(options.width, options.height) << ")\n";
    return 0;
}

int KvxHostCommandLine::printCheck(const Options& options, bool toOutput)
{
    QStringList words;
    if (!options.secondsPerDay.isEmpty())
        words << QStringLiteral("seconds-per-day=%1").arg(options.secondsPerDay);
    if (options.force)
        words << QStringLiteral("force");
    QString report;
    const Pfad::Error result = runModuleCommand(kCheckCommand, words, report);
    if (result != Pfad::eOk && result != Pfad::eNotApplicable)
        return fail(report, exitCodeOf(result));
    const QStringList lines = report.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    m_unfilmable = report.contains(QLatin1String("\ncannot film: "));
    for (int i = 0; i < lines.size(); ++i) {
        if (toOutput || i == 0)
            m_out << lines[i] << '\n';
        else
            m_err << "kvxhost: " << lines[i] << '\n';
    }
    m_out.flush();
    m_err.flush();
    return result == Pfad::eOk ? 0 : 1;
}

int KvxHostCommandLine::check(const Options& options)
{
    QString error;
    PfDbDocument* document = openAndShow(options, error);
    if (!document)
        return fail(error);
    const int code = printCheck(options, true);
    PfDocManagerPtr()->CloseDocument(document);
    return code;
}

int KvxHostCommandLine::play(const Options& options)
{
    if (!moduleCommands())
        return fail(QStringLiteral("the animation module is not installed: no schedule can be played"));
    QString error;
    PfDbDocument* document = openAndShow(options, error);
    if (!document)
        return fail(error);
    if (printCheck(options, false) != 0) {
        PfDocManagerPtr()->CloseDocument(document);
        return fail(m_unfilmable ? QStringLiteral("not filmed")
                                 : QStringLiteral("not filmed: mend the problems above, or film anyway with --force"));
    }
    const bool filmed = film(options, error);
    PfDocManagerPtr()->CloseDocument(document);
    if (!filmed)
        return fail(error, m_filmExitCode);
    m_out << "wrote the schedule of " << options.input << " to " << options.out << " (" << videoSizeText(options)
          << ", 24 frames a second)";
    if (!options.poster.isEmpty())
        m_out << " and its poster to " << options.poster;
    m_out << '\n';
    return 0;
}

bool KvxHostCommandLine::film(const Options& options, QString& error)
{
    QStringList words{QStringLiteral("out=%1").arg(options.out),
                      QStringLiteral("size=%1").arg(sizeText(options.width, options.height))};
    if (!options.secondsPerDay.isEmpty())
        words << QStringLiteral("seconds-per-day=%1").arg(options.secondsPerDay);
    if (!options.poster.isEmpty())
        words << QStringLiteral("poster=%1").arg(options.poster);
    words << captionWords(options.caption, options.title);
    Pfad::Error result;
    {
        ProgressScope progress(m_out, QStringLiteral("filming the schedule"));
        result = runModuleCommand(kScheduleVideoCommand, words, error);
    }
    m_filmExitCode = exitCodeOf(result);
    return result == Pfad::eOk;
}

int KvxHostCommandLine::keyFrames(const Options& options)
{
    const bool adding = !options.addTime.isEmpty();
    const bool deleting = !options.deleteTime.isEmpty();
    if (adding && deleting)
        return fail(QStringLiteral("keyframes takes --add or --delete, not both"), 2);
    if (adding != options.hasCamera)
        return fail(QStringLiteral("--add wants --camera, and --camera goes with --add"), 2);
    if (!options.date.isEmpty() && !adding)
        return fail(QStringLiteral("--date goes with --add"), 2);
    if (!options.out.isEmpty() && !adding && !deleting)
        return fail(QStringLiteral("--out goes with --add or --delete: a listing changes nothing"), 2);
    if (!moduleCommands())
        return fail(QStringLiteral("the animation module is not installed: no key frame can be read"));
    const QString out = options.out.isEmpty() ? options.input : options.out;
    QStringList words;
    if (adding) {
        words << QStringLiteral("add=%1").arg(options.addTime) << QStringLiteral("camera=%1").arg(options.cameraText);
        if (!options.date.isEmpty())
            words << QStringLiteral("date=%1").arg(options.date);
    } else if (deleting) {
        words << QStringLiteral("delete=%1").arg(options.deleteTime);
    }
    QString error;
    PfDbDocument* document = openAndShow(options, error);
    if (!document)
        return fail(error);
    QString message;
    const Pfad::Error result = runModuleCommand(kKeyFramesCommand, words, message);
    const bool saved = result == Pfad::eOk && (adding || deleting) ? document->Save(out, &error) : true;
    PfDocManagerPtr()->CloseDocument(document);
    if (result != Pfad::eOk)
        return fail(message, exitCodeOf(result));
    if (!saved)
        return fail(error);
    m_out << message;
    if (adding || deleting)
        m_out << "saved " << out << '\n';
    return 0;
}

int KvxHostCommandLine::exportFlyThrough(const Options& options)
{
    if (!moduleCommands())
        return fail(QStringLiteral("the animation module is not installed: no fly-through can be exported"));
    QString error;
    PfDbDocument* document = openAndShow(options, error);
    if (!document)
        return fail(error);
    QStringList words = QStringList{QStringLiteral("out=%1").arg(options.out),
                                    QStringLiteral("size=%1").arg(sizeText(options.width, options.height))} +
                        captionWords(options.caption, options.title);
    if (options.force)
        words << QStringLiteral("force");
    QString message;
    Pfad::Error result;
    {
        ProgressScope progress(m_out, QStringLiteral("filming the fly-through"));
        result = runModuleCommand(kExportCommand, words, message);
    }
    PfDocManagerPtr()->CloseDocument(document);
    if (result != Pfad::eOk)
        return fail(message, exitCodeOf(result));
    m_out << "wrote the fly-through of " << options.input << " to " << options.out << " (" << videoSizeText(options)
          << ", 24 frames a second): " << message << '\n';
    return 0;
}

int KvxHostCommandLine::list(const Options& options)
{
    QString error;
    PfDbDocument* document = openAndShow(options, error);
    if (!document)
        return fail(error);
    int count = 0;
    QString elements;
    for (PfDbObject* object : *document->GetDatabase()->GetModelSpace()) {
        // The model's elements; the module's records are base objects too,
        // without a shape of their own.
        const PfDbElement* element = PfDbElement::Cast(object);
        if (!element || (KVXBaseObject::Cast(object) && !KVX3DElementObject::Cast(object)))
            continue;
        ++count;
        elements += QStringLiteral("  #%1  %2  %3\n")
                        .arg(static_cast<qint64>(object->GetHandle()), -6)
                        .arg(QString::fromStdWString(object->IsA()->Name()), -20)
                        .arg(QString::fromStdWString(element->GetName()));
    }
    m_out << count << " elements\n" << elements;
    const osg::BoundingBox box = modelBounds(document->GetActiveView()->GetViewer());
    if (box.valid())
        m_out << QStringLiteral("extents: %1 x %2 x %3 m, from (%4, %5, %6) to (%7, %8, %9) mm\n")
                     .arg((box.xMax() - box.xMin()) / 1000.0, 0, 'f', 1)
                     .arg((box.yMax() - box.yMin()) / 1000.0, 0, 'f', 1)
                     .arg((box.zMax() - box.zMin()) / 1000.0, 0, 'f', 1)
                     .arg(box.xMin(), 0, 'f', 0)
                     .arg(box.yMin(), 0, 'f', 0)
                     .arg(box.zMin(), 0, 'f', 0)
                     .arg(box.xMax(), 0, 'f', 0)
                     .arg(box.yMax(), 0, 'f', 0)
                     .arg(box.zMax(), 0, 'f', 0);
    else
        m_out << "extents: the model is empty\n";
    int code = 0;
    for (const wchar_t* command : {kListCommand, kKeyFramesCommand}) {
        QString message;
        const Pfad::Error result = runModuleCommand(command, {}, message);
        if (result == Pfad::eOk)
            m_out << message;
        else
            code = fail(message, exitCodeOf(result));
        if (!moduleCommands())
            break;
    }
    PfDocManagerPtr()->CloseDocument(document);
    return code;
}
