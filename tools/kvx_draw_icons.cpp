// Draws the module's icons into resources/icons/ (run by hand after a change:
// kvx_draw_icons <resources/icons>). The pictures are plain shapes, so that
// they need no font and come out the same on every machine.

#include <QCoreApplication>
#include <QDir>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>

#include <cstdio>
#include <functional>

namespace {
constexpr int kSize = 32;
const QColor kInk(70, 78, 90);
const QColor kGreen(46, 160, 67);
const QColor kRed(214, 62, 62);
const QColor kBlue(60, 130, 230);
const QColor kAmber(240, 160, 30);

using Drawing = std::function<void(QPainter&)>;

void diamond(QPainter& p, const QColor& fill)
{
    p.setPen(QPen(kInk, 1.5));
    p.setBrush(fill);
    p.drawPolygon(QPolygonF({QPointF(12, 4), QPointF(20, 12), QPointF(12, 20), QPointF(4, 12)}));
}

void badge(QPainter& p, const QColor& colour, bool plus)
{
    p.setPen(Qt::NoPen);
    p.setBrush(colour);
    p.drawEllipse(QPointF(23, 23), 8, 8);
    p.setPen(QPen(Qt::white, 2.5, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(19, 23), QPointF(27, 23));
    if (plus)
        p.drawLine(QPointF(23, 19), QPointF(23, 27));
}

void play(QPainter& p)
{
    p.setPen(Qt::NoPen);
    p.setBrush(kGreen);
    p.drawPolygon(QPolygonF({QPointF(9, 5), QPointF(27, 16), QPointF(9, 27)}));
}

void pause(QPainter& p)
{
    p.setPen(Qt::NoPen);
    p.setBrush(kAmber);
    p.drawRoundedRect(QRectF(8, 6, 6, 20), 1.5, 1.5);
    p.drawRoundedRect(QRectF(18, 6, 6, 20), 1.5, 1.5);
}

void stop(QPainter& p)
{
    p.setPen(Qt::NoPen);
    p.setBrush(kRed);
    p.drawRoundedRect(QRectF(7, 7, 18, 18), 2, 2);
}

void gear(QPainter& p)
{
    QPainterPath teeth;
    for (int i = 0; i < 8; ++i) {
        QTransform turn;
        turn.translate(16, 16).rotate(i * 45.0);
        teeth.addPolygon(turn.map(QPolygonF(QRectF(-3, -14, 6, 6))));
    }
    p.setPen(Qt::NoPen);
    p.setBrush(kInk);
    p.drawPath(teeth.simplified());
    p.drawEllipse(QPointF(16, 16), 10, 10);
    p.setBrush(Qt::white);
    p.drawEllipse(QPointF(16, 16), 4, 4);
}

void warning(QPainter& p)
{
    p.setPen(Qt::NoPen);
    p.setBrush(kAmber);
    p.drawPolygon(QPolygonF({QPointF(16, 3), QPointF(30, 28), QPointF(2, 28)}));
    p.setPen(QPen(Qt::white, 3, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(16, 11), QPointF(16, 19));
    p.drawPoint(QPointF(16, 24));
}

void plusOrMinus(QPainter& p, bool plus)
{
    p.setPen(QPen(plus ? kGreen : kRed, 5, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(7, 16), QPointF(25, 16));
    if (plus)
        p.drawLine(QPointF(16, 7), QPointF(16, 25));
}

// A small play mark in the lower right, over what is played.
void playBadge(QPainter& p)
{
    p.setPen(QPen(Qt::white, 1.5));
    p.setBrush(kGreen);
    p.drawPolygon(QPolygonF({QPointF(17, 15), QPointF(31, 23), QPointF(17, 31)}));
}

// The schedule: a calendar sheet.
void schedule(QPainter& p)
{
    p.setPen(QPen(kInk, 1.5));
    p.setBrush(Qt::white);
    p.drawRoundedRect(QRectF(2, 5, 22, 20), 2, 2);
    p.setBrush(kRed);
    p.drawRect(QRectF(2, 5, 22, 5));
    p.setPen(QPen(kInk, 1));
    for (double x : {8.0, 13.0, 18.0})
        for (double y : {14.0, 19.0})
            p.drawPoint(QPointF(x, y));
    playBadge(p);
}

// A tower crane with a signal above the jib: live readings.
void liveCrane(QPainter& p)
{
    p.setPen(QPen(kAmber, 2.5, Qt::SolidLine, Qt::SquareCap));
    p.drawLine(QPointF(10, 30), QPointF(10, 9));
    p.drawLine(QPointF(3, 10), QPointF(29, 10));
    p.setPen(QPen(kInk, 1.5));
    p.drawLine(QPointF(10, 5), QPointF(3, 10));
    p.drawLine(QPointF(10, 5), QPointF(25, 10));
    p.drawLine(QPointF(24, 10), QPointF(24, 18));
    p.drawLine(QPointF(5, 30), QPointF(15, 30));
    p.setPen(QPen(kGreen, 2, Qt::SolidLine, Qt::RoundCap));
    p.setBrush(Qt::NoBrush);
    p.drawArc(QRectF(19, 1, 10, 10), 0, 90 * 16);
    p.drawArc(QRectF(15, -3, 18, 18), 0, 90 * 16);
}

bool save(const QDir& dir, const QString& name, const Drawing& draw)
{
    QImage image(kSize, kSize, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    draw(painter);
    painter.end();
    return image.save(dir.filePath(name), "PNG");
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: kvx_draw_icons <folder>\n");
        return 2;
    }
    const QDir root(QString::fromLocal8Bit(argv[1]));
    const QDir roaming(root.filePath(QStringLiteral("RoamingVideoPage")));
    const QDir construction(root.filePath(QStringLiteral("VirtualConstructionPage")));
    const QDir window(root.filePath(QStringLiteral("Application")));
    root.mkpath(QStringLiteral("Application"));
    root.mkpath(QStringLiteral("RoamingVideoPage"));
    root.mkpath(QStringLiteral("VirtualConstructionPage"));
    const struct {
        const QDir& dir;
        const char* name;
        Drawing draw;
    } icons[] = {
        {roaming, "add_key_frame.png", [](QPainter& p) { diamond(p, kBlue); badge(p, kGreen, true); }},
        {roaming, "delete_key_frame.png", [](QPainter& p) { diamond(p, kBlue); badge(p, kRed, false); }},
        {roaming, "play.png", play},
        {roaming, "pause.png", pause},
        {roaming, "stop.png", stop},
        {construction, "setting.png", gear},
        {construction, "play.png", play},
        {construction, "pause.png", pause},
        {construction, "stop.png", stop},
        {construction, "add.png", [](QPainter& p) { plusOrMinus(p, true); }},
        {construction, "delete.png", [](QPainter& p) { plusOrMinus(p, false); }},
        {construction, "conflict.png", warning},
        {window, "play_schedule.png", schedule},
        {window, "live_cranes.png", liveCrane},
    };
    for (const auto& icon : icons)
        if (!save(icon.dir, QString::fromLatin1(icon.name), icon.draw)) {
            std::fprintf(stderr, "cannot write %s\n", icon.name);
            return 1;
        }
    return 0;
}
