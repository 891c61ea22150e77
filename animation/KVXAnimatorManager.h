#pragma once

#include "KVXAnimation.h"
#include "KVXRecordIndex.h"
#include "KVXScheduleTimeScale.h"
#include "host/db/PfDbDatabaseReactor.h"
#include "host/vpe/core/CReferenced.h"
#include "host/vpe/scene/CGroupNode.h"
#include "keyframe/KVXSchedulePlayback.h"

#include <QDate>
#include <QObject>
#include <QString>

#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

class PfDbDatabase;
class PfDbDocument;
class KVXAnimationDocumentReactor;
class KVXAnimationSigns;

namespace vpe {
class CVectorText2D;
}

// The schedule animations of the current document: it numbers, creates,
// finds and deletes the records, drops those of erased elements, knows the
// schedule's date span and labels every animated element with the numbers of
// its records. The records belong to the document; the manager keeps plain
// pointers in creation (or load) order and, for the per-element queries, an
// index by element that keeps the same order. It is the date clock's
// schedule playback.
class KVXAnimatorManager : public QObject,
                           public PfDbDatabaseReactor,
                           public KVXSchedulePlayback,
                           public KVXRecordIndex {
    Q_OBJECT
    PFRX_DECLARE_MEMBERS(KVXAnimatorManager)
public:
    static KVXAnimatorManager* getInstance();

    // A new record on the element, numbered and added to the current
    // document; null for an unknown element.
    KVXAnimation* addKvxAnimation(qint64 objId, KVXAnimation::AnimType type,
                                  KVXAnimation::TranslationType translation);
    KVXAnimation* findKVXAnimation(int number) const override;
    std::vector<KVXAnimation*> getAnimationVector() const override { return m_animations; }
    // Appends the element's records in list order; out is not cleared.
    void GetALlAnimationByObjId(qint64 objId, std::vector<KVXAnimation*>& out) const override;
    std::vector<KVXAnimation*> findAnimationsByObjId(qint64 objId) const;
    void deleteKvxAnimation(int number);
    bool deleteAnimationByObjId(qint64 objId);
    // Copies the records onto another element as new records (dates, kind,
    // direction, angles, layering and path vertices; the new element keeps
    // its own number and cut range). The copies are appended to result.
    void CopyAnimationToElement(qint64 objId, std::vector<KVXAnimation*>& source,
                                std::vector<KVXAnimation*>& result);

    // Forgets every record (they stay in the document) and numbers from 1.
    void clearAnimations();
    // Takes the records of the current document, after the ones known.
    void readAnimationData();

    void objectErased(const PfDbDatabase* database, const PfDbObject* object, bool erasing) override;
    void goodbye(const PfDbDatabase* database) override;
    // Takes the document now current (null for none): hears its database,
    // holds its records and labels its animated elements.
    void followDocument(PfDbDocument* document);

    // The schedule's span: earliest start, latest end (loops included) and
    // its length in play seconds; the date clock gets length and range.
    void updateAllAnimationsDateRange();
    QDate getAllAnimationsStartDate() const { return m_timeScale->GetStartDate(); }
    QDate getAllAnimationsEndDate() const;
    double getAllAnimationsTimeLength() const { return m_allTimeLength; }
    double getAnimationTimeAtDate(const QDate& date) const;
    double getDayToSeconds() const { return m_timeScale->GetSecondsPerDay(); }
    void setDayToSeconds(double seconds) { m_timeScale->SetSecondsPerDay(seconds); }
    // The schedule's dates in play time, kept up to date by the two above:
    // what playback hands its frame callbacks.
    const KVXScheduleTimeScale* getTimeScale() const { return m_timeScale.get(); }

    // ---- conflicts ----
    enum ConflictKind { InvalidDateRange = 0, Overlapping = 1, ElementNotFound = 2 };
    struct ConflictInfo {
        int number = 0;
        // The other record of an overlap; 0 for the other kinds.
        int conflictNumber = 0;
        int kind = InvalidDateRange;
    };
    // Rebuilds the error map (one entry per faulty record); without an
    // active view the last map stays.
    void checkAnimations();
    std::map<int, ConflictInfo> getErrorMap() const { return m_errorMap; }
    // The other records of the same element whose days contain the record's
    // start or end day, in list order.
    std::vector<ConflictInfo> findConflictAnimation(KVXAnimation* anim) const;
    // Whether [start, end] may be given to the record: neither end falls in
    // the days of another record of its element.
    bool isLegalTime(KVXAnimation* anim, const QDate& start, const QDate& end) const;

    // ---- playback: 0 stopped, 1 playing, 2 paused ----
    int getPlayState() const { return m_playState; }
    bool isPreviewing() const override { return m_isPreviewing; }
    void play();
    // Playing: pause; paused: play on; stopped: nothing.
    void pause();
    // Every record left as it ends and its engine animation dropped.
    void stop();
    // Plays with the labels hidden, and puts the model back at the end.
    void preview();
    void stopPreview(bool keepScene);
    // Shows the schedule as it stands on that day, paused there.
    void playAnimationAtDate(const QDate& date);
    void animationFinish(KVXAnimation* record);
    // Clip planes, moved nodes and overlays of every record taken away.
    void resumeScene();
    // Enables the engine animator of every record that has one.
    void startAnimators() override;
    // Makes the path polylines invisible outside playback.
    void setAllPathInvisable();

    // Rebuilds every element's label in the current viewer.
    void resetSigns();
    // The element's label; null when it has none.
    vpe::CVectorText2D* findSign(qint64 objId) const;
    // The group of the labels; null until a viewer showed one.
    vpe::CGroupNode* signGroupNode() const;
    void setSignsVisible(bool visible);
    bool getSignsVisible() const;

signals:
    void isPreviewingSignal(bool isPreviewing);
    void dataChangedSignal();

public slots:
    void stopSlot() override;

private:
    KVXAnimatorManager();
    ~KVXAnimatorManager() override;

    KVXAnimation* createAnimation(qint64 objId, KVXAnimation::AnimType type,
                                  KVXAnimation::TranslationType translation);
    void appendRecord(KVXAnimation* record);
    void unindexRecord(KVXAnimation* record);
    // Files every record again under its element when any record's element
    // changed since the index was made.
    void ensureElementIndex() const;
    void removeFromDocument(KVXAnimation* record);
    // An undo or redo that erases or brings back a record's object takes it
    // out of the schedule or puts it back in its place.
    void followRecordErased(KVXAnimation* record, bool erasing);
    void clearVPEAnimations();
    void createPlayAnimations();
    void initScene();
    // The controller keeps the engine's frame loop going while the schedule
    // plays (an animation of no node on the viewer's default timer).
    void startAnimTimer(float seconds);
    void stopAnimTimer();
    void pauseAnimTimer();
    void ResumeAnimTimer();

    void addSignToScence(int number);
    void deleteSign(int number);
    void attachDatabase(PfDbDatabase* database);

    static KVXAnimatorManager* m_instance;
    static int m_newNumber;

    std::map<int, KVXAnimation*> m_animationsByNumber;
    std::vector<KVXAnimation*> m_animations;
    // Each element's records in list order.
    // Records by element, in list order; remade on use when a record's
    // element changed (ensureElementIndex).
    mutable std::unordered_map<qint64, std::vector<KVXAnimation*>> m_animationsByObjId;
    mutable quint64 m_indexedElementChanges = 0;

    // Start date and seconds per day.
    vpe::CRefPtr<KVXScheduleTimeScale> m_timeScale;
    double m_allTimeLength = 0.0;

    int m_playState = 0;
    bool m_isPreviewing = false;
    std::map<int, ConflictInfo> m_errorMap;

    std::unique_ptr<KVXAnimationSigns> m_signs;
    PfDbDatabase* m_database = nullptr;
    std::unique_ptr<KVXAnimationDocumentReactor> m_documentReactor;
};
