#include "KVXKeyFrame.h"

#include "host/db/KVXSaveLoadXml.h"
#include "host/rx/PfRxClass.h"

PFRX_DEFINE_MEMBERS(KVXKeyFrame, KVXBaseObject, &PfRxCreateInstance<KVXKeyFrame>)

namespace {
// Written without a class prefix, unlike the keys of the derived classes.
const QString kTimeKey = QStringLiteral("KeyFrame::time_");
} // namespace

KVXKeyFrame::KVXKeyFrame() : m_time(0) {}

KVXKeyFrame::KVXKeyFrame(unsigned int time) : m_time(static_cast<int>(time)) {}

KVXKeyFrame::KVXKeyFrame(const KVXKeyFrame& other) = default;

void KVXKeyFrame::getElementPropertys(KVXSaveLoadXml& xml)
{
    KVXBaseObject::getElementPropertys(xml);
    m_time = xml.getInt(kTimeKey);
}

void KVXKeyFrame::setElementPropertys(KVXSaveLoadXml& xml)
{
    KVXBaseObject::setElementPropertys(xml);
    xml.setInt(kTimeKey, m_time);
}
