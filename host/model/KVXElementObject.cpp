#include "KVXElementObject.h"

#include "KVXDrawHelper.h"
#include "host/db/PfDbDatabase.h"
#include "host/rx/PfRxClass.h"

PFRX_DEFINE_HOST_MEMBERS(KVXElementObject, PfDbElement, &PfRxCreateInstance<KVXElementObject>)

void KVXElementObject::getElementPropertys(KVXSaveLoadXml&) {}

void KVXElementObject::setElementPropertys(KVXSaveLoadXml&) {}

void KVXElementObject::regenerate()
{
    if (GetDatabase())
        GetDatabase()->NotifyModified(this);
}

void KVXElementObject::tessellateShell(const vpe::CBody& shell, double distEpsilonCoefficient,
                                       double angleEpsilonCoefficient, std::vector<osg::Vec3f>& triangleVertices,
                                       std::vector<osg::Vec3f>& triangleNormals,
                                       std::vector<osg::Vec3f>& edgeVertices) const
{
    constexpr double kFeatureAngle = 20.0;
    constexpr double kSliverLength = 0.01;
    std::vector<osg::Vec3f> vertices;
    std::vector<osg::Vec3f> normals;
    KVXDrawHelper::TessellateShell(shell, vertices, normals, edgeVertices, kFeatureAngle * angleEpsilonCoefficient);
    // Twice the area of a triangle whose sides are all a sliver long.
    const double sliverArea = kSliverLength * kSliverLength * distEpsilonCoefficient * distEpsilonCoefficient;
    for (std::size_t i = 0; i + 2 < vertices.size(); i += 3) {
        const double area = ((vertices[i + 1] - vertices[i]) ^ (vertices[i + 2] - vertices[i])).length();
        if (area < sliverArea)
            continue;
        triangleVertices.insert(triangleVertices.end(), vertices.begin() + i, vertices.begin() + i + 3);
        triangleNormals.insert(triangleNormals.end(), normals.begin() + i, normals.begin() + i + 3);
    }
}

bool KVXElementObject::draw2d(PfGiWorldDraw*, vpe::CSceneNode*&) { return false; }

bool KVXElementObject::draw3d(PfGiWorldDraw*, vpe::CSceneNode*&) { return false; }

Pfad::Error KVXElementObject::Save(KVXSaveLoadXml& archive)
{
    PfDbElement::Save(archive);
    setElementPropertys(archive);
    return Pfad::eOk;
}

Pfad::Error KVXElementObject::Load(KVXSaveLoadXml& archive)
{
    PfDbElement::Load(archive);
    getElementPropertys(archive);
    return Pfad::eOk;
}
