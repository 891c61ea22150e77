#include "KvxCommandLineOptions.h"

#include "host/model/KVX3DElementObject.h"
#include "host/vpe/scene/CViewFraming.h"

#include <QDate>

#include <cmath>

namespace {

struct CommandOptions {
    const char* command;
    bool document;
    // A model file after the document (import) or alone (read-model, 4d).
    bool model;
    // A schedule file after the document or the model.
    bool schedule;
    // The options it takes, each followed by a space.
    const char* options;
};

const CommandOptions kCommands[] = {
    {"demo-site", false, false, false, "--out "},
    {"render", true, false, false, "--out --size --camera --view --date --title --no-caption "},
    {"play", true, false, false,
     "--out --size --seconds-per-day --poster --camera --view --title --no-caption --force "},
    {"export", true, false, false, "--out --size --title --no-caption --force "},
    {"keyframes", true, false, false, "--add --camera --date --delete --out "},
    {"check", true, false, false, "--seconds-per-day "},
    {"list", true, false, false, ""},
    {"live", true, false, false, "--endpoint --header --out --seconds --size --camera --view --title --no-caption "},
    {"crane-sim", false, false, false, "--port --script --slow --fail-every --damaged "},
    {"import", true, true, false, "--out "},
    {"schedule", true, false, true, "--rules --out "},
    {"4d", false, true, true, "--rules --out --size --seconds-per-day --title --no-caption --force "},
    // The child process of an import: streams a model's products to stdout.
    {"read-model", false, true, false, ""},
};

const CommandOptions* commandOptions(const QString& command)
{
    for (const CommandOptions& each : kCommands)
        if (command == QLatin1String(each.command))
            return &each;
    return nullptr;
}

bool takesValue(const QString& option)
{
    static const QStringList valued{"--out",  "--size",  "--seconds-per-day", "--poster", "--camera",
                                    "--view", "--add",   "--delete",          "--date",   "--title",
                                    "--port", "--script", "--slow",           "--fail-every",
                                    "--endpoint", "--header", "--seconds", "--rules"};
    return valued.contains(option);
}

bool parseSize(const QString& text, int& width, int& height)
{
    const QStringList parts = text.split(QLatin1Char('x'));
    bool okWidth = false, okHeight = false;
    if (parts.size() == 2) {
        width = parts[0].toInt(&okWidth);
        height = parts[1].toInt(&okHeight);
    }
    return okWidth && okHeight && width >= 1 && height >= 1;
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
        // Within the reach of any site: 1e308 drew an empty picture.
        if (!ok || !(std::abs(values[i]) <= KVX3DElementObject::kFarthest))
            return false;
    }
    eye.set(values[0], values[1], values[2]);
    target.set(values[3], values[4], values[5]);
    return (target - eye).length() > 0.0;
}

bool isTime(const QString& text)
{
    bool ok = false;
    return text.toInt(&ok) >= 0 && ok;
}

// Puts a plain argument in the first free place the command has for one:
// the document, the model, the schedule.
bool takePositional(const CommandOptions* allowed, const QString& argument, KvxCommandLineOptions& options)
{
    for (auto [takes, field] : {std::pair{!allowed || allowed->document, &options.input},
                                std::pair{allowed && allowed->model, &options.model},
                                std::pair{allowed && allowed->schedule, &options.schedule}}) {
        if (takes && field->isEmpty()) {
            *field = argument;
            return true;
        }
    }
    return false;
}

} // namespace

QStringList KvxCommandLineOptions::Commands()
{
    QStringList names;
    for (const CommandOptions& each : kCommands)
        names << QLatin1String(each.command);
    return names;
}

bool KvxCommandLineOptions::TakesModel(const QString& command)
{
    const CommandOptions* options = commandOptions(command);
    return options && options->model;
}

bool KvxCommandLineOptions::TakesDocument(const QString& command)
{
    const CommandOptions* options = commandOptions(command);
    return options && options->document;
}

bool KvxCommandLineOptions::Parse(const QStringList& arguments, QString& error)
{
    command = arguments.value(0);
    const CommandOptions* allowed = commandOptions(command);
    for (int i = 1; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        if (argument == QLatin1String("--help")) {
            help = true;
            continue;
        }
        if (!argument.startsWith(QLatin1String("--"))) {
            if (!takePositional(allowed, argument, *this)) {
                error = QStringLiteral("unexpected argument %1").arg(argument);
                return false;
            }
            continue;
        }
        if (!takesValue(argument) && argument != QLatin1String("--no-caption") && argument != QLatin1String("--force") &&
            argument != QLatin1String("--damaged")) {
            error = QStringLiteral("unknown option %1").arg(argument);
            return false;
        }
        if (allowed && !QString::fromLatin1(allowed->options).contains(argument + QLatin1Char(' '))) {
            error = QStringLiteral("%1 does not take %2; kvxhost %1 --help lists what it takes").arg(command, argument);
            return false;
        }
        if (takesValue(argument) && i + 1 >= arguments.size()) {
            error = QStringLiteral("%1 needs a value").arg(argument);
            return false;
        }
        const QString value = takesValue(argument) ? arguments[++i] : QString();
        if (argument == QLatin1String("--out")) {
            out = value;
        } else if (argument == QLatin1String("--size")) {
            sizeGiven = true;
            if (!parseSize(value, width, height)) {
                error = QStringLiteral("--size wants WIDTHxHEIGHT in pixels, not \"%1\"").arg(value);
                return false;
            }
        } else if (argument == QLatin1String("--seconds-per-day")) {
            bool ok = false;
            const double seconds = value.toDouble(&ok);
            if (!ok || !(seconds > 0.0) || seconds > 3600.0) {
                error = QStringLiteral("--seconds-per-day wants a number of seconds above 0 and at most 3600, not "
                                       "\"%1\"")
                            .arg(value);
                return false;
            }
            secondsPerDay = value;
        } else if (argument == QLatin1String("--poster")) {
            poster = value;
        } else if (argument == QLatin1String("--camera")) {
            cameraText = value;
            hasCamera = parseCamera(value, eye, target);
            if (!hasCamera) {
                error = QStringLiteral("--camera wants six numbers ex,ey,ez,tx,ty,tz in millimetres, within 1e9 of "
                                       "the origin, eye and target apart, not \"%1\"")
                            .arg(value);
                return false;
            }
        } else if (argument == QLatin1String("--view")) {
            view = value;
            if (!vpe::CViewFraming::PresetNames().contains(value)) {
                error = QStringLiteral("--view wants one of %1, not \"%2\"")
                            .arg(vpe::CViewFraming::PresetNames().join(QStringLiteral(", ")), value);
                return false;
            }
        } else if (argument == QLatin1String("--date")) {
            date = value;
            if (!QDate::fromString(value, QStringLiteral("yyyy-MM-dd")).isValid()) {
                error = QStringLiteral("--date wants a day as yyyy-MM-dd, not \"%1\"").arg(value);
                return false;
            }
        } else if (argument == QLatin1String("--add") || argument == QLatin1String("--delete")) {
            (argument == QLatin1String("--add") ? addTime : deleteTime) = value;
            if (!isTime(value)) {
                error = QStringLiteral("%1 wants whole milliseconds from 0, not \"%2\"").arg(argument, value);
                return false;
            }
        } else if (argument == QLatin1String("--rules")) {
            rules = value;
        } else if (argument == QLatin1String("--title")) {
            title = value;
        } else if (argument == QLatin1String("--no-caption")) {
            caption = false;
        } else if (argument == QLatin1String("--force")) {
            force = true;
        } else if (argument == QLatin1String("--endpoint")) {
            endpoint = value;
        } else if (argument == QLatin1String("--header")) {
            header = value;
        } else if (argument == QLatin1String("--seconds")) {
            bool ok = false;
            const double length = value.toDouble(&ok);
            if (!ok || !(length > 0.0) || length > 3600.0) {
                error = QStringLiteral("--seconds wants a length of film above 0 and at most 3600, not \"%1\"")
                            .arg(value);
                return false;
            }
            seconds = value;
        } else if (argument == QLatin1String("--damaged")) {
            damaged = true;
        } else if (argument == QLatin1String("--script")) {
            script = value;
        } else if (argument == QLatin1String("--port") || argument == QLatin1String("--slow") ||
                   argument == QLatin1String("--fail-every")) {
            bool ok = false;
            const int number = value.toInt(&ok);
            const bool isPort = argument == QLatin1String("--port");
            if (!ok || number < (argument == QLatin1String("--slow") ? -1 : isPort ? 0 : 1) ||
                (isPort && number > 65535)) {
                error = QStringLiteral("%1 wants %2, not \"%3\"")
                            .arg(argument,
                                 isPort ? QStringLiteral("a port from 0 (any free one) to 65535")
                                 : argument == QLatin1String("--slow")
                                     ? QStringLiteral("milliseconds before each answer, -1 for never")
                                     : QStringLiteral("a count from 1"),
                                 value);
                return false;
            }
            (isPort ? port : argument == QLatin1String("--slow") ? delay : failEvery) = number;
        }
    }
    if (hasCamera && !view.isEmpty()) {
        error = QStringLiteral("--camera and --view both place the camera: give one of them");
        return false;
    }
    return true;
}
