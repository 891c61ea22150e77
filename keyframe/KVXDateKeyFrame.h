#pragma once

#include "KVXKeyFrame.h"

#include <QDate>

// Pins a schedule date to a moment, so that schedule playback can follow the
// camera. The date is kept as three integers; 0, 0, 0 (the default) is the
// invalid date.
class KVXDateKeyFrame : public KVXKeyFrame {
    PFRX_DECLARE_MEMBERS(KVXDateKeyFrame)
public:
    KVXDateKeyFrame();
    explicit KVXDateKeyFrame(unsigned int time);
    KVXDateKeyFrame(const KVXDateKeyFrame& other);

    void SetDate(const QDate& date);
    void SetDate(int year, int month, int day);
    QDate GetDate() const { return QDate(m_year, m_month, m_day); }

    void getElementPropertys(KVXSaveLoadXml& xml) override;
    void setElementPropertys(KVXSaveLoadXml& xml) override;

private:
    int m_year = 0;
    int m_month = 0;
    int m_day = 0;
};
