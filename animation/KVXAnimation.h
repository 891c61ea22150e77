#pragma once

#include "host/model/KVXBaseObject.h"
#include "host/vpe/core/CReferenced.h"

#include <QDate>
#include <QString>

// One schedule animation: an element (by object id), the days it runs and
// how it shows: built or demolished by a moving cut plane or layer by layer,
// moved along a path, rotated, or emphasised. It draws as a red polyline (the
// route of a path animation). The scene pointers are set by playback and
// never owned by the record.
class KVXAnimation : public KVXBaseObject {
    PFRX_DECLARE_MEMBERS(KVXAnimation)
public:
    enum AnimType { Construction = 0, Demolition = 1, Path = 2, Rotation = 3, Emphasis = 4 };
    enum TranslationType {
        LeftToRight = 0,
        RightToLeft = 1,
        FrontToBack = 2,
        BackToFront = 3,
        BottomUp = 4,
        TopDown = 5,
    };

    KVXAnimation();
    KVXAnimation(int number, qint64 objId, AnimType type, TranslationType translation);
    KVXAnimation(const KVXAnimation& other);
    ~KVXAnimation() override;

    Pfad::Error CopyFrom(const PfRxObject* other) override;
    void getElementPropertys(KVXSaveLoadXml& xml) override;
    void setElementPropertys(KVXSaveLoadXml& xml) override;
    bool draw2d(PfGiWorldDraw* draw, vpe::CSceneNode*& node) override;
    bool draw3d(PfGiWorldDraw* draw, vpe::CSceneNode*& node) override;

    QString getAnimationTypeName() const;

    // The animated element's node in the active view; null without one.
    vpe::CSceneNode* getNode() const;
    double getMinimumElevation() const;
    double getMaxmumElevation() const;
    double getMinimumAngle() const { return 0.0; }
    double getMaxmumAngle() const { return 180.0; }
    vpe::CVec3<double> calCenterPt() const;
    vpe::CVec3<double> getCenterPt() const { return calCenterPt(); }
    void resumeNodeOfRouteAnimation();

    bool getVisibleFroAnimation() const { return m_visibleForAnimation; }
    void setVisibleFroAnimation(bool visible) { m_visibleForAnimation = visible; }
    int getNumber() const { return m_number; }
    void setNumber(int number) { m_number = number; }
    qint64 getObjId() const { return m_objId; }
    // Counted in ElementChanges when it changes the element.
    void setObjId(qint64 objId);
    // How many times any record's element changed (set, copied, undone or
    // read from a document): what indexes of records by element compare
    // with to know they are out of date.
    static quint64 ElementChanges();
    const QDate& getStartDate() const { return m_startDate; }
    void setStartDate(const QDate& date) { m_startDate = date; }
    const QDate& getEndDate() const { return m_endDate; }
    void setEndDate(const QDate& date) { m_endDate = date; }
    int getDurationDays() const { return m_durationDays; }
    void setDurationDays(int days) { m_durationDays = days; }
    AnimType getAnimationType() const { return m_animationType; }
    void setAnimationType(AnimType type) { m_animationType = type; }
    bool getLoopPlayback() const { return m_loopPlayback; }
    void setLoopPlayback(bool loop) { m_loopPlayback = loop; }
    const QDate& getLoopEndDate() const { return m_loopEndDate; }
    void setLoopEndDate(const QDate& date) { m_loopEndDate = date; }
    const vpe::CVec3<double>& getAnimStartPoint() const { return m_animStartPoint; }
    void setAnimStartPoint(const vpe::CVec3<double>& point) { m_animStartPoint = point; }
    const vpe::CVec3<double>& getAnimEndPoint() const { return m_animEndPoint; }
    void setAnimEndPoint(const vpe::CVec3<double>& point) { m_animEndPoint = point; }
    vpe::CAnimation* getAnimation() const { return m_animation; }
    void setAnimation(vpe::CAnimation* animation) { m_animation = animation; }
    vpe::CAnimator* getAnimator() const { return m_animator; }
    void setAnimator(vpe::CAnimator* animator) { m_animator = animator; }
    double getStartAngle() const { return m_startAngle; }
    void setStartAngle(double degrees) { m_startAngle = degrees; }
    double getEndAngle() const { return m_endAngle; }
    void setEndAngle(double degrees) { m_endAngle = degrees; }
    TranslationType getTranslationType() const { return m_translationType; }
    void setTranslationType(TranslationType type) { m_translationType = type; }
    bool getPlaying() const { return m_playing; }
    void setPlaying(bool playing) { m_playing = playing; }
    vpe::CSceneNode* getAntiNode() const { return m_antiNode; }
    void setAntiNode(vpe::CSceneNode* node) { m_antiNode = node; }
    bool getPlayed() const { return m_played; }
    void setPlayed(bool played) { m_played = played; }
    double getPathRotateAngel() const { return m_pathRotateAngle; }
    void setPathRotateAngle(double degrees) { m_pathRotateAngle = degrees; }
    bool getIsLayering() const { return m_isLayering; }
    void setIsLayering(bool layering) { m_isLayering = layering; }
    double getLayerHeight() const { return m_layerHeight; }
    void setLayerHeight(double height) { m_layerHeight = height; }
    vpe::CSceneNode* getRouteParentNode() const { return m_routeParentNode.get(); }
    void setRouteParentNode(vpe::CSceneNode* node);
    vpe::CSceneNode* getRouteNode() const { return m_routeNode.get(); }
    void setRouteNode(vpe::CSceneNode* node);

private:
    void initData();
    // False when there is no node or its box is empty.
    bool elementBounds(vpe::CVec3<double>& min, vpe::CVec3<double>& max) const;

    bool m_visibleForAnimation = true;
    int m_number = 0;
    qint64 m_objId = 0;
    QDate m_startDate;
    QDate m_endDate;
    int m_durationDays = 0;
    AnimType m_animationType = Construction;
    bool m_loopPlayback = false;
    QDate m_loopEndDate;
    vpe::CVec3<double> m_animStartPoint{0.0, 0.0, 0.0};
    vpe::CVec3<double> m_animEndPoint{0.0, 0.0, 0.0};
    vpe::CAnimation* m_animation = nullptr;
    vpe::CAnimator* m_animator = nullptr;
    double m_startAngle = 0.0;
    double m_endAngle = 0.0;
    TranslationType m_translationType = LeftToRight;
    bool m_playing = false;
    vpe::CSceneNode* m_antiNode = nullptr;
    bool m_played = false;
    double m_pathRotateAngle = 0.0;
    bool m_isLayering = false;
    double m_layerHeight = 0.0;
    vpe::CRefPtr<vpe::CSceneNode> m_routeParentNode;
    vpe::CRefPtr<vpe::CSceneNode> m_routeNode;
};
