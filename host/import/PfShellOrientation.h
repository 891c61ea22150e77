#pragma once

#include <osg/Vec3d>

#include <array>
#include <cstdint>
#include <vector>

// Makes a shell fit for cutting: its triangles wound consistently across
// every shared edge, then outward (each connected part turned so that its
// volume is positive). The vertices are used as they are: coordinates are
// never welded, since welding makes touching shells non-manifold.
class PfShellOrientation {
public:
    using Triangle = std::array<std::uint32_t, 3>;

    enum class Shape {
        Closed,      // every edge used by exactly two triangles, once each way
        Open,        // some edge used by one triangle only
        NonManifold, // some edge used by more than two triangles, or two that
                     // cannot be wound consistently (a Möbius strip)
    };

    // Re-winds the triangles in place; answers what shape the shell has then.
    static Shape Orient(const std::vector<osg::Vec3d>& vertices, std::vector<Triangle>& triangles);
};
