#include "KVXKeyFramesCommand.h"

#include "KVXCameraKeyFramesTrack.h"
#include "KVXDateKeyFramesTrack.h"
#include "KVXKeyFrameAnimationManager.h"
#include "KVXVideoSettings.h"
#include "animation/KVXScheduleCheck.h"
#include "host/db/PfDocManager.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <map>

const wchar_t* const KVXKeyFramesCommand::kCommandName = L"KVX_KEY_FRAMES";
const wchar_t* const KVXKeyFramesCommand::kExportCommandName = L"KVX_EXPORT_FLY_THROUGH";

namespace {
// The target printed for a camera: any point on its line of sight gives the
// same camera back; one metre ahead reads well.
constexpr double kTargetDistance = 1000.0;

struct Words {
    QString add, camera, date, remove;
};

Pfad::Error refuse(QString* message, const QString& reason)
{
    if (message)
        *message = reason;
    return Pfad::eInvalidInput;
}

bool parseTime(const QString& text, int& ms)
{
    bool ok = false;
    ms = text.toInt(&ok);
    return ok && ms >= 0;
}

bool parseCamera(const QString& text, vpe::CCamera& camera)
{
    const QStringList parts = text.split(QLatin1Char(','));
    if (parts.size() != 6)
        return false;
    double v[6];
    for (int i = 0; i < 6; ++i) {
        bool ok = false;
        v[i] = parts[i].trimmed().toDouble(&ok);
        if (!ok || !std::isfinite(v[i]))
            return false;
    }
    const vpe::CVec3<double> eye(v[0], v[1], v[2]);
    const vpe::CVec3<double> target(v[3], v[4], v[5]);
    if ((target - eye).length() <= 0.0)
        return false;
    camera.SetLookAt(eye, target);
    return true;
}

QString triple(double x, double y, double z)
{
    return QStringLiteral("%1,%2,%3").arg(x, 0, 'f', 0).arg(y, 0, 'f', 0).arg(z, 0, 'f', 0);
}
} // namespace

Pfad::Error KVXKeyFramesCommand::RunCommand(const QStringList& arguments, QString* message)
{
    Words words;
    for (const QString& word : arguments) {
        const QString key = word.section(QLatin1Char('='), 0, 0);
        const QString value = word.section(QLatin1Char('='), 1);
        QString* slot = key == QLatin1String("add")      ? &words.add
                        : key == QLatin1String("camera") ? &words.camera
                        : key == QLatin1String("date")   ? &words.date
                        : key == QLatin1String("delete") ? &words.remove
                                                         : nullptr;
        if (!slot || !word.contains(QLatin1Char('=')))
            return refuse(message, QStringLiteral("unknown word \"%1\"").arg(word));
        *slot = value;
    }
    if (!PfDocManagerPtr()->CurrentDocument())
        return refuse(message, QStringLiteral("no document is open"));
    KVXKeyFrameAnimationManager* manager = KVXKeyFrameAnimationManager::GetInstance();
    int ms = 0;
    if (!words.remove.isEmpty()) {
        if (!words.add.isEmpty() || !words.camera.isEmpty() || !words.date.isEmpty())
            return refuse(message, QStringLiteral("delete takes no other word"));
        if (!parseTime(words.remove, ms))
            return refuse(message, QStringLiteral("the time wants whole milliseconds from 0, not \"%1\"").arg(words.remove));
        if (!manager->DeleteKeyFramesAt(ms)) {
            if (message)
                *message = QStringLiteral("there is no key frame at %1 ms").arg(ms);
            return Pfad::eKeyNotFound;
        }
    } else if (!words.add.isEmpty()) {
        if (!parseTime(words.add, ms))
            return refuse(message, QStringLiteral("the time wants whole milliseconds from 0, not \"%1\"").arg(words.add));
        vpe::CRefPtr<vpe::CCamera> camera = new vpe::CCamera;
        if (!parseCamera(words.camera, *camera))
            return refuse(message, QStringLiteral("a key frame wants camera=ex,ey,ez,tx,ty,tz with eye and target "
                                                  "apart, not \"%1\"")
                                       .arg(words.camera));
        const QDate date = QDate::fromString(words.date, QStringLiteral("yyyy-MM-dd"));
        if (!words.date.isEmpty() && !date.isValid())
            return refuse(message, QStringLiteral("the date wants yyyy-MM-dd, not \"%1\"").arg(words.date));
        const QString refusal = manager->CreateKeyFrameAt(ms, *camera, date);
        if (!refusal.isEmpty())
            return refuse(message, refusal);
    } else if (!words.camera.isEmpty() || !words.date.isEmpty()) {
        return refuse(message, QStringLiteral("camera and date go with add"));
    } else {
        manager->InitAnimationData();
    }
    if (message)
        *message = Listing();
    return Pfad::eOk;
}

Pfad::Error KVXKeyFramesCommand::RunExportCommand(const QStringList& arguments, QString* message)
{
    QString out;
    QString size = QStringLiteral("1280x720");
    QString title;
    bool caption = true;
    bool force = false;
    for (const QString& word : arguments) {
        const QString key = word.section(QLatin1Char('='), 0, 0);
        if (word == QLatin1String("force"))
            force = true;
        else if (key == QLatin1String("out"))
            out = word.section(QLatin1Char('='), 1);
        else if (key == QLatin1String("size"))
            size = word.section(QLatin1Char('='), 1);
        else if (key == QLatin1String("title"))
            title = word.section(QLatin1Char('='), 1);
        else if (word == QLatin1String("caption=off"))
            caption = false;
        else
            return refuse(message, QStringLiteral("unknown word \"%1\"").arg(word));
    }
    const QString path = out.isEmpty() ? out : QFileInfo(out).absoluteFilePath();
    const QString problem = KVXVideoSettings::Problem(path, size);
    if (!problem.isEmpty())
        return refuse(message, problem);
    KVXKeyFrameAnimationManager::VideoOptions options;
    KVXVideoSettings::ParseResolution(size, options.width, options.height);
    options.fileName = path.toStdWString();
    KVXKeyFrameAnimationManager* manager = KVXKeyFrameAnimationManager::GetInstance();
    manager->InitAnimationData();
    // Most often a mistyped time: found out before hours of filming.
    const double length = manager->getAnimationVideoLength();
    if (length > KVXScheduleCheck::kFilmLimitSeconds && !force) {
        if (message)
            *message = QStringLiteral("the fly-through would last %1, over the limit of %2: check the key frames' "
                                      "times")
                           .arg(KVXScheduleCheck::Duration(length), KVXScheduleCheck::Duration(
                                                                        KVXScheduleCheck::kFilmLimitSeconds));
        return Pfad::eNotApplicable;
    }
    manager->SetFilmCaption(caption, title);
    QString reason;
    const bool exported = manager->ExportVideo(options, &reason);
    manager->SetFilmCaption(true);
    if (!exported) {
        if (message)
            *message = reason;
        return Pfad::eNotApplicable;
    }
    if (message)
        *message = QStringLiteral("%1 s of fly-through, %2 frames").arg(manager->getAnimationVideoLength())
                       .arg(static_cast<int>(manager->getAnimationVideoLength() * options.frameRate));
    return Pfad::eOk;
}

QString KVXKeyFramesCommand::Listing()
{
    struct Moment {
        const KVXCameraKeyFrame* camera = nullptr;
        const KVXDateKeyFrame* date = nullptr;
    };
    KVXKeyFrameAnimationManager* manager = KVXKeyFrameAnimationManager::GetInstance();
    std::multimap<int, Moment> moments;
    int cameras = 0, dates = 0;
    if (KVXCameraKeyFramesTrack* track = manager->GetCameraKeyFramesTrack())
        for (PfDbObject* object : *track)
            if (auto* keyFrame = KVXCameraKeyFrame::Cast(object); keyFrame && ++cameras)
                moments.insert({keyFrame->GetTime(), Moment{keyFrame, nullptr}});
    if (KVXDateKeyFramesTrack* track = manager->GetDateKeyFramesTrack())
        for (PfDbObject* object : *track)
            if (auto* keyFrame = KVXDateKeyFrame::Cast(object); keyFrame && ++dates) {
                // Beside a camera key frame of its moment that has no date yet.
                auto range = moments.equal_range(keyFrame->GetTime());
                auto free = std::find_if(range.first, range.second, [](const auto& m) { return !m.second.date; });
                if (free != range.second)
                    free->second.date = keyFrame;
                else
                    moments.insert({keyFrame->GetTime(), Moment{nullptr, keyFrame}});
            }
    QString text = QStringLiteral("%1 camera and %2 date key frames, %3 s of fly-through\n")
                       .arg(cameras)
                       .arg(dates)
                       .arg(manager->getAnimationVideoLength());
    for (const auto& [time, moment] : moments) {
        QString eye = QStringLiteral("-"), target = QStringLiteral("-");
        if (const vpe::CCamera* camera = moment.camera ? moment.camera->GetCamera() : nullptr) {
            const vpe::CVec3<double> e(camera->GetPosition());
            vpe::CVec3<double> d(camera->GetDirection());
            d.normalize();
            const vpe::CVec3<double> t = e + d * kTargetDistance;
            eye = triple(e.x(), e.y(), e.z());
            target = triple(t.x(), t.y(), t.z());
        }
        const QString date = moment.date ? moment.date->GetDate().toString(QStringLiteral("yyyy-MM-dd"))
                                         : QStringLiteral("-");
        text += QStringLiteral("%1 ms  eye %2  target %3  date %4\n").arg(time).arg(eye, target, date);
    }
    return text;
}
