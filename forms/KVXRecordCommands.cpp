#include "KVXRecordCommands.h"

#include "KVXAnimationModel.h"
#include "KVXAnimationPropertyForm.h"
#include "KVXAnimationSequenceForm.h"
#include "animation/KVXAnimatorManager.h"
#include "animation/KVXPlatformAnimationManager.h"
#include "animation/KVXTowerAnimation.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbTransaction.h"
#include "host/db/PfDbTransactionManager.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/model/PfEdInformation.h"
#include "keyframe/KVXKeyFrameAnimationManager.h"
#include "keyframe/KVXScheduleDateLine.h"

#include <QDate>
#include <QTableView>

#include <osg/Vec3d>

namespace {

const QString kNotice = QStringLiteral("提示");
// A new record lasts a working week; the planner sets the real dates.
constexpr int kNewRecordDays = 5;

struct Shape {
    KVXAnimation::AnimType type;
    KVXAnimation::TranslationType direction;
};

Shape shapeOf(KVXRecordCommands::Kind kind)
{
    switch (kind) {
    case KVXRecordCommands::BuildBottomUp:
        return {KVXAnimation::Construction, KVXAnimation::BottomUp};
    case KVXRecordCommands::BuildTopDown:
        return {KVXAnimation::Construction, KVXAnimation::TopDown};
    case KVXRecordCommands::Demolish:
        return {KVXAnimation::Demolition, KVXAnimation::TopDown};
    case KVXRecordCommands::Move:
        return {KVXAnimation::Path, KVXAnimation::LeftToRight};
    case KVXRecordCommands::Rotate:
    case KVXRecordCommands::Crane:
        return {KVXAnimation::Rotation, KVXAnimation::LeftToRight};
    case KVXRecordCommands::Emphasise:
        return {KVXAnimation::Emphasis, KVXAnimation::LeftToRight};
    default:
        // Across the site and in layers: layers need a horizontal sweep.
        return {KVXAnimation::Construction, KVXAnimation::LeftToRight};
    }
}

// What the kind sets beyond its type and direction.
void shape(KVXAnimation* record, KVXRecordCommands::Kind kind, const std::vector<osg::Vec3d>& path,
           const KVXTowerCraneObject* crane)
{
    if (kind == KVXRecordCommands::BuildInLayers)
        record->setIsLayering(true);
    if (kind == KVXRecordCommands::Rotate)
        record->setEndAngle(90.0);
    if (kind == KVXRecordCommands::Move) {
        std::vector<vpe::CVec3<double>> points;
        for (const osg::Vec3d& point : path)
            points.push_back({point.x(), point.y(), point.z()});
        record->SetPoints(points);
    }
    auto* tower = KVXTowerAnimation::Cast(record);
    if (kind == KVXRecordCommands::Crane && tower && crane) {
        record->setStartAngle(0.0);
        record->setEndAngle(180.0);
        // Erected at its modelled height on the first day; the planner adds
        // the jacking steps in the lifting form.
        tower->SetLiftingData({{record->getStartDate(), crane->GetTowerHeight()}});
    }
}

// Why no element of the selection takes the kind; empty when one does.
QString refusal(KVXRecordCommands::Kind kind, const std::vector<PfDbHandle>& selected, PfDbDocument* document,
                const std::vector<osg::Vec3d>& path)
{
    if (!document)
        return QStringLiteral("没有打开的项目");
    if (selected.empty())
        return QStringLiteral("请先在视图中选择构件");
    if (kind == KVXRecordCommands::Move && path.size() < 2)
        return QStringLiteral("移动路径至少需要两个点");
    if (kind == KVXRecordCommands::Crane) {
        for (PfDbHandle handle : selected)
            if (KVXTowerCraneObject::Cast(document->GetItem(handle)))
                return QString();
        return QStringLiteral("所选构件中没有塔吊");
    }
    return QString();
}

void showInForms(KVXAnimation* first)
{
    KVXAnimationSequenceForm* list = KVXAnimationSequenceForm::getInstance();
    list->updateData();
    for (int row = 0; row < list->model()->rowCount(); ++row)
        if (list->model()->animationAt(row) == first)
            list->tableView()->selectRow(row);
    KVXAnimationPropertyForm* form = KVXAnimationPropertyForm::getInstance();
    form->setAnimation(first);
    form->updateData();
}

} // namespace

const std::vector<KVXRecordCommands::KindCommand>& KVXRecordCommands::Kinds()
{
    static const std::vector<KindCommand> kinds = {
        {BuildBottomUp, QStringLiteral("KVX_ADD_BUILD_BOTTOM_UP"), QStringLiteral("自下而上建造")},
        {BuildTopDown, QStringLiteral("KVX_ADD_BUILD_TOP_DOWN"), QStringLiteral("自上而下建造")},
        {BuildAcross, QStringLiteral("KVX_ADD_BUILD_ACROSS"), QStringLiteral("按方向建造")},
        {BuildInLayers, QStringLiteral("KVX_ADD_BUILD_IN_LAYERS"), QStringLiteral("分层建造")},
        {Demolish, QStringLiteral("KVX_ADD_DEMOLITION"), QStringLiteral("拆除")},
        {Move, QStringLiteral("KVX_ADD_PATH"), QStringLiteral("沿路径移动…")},
        {Rotate, QStringLiteral("KVX_ADD_ROTATION"), QStringLiteral("旋转")},
        {Emphasise, QStringLiteral("KVX_ADD_EMPHASIS"), QStringLiteral("强调")},
        {Crane, QStringLiteral("KVX_ADD_TOWER_CRANE"), QStringLiteral("塔吊回转与顶升")},
    };
    return kinds;
}

QDate KVXRecordCommands::FirstDayOfNewRecords()
{
    if (KVXScheduleDateLine* line = KVXKeyFrameAnimationManager::GetDateLineWidget();
        line && line->GetIndicator().isValid())
        return line->GetIndicator();
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    if (schedule->getAnimationVector().empty())
        return QDate::currentDate();
    schedule->updateAllAnimationsDateRange();
    return schedule->getAllAnimationsEndDate().addDays(1);
}

std::vector<KVXAnimation*> KVXRecordCommands::AddToSelection(Kind kind, const std::vector<osg::Vec3d>& path)
{
    PfDbDocument* document = PfDocManagerPtr()->CurrentDocument();
    const std::vector<PfDbHandle> selected =
        document ? document->GetSelectionSet().Ids() : std::vector<PfDbHandle>();
    if (const QString why = refusal(kind, selected, document, path); !why.isEmpty()) {
        PfEdInformation(why, kNotice);
        return {};
    }
    const QDate start = FirstDayOfNewRecords();
    const Shape kindShape = shapeOf(kind);
    PfDbTransactionManager* steps = document->GetDatabase()->TransactionManager();
    steps->StartTransaction()->SetName(QStringLiteral("添加动画"));
    std::vector<KVXAnimation*> added;
    for (PfDbHandle handle : selected) {
        const auto* crane = KVXTowerCraneObject::Cast(document->GetItem(handle));
        if (kind == Crane && !crane)
            continue;
        KVXAnimation* record = KVXAnimatorManager::getInstance()->addKvxAnimation(static_cast<qint64>(handle),
                                                                                kindShape.type, kindShape.direction);
        if (!record)
            continue;
        record->setStartDate(start);
        record->setEndDate(start.addDays(kNewRecordDays));
        record->setDurationDays(kNewRecordDays);
        shape(record, kind, path, crane);
        added.push_back(record);
    }
    steps->EndTransaction();
    if (added.empty()) {
        PfEdInformation(QStringLiteral("所选对象不是可以添加动画的构件"), kNotice);
        return added;
    }
    emit KVXAnimatorManager::getInstance()->dataChangedSignal();
    showInForms(added.front());
    return added;
}

bool KVXRecordCommands::StopAll()
{
    bool stopped = false;
    KVXKeyFrameAnimationManager* flight = KVXKeyFrameAnimationManager::GetInstance();
    if (flight->GetPlayState() != KVXKeyFrameAnimationManager::Stopped) {
        flight->StopAnimation();
        stopped = true;
    }
    KVXAnimatorManager* schedule = KVXAnimatorManager::getInstance();
    if (schedule->getPlayState() != 0 || schedule->isPreviewing()) {
        schedule->stop();
        stopped = true;
    }
    KVXPlatformAnimationManager* live = KVXPlatformAnimationManager::getInstance();
    if (live->getPlayingState() != KVXPlatformAnimationManager::Stopped) {
        live->stop();
        stopped = true;
    }
    return stopped;
}
