#pragma once

#include <osg/Geode>
#include <osg/Program>
#include <osg/Texture2D>
#include <osg/Uniform>

namespace vpe {

// The last step of a render: one triangle over the whole picture that turns
// the scene's colour texture into the pixels read back.
//
// Besides its filter it turns the rows upside down and swaps red and blue,
// so that OpenGL's bottom-up read gives Qt's top-down 32-bit pixels and the
// read-back lands in a QImage as it is.
class PicturePass {
public:
    enum Filter {
        // Takes the scene's pixels as they are.
        Copy,
        // Blends pixels on high-contrast edges along the edge's direction.
        SmoothEdges,
        // Averages each factor x factor block of a scene drawn that much larger.
        Average,
    };

    PicturePass();

    osg::Node* GetNode() const { return m_node.get(); }
    // The scene's texture, factor times the picture's width and height
    // (factor 1 except for Average); opaque: alpha is set to 1, as Qt's
    // RGB32 format wants it.
    void Set(osg::Texture2D* scene, Filter filter, int factor, int width, int height, bool opaque);

private:
    osg::ref_ptr<osg::Geode> m_node;
    osg::ref_ptr<osg::Program> m_programs[3];
    osg::ref_ptr<osg::Uniform> m_factor;
    osg::ref_ptr<osg::Uniform> m_height;
    osg::ref_ptr<osg::Uniform> m_texel;
    osg::ref_ptr<osg::Uniform> m_opaque;
};

} // namespace vpe
