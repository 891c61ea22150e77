#include "PfImportedProduct.h"

#include <QDataStream>

#include <algorithm>

namespace {

// Beyond these a count can only come from a damaged stream: refusing it
// keeps a bad length from turning into a huge allocation.
constexpr quint32 kMaxShells = 10'000'000;
constexpr quint32 kMaxVertices = 50'000'000;
constexpr quint32 kMaxTriangles = 100'000'000;
// Elements are read in blocks of this many, so that the memory taken grows
// with the data actually there, not with the count announced.
constexpr quint32 kBlock = 1 << 16;

bool readCount(QDataStream& in, quint32 limit, quint32& count)
{
    in >> count;
    if (in.status() != QDataStream::Ok)
        return false;
    if (count > limit) {
        in.setStatus(QDataStream::ReadCorruptData);
        return false;
    }
    return true;
}

template <typename T, typename ReadOne>
bool readBlocks(QDataStream& in, quint32 count, std::vector<T>& items, ReadOne readOne)
{
    items.clear();
    for (quint32 done = 0; done < count;) {
        const quint32 end = std::min(count, done + kBlock);
        items.reserve(end);
        for (; done < end; ++done)
            items.push_back(readOne());
        if (in.status() != QDataStream::Ok)
            return false;
    }
    return true;
}

bool readShell(QDataStream& in, PfImportedProduct::Shell& shell)
{
    quint32 count = 0;
    if (!readCount(in, kMaxVertices, count))
        return false;
    const auto readVertex = [&in] {
        double x = 0, y = 0, z = 0;
        in >> x >> y >> z;
        return osg::Vec3d(x, y, z);
    };
    if (!readBlocks(in, count, shell.vertices, readVertex) || !readCount(in, kMaxTriangles, count))
        return false;
    const auto readTriangle = [&in] {
        PfImportedProduct::Triangle triangle{};
        in >> triangle[0] >> triangle[1] >> triangle[2];
        return triangle;
    };
    if (!readBlocks(in, count, shell.triangles, readTriangle))
        return false;
    // An index past the vertices would be read out of bounds by whoever
    // draws the shell.
    const std::size_t vertexCount = shell.vertices.size();
    for (const PfImportedProduct::Triangle& triangle : shell.triangles) {
        if (triangle[0] >= vertexCount || triangle[1] >= vertexCount || triangle[2] >= vertexCount) {
            in.setStatus(QDataStream::ReadCorruptData);
            return false;
        }
    }
    return true;
}

bool readProduct(QDataStream& in, PfImportedProduct& product)
{
    quint8 red = 0, green = 0, blue = 0, alpha = 0;
    in >> product.globalId >> product.name >> product.type >> product.storey >> product.elevation >> red >> green
        >> blue >> alpha;
    product.color = QColor(red, green, blue, alpha);
    quint32 count = 0;
    if (!readCount(in, kMaxShells, count))
        return false;
    for (quint32 i = 0; i < count; ++i) {
        PfImportedProduct::Shell shell;
        if (!readShell(in, shell))
            return false;
        product.shells.push_back(std::move(shell));
    }
    return true;
}

} // namespace

std::size_t PfImportedProduct::TriangleCount() const
{
    std::size_t count = 0;
    for (const Shell& shell : shells)
        count += shell.triangles.size();
    return count;
}

QDataStream& operator<<(QDataStream& out, const PfImportedProduct& product)
{
    out << product.globalId << product.name << product.type << product.storey << product.elevation
        << quint8(product.color.red()) << quint8(product.color.green()) << quint8(product.color.blue())
        << quint8(product.color.alpha()) << quint32(product.shells.size());
    for (const PfImportedProduct::Shell& shell : product.shells) {
        out << quint32(shell.vertices.size());
        for (const osg::Vec3d& vertex : shell.vertices)
            out << vertex.x() << vertex.y() << vertex.z();
        out << quint32(shell.triangles.size());
        for (const PfImportedProduct::Triangle& triangle : shell.triangles)
            out << triangle[0] << triangle[1] << triangle[2];
    }
    return out;
}

// On failure the stream's status says why and the product is left as it
// was.
QDataStream& operator>>(QDataStream& in, PfImportedProduct& product)
{
    PfImportedProduct read;
    if (readProduct(in, read))
        product = std::move(read);
    return in;
}
