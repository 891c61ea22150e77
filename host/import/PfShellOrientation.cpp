#include "PfShellOrientation.h"

#include <algorithm>
#include <queue>
#include <unordered_map>
#include <utility>

namespace {

using Triangle = PfShellOrientation::Triangle;

std::uint64_t edgeKey(std::uint32_t a, std::uint32_t b)
{
    return (std::uint64_t(std::min(a, b)) << 32) | std::max(a, b);
}

// Whether the triangle runs from a to b (rather than from b to a).
bool runs(const Triangle& t, std::uint32_t a, std::uint32_t b)
{
    for (int i = 0; i < 3; ++i)
        if (t[i] == a && t[(i + 1) % 3] == b)
            return true;
    return false;
}

void flip(Triangle& t) { std::swap(t[1], t[2]); }

// Measured from the part's own middle: for a closed part any point gives
// the same volume, and for an open one (a shell with a hole) the middle
// still tells inside from outside, where a far origin would not; it also
// keeps far-off site coordinates from eating the digits.
double signedVolume(const std::vector<osg::Vec3d>& v, const std::vector<Triangle>& triangles,
                    const std::vector<std::size_t>& part)
{
    osg::Vec3d middle;
    for (std::size_t i : part)
        middle += v[triangles[i][0]];
    middle /= double(part.size());
    double volume = 0.0;
    for (std::size_t i : part) {
        const Triangle& t = triangles[i];
        volume += (v[t[0]] - middle) * ((v[t[1]] - middle) ^ (v[t[2]] - middle));
    }
    return volume / 6.0;
}

} // namespace

PfShellOrientation::Shape PfShellOrientation::Orient(const std::vector<osg::Vec3d>& vertices,
                                                     std::vector<Triangle>& triangles)
{
    // The triangles on each undirected edge.
    std::unordered_map<std::uint64_t, std::vector<std::size_t>> edges;
    edges.reserve(triangles.size() * 2);
    for (std::size_t i = 0; i < triangles.size(); ++i)
        for (int k = 0; k < 3; ++k)
            edges[edgeKey(triangles[i][k], triangles[i][(k + 1) % 3])].push_back(i);

    bool open = false, nonManifold = false;
    for (const auto& edge : edges) {
        open = open || edge.second.size() == 1;
        nonManifold = nonManifold || edge.second.size() > 2;
    }

    // Each connected part wound like its first triangle, across the edges
    // two triangles share (an edge of more is no guide).
    std::vector<char> seen(triangles.size(), 0);
    for (std::size_t start = 0; start < triangles.size(); ++start) {
        if (seen[start])
            continue;
        std::vector<std::size_t> part;
        std::queue<std::size_t> next;
        next.push(start);
        seen[start] = 1;
        while (!next.empty()) {
            const std::size_t i = next.front();
            next.pop();
            part.push_back(i);
            for (int k = 0; k < 3; ++k) {
                const std::uint32_t a = triangles[i][k], b = triangles[i][(k + 1) % 3];
                const std::vector<std::size_t>& sharing = edges[edgeKey(a, b)];
                if (sharing.size() != 2)
                    continue;
                const std::size_t j = sharing[0] == i ? sharing[1] : sharing[0];
                if (j == i)
                    continue;
                // A neighbour wound alike runs the shared edge the other way.
                const bool alike = runs(triangles[j], b, a);
                if (!seen[j]) {
                    if (!alike)
                        flip(triangles[j]);
                    seen[j] = 1;
                    next.push(j);
                } else if (!alike) {
                    nonManifold = true;
                }
            }
        }
        if (signedVolume(vertices, triangles, part) < 0.0)
            for (std::size_t i : part)
                flip(triangles[i]);
    }
    if (nonManifold)
        return Shape::NonManifold;
    return open ? Shape::Open : Shape::Closed;
}
