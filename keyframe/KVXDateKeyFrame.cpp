#include "KVXDateKeyFrame.h"

#include "host/db/KVXSaveLoadXml.h"
#include "host/rx/PfRxClass.h"

PFRX_DEFINE_MEMBERS(KVXDateKeyFrame, KVXKeyFrame, &PfRxCreateInstance<KVXDateKeyFrame>)

namespace {
const QString kYearKey = QStringLiteral("KVXDateKeyFrame::year_");
const QString kMonthKey = QStringLiteral("KVXDateKeyFrame::month_");
const QString kDayKey = QStringLiteral("KVXDateKeyFrame::day_");
} // namespace

KVXDateKeyFrame::KVXDateKeyFrame() = default;

KVXDateKeyFrame::KVXDateKeyFrame(unsigned int time) : KVXKeyFrame(time) {}

KVXDateKeyFrame::KVXDateKeyFrame(const KVXDateKeyFrame& other) = default;

void KVXDateKeyFrame::SetDate(const QDate& date) { SetDate(date.year(), date.month(), date.day()); }

void KVXDateKeyFrame::SetDate(int year, int month, int day)
{
    m_year = year;
    m_month = month;
    m_day = day;
}

void KVXDateKeyFrame::getElementPropertys(KVXSaveLoadXml& xml)
{
    KVXKeyFrame::getElementPropertys(xml);
    m_year = xml.getInt(kYearKey);
    m_month = xml.getInt(kMonthKey);
    m_day = xml.getInt(kDayKey);
}

void KVXDateKeyFrame::setElementPropertys(KVXSaveLoadXml& xml)
{
    KVXKeyFrame::setElementPropertys(xml);
    xml.setInt(kYearKey, m_year);
    xml.setInt(kMonthKey, m_month);
    xml.setInt(kDayKey, m_day);
}
