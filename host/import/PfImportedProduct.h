#pragma once

#include <QColor>
#include <QString>

#include <osg/Vec3d>

#include <array>
#include <cstdint>
#include <limits>
#include <vector>

class QDataStream;

// One product of a building model as a reader hands it over: what it is,
// where it belongs and its triangles in world coordinates (millimetres, Z
// up), with the reader's own vertex sharing kept.
struct PfImportedProduct {
    using Triangle = std::array<std::uint32_t, 3>;

    QString globalId;
    QString name;
    // The model's own type name: IfcWall, IfcSlab, … (a mesh's node name for
    // other formats).
    QString type;
    QString storey;
    // The storey's elevation in millimetres; NaN when there is no storey.
    double elevation = std::numeric_limits<double>::quiet_NaN();
    QColor color{200, 200, 200};
    // One shell per closed or open mesh the reader gave, each with its own
    // vertices.
    struct Shell {
        std::vector<osg::Vec3d> vertices;
        std::vector<Triangle> triangles;
    };
    std::vector<Shell> shells;

    std::size_t TriangleCount() const;
};

// A product streamed between processes (a reader run apart from the
// application): QDataStream with its default byte order and version.
QDataStream& operator<<(QDataStream& out, const PfImportedProduct& product);
QDataStream& operator>>(QDataStream& in, PfImportedProduct& product);
