#pragma once

#include "KVX3DElementObject.h"

// A tower crane: where it stands (the foot of the mast), how high its tower
// is (the top of the mast when fully climbed) and how long its jib. The
// being-animated byte marks the crane as driven by one animation callback at
// a time; it is a playback flag, not saved.
//
// It draws a group of four parts in this order, so that animations can move
// them apart: the slewing jib (with counter-jib and trolley), the upper
// works (turntable, cab, tower head), the mast, and a group holding one node
// per wall tie. Everything is in model coordinates.
class KVXTowerCraneObject : public KVX3DElementObject {
    PFRX_DECLARE_MEMBERS(KVXTowerCraneObject)
public:
    enum Part { JibPart = 0, UpperWorksPart = 1, MastPart = 2, TiesPart = 3 };
    // Height between two wall ties, and the lowest one.
    static constexpr double kTieSpacing = 20000.0;

    KVXTowerCraneObject();

    // What a real crane can be, in millimetres: its drawing is a lattice
    // whose size follows these, so a wild value would take all memory.
    static constexpr int kLowestTower = 3000;
    static constexpr int kHighestTower = 400000;
    static constexpr double kShortestJib = 5000.0;
    static constexpr double kLongestJib = 120000.0;

    const vpe::CVec3<double>& GetPosition() const { return m_position; }
    // Each coordinate kept within kFarthest (0 for one that is not a number).
    void SetPosition(const vpe::CVec3<double>& position);
    int GetTowerHeight() const { return m_towerHeight; }
    // Kept between kLowestTower and kHighestTower.
    void SetTowerHeight(int height);
    double GetJibLength() const { return m_jibLength; }
    // Kept between kShortestJib and kLongestJib (the shortest for NaN).
    void SetJibLength(double length);
    unsigned char GetBeingAnimated() const { return m_beingAnimated; }
    void SetBeingAnimated(unsigned char value) { m_beingAnimated = value; }

    Pfad::Error CopyFrom(const PfRxObject* other) override;

    void getElementPropertys(KVXSaveLoadXml& xml) override;
    void setElementPropertys(KVXSaveLoadXml& xml) override;
    bool draw3d(PfGiWorldDraw* draw, vpe::CSceneNode*& node) override;

private:
    vpe::CVec3<double> m_position{0.0, 0.0, 0.0};
    int m_towerHeight = 40000;
    double m_jibLength = 50000.0;
    unsigned char m_beingAnimated = 0;
};
