#include "PfAssimpReader.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/material.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>

namespace {

constexpr double kMillimetresPerMetre = 1000.0;

// An IFC GlobalId: 22 characters of its own base-64 alphabet. Converters
// name glTF nodes after the product they come from.
bool isGlobalId(const QString& name)
{
    static const QRegularExpression shape(QStringLiteral("^[0-9A-Za-z_$]{22}$"));
    return shape.match(name).hasMatch();
}

QColor colourOf(const aiMaterial* material)
{
    aiColor4D colour(0.8f, 0.8f, 0.8f, 1.0f);
    if (material->Get(AI_MATKEY_BASE_COLOR, colour) != AI_SUCCESS)
        material->Get(AI_MATKEY_COLOR_DIFFUSE, colour);
    float opacity = 1.0f;
    if (material->Get(AI_MATKEY_OPACITY, opacity) == AI_SUCCESS)
        colour.a = std::min(colour.a, opacity);
    return QColor::fromRgbF(qBound(0.0f, colour.r, 1.0f), qBound(0.0f, colour.g, 1.0f), qBound(0.0f, colour.b, 1.0f),
                            qBound(0.0f, colour.a, 1.0f));
}

class AssimpReader : public PfModelReader {
public:
    bool Read(const QString& path, const Take& take, const Progress& progress, Summary& summary,
              QString* error) override
    {
        Assimp::Importer importer;
        // Normals and texture places set apart the corners of faces that
        // meet at an edge (flat shading): without them, corners at the same
        // place join and a mesh closes for the cut.
        importer.SetPropertyInteger(AI_CONFIG_PP_RVC_FLAGS, aiComponent_NORMALS | aiComponent_TANGENTS_AND_BITANGENTS |
                                                                aiComponent_TEXCOORDS | aiComponent_COLORS);
        // Triangles only. Loaders give faces their own corners (OBJ, STL,
        // flat-shaded glTF); joining those at one place within a mesh gives
        // back the sharing the file meant, never welding one mesh to another.
        const aiScene* scene = importer.ReadFile(QFile::encodeName(path).constData(),
                                                 aiProcess_RemoveComponent | aiProcess_Triangulate |
                                                     aiProcess_SortByPType | aiProcess_JoinIdenticalVertices);
        if (!scene || !scene->mRootNode || (scene->mFlags & AI_SCENE_FLAGS_INCOMPLETE)) {
            QString reason = QString::fromUtf8(importer.GetErrorString()).trimmed();
            if (reason.isEmpty())
                reason = QStringLiteral("not a model that can be read");
            if (error)
                *error = QStringLiteral("%1: %2").arg(QFileInfo(path).fileName(), reason);
            return false;
        }
        m_scene = scene;
        summary.found = countNodes(scene->mRootNode);
        // Y up in metres to Z up in millimetres.
        const aiMatrix4x4 toSite(1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1);
        int done = 0, empty = 0;
        walk(scene->mRootNode, toSite, [&](PfImportedProduct&& product) {
            if (product.shells.empty()) {
                ++empty;
            } else {
                take(std::move(product));
                ++summary.read;
            }
            progress(++done, summary.found);
        });
        if (empty > 0)
            summary.skipped << QStringLiteral("no triangles: %1").arg(empty);
        return true;
    }

private:
    static int countNodes(const aiNode* node)
    {
        int count = node->mNumMeshes > 0 ? 1 : 0;
        for (unsigned int i = 0; i < node->mNumChildren; ++i)
            count += countNodes(node->mChildren[i]);
        return count;
    }

    template <class Give>
    void walk(const aiNode* node, const aiMatrix4x4& parent, const Give& give) const
    {
        const aiMatrix4x4 placement = parent * node->mTransformation;
        if (node->mNumMeshes > 0)
            give(productOf(node, placement));
        for (unsigned int i = 0; i < node->mNumChildren; ++i)
            walk(node->mChildren[i], placement, give);
    }

    PfImportedProduct productOf(const aiNode* node, const aiMatrix4x4& placement) const
    {
        PfImportedProduct product;
        product.name = QString::fromUtf8(node->mName.C_Str());
        if (isGlobalId(product.name))
            product.globalId = product.name;
        product.type = QStringLiteral("Mesh");
        for (unsigned int i = 0; i < node->mNumMeshes; ++i) {
            const aiMesh* mesh = m_scene->mMeshes[node->mMeshes[i]];
            if (i == 0 && mesh->mMaterialIndex < m_scene->mNumMaterials)
                product.color = colourOf(m_scene->mMaterials[mesh->mMaterialIndex]);
            PfImportedProduct::Shell shell;
            shell.vertices.reserve(mesh->mNumVertices);
            for (unsigned int v = 0; v < mesh->mNumVertices; ++v) {
                const aiVector3D p = placement * mesh->mVertices[v];
                shell.vertices.emplace_back(p.x * kMillimetresPerMetre, p.y * kMillimetresPerMetre,
                                            p.z * kMillimetresPerMetre);
            }
            for (unsigned int f = 0; f < mesh->mNumFaces; ++f) {
                const aiFace& face = mesh->mFaces[f];
                if (face.mNumIndices == 3 && face.mIndices[0] < mesh->mNumVertices &&
                    face.mIndices[1] < mesh->mNumVertices && face.mIndices[2] < mesh->mNumVertices)
                    shell.triangles.push_back({face.mIndices[0], face.mIndices[1], face.mIndices[2]});
            }
            if (!shell.triangles.empty())
                product.shells.push_back(std::move(shell));
        }
        return product;
    }

    const aiScene* m_scene = nullptr;
};

} // namespace

std::unique_ptr<PfModelReader> PfMakeAssimpReader() { return std::make_unique<AssimpReader>(); }
