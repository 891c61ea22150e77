#include "KVXAnimationModel.h"

#include "animation/KVXAnimatorManager.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3dsBaseObject.h"
#include "host/model/KVXElementObject.h"
#include "host/model/PfDbBuildingInstance.h"

#include <QBrush>

namespace {

// The name of the animated element; empty when there is none.
QString elementName(qint64 objId)
{
    PfDbDocument* document = PfDocManagerPtr()->CurrentDocument();
    PfDbDatabase* database = document ? document->GetDatabase() : nullptr;
    PfDbObject* object = database ? database->OpenObject(static_cast<PfDbHandle>(objId)) : nullptr;
    if (!KVXElementObject::Cast(object) && !KVX3dsBaseObject::Cast(object) && !PfDbBuildingInstance::Cast(object))
        return QString();
    return QString::fromStdWString(PfDbElement::Cast(object)->GetName());
}

} // namespace

KVXAnimationModel::KVXAnimationModel(QObject* parent) : QStandardItemModel(parent) {}

KVXAnimationModel::~KVXAnimationModel() = default;

KVXAnimation* KVXAnimationModel::animationAt(int row) const
{
    return row >= 0 && row < static_cast<int>(m_animations.size()) ? m_animations[static_cast<std::size_t>(row)]
                                                                    : nullptr;
}

QVariant KVXAnimationModel::data(const QModelIndex& index, int role) const
{
    if (index.row() < 0 || index.column() < 0 || !index.model())
        return QVariant();
    const KVXAnimation* animation = animationAt(index.row());
    if (animation && role == Qt::DisplayRole) {
        switch (index.column()) {
        case 0: return animation->getNumber();
        case 1: return elementName(animation->getObjId());
        case 2: return animation->getAnimationTypeName();
        default: break;
        }
    }
    if (animation && role == Qt::ForegroundRole) {
        const std::map<int, KVXAnimatorManager::ConflictInfo> errors = KVXAnimatorManager::getInstance()->getErrorMap();
        if (errors.count(animation->getNumber()))
            return QBrush(Qt::red);
    }
    return QStandardItemModel::data(index, role);
}
