#include "PicturePass.h"

#include <osg/Depth>
#include <osg/Geometry>

namespace vpe {

namespace {

// The triangle is given in clip coordinates: no camera matrix is involved.
const char* const kVertexShader = R"(
#version 130
void main()
{
    gl_Position = vec4(gl_Vertex.xy, 0.0, 1.0);
}
)";

// Every filter reads picture row y (from the top) from texture row
// height - 1 - y (from the bottom), and writes .bgra.
const char* const kCopyShader = R"(
#version 130
uniform sampler2D vpe_scene;
uniform int vpe_height;
uniform float vpe_opaque;
void main()
{
    ivec2 pixel = ivec2(gl_FragCoord.xy);
    vec4 colour = texelFetch(vpe_scene, ivec2(pixel.x, vpe_height - 1 - pixel.y), 0);
    colour.a = max(colour.a, vpe_opaque);
    gl_FragColor = colour.bgra;
}
)";

const char* const kAverageShader = R"(
#version 130
uniform sampler2D vpe_scene;
uniform int vpe_height;
uniform int vpe_factor;
uniform float vpe_opaque;
void main()
{
    ivec2 pixel = ivec2(gl_FragCoord.xy);
    ivec2 origin = ivec2(pixel.x, vpe_height - 1 - pixel.y) * vpe_factor;
    vec4 sum = vec4(0.0);
    for (int y = 0; y < vpe_factor; ++y) {
        for (int x = 0; x < vpe_factor; ++x)
            sum += texelFetch(vpe_scene, origin + ivec2(x, y), 0);
    }
    vec4 colour = sum / float(vpe_factor * vpe_factor);
    colour.a = max(colour.a, vpe_opaque);
    gl_FragColor = colour.bgra;
}
)";

// Edge smoothing. Where the brightness
// around a pixel varies enough to be an edge, the brightness differences of
// its four diagonal neighbours give the direction across the edge; the pixel
// is then replaced by samples taken along the edge (perpendicular to that
// direction), which mixes the colours on both sides of a stair step in
// proportion to how far the step runs. Two spans are tried: a short one,
// always safe, and a longer one for the long, shallow steps of nearly
// horizontal or vertical edges, kept only when its brightness stays within
// the neighbourhood's range (otherwise it reached across into unrelated
// detail). The neighbourhood is read texel by texel, which a software
// renderer does far faster than filtered samples.
const char* const kSmoothEdgesShader = R"(
#version 130
uniform sampler2D vpe_scene;
uniform int vpe_height;
uniform vec2 vpe_texel;
uniform float vpe_opaque;

// Weights of the eye's sensitivity to red, green and blue.
float brightness(vec4 colour)
{
    return dot(colour.rgb, vec3(0.299, 0.587, 0.114));
}

float brightnessAt(ivec2 pixel, ivec2 last)
{
    return brightness(texelFetch(vpe_scene, clamp(pixel, ivec2(0), last), 0));
}

vec4 at(vec2 uv)
{
    return textureLod(vpe_scene, uv, 0.0);
}

void main()
{
    ivec2 last = textureSize(vpe_scene, 0) - 1;
    ivec2 pixel = ivec2(int(gl_FragCoord.x), vpe_height - 1 - int(gl_FragCoord.y));
    vec4 centre = texelFetch(vpe_scene, pixel, 0);
    float c = brightness(centre);
    float a = brightnessAt(pixel + ivec2(-1, -1), last);
    float b = brightnessAt(pixel + ivec2(1, -1), last);
    float d = brightnessAt(pixel + ivec2(-1, 1), last);
    float e = brightnessAt(pixel + ivec2(1, 1), last);
    float darkest = min(c, min(min(a, b), min(d, e)));
    float brightest = max(c, max(max(a, b), max(d, e)));
    vec2 uv = (vec2(pixel) + 0.5) * vpe_texel;
    // Perpendicular to the brightness gradient, in pixels.
    vec2 along = vec2((d + e) - (a + b), (a + d) - (b + e));
    // The shorter component sets the scale, so that a shallow edge gets a
    // long span; the small term keeps noise from making spans huge.
    float damping = max((a + b + d + e) / 32.0, 1.0 / 128.0);
    along *= 1.0 / (min(abs(along.x), abs(along.y)) + damping);
    along = clamp(along, vec2(-8.0), vec2(8.0)) * vpe_texel;
    vec4 shortSpan = 0.5 * (at(uv - along / 6.0) + at(uv + along / 6.0));
    vec4 longSpan = 0.5 * shortSpan + 0.25 * (at(uv - along / 2.0) + at(uv + along / 2.0));
    float l = brightness(longSpan);
    vec4 colour = (l < darkest || l > brightest) ? shortSpan : longSpan;
    // Flat areas and faint texture stay as they are.
    if (brightest - darkest < max(1.0 / 24.0, brightest / 8.0))
        colour = centre;
    colour.a = max(colour.a, vpe_opaque);
    gl_FragColor = colour.bgra;
}
)";

osg::Program* program(const char* name, const char* fragmentShader)
{
    auto* program = new osg::Program;
    program->setName(name);
    program->addShader(new osg::Shader(osg::Shader::VERTEX, kVertexShader));
    program->addShader(new osg::Shader(osg::Shader::FRAGMENT, fragmentShader));
    return program;
}

osg::Geometry* wholePicture()
{
    // One triangle larger than the picture rather than two: no seam along a
    // diagonal where fragments are shaded twice.
    auto* triangle = new osg::Geometry;
    auto* corners = new osg::Vec3Array;
    corners->push_back(osg::Vec3(-1.0f, -1.0f, 0.0f));
    corners->push_back(osg::Vec3(3.0f, -1.0f, 0.0f));
    corners->push_back(osg::Vec3(-1.0f, 3.0f, 0.0f));
    triangle->setVertexArray(corners);
    triangle->addPrimitiveSet(new osg::DrawArrays(GL_TRIANGLES, 0, 3));
    triangle->setUseDisplayList(false);
    triangle->setCullingActive(false);
    return triangle;
}

} // namespace

PicturePass::PicturePass()
    : m_node(new osg::Geode),
      m_factor(new osg::Uniform("vpe_factor", 1)),
      m_height(new osg::Uniform("vpe_height", 1)),
      m_texel(new osg::Uniform("vpe_texel", osg::Vec2(1.0f, 1.0f))),
      m_opaque(new osg::Uniform("vpe_opaque", 1.0f))
{
    m_programs[Copy] = program("vpe_picture_copy", kCopyShader);
    m_programs[SmoothEdges] = program("vpe_picture_smooth_edges", kSmoothEdgesShader);
    m_programs[Average] = program("vpe_picture_average", kAverageShader);
    m_node->addDrawable(wholePicture());
    m_node->setCullingActive(false);
    osg::StateSet* state = m_node->getOrCreateStateSet();
    // The triangle covers everything and is all there is: nothing to test
    // against, nothing to blend with.
    state->setMode(GL_DEPTH_TEST, osg::StateAttribute::OFF);
    state->setAttribute(new osg::Depth(osg::Depth::ALWAYS, 0.0, 1.0, false));
    state->setMode(GL_BLEND, osg::StateAttribute::OFF);
    state->setMode(GL_LIGHTING, osg::StateAttribute::OFF);
    state->setMode(GL_CULL_FACE, osg::StateAttribute::OFF);
    state->addUniform(new osg::Uniform("vpe_scene", 0));
    for (osg::Uniform* uniform : {m_factor.get(), m_height.get(), m_texel.get(), m_opaque.get()}) {
        uniform->setDataVariance(osg::Object::DYNAMIC);
        state->addUniform(uniform);
    }
}

void PicturePass::Set(osg::Texture2D* scene, Filter filter, int factor, int width, int height, bool opaque)
{
    osg::StateSet* state = m_node->getStateSet();
    state->setTextureAttributeAndModes(0, scene, osg::StateAttribute::ON);
    state->setAttributeAndModes(m_programs[filter].get(), osg::StateAttribute::ON);
    m_factor->set(factor);
    m_height->set(height);
    m_texel->set(osg::Vec2(1.0f / float(width * factor), 1.0f / float(height * factor)));
    m_opaque->set(opaque ? 1.0f : 0.0f);
}

} // namespace vpe
