#include "KVXAnimatorManager.h"

#include "KVXAnimControlCallback.h"
#include "KVXAnimationDocumentReactor.h"
#include "KVXAnimationNames.h"
#include "KVXAnimationSigns.h"
#include "KVXPlayAnimationBuilder.h"
#include "KVXScheduleScene.h"
#include "KVXTowerAnimation.h"
#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocument.h"
#include "host/db/PfDbObjContainer.h"
#include "host/db/PfDocManager.h"
#include "host/model/KVX3dsBaseObject.h"
#include "host/model/KVXTowerCraneObject.h"
#include "host/model/PfGsUtility.h"
#include "host/rx/PfRxClass.h"
#include "host/vpe/render/CViewer.h"
#include "keyframe/KVXDateAnimationClockTimer.h"
#include "keyframe/KVXScheduleDateClock.h"

#include <algorithm>
#include <unordered_set>

PFRX_DEFINE_MEMBERS(KVXAnimatorManager, PfDbDatabaseReactor, nullptr)

KVXAnimatorManager* KVXAnimatorManager::m_instance = nullptr;
int KVXAnimatorManager::m_newNumber = 0;

namespace {

PfDbDocument* currentDocument() { return PfDocManagerPtr()->CurrentDocument(); }

KVXDateAnimationClockTimer* dateClock() { return KVXScheduleDateClock::Get(); }

// The end of a record's days, its loop included.
QDate lastDayOf(const KVXAnimation* record)
{
    if (record->getLoopPlayback() && record->getLoopEndDate() > record->getEndDate())
        return record->getLoopEndDate();
    return record->getEndDate();
}

} // namespace

KVXAnimatorManager::KVXAnimatorManager()
    : m_timeScale(new KVXScheduleTimeScale),
      m_signs(std::make_unique<KVXAnimationSigns>(*this)),
      m_documentReactor(std::make_unique<KVXAnimationDocumentReactor>(
          [this](PfDbDocument* document) { followDocument(document); }))
{
    KVXScheduleDateClock::SetSchedulePlayback(this);
}

KVXAnimatorManager::~KVXAnimatorManager() = default;

KVXAnimatorManager* KVXAnimatorManager::getInstance()
{
    if (!m_instance) {
        if (!Desc()) {
            PfDbDatabaseReactor::Desc();
            RxInit();
        }
        m_instance = new KVXAnimatorManager();
    }
    return m_instance;
}

// ---- records -------------------------------------------------------------

KVXAnimation* KVXAnimatorManager::createAnimation(qint64 objId, KVXAnimation::AnimType type,
                                                  KVXAnimation::TranslationType translation)
{
    PfDbDocument* document = currentDocument();
    PfDbObject* item = document ? document->GetItem(static_cast<PfDbHandle>(objId)) : nullptr;
    if (!item)
        return nullptr;
    const int number = ++m_newNumber;
    if (KVXTowerCraneObject::Cast(item))
        return new KVXTowerAnimation(number, objId, type, translation);
    return new KVXAnimation(number, objId, type, translation);
}

KVXAnimation* KVXAnimatorManager::addKvxAnimation(qint64 objId, KVXAnimation::AnimType type,
                                                  KVXAnimation::TranslationType translation)
{
    KVXAnimation* record = createAnimation(objId, type, translation);
    if (!record)
        return nullptr;
    appendRecord(record);
    if (PfDbDocument* document = currentDocument())
        document->GetDatabase()->GetModelSpace()->Add(record);
    addSignToScence(record->getNumber());
    return record;
}

void KVXAnimatorManager::ensureElementIndex() const
{
    if (m_indexedElementChanges == KVXAnimation::ElementChanges())
        return;
    m_indexedElementChanges = KVXAnimation::ElementChanges();
    m_animationsByObjId.clear();
    for (KVXAnimation* record : m_animations)
        m_animationsByObjId[record->getObjId()].push_back(record);
}

void KVXAnimatorManager::appendRecord(KVXAnimation* record)
{
    ensureElementIndex();
    m_animations.push_back(record);
    m_animationsByNumber.emplace(record->getNumber(), record);
    m_animationsByObjId[record->getObjId()].push_back(record);
}

void KVXAnimatorManager::unindexRecord(KVXAnimation* record)
{
    ensureElementIndex();
    auto it = m_animationsByObjId.find(record->getObjId());
    if (it == m_animationsByObjId.end())
        return;
    std::vector<KVXAnimation*>& records = it->second;
    records.erase(std::remove(records.begin(), records.end(), record), records.end());
    if (records.empty())
        m_animationsByObjId.erase(it);
}

void KVXAnimatorManager::removeFromDocument(KVXAnimation* record)
{
    PfDbDocument* document = currentDocument();
    if (document && record->GetDatabase() == document->GetDatabase())
        document->GetDatabase()->GetModelSpace()->Remove(record);
}

KVXAnimation* KVXAnimatorManager::findKVXAnimation(int number) const
{
    auto it = m_animationsByNumber.find(number);
    return it == m_animationsByNumber.end() ? nullptr : it->second;
}

void KVXAnimatorManager::GetALlAnimationByObjId(qint64 objId, std::vector<KVXAnimation*>& out) const
{
    ensureElementIndex();
    auto it = m_animationsByObjId.find(objId);
    if (it != m_animationsByObjId.end())
        out.insert(out.end(), it->second.begin(), it->second.end());
}

std::vector<KVXAnimation*> KVXAnimatorManager::findAnimationsByObjId(qint64 objId) const
{
    std::vector<KVXAnimation*> records;
    GetALlAnimationByObjId(objId, records);
    return records;
}

void KVXAnimatorManager::deleteKvxAnimation(int number)
{
    auto entry = m_animationsByNumber.find(number);
    if (entry == m_animationsByNumber.end())
        return;
    deleteSign(number);
    m_animationsByNumber.erase(entry);
    auto it = std::find_if(m_animations.begin(), m_animations.end(),
                           [number](const KVXAnimation* record) { return record->getNumber() == number; });
    if (it == m_animations.end())
        return;
    KVXAnimation* record = *it;
    removeFromDocument(record);
    if (record->getAnimationType() == KVXAnimation::Path)
        PfGsUtility::Refresh();
    unindexRecord(record);
    m_animations.erase(it);
}

bool KVXAnimatorManager::deleteAnimationByObjId(qint64 objId)
{
    ensureElementIndex();
    auto it = m_animationsByObjId.find(objId);
    if (it == m_animationsByObjId.end())
        return false;
    const std::vector<KVXAnimation*> records = it->second;
    // All of the element's records go, so its label goes with them.
    m_signs->Remove(objId);
    const std::unordered_set<const KVXAnimation*> doomed(records.begin(), records.end());
    m_animations.erase(std::remove_if(m_animations.begin(), m_animations.end(),
                                      [&doomed](const KVXAnimation* record) { return doomed.count(record) > 0; }),
                       m_animations.end());
    m_animationsByObjId.erase(it);
    for (KVXAnimation* record : records) {
        auto byNumber = m_animationsByNumber.find(record->getNumber());
        if (byNumber != m_animationsByNumber.end() && byNumber->second == record)
            m_animationsByNumber.erase(byNumber);
        if (record->getAnimationType() == KVXAnimation::Path)
            PfGsUtility::ShowObject(static_cast<PfDbHandle>(record->getObjId()));
        removeFromDocument(record);
    }
    return true;
}

void KVXAnimatorManager::CopyAnimationToElement(qint64 objId, std::vector<KVXAnimation*>& source,
                                                std::vector<KVXAnimation*>& result)
{
    for (const KVXAnimation* original : source) {
        if (!original)
            continue;
        KVXAnimation* copy = addKvxAnimation(objId, original->getAnimationType(), original->getTranslationType());
        if (!copy)
            return;
        // The copy keeps what belongs to its element: number, element and
        // the cut range measured on it.
        const int number = copy->getNumber();
        const vpe::CVec3<double> start = copy->getAnimStartPoint();
        const vpe::CVec3<double> end = copy->getAnimEndPoint();
        copy->CopyFrom(original);
        copy->setNumber(number);
        copy->setObjId(objId);
        copy->setAnimStartPoint(start);
        copy->setAnimEndPoint(end);
        copy->setAnimation(nullptr);
        copy->setAnimator(nullptr);
        copy->setAntiNode(nullptr);
        copy->setPlaying(false);
        copy->setPlayed(false);
        if (copy->GetDatabase())
            copy->GetDatabase()->NotifyModified(copy);
        result.push_back(copy);
    }
}

void KVXAnimatorManager::clearAnimations()
{
    m_animations.clear();
    m_animationsByNumber.clear();
    m_animationsByObjId.clear();
    m_newNumber = 0;
}

void KVXAnimatorManager::readAnimationData()
{
    PfDbDocument* document = currentDocument();
    PfDbObjContainer* modelSpace = document ? document->GetDatabase()->GetModelSpace() : nullptr;
    if (!modelSpace)
        return;
    int largest = 0;
    for (PfDbObject* object : *modelSpace) {
        KVXAnimation* record = KVXAnimation::Cast(object);
        if (!record)
            continue;
        largest = std::max(largest, record->getNumber());
        record->setAnimation(nullptr);
        record->setAnimator(nullptr);
        appendRecord(record);
    }
    m_newNumber = largest;
    setAllPathInvisable();
    emit dataChangedSignal();
}

// ---- the database ----------------------------------------------------------

void KVXAnimatorManager::followDocument(PfDbDocument* document)
{
    m_signs->Drop();
    clearAnimations();
    attachDatabase(document ? document->GetDatabase() : nullptr);
    if (document) {
        readAnimationData();
        resetSigns();
    } else {
        emit dataChangedSignal();
    }
}

void KVXAnimatorManager::attachDatabase(PfDbDatabase* database)
{
    if (database == m_database)
        return;
    if (m_database)
        m_database->RemoveReactor(this);
    m_database = database;
    if (m_database)
        m_database->AddReactor(this);
}

void KVXAnimatorManager::objectErased(const PfDbDatabase* database, const PfDbObject* object, bool erasing)
{
    if (!object)
        return;
    if (const KVXAnimation* record = KVXAnimation::Cast(object)) {
        if (database == m_database)
            followRecordErased(const_cast<KVXAnimation*>(record), erasing);
        return;
    }
    if (!erasing)
        return;
    if (!KVXElementObject::Cast(object) && !KVX3dsBaseObject::Cast(object))
        return;
    const PfDbHandle handle = object->GetHandle();
    if (handle == kPfDbNullHandle)
        return;
    if (deleteAnimationByObjId(static_cast<qint64>(handle)))
        emit dataChangedSignal();
}

void KVXAnimatorManager::followRecordErased(KVXAnimation* record, bool erasing)
{
    const auto listed = m_animationsByNumber.find(record->getNumber());
    const bool isListed = listed != m_animationsByNumber.end() && listed->second == record;
    if (erasing == !isListed)
        return;
    if (erasing) {
        deleteSign(record->getNumber());
        m_animationsByNumber.erase(listed);
        unindexRecord(record);
        m_animations.erase(std::remove(m_animations.begin(), m_animations.end(), record), m_animations.end());
    } else {
        // Back in creation order, which numbers follow.
        auto place = std::find_if(m_animations.begin(), m_animations.end(), [record](const KVXAnimation* each) {
            return each->getNumber() > record->getNumber();
        });
        m_animations.insert(place, record);
        m_animationsByNumber[record->getNumber()] = record;
        // The element index is remade on its next use, in list order.
        m_indexedElementChanges = ~KVXAnimation::ElementChanges();
        m_newNumber = std::max(m_newNumber, record->getNumber());
        addSignToScence(record->getNumber());
    }
    emit dataChangedSignal();
}

void KVXAnimatorManager::goodbye(const PfDbDatabase* database)
{
    if (database == m_database)
        m_database = nullptr;
}

// ---- the date span ---------------------------------------------------------

void KVXAnimatorManager::updateAllAnimationsDateRange()
{
    QDate start(9999, 1, 1);
    QDate latestEnd; // invalid: below every valid date
    if (m_animations.empty()) {
        start = latestEnd = QDate::currentDate();
    } else {
        for (const KVXAnimation* record : m_animations) {
            // A record with a damaged date has no place on the calendar; it
            // must not drag the whole schedule to an invalid start.
            const QDate& recordStart = record->getStartDate();
            if (recordStart.isValid() && recordStart < start)
                start = recordStart;
            const QDate last = lastDayOf(record);
            if (last.isValid() && last > latestEnd)
                latestEnd = last;
        }
        if (!latestEnd.isValid())
            latestEnd = start;
    }
    m_timeScale->SetStartDate(start);
    m_allTimeLength = m_timeScale->TimeAt(latestEnd);
    if (KVXDateAnimationClockTimer* clock = dateClock()) {
        clock->SetEndTime(m_allTimeLength);
        clock->SetDateRange(start, latestEnd);
    }
}

QDate KVXAnimatorManager::getAllAnimationsEndDate() const
{
    const QDate& start = m_timeScale->GetStartDate();
    const double dayToSeconds = m_timeScale->GetSecondsPerDay();
    if (dayToSeconds == 0.0)
        return start;
    return start.addDays(static_cast<qint64>(m_allTimeLength / dayToSeconds));
}

double KVXAnimatorManager::getAnimationTimeAtDate(const QDate& date) const { return m_timeScale->TimeAt(date); }

// ---- conflicts ----------------------------------------------------------

std::vector<KVXAnimatorManager::ConflictInfo> KVXAnimatorManager::findConflictAnimation(KVXAnimation* anim) const
{
    std::vector<ConflictInfo> conflicts;
    ensureElementIndex();
    auto it = anim ? m_animationsByObjId.find(anim->getObjId()) : m_animationsByObjId.end();
    if (it == m_animationsByObjId.end())
        return conflicts;
    for (const KVXAnimation* other : it->second) {
        if (other == anim)
            continue;
        const QDate& from = other->getStartDate();
        const QDate to = lastDayOf(other);
        const auto within = [&](const QDate& day) { return day >= from && day <= to; };
        // Only the record's own end, never its loop end.
        if (within(anim->getStartDate()) || within(anim->getEndDate()))
            conflicts.push_back({anim->getNumber(), other->getNumber(), Overlapping});
    }
    return conflicts;
}

void KVXAnimatorManager::checkAnimations()
{
    PfDbDocument* document = currentDocument();
    if (!document || !PfGsUtility::ActiveView())
        return;
    m_errorMap.clear();
    for (KVXAnimation* record : m_animations) {
        const int number = record->getNumber();
        const QDate& start = record->getStartDate();
        if (!document->GetItem(static_cast<PfDbHandle>(record->getObjId()))) {
            m_errorMap[number] = {number, 0, ElementNotFound};
        } else if (!start.isValid() || !record->getEndDate().isValid() || start >= record->getEndDate() ||
                   (record->getLoopPlayback() && start >= record->getLoopEndDate())) {
            m_errorMap[number] = {number, 0, InvalidDateRange};
        } else {
            // Of several overlaps the last in list order stays.
            for (const ConflictInfo& conflict : findConflictAnimation(record))
                m_errorMap[conflict.number] = conflict;
        }
    }
}

bool KVXAnimatorManager::isLegalTime(KVXAnimation* anim, const QDate& start, const QDate& end) const
{
    ensureElementIndex();
    auto it = anim ? m_animationsByObjId.find(anim->getObjId()) : m_animationsByObjId.end();
    if (it == m_animationsByObjId.end())
        return true;
    for (const KVXAnimation* other : it->second) {
        if (other == anim)
            continue;
        const QDate& from = other->getStartDate();
        const QDate to = lastDayOf(other);
        // Only the two ends are tested: a range that encloses another passes.
        if ((start >= from && start <= to) || (end >= from && end <= to))
            return false;
    }
    return true;
}

// ---- playback --------------------------------------------------------------

void KVXAnimatorManager::createPlayAnimations()
{
    updateAllAnimationsDateRange();
    KVXDateAnimationClockTimer* clock = dateClock();
    if (clock)
        clock->Rewind();
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer || !clock)
        return;
    const KVXPlayAnimationBuilder builder(currentDocument(), viewer, clock, m_timeScale.get(), m_allTimeLength);
    for (const auto& entry : m_animationsByNumber) {
        KVXAnimation* record = entry.second;
        if (!record->getAnimation() && !record->getAnimator()) {
            builder.Build(record);
            record->setPlayed(false);
        } else if (vpe::CAnimator* animator = record->getAnimator()) {
            animator->Enable();
        }
    }
}

void KVXAnimatorManager::initScene() { KVXScheduleScene::HideUnbuilt(m_animations); }

void KVXAnimatorManager::play()
{
    KVXDateAnimationClockTimer* clock = dateClock();
    if (m_playState == 0) {
        createPlayAnimations();
        initScene();
        if (clock)
            clock->Rewind();
        startAnimTimer(static_cast<float>(m_allTimeLength));
    } else if (m_playState == 2) {
        ResumeAnimTimer();
    }
    if (m_allTimeLength > 0.01 && clock) {
        // After a jump to a date the clock stands frozen there: playing goes
        // on from that date.
        clock->SetFrozen(false);
        clock->Pause(false);
        m_playState = 1;
    }
}

void KVXAnimatorManager::pause()
{
    if (m_playState == 1) {
        m_playState = 2;
        if (KVXDateAnimationClockTimer* clock = dateClock())
            clock->Pause(true);
        pauseAnimTimer();
    } else if (m_playState == 2) {
        play();
    }
}

void KVXAnimatorManager::stop()
{
    if (KVXDateAnimationClockTimer* clock = dateClock())
        clock->Rewind();
    for (KVXAnimation* record : m_animations) {
        if (record->getAnimator())
            animationFinish(record);
    }
    clearVPEAnimations();
    stopAnimTimer();
    m_playState = 0;
}

void KVXAnimatorManager::stopSlot()
{
    if (m_isPreviewing)
        stopPreview(false);
    else
        stop();
}

void KVXAnimatorManager::preview()
{
    m_isPreviewing = true;
    setSignsVisible(false);
    play();
    emit isPreviewingSignal(true);
}

void KVXAnimatorManager::stopPreview(bool keepScene)
{
    stop();
    if (!keepScene)
        resumeScene();
    m_isPreviewing = false;
    emit isPreviewingSignal(false);
    setSignsVisible(true);
}

void KVXAnimatorManager::playAnimationAtDate(const QDate& date)
{
    if (!PfGsUtility::CurrentViewer())
        return;
    createPlayAnimations();
    if (KVXDateAnimationClockTimer* clock = dateClock())
        clock->FreezeAtDate(date);
    m_playState = 2;
}

void KVXAnimatorManager::animationFinish(KVXAnimation* record) { KVXScheduleScene::Finish(record); }

void KVXAnimatorManager::resumeScene() { KVXScheduleScene::Restore(m_animationsByNumber); }

void KVXAnimatorManager::clearVPEAnimations()
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer)
        return;
    vpe::CAnimationManager* engine = viewer->GetAnimationManager();
    for (KVXAnimation* record : m_animations) {
        vpe::CAnimation* animation = record->getAnimation();
        if (!animation)
            continue;
        const std::string name = animation->GetName();
        engine->DestroyAnimation(name);
        engine->DestroyAnimator(name);
        record->setAnimation(nullptr);
        record->setAnimator(nullptr);
    }
}

void KVXAnimatorManager::startAnimators()
{
    for (KVXAnimation* record : m_animations) {
        if (vpe::CAnimator* animator = record->getAnimator())
            animator->Enable();
    }
    if (vpe::CViewer* viewer = PfGsUtility::CurrentViewer())
        viewer->SetDirty();
}

void KVXAnimatorManager::startAnimTimer(float seconds)
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer)
        return;
    vpe::CAnimationManager* engine = viewer->GetAnimationManager();
    const std::string name = KVXAnimationNames::kAnimControllerName;
    engine->DestroyAnimator(name);
    engine->DestroyAnimation(name);
    vpe::CAnimation* animation = engine->CreateAnimation(name, seconds + 1.0);
    animation->SetFrameCallback(nullptr, new KVXAnimControlCallback(this));
    vpe::CAnimator* animator = engine->CreateAnimator(name, animation);
    animator->Enable();
    animator->Reset();
}

void KVXAnimatorManager::stopAnimTimer()
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    if (!viewer)
        return;
    vpe::CAnimationManager* engine = viewer->GetAnimationManager();
    const std::string name = KVXAnimationNames::kAnimControllerName;
    if (vpe::CAnimator* animator = engine->FindAnimator(name))
        animator->Disable();
    engine->DestroyAnimator(name);
    engine->DestroyAnimation(name);
}

namespace {

// The schedule's engine controller in the current viewer; null without one.
vpe::CAnimator* controllerAnimator()
{
    vpe::CViewer* viewer = PfGsUtility::CurrentViewer();
    return viewer ? viewer->GetAnimationManager()->FindAnimator(KVXAnimationNames::kAnimControllerName) : nullptr;
}

} // namespace

void KVXAnimatorManager::pauseAnimTimer()
{
    if (vpe::CAnimator* animator = controllerAnimator())
        animator->Pause();
}

void KVXAnimatorManager::ResumeAnimTimer()
{
    if (vpe::CAnimator* animator = controllerAnimator())
        animator->Resume();
}

void KVXAnimatorManager::setAllPathInvisable()
{
    for (KVXAnimation* record : m_animations) {
        if (record->getAnimationType() != KVXAnimation::Path || !record->getVisibleFroAnimation())
            continue;
        record->setVisibleFroAnimation(false);
        if (PfDbDatabase* database = record->GetDatabase())
            database->NotifyModified(record);
    }
}

// ---- signs -----------------------------------------------------------------

void KVXAnimatorManager::setSignsVisible(bool visible) { m_signs->SetVisible(visible); }

bool KVXAnimatorManager::getSignsVisible() const { return m_signs->IsVisible(); }

vpe::CVectorText2D* KVXAnimatorManager::findSign(qint64 objId) const { return m_signs->Find(objId); }

vpe::CGroupNode* KVXAnimatorManager::signGroupNode() const { return m_signs->GroupNode(); }

void KVXAnimatorManager::addSignToScence(int number) { m_signs->Add(number); }

void KVXAnimatorManager::deleteSign(int number) { m_signs->Delete(number); }

void KVXAnimatorManager::resetSigns() { m_signs->Reset(); }
