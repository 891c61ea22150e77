#include "PfIfcReader.h"

#include <QByteArray>
#include <QFile>
#include <QRegularExpression>
#include <QStringList>

// The only file that sees IFC++: its headers put names such as shared_ptr
// and vec3 into the global namespace and take long to compile.
#include <ifcpp/IFC4/include/IfcBuildingStorey.h>
#include <ifcpp/IFC4/include/IfcElement.h>
#include <ifcpp/IFC4/include/IfcFeatureElementSubtraction.h>
#include <ifcpp/IFC4/include/IfcGloballyUniqueId.h>
#include <ifcpp/IFC4/include/IfcLabel.h>
#include <ifcpp/IFC4/include/IfcLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcLocalPlacement.h>
#include <ifcpp/IFC4/include/IfcRelAggregates.h>
#include <ifcpp/IFC4/include/IfcRelContainedInSpatialStructure.h>
#include <ifcpp/IFC4/include/IfcSpatialStructureElement.h>
#include <ifcpp/IFC4/include/IfcVirtualElement.h>
#include <ifcpp/geometry/Carve/GeometryConverter.h>
#include <ifcpp/model/BuildingException.h>
#include <ifcpp/model/BuildingModel.h>
#include <ifcpp/model/UnitConverter.h>
#include <ifcpp/reader/ReaderSTEP.h>

#include <carve/triangulator.hpp>

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <limits>
#include <locale>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace {

using Shell = PfImportedProduct::Shell;
using Triangle = PfImportedProduct::Triangle;
using MeshSet = carve::mesh::MeshSet<3>;
using Vertex = carve::mesh::Vertex<3>;

constexpr double kMillimetresPerMetre = 1000.0;
// Storeys are searched this far up the spatial structure and aggregates.
constexpr int kMaxNesting = 64;
const char kNoShape[] = "no shape";

// IFC++ keeps each byte of raw non-ASCII text as a sign-extended char: a run
// of them is UTF-8 to decode. Whatever is still not a Unicode scalar value
// becomes U+FFFD.
QString toQString(const std::wstring& text)
{
    QString result;
    QByteArray bytes;
    const auto flushBytes = [&] {
        result += QString::fromUtf8(bytes);
        bytes.clear();
    };
    for (const wchar_t unit : text) {
        const long code = static_cast<long>(unit);
        if (code < 0 && code >= -128) {
            bytes += static_cast<char>(code);
            continue;
        }
        flushBytes();
        if (code < 0 || code > 0x10ffff || (code >= 0xd800 && code <= 0xdfff)) {
            result += QChar(QChar::ReplacementCharacter);
        } else if (code > 0xffff) {
            result += QChar(QChar::highSurrogate(static_cast<uint>(code)));
            result += QChar(QChar::lowSurrogate(static_cast<uint>(code)));
        } else {
            result += QChar(static_cast<ushort>(code));
        }
    }
    flushBytes();
    return result;
}

template <typename Text>
QString textOf(const shared_ptr<Text>& text)
{
    return text ? toQString(text->m_value) : QString();
}

QString oneLine(QString text)
{
    text = text.simplified();
    return text.isEmpty() ? QStringLiteral("unknown error") : text;
}

// IFC++ switches the C locale while it parses; the process gets its own back
// whatever happens.
class LocaleGuard {
public:
    LocaleGuard()
    {
        if (const char* current = std::setlocale(LC_ALL, nullptr))
            m_c = current;
    }
    ~LocaleGuard()
    {
        std::locale::global(m_global);
        if (!m_c.empty())
            std::setlocale(LC_ALL, m_c.c_str());
    }
    LocaleGuard(const LocaleGuard&) = delete;
    LocaleGuard& operator=(const LocaleGuard&) = delete;

private:
    std::locale m_global;
    std::string m_c;
};

// The converter leaves the last progress it reported uninitialised, which
// can silence its progress for a whole run.
class Converter : public GeometryConverter {
public:
    explicit Converter(shared_ptr<BuildingModel>& model) : GeometryConverter(model) { m_recent_progress = 0.0; }
};

// Forwards progress only when it moves forward: the conversion reports a
// fraction, the hand-over counts products, and both map onto one count.
class ProgressGate {
public:
    explicit ProgressGate(const PfModelReader::Progress& progress) : m_progress(progress) {}

    void setFound(int found)
    {
        m_found = found;
        report(0);
    }
    void report(int done)
    {
        done = std::min(done, m_found);
        if (done <= m_done)
            return;
        m_done = done;
        if (m_progress)
            m_progress(done, m_found);
    }
    // From IFC++'s message channel during the conversion.
    static void onMessage(void* self, shared_ptr<StatusCallback::Message> message)
    {
        auto* gate = static_cast<ProgressGate*>(self);
        if (message && message->m_message_type == StatusCallback::MESSAGE_TYPE_PROGRESS_VALUE
            && message->m_progress_type == "geometry" && message->m_progress_value >= 0)
            gate->report(gate->m_convertedBase + int(message->m_progress_value * gate->m_converting));
    }
    void setConverting(int base, int count)
    {
        m_convertedBase = base;
        m_converting = count;
    }

private:
    const PfModelReader::Progress& m_progress;
    int m_found = 0;
    int m_done = -1;
    int m_convertedBase = 0;
    int m_converting = 0;
};

// The reader's errors while it parses: any of them means the model is not
// what the file meant (a reference to nothing, an unsupported schema, …),
// except, in an IFC2x3 file, a type that IFC4 dropped: IFC++ reads every
// schema as IFC4 and leaves those entities out, and references to them too,
// without damage to the rest. One message may hold many errors, a line each.
struct ParseLog {
    bool olderSchema = false;
    QString firstError;
    int errors = 0;
    QStringList unknownTypes;

    static void onMessage(void* self, shared_ptr<StatusCallback::Message> message)
    {
        if (message && message->m_message_type == StatusCallback::MESSAGE_TYPE_ERROR)
            static_cast<ParseLog*>(self)->add(toQString(message->m_message_text));
    }
    void add(const QString& text)
    {
        static const QString unknown = QStringLiteral("unknown IFC entity: ");
        for (const QString& line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            const int at = line.indexOf(unknown);
            if (at >= 0 && olderSchema) {
                unknownTypes << line.mid(at + unknown.size()).trimmed();
            } else if (errors++ == 0) {
                firstError = line;
            }
        }
    }
};

// Straight into the string IFC++ parses: files run to hundreds of
// megabytes.
bool readFile(const QString& path, std::string& content, QString& reason)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        reason = QStringLiteral("Cannot open the file: %1").arg(file.errorString());
        return false;
    }
    content.resize(std::size_t(file.size()));
    if (file.read(content.data(), file.size()) != file.size()) {
        reason = QStringLiteral("Cannot read the file: %1").arg(file.errorString());
        return false;
    }
    return true;
}

// The envelope of a STEP file: a missing end marks a file cut short, which
// IFC++ would read as far as it goes without complaint.
bool checkFrame(std::string_view content, QString& reason)
{
    const std::size_t first = content.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) {
        reason = QStringLiteral("The file is empty.");
        return false;
    }
    std::string_view start = content.substr(first);
    if (start.substr(0, 3) == "\xef\xbb\xbf")
        start.remove_prefix(3);
    if (start.substr(0, 13) != "ISO-10303-21;") {
        reason = QStringLiteral("Not an IFC file: it does not start with ISO-10303-21.");
        return false;
    }
    if (content.find("END-ISO-10303-21;", content.size() - std::min<std::size_t>(content.size(), 1024))
        == std::string_view::npos) {
        reason = QStringLiteral("The file is cut short: END-ISO-10303-21 is missing.");
        return false;
    }
    return true;
}

QString schemaOf(std::string_view header)
{
    static const QRegularExpression pattern(QStringLiteral("FILE_SCHEMA\\s*\\(\\s*\\(\\s*'([^']*)'"));
    return pattern.match(QString::fromLatin1(header.data(), int(header.size()))).captured(1);
}

// IFC++ says "Unsupported IFC version" both for a schema it does not know
// and for a header it cannot read: the schema named tells which.
QString unsupportedReason(const QString& schema)
{
    static const QStringList known{"IFC2X", "IFC2X2", "IFC2X3", "IFC2X4", "IFC4"};
    if (known.contains(schema, Qt::CaseInsensitive))
        return QStringLiteral("The file's header cannot be read.");
    return QStringLiteral("Unsupported IFC version: %1").arg(schema.isEmpty() ? QStringLiteral("none given") : schema);
}

using Entities = std::map<int, shared_ptr<BuildingEntity>>;

// The id of an entity on a loop of the relation next gives, or -1. IFC++
// follows placements and the spatial structure recursively: a loop in a
// damaged file would not end there.
template <typename Next>
int findLoop(const Entities& entities, const Next& next)
{
    struct Frame {
        const BuildingEntity* entity;
        std::vector<const BuildingEntity*> next;
        std::size_t at = 0;
    };
    // False while the entity is on the path being walked.
    std::unordered_map<const BuildingEntity*, bool> finished;
    std::vector<Frame> path;
    for (const auto& entry : entities) {
        const BuildingEntity* root = entry.second.get();
        if (!root || finished.count(root))
            continue;
        finished[root] = false;
        path.push_back({root, next(*root)});
        while (!path.empty()) {
            Frame& top = path.back();
            if (top.at == top.next.size()) {
                finished[top.entity] = true;
                path.pop_back();
                continue;
            }
            const BuildingEntity* child = top.next[top.at++];
            const auto seen = finished.find(child);
            if (seen == finished.end()) {
                finished[child] = false;
                path.push_back({child, next(*child)});
            } else if (!seen->second) {
                return child->m_entity_id;
            }
        }
    }
    return -1;
}

std::vector<const BuildingEntity*> placementParent(const BuildingEntity& entity)
{
    const auto* placement = dynamic_cast<const IfcLocalPlacement*>(&entity);
    if (placement && placement->m_PlacementRelTo)
        return {placement->m_PlacementRelTo.get()};
    return {};
}

std::vector<const BuildingEntity*> structureChildren(const BuildingEntity& entity)
{
    std::vector<const BuildingEntity*> children;
    if (const auto* object = dynamic_cast<const IfcObjectDefinition*>(&entity)) {
        for (const auto& weak : object->m_IsDecomposedBy_inverse) {
            if (const auto relation = weak.lock()) {
                for (const auto& child : relation->m_RelatedObjects)
                    if (child)
                        children.push_back(child.get());
            }
        }
    }
    if (const auto* spatial = dynamic_cast<const IfcSpatialStructureElement*>(&entity)) {
        for (const auto& weak : spatial->m_ContainsElements_inverse) {
            if (const auto relation = weak.lock()) {
                for (const auto& child : relation->m_RelatedElements)
                    if (child)
                        children.push_back(child.get());
            }
        }
    }
    return children;
}

bool checkLoops(const Entities& entities, QString& reason)
{
    if (const int id = findLoop(entities, placementParent); id >= 0) {
        reason = QStringLiteral("The placement #%1 is placed relative to itself.").arg(id);
        // Cut the loop, or its shared pointers keep each other alive once
        // the model goes.
        const auto entry = entities.find(id);
        if (entry != entities.end()) {
            if (const auto placement = dynamic_pointer_cast<IfcLocalPlacement>(entry->second))
                placement->m_PlacementRelTo.reset();
        }
        return false;
    }
    if (const int id = findLoop(entities, structureChildren); id >= 0) {
        reason = QStringLiteral("#%1 contains itself in the spatial structure.").arg(id);
        return false;
    }
    return true;
}

// Only physical elements are read: the spatial structure (site, building,
// storey, space), openings and virtual elements have shapes that are no part
// of what is built. The others are named by their type.
QString skipReason(const shared_ptr<IfcProduct>& product)
{
    const bool element = dynamic_pointer_cast<IfcElement>(product)
        && !dynamic_pointer_cast<IfcFeatureElementSubtraction>(product)
        && !dynamic_pointer_cast<IfcVirtualElement>(product);
    return element ? QString() : QString::fromLatin1(product->className());
}

shared_ptr<IfcObjectDefinition> parentOf(const shared_ptr<IfcObjectDefinition>& object)
{
    if (const auto element = dynamic_pointer_cast<IfcElement>(object)) {
        for (const auto& weak : element->m_ContainedInStructure_inverse) {
            const auto relation = weak.lock();
            if (relation && relation->m_RelatingStructure)
                return relation->m_RelatingStructure;
        }
    }
    for (const auto& weak : object->m_Decomposes_inverse) {
        const auto relation = weak.lock();
        if (relation && relation->m_RelatingObject)
            return relation->m_RelatingObject;
    }
    return nullptr;
}

// The storey of an element contained in a space or part of a whole (a stair
// flight of a stair) is that of its container.
shared_ptr<IfcBuildingStorey> storeyOf(const shared_ptr<IfcObjectDefinition>& object)
{
    shared_ptr<IfcObjectDefinition> current = object;
    for (int depth = 0; current && depth < kMaxNesting; ++depth) {
        if (const auto storey = dynamic_pointer_cast<IfcBuildingStorey>(current))
            return storey;
        current = parentOf(current);
    }
    return nullptr;
}

const AppearanceData* surfaceAppearance(const std::vector<shared_ptr<AppearanceData>>& appearances)
{
    for (const auto& appearance : appearances) {
        if (appearance
            && (appearance->m_apply_to_geometry_type == AppearanceData::GEOM_TYPE_SURFACE
                || appearance->m_apply_to_geometry_type == AppearanceData::GEOM_TYPE_ANY))
            return appearance.get();
    }
    return nullptr;
}

// Eight bits a channel, as products are streamed.
int channel(double value)
{
    return std::isfinite(value) ? qRound(std::clamp(value, 0.0, 1.0) * 255) : 255;
}

// The colour set on the product wins over one on its representations, which
// wins over one on their items.
QColor colourOf(ProductShapeData& shape, const std::vector<RepresentationData*>& representations)
{
    const AppearanceData* appearance = surfaceAppearance(shape.getAppearances());
    for (const RepresentationData* representation : representations)
        if (!appearance)
            appearance = surfaceAppearance(representation->m_vec_representation_appearances);
    for (const RepresentationData* representation : representations)
        for (const auto& item : representation->m_vec_item_data)
            if (!appearance && item)
                appearance = surfaceAppearance(item->m_vec_item_appearances);
    if (!appearance)
        return PfImportedProduct().color;
    const vec4& colour = appearance->m_color_diffuse;
    return QColor(channel(colour.r()), channel(colour.g()), channel(colour.b()), channel(colour.a()));
}

bool hasMeshes(const RepresentationData& representation)
{
    for (const auto& item : representation.m_vec_item_data)
        if (item && (!item->m_meshsets.empty() || !item->m_meshsets_open.empty()))
            return true;
    return false;
}

// A product may carry its body twice (Body and Body-FallBack) beside
// volumes that are not its body (Box, Clearance): the best kind present is
// taken alone. Lower is better; -1 is never taken.
int representationRank(const std::wstring& identifier)
{
    if (identifier == L"Body")
        return 0;
    if (identifier == L"Body-FallBack")
        return 1;
    if (identifier == L"Box" || identifier == L"Clearance")
        return -1;
    return 2;
}

std::vector<RepresentationData*> bodyRepresentations(ProductShapeData& shape)
{
    std::vector<RepresentationData*> chosen;
    int best = 3;
    for (const auto& representation : shape.m_vec_representations) {
        if (!representation || !hasMeshes(*representation))
            continue;
        const int rank = representationRank(representation->m_representation_identifier);
        if (rank < 0 || rank > best)
            continue;
        if (rank < best)
            chosen.clear();
        best = rank;
        chosen.push_back(representation.get());
    }
    return chosen;
}

carve::geom::vector<3> newellNormal(const std::vector<const Vertex*>& loop)
{
    carve::geom::vector<3> normal = carve::geom::VECTOR(0, 0, 0);
    for (std::size_t i = 0; i < loop.size(); ++i) {
        const auto& a = loop[i]->v;
        const auto& b = loop[(i + 1) % loop.size()]->v;
        normal.x += (a.y - b.y) * (a.z + b.z);
        normal.y += (a.z - b.z) * (a.x + b.x);
        normal.z += (a.x - b.x) * (a.y + b.y);
    }
    return normal;
}

// Triangles of one face as indices into its loop. Faces can be concave
// polygons: they are ear-clipped in the face's plane, and a fan is the last
// resort when that fails. Every triangle keeps the face's winding.
std::vector<Triangle> triangulateFace(const carve::mesh::Face<3>& face, const std::vector<const Vertex*>& loop)
{
    std::vector<Triangle> triangles;
    if (loop.size() == 3) {
        triangles.push_back({0, 1, 2});
        return triangles;
    }
    std::vector<carve::triangulate::tri_idx> clipped;
    try {
        std::vector<carve::geom2d::P2> projected;
        face.getProjectedVertices(projected);
        carve::triangulate::triangulate(projected, clipped);
        carve::triangulate::improve(projected, clipped);
    } catch (...) {
        clipped.clear();
    }
    for (const auto& triangle : clipped)
        if (triangle.a < loop.size() && triangle.b < loop.size() && triangle.c < loop.size())
            triangles.push_back({triangle.a, triangle.b, triangle.c});
    if (triangles.empty()) {
        for (std::uint32_t i = 1; i + 1 < loop.size(); ++i)
            triangles.push_back({0, i, i + 1});
    }
    const carve::geom::vector<3> normal = newellNormal(loop);
    for (Triangle& triangle : triangles) {
        const auto& a = loop[triangle[0]]->v;
        const auto own = carve::geom::cross(loop[triangle[1]]->v - a, loop[triangle[2]]->v - a);
        if (carve::geom::dot(own, normal) < 0)
            std::swap(triangle[1], triangle[2]);
    }
    return triangles;
}

// The face's vertices in order; empty when its edges do not close.
std::vector<const Vertex*> faceLoop(const carve::mesh::Face<3>& face)
{
    std::vector<const Vertex*> loop;
    const carve::mesh::Edge<3>* edge = face.edge;
    for (std::size_t n = 0; edge && edge->vert && n < face.n_edges; ++n) {
        loop.push_back(edge->vert);
        edge = edge->next;
    }
    if (edge != face.edge || loop.size() < 3)
        loop.clear();
    return loop;
}

bool isMirror(const carve::math::Matrix& m)
{
    const double determinant = m.m[0][0] * (m.m[1][1] * m.m[2][2] - m.m[1][2] * m.m[2][1])
        - m.m[0][1] * (m.m[1][0] * m.m[2][2] - m.m[1][2] * m.m[2][0])
        + m.m[0][2] * (m.m[1][0] * m.m[2][1] - m.m[1][1] * m.m[2][0]);
    return determinant < 0;
}

// One shell per mesh set, sharing vertices as the mesh set does; vertices no
// face uses are left out.
class ShellBuilder {
public:
    ShellBuilder(const MeshSet& meshSet, const carve::math::Matrix& toWorld)
        : m_meshSet(meshSet), m_toWorld(toWorld), m_mirror(isMirror(toWorld)),
          m_index(meshSet.vertex_storage.size(), kUnused)
    {
    }

    Shell build()
    {
        for (const auto* mesh : m_meshSet.meshes) {
            if (!mesh)
                continue;
            for (const auto* face : mesh->faces)
                if (face)
                    addFace(*face);
        }
        return std::move(m_shell);
    }

private:
    static constexpr std::uint32_t kUnused = ~std::uint32_t(0);

    void addFace(const carve::mesh::Face<3>& face)
    {
        const std::vector<const Vertex*> loop = faceLoop(face);
        for (const Vertex* vertex : loop)
            if (!owns(vertex))
                return;
        for (const Triangle& triangle : triangulateFace(face, loop)) {
            Triangle shared{indexOf(loop[triangle[0]]), indexOf(loop[triangle[1]]), indexOf(loop[triangle[2]])};
            if (shared[0] == shared[1] || shared[1] == shared[2] || shared[0] == shared[2])
                continue;
            if (m_mirror)
                std::swap(shared[1], shared[2]);
            m_shell.triangles.push_back(shared);
        }
    }

    bool owns(const Vertex* vertex) const
    {
        const auto first = reinterpret_cast<std::uintptr_t>(m_meshSet.vertex_storage.data());
        const auto at = reinterpret_cast<std::uintptr_t>(vertex);
        return at >= first && (at - first) / sizeof(Vertex) < m_index.size() && (at - first) % sizeof(Vertex) == 0;
    }

    std::uint32_t indexOf(const Vertex* vertex)
    {
        std::uint32_t& index = m_index[std::size_t(vertex - m_meshSet.vertex_storage.data())];
        if (index == kUnused) {
            index = std::uint32_t(m_shell.vertices.size());
            const carve::geom::vector<3> world = m_toWorld * vertex->v;
            m_shell.vertices.emplace_back(world.x * kMillimetresPerMetre, world.y * kMillimetresPerMetre,
                                          world.z * kMillimetresPerMetre);
        }
        return index;
    }

    const MeshSet& m_meshSet;
    const carve::math::Matrix& m_toWorld;
    const bool m_mirror;
    std::vector<std::uint32_t> m_index;
    Shell m_shell;
};

void appendShells(const std::vector<RepresentationData*>& representations, const carve::math::Matrix& toWorld,
                  std::vector<Shell>& shells)
{
    const auto append = [&](const shared_ptr<MeshSet>& meshSet) {
        if (!meshSet)
            return;
        Shell shell = ShellBuilder(*meshSet, toWorld).build();
        if (!shell.triangles.empty())
            shells.push_back(std::move(shell));
    };
    for (const RepresentationData* representation : representations) {
        for (const auto& item : representation->m_vec_item_data) {
            if (!item)
                continue;
            std::for_each(item->m_meshsets.begin(), item->m_meshsets.end(), append);
            std::for_each(item->m_meshsets_open.begin(), item->m_meshsets_open.end(), append);
        }
    }
}

// Reads one file; Read() below turns whatever it throws into a reason.
class IfcImport {
public:
    IfcImport(const PfModelReader::Take& take, const PfModelReader::Progress& progress,
              PfModelReader::Summary& summary)
        : m_take(take), m_progress(progress), m_summary(summary)
    {
    }

    bool run(const QString& path, QString& reason)
    {
        std::string content;
        if (!readFile(path, content, reason) || !checkFrame(content, reason) || !parse(content, reason)
            || !checkLoops(m_model->getMapIfcEntities(), reason))
            return false;
        const std::vector<shared_ptr<IfcProduct>> elements = sortProducts();
        convert(int(elements.size()));
        handOver(elements);
        m_summary.skipped.clear();
        for (const auto& skipped : m_skipped)
            m_summary.skipped << QStringLiteral("%1: %2").arg(skipped.first).arg(skipped.second);
        if (!m_log.unknownTypes.isEmpty())
            m_summary.skipped << QStringLiteral("unknown types: %1").arg(m_log.unknownTypes.join(QLatin1String(", ")));
        return true;
    }

private:
    // IFC++ may edit the text as it parses it (it strips the comments).
    bool parse(std::string& content, QString& reason)
    {
        const QString schema = schemaOf(std::string_view(content).substr(0, 4096));
        m_log.olderSchema = schema.startsWith(QLatin1String("IFC2X"), Qt::CaseInsensitive);
        m_reader.setMessageCallBack(&m_log, &ParseLog::onMessage);
        m_model = make_shared<BuildingModel>();
        m_reader.loadModelFromString(content, m_model);
        if (m_log.errors > 0) {
            reason = m_log.firstError;
            if (reason.startsWith(QLatin1String("Unsupported IFC version")))
                reason = unsupportedReason(schema);
            else if (m_log.errors > 1)
                reason += QStringLiteral(" (and %1 more errors)").arg(m_log.errors - 1);
            return false;
        }
        if (m_model->getMapIfcEntities().empty()) {
            reason = QStringLiteral("The file holds no IFC entities.");
            return false;
        }
        const shared_ptr<UnitConverter>& units = m_model->getUnitConverter();
        m_millimetresPerUnit = (units ? units->getLengthInMeterFactor() : 1.0) * kMillimetresPerMetre;
        return true;
    }

    // Counts the products that could have a shape and puts aside the
    // elements among them; the others are skipped by type at once.
    std::vector<shared_ptr<IfcProduct>> sortProducts()
    {
        std::vector<shared_ptr<IfcProduct>> elements;
        for (const auto& entry : m_model->getMapIfcEntities()) {
            const auto product = dynamic_pointer_cast<IfcProduct>(entry.second);
            if (!product || !product->m_Representation)
                continue;
            ++m_summary.found;
            const QString reason = skipReason(product);
            if (reason.isEmpty())
                elements.push_back(product);
            else
                ++m_skipped[reason];
        }
        m_progress.setFound(m_summary.found);
        m_settled = m_summary.found - int(elements.size());
        return elements;
    }

    void convert(int elements)
    {
        m_converter = std::make_unique<Converter>(m_model);
        m_progress.setConverting(m_settled, elements);
        m_converter->setMessageCallBack(&m_progress, &ProgressGate::onMessage);
        m_converter->convertGeometry();
    }

    void handOver(const std::vector<shared_ptr<IfcProduct>>& elements)
    {
        auto& shapes = m_converter->getShapeInputData();
        for (const auto& element : elements) {
            const auto shape = shapes.find(element->m_entity_id);
            PfImportedProduct product;
            if (shape != shapes.end() && shape->second)
                product = makeProduct(element, *shape->second);
            if (product.shells.empty()) {
                ++m_skipped[QString::fromLatin1(kNoShape)];
            } else {
                m_take(std::move(product));
                ++m_summary.read;
            }
            m_progress.report(++m_settled);
        }
    }

    PfImportedProduct makeProduct(const shared_ptr<IfcProduct>& element, ProductShapeData& shape)
    {
        PfImportedProduct product;
        product.globalId = textOf(element->m_GlobalId);
        product.name = textOf(element->m_Name);
        product.type = QString::fromLatin1(element->className());
        if (const auto storey = storeyOf(element)) {
            product.storey = textOf(storey->m_Name);
            product.elevation = elevationOf(*storey);
        }
        const std::vector<RepresentationData*> representations = bodyRepresentations(shape);
        product.color = colourOf(shape, representations);
        appendShells(representations, shape.getTransform(), product.shells);
        return product;
    }

    // The storey's own elevation, else the height of its placement.
    double elevationOf(const IfcBuildingStorey& storey)
    {
        if (storey.m_Elevation && std::isfinite(storey.m_Elevation->m_value))
            return storey.m_Elevation->m_value * m_millimetresPerUnit;
        auto& shapes = m_converter->getShapeInputData();
        const auto shape = shapes.find(storey.m_entity_id);
        if (shape == shapes.end() || !shape->second)
            return std::numeric_limits<double>::quiet_NaN();
        return shape->second->getTransform()._43 * kMillimetresPerMetre;
    }

    const PfModelReader::Take& m_take;
    ProgressGate m_progress;
    PfModelReader::Summary& m_summary;
    // The reader outlives the model: parts of the model may still send their
    // messages to it.
    ParseLog m_log;
    ReaderSTEP m_reader;
    shared_ptr<BuildingModel> m_model;
    std::unique_ptr<Converter> m_converter;
    double m_millimetresPerUnit = kMillimetresPerMetre;
    // Products counted as done: skipped by type or handed over.
    int m_settled = 0;
    std::map<QString, int> m_skipped;
};

class IfcReader : public PfModelReader {
public:
    bool Read(const QString& path, const Take& take, const Progress& progress, Summary& summary,
              QString* error) override;
};

bool IfcReader::Read(const QString& path, const Take& take, const Progress& progress, Summary& summary,
                     QString* error)
{
    const LocaleGuard locale;
    summary = Summary();
    QString reason;
    try {
        if (IfcImport(take, progress, summary).run(path, reason))
            return true;
    } catch (const OutOfMemoryException&) {
        reason = QStringLiteral("Out of memory.");
    } catch (const std::bad_alloc&) {
        reason = QStringLiteral("Out of memory.");
    } catch (const BuildingException& e) {
        reason = QString::fromLocal8Bit(e.what());
    } catch (const carve::exception& e) {
        reason = QString::fromStdString(e.str());
    } catch (const std::exception& e) {
        reason = QString::fromLocal8Bit(e.what());
    } catch (...) {
        reason = QStringLiteral("Unknown error while reading the model.");
    }
    if (error)
        *error = oneLine(reason);
    return false;
}

} // namespace

std::unique_ptr<PfModelReader> PfMakeIfcReader()
{
    return std::make_unique<IfcReader>();
}
