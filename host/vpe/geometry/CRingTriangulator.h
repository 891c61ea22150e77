#pragma once

#include "CBody.h"

#include <osg/Vec2d>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vpe {

// Ear clipping of one ring, with holes joined in by bridges. The ring is a
// doubly linked list of nodes over the points; a bridge doubles the nodes at
// its two ends, so a point may appear more than once. A candidate ear that
// holds any point of the ring holds a reflex (or straight) one, so only those
// are kept as blockers to test against.
class CRingTriangulator {
public:
    using Ring = std::vector<std::uint32_t>;

    // sign: +1 for a counter-clockwise ring, -1 for a clockwise one.
    CRingTriangulator(const std::vector<osg::Vec2d>& points, const Ring& ring, double sign);
    void AddHoles(std::vector<const Ring*> holes);
    void Triangulate(std::vector<CBody::Triangle>& triangles);

private:
    struct Node {
        std::uint32_t index;
        int prev;
        int next;
        bool reflex = false;
        bool blocker = false;
        bool removed = false;
    };

    const osg::Vec2d& At(int node) const { return m_points[m_nodes[node].index]; }
    int AddNode(std::uint32_t index);
    int AddLoop(const Ring& ring);
    void Link(int a, int b);
    void AddHole(const Ring& hole);
    bool FindTouch(int hole, int& from, int& to) const;
    int FindBridge(int hole) const;
    int Nearest(const osg::Vec2d& p) const;
    int MostVisible(int hole, int candidate, double hitX) const;
    int Distinct(int node, bool forward) const;
    bool IsLocallyInside(int node, const osg::Vec2d& p) const;
    double Turn(int node) const;
    void UpdateReflex(int node);
    int RemoveFlat(int node, std::size_t& count, std::vector<CBody::Triangle>& triangles);
    void Clip(int node, std::vector<CBody::Triangle>& triangles);
    bool IsEar(int node, bool touchingBlocks) const;
    int FallbackEar(int node) const;
    void Remove(int node);
    void PruneBlockers();

    const std::vector<osg::Vec2d>& m_points;
    double m_sign;
    std::vector<Node> m_nodes;
    std::vector<int> m_blockers;
    std::size_t m_deadBlockers = 0;
    int m_start;
};

} // namespace vpe
