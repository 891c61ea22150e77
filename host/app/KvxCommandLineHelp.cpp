#include "KvxCommandLineHelp.h"

#include "KvxCommandLineOptions.h"

namespace {

struct CommandHelp {
    const char* command;
    const char* text;
};

const CommandHelp kHelp[] = {
    {"demo-site", "usage: kvxhost demo-site --out FILE.kvx\n"
                  "Builds the demo construction site (buildings, road, tower crane, vehicles) with its 58-day\n"
                  "schedule, ready for render and play, and saves it.\n"
                  "  --out FILE.kvx                the document to write\n"
                  "example: kvxhost demo-site --out site.kvx\n"},
    {"render", "usage: kvxhost render FILE.kvx --out PICTURE [options]\n"
               "Renders the document's site off screen into a picture.\n"
               "  --out PICTURE                 .png, .jpg or .bmp; an earlier one stays until the new one is done\n"
               "  --size WxH                    pixels, 1 to 8192 a side (default 1280x720)\n"
               "  --view NAME                   overview (default), south-west, north-east, top or front: the\n"
               "                                whole site, filling the picture\n"
               "  --camera ex,ey,ez,tx,ty,tz    or an eye and a target, in millimetres\n"
               "  --date yyyy-MM-dd             the site as it stands on that day of its schedule, with the caption\n"
               "  --title TEXT                  a title over the caption's date\n"
               "  --no-caption                  no caption\n"
               "example: kvxhost render site.kvx --out site.png --size 1920x1080 --date 2025-03-20\n"},
    {"play", "usage: kvxhost play FILE.kvx --out FILE.mp4 [options]\n"
             "Checks the document's schedule (as check does), then films it off screen: H.264 MP4, 24 frames\n"
             "a second, the date in a caption.\n"
             "  --out FILE.mp4                the video; an earlier one stays until the new one is done\n"
             "  --size WxH                    pixels, 1 to 4094 a side (default 1280x720); an odd side is\n"
             "                                written one pixel larger\n"
             "  --seconds-per-day S           how long a day of the schedule lasts in the film (default 1)\n"
             "  --poster PICTURE              also a picture of the site 60 % through the film\n"
             "  --view NAME | --camera ...    where the camera stands, as for render\n"
             "  --title TEXT                  a title over the caption's date\n"
             "  --no-caption                  no caption\n"
             "  --force                       film even with the check's problems (a film over an hour, records\n"
             "                                that cannot play)\n"
             "example: kvxhost play site.kvx --out schedule.mp4 --seconds-per-day 0.25 --poster schedule.png\n"},
    {"export", "usage: kvxhost export FILE.kvx --out FILE.mp4 [options]\n"
               "Films the document's fly-through (two camera key frames at least) off screen: H.264 MP4, 24 frames\n"
               "a second, the schedule following the date key frames, the date in a caption.\n"
               "  --out FILE.mp4                the video; an earlier one stays until the new one is done\n"
               "  --size WxH                    pixels, 1 to 4094 a side (default 1280x720); an odd side is\n"
               "                                written one pixel larger\n"
               "  --title TEXT                  a title over the caption's date\n"
               "  --no-caption                  no caption\n"
               "  --force                       film a fly-through over an hour long\n"
               "example: kvxhost export site.kvx --out flight.mp4 --size 1920x1080 --title \"East side\"\n"},
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
    {"check", "usage: kvxhost check FILE.kvx [--seconds-per-day S]\n"
              "Checks the document's schedule before a film: records whose element is missing, whose dates are\n"
              "impossible or reversed, records of one element that overlap, a span over ten years and a film\n"
              "over 20 minutes (over an hour, play refuses it without --force). Exits 1 when a problem stands\n"
              "in the way of a film.\n"
              "  --seconds-per-day S           the film's speed, as for play (default 1)\n"
              "example: kvxhost check site.kvx --seconds-per-day 0.25\n"},
    {"list", "usage: kvxhost list FILE.kvx\n"
             "Prints the document's elements (handle, kind, name), the model's extents, its schedule's records\n"
             "(number, kind, element, dates) and its fly-through's key frames.\n"
             "example: kvxhost list site.kvx\n"},
    {"live", "usage: kvxhost live FILE.kvx --endpoint URL --out FILE.mp4 [options]\n"
             "Films the document's tower cranes following live readings of the site monitoring platform: a\n"
             "reading is asked for every five seconds of film, the jib turns to each reported angle and the\n"
             "crane stands at the reported height; the caption names the reading. Failed readings are told\n"
             "once and the last good one stays.\n"
             "  --endpoint URL                the platform's latest-reading address (http:// or https://)\n"
             "  --header \"Name: value\"       an access header sent with each request, e.g. a token\n"
             "  --out FILE.mp4                the video; an earlier one stays until the new one is done\n"
             "  --seconds S                   how long the film lasts (default 30)\n"
             "  --size WxH                    pixels, 1 to 4094 a side (default 1280x720)\n"
             "  --view NAME | --camera ...    where the camera stands, as for render\n"
             "  --title TEXT | --no-caption   a title over the caption, or no caption\n"
             "example: kvxhost live site.kvx --endpoint http://127.0.0.1:8765/ --out live.mp4 --seconds 20\n"},
    {"crane-sim", "usage: kvxhost crane-sim --port N [options]\n"
                  "Stands in for the site monitoring platform: serves crane readings in the platform's reply shape\n"
                  "on http://127.0.0.1:N/ (the loopback address only) until stopped. By default the crane slews\n"
                  "0-150 degrees and back, 15 degrees a reading, and climbs 6 m every twelve readings from 30 m.\n"
                  "  --port N                      the port, 0 for any free one (printed)\n"
                  "  --script FILE                 readings replayed from JSON lines: {\"rotation\": 30, \"height\": 36},\n"
                  "                                optionally \"returnCode\", \"status\" (HTTP) or \"body\"\n"
                  "  --slow MS                     answer that many milliseconds late (-1: never)\n"
                  "  --fail-every N                every n-th answer an HTTP 500\n"
                  "  --damaged                     bodies cut in half\n"
                  "example: kvxhost crane-sim --port 8765 --fail-every 10\n"},
    {"import", "usage: kvxhost import FILE.kvx MODEL.ifc|.glb|.gltf|.obj|.stl [--out FILE.kvx]\n"
               "Imports a building model into the document (a new one when FILE.kvx does not exist yet): every\n"
               "product with a shape becomes an element with its triangles in millimetres, its colour, and its\n"
               "GlobalId, name, type, storey and storey elevation; spaces and openings are left out. Mesh models\n"
               "(glTF, OBJ, STL) are taken in metres with Y up, a node an element. The model is\n"
               "read in a separate process, so that a damaged file cannot bring anything down. Prints a summary:\n"
               "products found, imported, skipped and why, and the elements whose shells are not closed.\n"
               "  --out FILE.kvx                where to save (default: FILE.kvx itself)\n"
               "example: kvxhost import site.kvx duplex.ifc --out site-with-duplex.kvx\n"},
    {"schedule",
     "usage: kvxhost schedule FILE.kvx SCHEDULE.xer|.xml|.csv|MODEL.ifc [--rules RULES.txt] [--out FILE.kvx]\n"
     "Reads a schedule (P6 XER, Microsoft Project XML, a CSV table, or the work schedule inside an IFC\n"
     "file), links its tasks to the document's elements and adds a record for each task and element:\n"
     "construction from the bottom up, demolition for tasks named so (拆除, demolish), emphasis for\n"
     "milestones. Importing a changed schedule again moves the records it made instead of adding more.\n"
     "Prints the link report: tasks and elements linked, tasks without elements, elements without a\n"
     "task, elements claimed by several tasks and which task won.\n"
     "  --rules RULES.txt             how tasks find their elements, one rule a line, e.g.\n"
     "                                  storey = wbs      (the element's storey is a level of the task's WBS)\n"
     "                                  storey in name    (the storey is written in the task's name)\n"
     "                                  property Mark = code      name prefix code\n"
     "                                  type pattern \"Ifc{name}*\"   storey = wbs and type = activity\n"
     "                                  link A1010 GLOBALID...    table links.csv\n"
     "                                  demolition 拆除 demolish  layered IfcSlab 150\n"
     "                                default: storey = name, storey = wbs, name = name, name = code\n"
     "  --out FILE.kvx                where to save (default: FILE.kvx itself)\n"
     "example: kvxhost schedule site.kvx programme.xer --rules by-storey.txt\n"},
    {"4d", "usage: kvxhost 4d MODEL.ifc [SCHEDULE] [--rules RULES.txt] --out FILM.mp4 [--size WxH]\n"
           "          [--seconds-per-day S] [--title TEXT] [--no-caption] [--force]\n"
           "From a model and its schedule to a finished film in one go: imports the model, reads the\n"
           "schedule (the one given, else the IFC file's own work schedule, else a DRAFT by storey and\n"
           "element type, foundations first and roofs last, labelled as a draft), links it as the\n"
           "schedule command does, checks it and films it with the date caption. Prints each step and\n"
           "when it began.\n"
           "example: kvxhost 4d tower.ifc programme.xml --rules by-storey.txt --out tower-4d.mp4\n"},
    {"read-model", "usage: kvxhost read-model MODEL.ifc\n"
                   "The import's reading process: streams the model's products to standard output in the\n"
                   "import's own binary form. Not meant to be run by hand.\n"},
};

} // namespace

QString KvxCommandLineHelp::Usage()
{
    QStringList commands = KvxCommandLineOptions::Commands();
    // The import's own reading process is not for people.
    commands.removeAll(QStringLiteral("read-model"));
    return QStringLiteral("usage: kvxhost COMMAND [FILE] [options], COMMAND: %1; kvxhost --help tells more")
        .arg(commands.join(QStringLiteral(", ")));
}

QString KvxCommandLineHelp::Of(const QString& command)
{
    for (const CommandHelp& help : kHelp)
        if (command == QLatin1String(help.command))
            return QString::fromUtf8(help.text);
    return QString();
}

QString KvxCommandLineHelp::All()
{
    QString text = QStringLiteral("kvxhost: the construction site's model, schedule and films from the command line.\n"
                                  "Exit codes: 0 done, 1 failed while running, 2 bad usage.\n\n");
    for (const CommandHelp& help : kHelp)
        text += QString::fromUtf8(help.text) + QLatin1Char('\n');
    return text;
}
