#include "PfModelElements.h"

#include "KVX3DElementObject.h"
#include "KVX3dsBaseObject.h"
#include "KVXTowerCraneObject.h"
#include "PfDbBuildingInstance.h"

const PfDbElement* PfModelElements::Of(const PfDbObject* object)
{
    if (KVX3DElementObject::Cast(object) || KVX3dsBaseObject::Cast(object) || PfDbBuildingInstance::Cast(object))
        return PfDbElement::Cast(object);
    // A plain polyline is drawn; what derives from it here (animation
    // records, key frames) is not part of the model.
    if (object && object->IsA() == KVXBaseObject::Desc())
        return PfDbElement::Cast(object);
    return nullptr;
}

QString PfModelElements::KindOf(const PfDbElement* element)
{
    const QString type = element->Property(PfDbElement::kTypeProperty);
    if (!type.isEmpty())
        return type;
    if (KVXTowerCraneObject::Cast(element))
        return QStringLiteral("塔吊");
    if (KVX3DElementObject::Cast(element))
        return QStringLiteral("三维构件");
    if (PfDbBuildingInstance::Cast(element))
        return QStringLiteral("建筑");
    if (KVX3dsBaseObject::Cast(element))
        return QStringLiteral("外部模型");
    if (element->IsA() == KVXBaseObject::Desc())
        return QStringLiteral("线");
    return QStringLiteral("其他构件");
}
