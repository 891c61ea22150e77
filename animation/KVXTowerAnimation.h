#pragma once

#include "KVXAnimation.h"
#include "KVXTowerLiftingData.h"

#include <QList>

// The animation record of a tower crane: a KVXAnimation plus the crane's
// lifting schedule and its dismantling date. CopyFrom is KVXAnimation's: it
// copies the record fields and leaves the lifting data of the target alone.
class KVXTowerAnimation : public KVXAnimation {
    PFRX_DECLARE_MEMBERS(KVXTowerAnimation)
public:
    KVXTowerAnimation();
    KVXTowerAnimation(const KVXTowerAnimation& other);
    KVXTowerAnimation(int number, qint64 objId, KVXAnimation::AnimType type,
                      KVXAnimation::TranslationType translation);
    ~KVXTowerAnimation() override;

    const QList<KVXTowerLiftingData>& GetLiftingData() const { return m_liftingData; }
    void SetLiftingData(const QList<KVXTowerLiftingData>& data) { m_liftingData = data; }
    bool GetIsDismantle() const { return m_isDismantle; }
    void SetIsDismantle(bool dismantle) { m_isDismantle = dismantle; }
    const QDate& GetDismantleDate() const { return m_dismantleDate; }
    void SetDismantleDate(const QDate& date) { m_dismantleDate = date; }

    void getElementPropertys(KVXSaveLoadXml& xml) override;
    void setElementPropertys(KVXSaveLoadXml& xml) override;

private:
    QList<KVXTowerLiftingData> m_liftingData;
    bool m_isDismantle = false;
    QDate m_dismantleDate;
};
