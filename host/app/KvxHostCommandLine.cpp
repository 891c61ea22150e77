#include "KvxHostCommandLine.h"

#include "KVXDemoSite.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbLoadReport.h"
#include "host/db/PfDocManager.h"
#include "host/model/PfGsModelView.h"
#include "host/model/PfProgressMeter.h"
#include "host/rx/PfEdCommandStack.h"
#include "host/rx/PfRxDictionary.h"
#include "host/vpe/render/CViewer.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTextStream>

#include <osg/ComputeBoundsVisitor>

#include <cmath>

struct KvxHostCommandLine::Options {
    QString command;
    QString input;
    QString out;
    int width = 1280;
    int height = 720;
    QString secondsPerDay;
    QString poster;
    bool hasCamera = false;
    QString cameraText;
    osg::Vec3d eye;
    osg::Vec3d target;
    QString addTime;
    QString deleteTime;
    QString date;
    QString title;
    bool caption = true;
    bool help = false;
};

namespace {

// One line for a bare or unknown command; --help tells more.
const char* const kUsage = "usage: kvxhost COMMAND FILE [options], COMMAND one of demo-site, render, play, keyframes, "
                           "export; kvxhost --help tells more";

struct CommandHelp {
    const char* command;
    const char* text;
};

// What each command does and takes, with its units, defaults and an example.
const CommandHelp kHelp[] = {
    {"demo-site", "usage: kvxhost demo-site --out FILE.kvx\n"
                  "Builds the demo construction site (buildings, road, tower crane, vehicles) and saves it.\n"
                  "  --out FILE.kvx                the document to write\n"
                  "example: kvxhost demo-site --out site.kvx\n"},
    {"render", "usage: kvxhost render FILE.kvx --out FILE.png [options]\n"
               "Renders the document's site off screen into a PNG picture.\n"
               "  --out FILE.png                the picture to write (never the document)\n"
               "  --size WxH                    pixels, 1 to 8192 a side (default 1280x720)\n"
               "  --camera ex,ey,ez,tx,ty,tz    eye and target in millimetres (default: the whole site from the\n"
               "                                south-west and above)\n"
               "  --date yyyy-MM-dd             the site as it stands on that day of its schedule, with the caption\n"
               "  --title TEXT                  a title over the caption's date\n"
               "  --no-caption                  no caption\n"
               "example: kvxhost render site.kvx --out site.png --size 1920x1080 --date 2025-03-20\n"},
    {"play", "usage: kvxhost play FILE.kvx --out FILE.mp4 [options]\n"
             "Films the document's schedule off screen: H.264 MP4, 24 frames a second, the date in a caption.\n"
             "  --out FILE.mp4                the video to write; an earlier one stays until the new one is done\n"
             "  --size WxH                    pixels, 1 to 4094 a side (default 1280x720)\n"
             "  --seconds-per-day S           how long a day of the schedule lasts in the film (default 1)\n"
             "  --poster FILE.png             also a picture of the site 60 % through the film\n"
             "  --camera ex,ey,ez,tx,ty,tz    eye and target in millimetres (default: the whole site)\n"
             "  --title TEXT                  a title over the caption's date\n"
             "  --no-caption                  no caption\n"
             "example: kvxhost play site.kvx --out schedule.mp4 --seconds-per-day 0.25 --poster schedule.png\n"},
    {"keyframes", "usage: kvxhost keyframes FILE.kvx [--add TIME_MS --camera ex,ey,ez,tx,ty,tz [--date yyyy-MM-dd]\n"
                  "                                 | --delete TIME_MS] [--out FILE.kvx]\n"
                  "Lists the document's fly-through, one line per moment (time, eye, target, date), or adds or\n"
                  "deletes one moment's key frames as one undoable step and saves the document.\n"
                  "  --add TIME_MS                 a camera key frame at that moment, milliseconds from 0\n"
                  "  --camera ex,ey,ez,tx,ty,tz    its eye and a point it looks at, in millimetres\n"
                  "  --date yyyy-MM-dd             also a date key frame there: the schedule's day at that moment\n"
                  "  --delete TIME_MS              the key frames at that moment\n"
                  "  --out FILE.kvx                write a copy instead of the document\n"
                  "example: kvxhost keyframes site.kvx --add 4000 --camera -90000,-110000,60000,0,15000,12000 "
                  "--date 2025-03-20\n"},
    {"export", "usage: kvxhost export FILE.kvx --out FILE.mp4 [options]\n"
               "Films the document's fly-through (two camera key frames at least) off screen: H.264 MP4, 24 frames\n"
               "a second, the schedule following the date key frames, the date in a caption.\n"
               "  --out FILE.mp4                the video to write; an earlier one stays until the new one is done\n"
               "  --size WxH                    pixels, 1 to 4094 a side (default 1280x720)\n"
               "  --title TEXT                  a title over the caption's date\n"
               "  --no-caption                  no caption\n"
               "example: kvxhost export site.kvx --out flight.mp4 --size 1920x1080 --title \"East side\"\n"},
};

const char* helpOf(const QString& command)
{
    for (const CommandHelp& help : kHelp)
        if (command == QLatin1String(help.command))
            return help.text;
    return nullptr;
}

// The animation module's command that films a document's schedule.
const wchar_t* const kScheduleVideoCommand = L"KVXElement.KVX_EXPORT_SCHEDULE_VIDEO";
// The animation module's command that lists and edits key frames.
const wchar_t* const kKeyFramesCommand = L"KVXElement.KVX_KEY_FRAMES";
// The animation module's command that films a document's fly-through.
const wchar_t* const kExportCommand = L"KVXElement.KVX_EXPORT_FLY_THROUGH";
// The animation module's command that stands the schedule still on a date.
const wchar_t* const kShowDateCommand = L"KVXElement.KVX_SHOW_SCHEDULE_AT";

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
// done, the time it has taken and about how long is left.
class ProgressPrinter : public PfProgressMeter::Listener {
public:
    explicit ProgressPrinter(QTextStream& out) : m_out(out) {}
    void started(const QString& caption, int total) override
    {
        m_out << caption << ": " << total << " frames\n";
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
    int m_tenth = 0;
    QElapsedTimer m_clock;
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

bool parseSize(const QString& text, int& width, int& height)
{
    const QStringList parts = text.split(QLatin1Char('x'));
    bool okWidth = false, okHeight = false;
    if (parts.size() == 2) {
        width = parts[0].toInt(&okWidth);
        height = parts[1].toInt(&okHeight);
    }
    return okWidth && okHeight && width >= 1 && height >= 1 && width <= 8192 && height <= 8192;
}

bool parseCamera(const QString& text, osg::Vec3d& eye, osg::Vec3d& target)
{
    const QStringList parts = text.split(QLatin1Char(','));
    if (parts.size() != 6)
        return false;
    double values[6];
    for (int i = 0; i < 6; ++i) {
        bool ok = false;
        values[i] = parts[i].trimmed().toDouble(&ok);
        if (!ok || !std::isfinite(values[i]))
            return false;
    }
    eye.set(values[0], values[1], values[2]);
    target.set(values[3], values[4], values[5]);
    return (target - eye).length() > 0.0;
}

// Looks at the model from the south-west and above, all of it in view.
void threeQuarterView(osg::Node* model, osg::Vec3d& eye, osg::Vec3d& target)
{
    osg::ComputeBoundsVisitor bounds;
    model->accept(bounds);
    const osg::BoundingBox& box = bounds.getBoundingBox();
    target = box.valid() ? osg::Vec3d(box.center()) : osg::Vec3d();
    const double radius = box.valid() ? box.radius() : 10000.0;
    osg::Vec3d away(-0.55, -0.85, 0.6);
    away.normalize();
    eye = target + away * (radius * 1.9);
}

} // namespace

KvxHostCommandLine::KvxHostCommandLine(QTextStream& out, QTextStream& err) : m_out(out), m_err(err) {}

int KvxHostCommandLine::fail(const QString& message, int code)
{
    m_err << "kvxhost: " << message << '\n';
    m_err.flush();
    return code;
}

bool KvxHostCommandLine::parse(const QStringList& arguments, Options& options)
{
    options.command = arguments.value(0);
    for (int i = 1; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        const bool takesValue = argument == QLatin1String("--out") || argument == QLatin1String("--size") ||
                                argument == QLatin1String("--camera") || argument == QLatin1String("--poster") ||
                                argument == QLatin1String("--seconds-per-day") || argument == QLatin1String("--add") ||
                                argument == QLatin1String("--delete") || argument == QLatin1String("--date") ||
                                argument == QLatin1String("--title");
        if (takesValue && i + 1 >= arguments.size()) {
            fail(QStringLiteral("%1 needs a value").arg(argument), 2);
            return false;
        }
        if (argument == QLatin1String("--out")) {
            options.out = arguments[++i];
        } else if (argument == QLatin1String("--size")) {
            if (!parseSize(arguments[++i], options.width, options.height)) {
                fail(QStringLiteral("--size wants WIDTHxHEIGHT between 1 and 8192, not \"%1\"").arg(arguments[i]), 2);
                return false;
            }
        } else if (argument == QLatin1String("--seconds-per-day")) {
            options.secondsPerDay = arguments[++i];
        } else if (argument == QLatin1String("--poster")) {
            options.poster = arguments[++i];
        } else if (argument == QLatin1String("--add")) {
            options.addTime = arguments[++i];
        } else if (argument == QLatin1String("--delete")) {
            options.deleteTime = arguments[++i];
        } else if (argument == QLatin1String("--date")) {
            options.date = arguments[++i];
        } else if (argument == QLatin1String("--title")) {
            options.title = arguments[++i];
        } else if (argument == QLatin1String("--no-caption")) {
            options.caption = false;
        } else if (argument == QLatin1String("--help")) {
            options.help = true;
        } else if (argument == QLatin1String("--camera")) {
            options.cameraText = arguments[i + 1];
            options.hasCamera = parseCamera(arguments[++i], options.eye, options.target);
            if (!options.hasCamera) {
                fail(QStringLiteral("--camera wants six numbers ex,ey,ez,tx,ty,tz with eye and target apart, not \"%1\"")
                         .arg(arguments[i]),
                     2);
                return false;
            }
        } else if (argument.startsWith(QLatin1String("--"))) {
            fail(QStringLiteral("unknown option %1").arg(argument), 2);
            return false;
        } else if (options.input.isEmpty()) {
            options.input = argument;
        } else {
            fail(QStringLiteral("unexpected argument %1").arg(argument), 2);
            return false;
        }
    }
    return true;
}

int KvxHostCommandLine::checkOutputs(const Options& options)
{
    // keyframes writes the document itself, on purpose.
    const bool intoInput = options.command == QLatin1String("keyframes");
    const QString input = options.input.isEmpty() ? QString() : resolvedPath(options.input);
    for (const QString& output : {options.out, options.poster}) {
        if (output.isEmpty())
            continue;
        if (!intoInput && resolvedPath(output) == input)
            return fail(QStringLiteral("%1 is the input document: choose another output").arg(output), 2);
        const QFileInfo folder(QFileInfo(output).absolutePath());
        if (!folder.isDir() || !folder.isWritable())
            return fail(QStringLiteral("cannot write %1: its folder %2").arg(output, folder.isDir()
                                                                                     ? QStringLiteral("is not writable")
                                                                                     : QStringLiteral("does not exist")));
    }
    return 0;
}

int KvxHostCommandLine::help(const QString& command)
{
    if (command == QLatin1String("--help")) {
        for (const CommandHelp& each : kHelp)
            m_out << each.text << '\n';
        return 0;
    }
    const char* text = helpOf(command);
    if (!text)
        return fail(QStringLiteral("unknown command %1; %2").arg(command, QString::fromLatin1(kUsage)), 2);
    m_out << text;
    return 0;
}

int KvxHostCommandLine::Run(const QStringList& arguments)
{
    if (arguments.value(0) == QLatin1String("--help"))
        return help(arguments.value(0));
    Options options;
    if (!parse(arguments, options))
        return 2;
    if (options.help)
        return help(options.command);
    if (const int refused = checkOutputs(options))
        return refused;
    if (options.command == QLatin1String("demo-site"))
        return demoSite(options);
    if (options.command == QLatin1String("render"))
        return render(options);
    if (options.command == QLatin1String("play"))
        return play(options);
    if (options.command == QLatin1String("keyframes"))
        return keyFrames(options);
    if (options.command == QLatin1String("export"))
        return exportFlyThrough(options);
    if (options.command.isEmpty())
        return fail(QString::fromLatin1(kUsage), 2);
    return fail(QStringLiteral("unknown command %1; %2").arg(options.command, QString::fromLatin1(kUsage)), 2);
}

int KvxHostCommandLine::demoSite(const Options& options)
{
    if (options.out.isEmpty() || !options.input.isEmpty())
        return fail(QStringLiteral("demo-site wants --out FILE.kvx and nothing else"), 2);
    PfDbDocument document;
    KVXDemoSite::Build(document.GetDatabase());
    QString error;
    if (!document.Save(options.out, &error))
        return fail(error);
    m_out << "wrote the demo site to " << options.out << '\n';
    return 0;
}

PfDbDocument* KvxHostCommandLine::openAndShow(const Options& options, QString& error)
{
    PfDbLoadReport report;
    PfDbDocument* document = PfDocManagerPtr()->OpenDocument(options.input, &report, &error);
    if (!document)
        return nullptr;
    for (const QString& note : report.Messages())
        m_err << "kvxhost: note: " << note << '\n';
    PfGsModelView* view = PfGsModelView::Attach(document);
    vpe::CViewer* viewer = view->GetViewer();
    viewer->SetActiveViewportSize(options.width, options.height);
    osg::Vec3d eye = options.eye, target = options.target;
    if (!options.hasCamera)
        threeQuarterView(viewer->GetScene()->GetRootNode(), eye, target);
    vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
    camera->SetLookAt(eye, target);
    camera->SetAspectRatio(float(options.width) / float(options.height));
    viewer->SetCamera(*camera);
    return document;
}

int KvxHostCommandLine::render(const Options& options)
{
    if (options.input.isEmpty() || options.out.isEmpty())
        return fail(QStringLiteral("render wants a document and --out FILE.png"), 2);
    QString error;
    PfDbDocument* document = openAndShow(options, error);
    if (!document)
        return fail(error);
    if (!options.date.isEmpty()) {
        PfEdCommandStack* commands = moduleCommands();
        if (!commands)
            return fail(QStringLiteral("the animation module is not installed: no schedule date can be shown"));
        const QStringList words =
            QStringList{QStringLiteral("date=%1").arg(options.date)} + captionWords(options.caption, options.title);
        const Pfad::Error shown = commands->RunCommand(kShowDateCommand, words, &error);
        if (shown != Pfad::eOk) {
            PfDocManagerPtr()->CloseDocument(document);
            return fail(error, shown == Pfad::eInvalidInput ? 2 : 1);
        }
    }
    QImage picture;
    if (!document->GetActiveView()->GetViewer()->RenderFrame(picture, &error))
        return fail(error);
    if (!picture.save(options.out, "PNG"))
        return fail(QStringLiteral("cannot write %1").arg(options.out));
    m_out << "rendered " << options.input << " to " << options.out << " (" << options.width << 'x' << options.height
          << ")\n";
    PfDocManagerPtr()->CloseDocument(document);
    return 0;
}

int KvxHostCommandLine::play(const Options& options)
{
    if (options.input.isEmpty() || options.out.isEmpty())
        return fail(QStringLiteral("play wants a document and --out FILE.mp4"), 2);
    PfEdCommandStack* commands = moduleCommands();
    if (!commands)
        return fail(QStringLiteral("the animation module is not installed: no schedule can be played"));
    QString error;
    PfDbDocument* document = openAndShow(options, error);
    if (!document)
        return fail(error);
    QStringList words{QStringLiteral("out=%1").arg(options.out),
                      QStringLiteral("size=%1x%2").arg(options.width).arg(options.height)};
    if (!options.secondsPerDay.isEmpty())
        words << QStringLiteral("seconds-per-day=%1").arg(options.secondsPerDay);
    if (!options.poster.isEmpty())
        words << QStringLiteral("poster=%1").arg(options.poster);
    words << captionWords(options.caption, options.title);
    ProgressPrinter printer(m_out);
    PfProgressMeter::Listener* previous = PfProgressMeter::InstallListener(&printer);
    const Pfad::Error result = commands->RunCommand(kScheduleVideoCommand, words, &error);
    PfProgressMeter::InstallListener(previous);
    PfDocManagerPtr()->CloseDocument(document);
    if (result == Pfad::eKeyNotFound)
        return fail(QStringLiteral("the animation module cannot film schedules"));
    if (result != Pfad::eOk)
        return fail(error);
    m_out << "wrote the schedule of " << options.input << " to " << options.out << " (" << options.width << 'x'
          << options.height << ", 24 frames a second)";
    if (!options.poster.isEmpty())
        m_out << " and its poster to " << options.poster;
    m_out << '\n';
    return 0;
}

int KvxHostCommandLine::keyFrames(const Options& options)
{
    const bool adding = !options.addTime.isEmpty();
    const bool deleting = !options.deleteTime.isEmpty();
    if (options.input.isEmpty() || (adding && deleting))
        return fail(QStringLiteral("keyframes wants a document, and --add or --delete, not both"), 2);
    if (adding != options.hasCamera)
        return fail(QStringLiteral("--add wants --camera, and --camera goes with --add"), 2);
    if (!options.date.isEmpty() && !adding)
        return fail(QStringLiteral("--date goes with --add"), 2);
    PfEdCommandStack* commands = moduleCommands();
    if (!commands)
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
    const Pfad::Error result = commands->RunCommand(kKeyFramesCommand, words, &message);
    const bool saved = result == Pfad::eOk && (adding || deleting) ? document->Save(out, &error) : true;
    PfDocManagerPtr()->CloseDocument(document);
    if (result == Pfad::eKeyNotFound && message.isEmpty())
        return fail(QStringLiteral("the animation module cannot edit key frames"));
    if (result == Pfad::eInvalidInput)
        return fail(message, 2);
    if (result != Pfad::eOk)
        return fail(message);
    if (!saved)
        return fail(error);
    m_out << message;
    if (adding || deleting)
        m_out << "saved " << out << '\n';
    return 0;
}

int KvxHostCommandLine::exportFlyThrough(const Options& options)
{
    if (options.input.isEmpty() || options.out.isEmpty())
        return fail(QStringLiteral("export wants a document and --out FILE.mp4"), 2);
    PfEdCommandStack* commands = moduleCommands();
    if (!commands)
        return fail(QStringLiteral("the animation module is not installed: no fly-through can be exported"));
    QString error;
    PfDbDocument* document = openAndShow(options, error);
    if (!document)
        return fail(error);
    const QStringList words = QStringList{QStringLiteral("out=%1").arg(options.out),
                                          QStringLiteral("size=%1x%2").arg(options.width).arg(options.height)} +
                              captionWords(options.caption, options.title);
    ProgressPrinter printer(m_out);
    PfProgressMeter::Listener* previous = PfProgressMeter::InstallListener(&printer);
    QString message;
    const Pfad::Error result = commands->RunCommand(kExportCommand, words, &message);
    PfProgressMeter::InstallListener(previous);
    PfDocManagerPtr()->CloseDocument(document);
    if (result == Pfad::eKeyNotFound && message.isEmpty())
        return fail(QStringLiteral("the animation module cannot export fly-throughs"));
    if (result == Pfad::eInvalidInput)
        return fail(message, 2);
    if (result != Pfad::eOk)
        return fail(message);
    m_out << "wrote the fly-through of " << options.input << " to " << options.out << " (" << options.width << 'x'
          << options.height << ", 24 frames a second): " << message << '\n';
    return 0;
}
