#include "KVXTowerAnimation.h"

#include "KVXDateFormat.h"
#include "host/db/KVXSaveLoadXml.h"
#include "host/rx/PfRxClass.h"

#include <algorithm>

PFRX_DEFINE_MEMBERS(KVXTowerAnimation, KVXAnimation, &PfRxCreateInstance<KVXTowerAnimation>)

namespace {
const QString kSizeKey = QStringLiteral("TowerAnimation_LiftingData_Size");
const QString kDateKeyPrefix = QStringLiteral("TowerAnimation_Date_");
const QString kHeightKeyPrefix = QStringLiteral("TowerAnimation_Height_");
const QString kDismantleKey = QStringLiteral("TowerAnimation_Dismantle");
const QString kDismantleDateKey = QStringLiteral("TowerAnimation_Dismantle_Date");
} // namespace

KVXTowerAnimation::KVXTowerAnimation() = default;

KVXTowerAnimation::KVXTowerAnimation(const KVXTowerAnimation& other) = default;

KVXTowerAnimation::KVXTowerAnimation(int number, qint64 objId, KVXAnimation::AnimType type,
                                     KVXAnimation::TranslationType translation)
    : KVXAnimation(number, objId, type, translation), m_isDismantle(false), m_dismantleDate(QDate::currentDate())
{
}

KVXTowerAnimation::~KVXTowerAnimation() = default;

void KVXTowerAnimation::setElementPropertys(KVXSaveLoadXml& xml)
{
    KVXAnimation::setElementPropertys(xml);
    xml.setInt(kSizeKey, m_liftingData.size());
    for (int i = 0; i < m_liftingData.size(); ++i) {
        xml.setString(kDateKeyPrefix + QString::number(i), KVXDateFormat::toText(m_liftingData[i].date));
        xml.setInt(kHeightKeyPrefix + QString::number(i), m_liftingData[i].height);
    }
    xml.setBool(kDismantleKey, m_isDismantle);
    xml.setString(kDismantleDateKey, KVXDateFormat::toText(m_dismantleDate));
}

void KVXTowerAnimation::getElementPropertys(KVXSaveLoadXml& xml)
{
    KVXAnimation::getElementPropertys(xml);
    // Loading replaces the schedule: undo reloads records that already hold one.
    m_liftingData.clear();
    // A damaged count cannot ask for more steps than the archive holds keys.
    const int count = std::min(xml.getInt(kSizeKey), static_cast<int>(xml.size()));
    for (int i = 0; i < count; ++i) {
        KVXTowerLiftingData step;
        step.date = KVXDateFormat::fromText(xml.getString(kDateKeyPrefix + QString::number(i)));
        step.height = xml.getInt(kHeightKeyPrefix + QString::number(i));
        m_liftingData.append(step);
    }
    m_isDismantle = xml.getBool(kDismantleKey);
    const QString dismantleDate = xml.getString(kDismantleDateKey);
    m_dismantleDate = dismantleDate.isEmpty() ? QDate::currentDate() : KVXDateFormat::fromText(dismantleDate);
}
