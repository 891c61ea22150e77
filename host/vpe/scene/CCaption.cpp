#include "CCaption.h"

#include "CVectorText2D.h"

#include <osg/BlendFunc>
#include <osg/Geode>

#include <algorithm>
#include <cmath>

namespace vpe {

namespace {
// Sizes as they read at 720 lines, in picture pixels.
constexpr double kReferenceLines = 720.0;
constexpr double kTextPixels = 22.0;
constexpr double kTitlePixels = 18.0;
constexpr double kMarginPixels = 20.0;
constexpr double kPaddingPixels = 10.0;
constexpr double kBarWidthPixels = 260.0;
constexpr double kBarHeightPixels = 5.0;
// The band never reaches further into the picture than this share of its
// width: the middle stays clear.
constexpr double kMaxWidthShare = 0.45;

const osg::Vec4 kBandColour(0.0f, 0.0f, 0.0f, 0.45f);
const osg::Vec4 kTrackColour(1.0f, 1.0f, 1.0f, 0.35f);
const osg::Vec4 kDoneColour(1.0f, 0.67f, 0.16f, 1.0f);

osg::Geometry* quads(int count)
{
    auto* geometry = new osg::Geometry;
    geometry->setUseDisplayList(false);
    geometry->setUseVertexBufferObjects(true);
    geometry->setDataVariance(osg::Object::DYNAMIC);
    geometry->setVertexArray(new osg::Vec3Array(4 * count));
    geometry->setColorArray(new osg::Vec4Array(4 * count), osg::Array::BIND_PER_VERTEX);
    geometry->addPrimitiveSet(new osg::DrawArrays(GL_QUADS, 0, 4 * count));
    return geometry;
}

void setQuad(osg::Geometry* geometry, int index, float left, float bottom, float right, float top,
             const osg::Vec4& colour)
{
    auto* vertices = static_cast<osg::Vec3Array*>(geometry->getVertexArray());
    auto* colours = static_cast<osg::Vec4Array*>(geometry->getColorArray());
    const int first = 4 * index;
    (*vertices)[first + 0].set(left, bottom, 0.0f);
    (*vertices)[first + 1].set(right, bottom, 0.0f);
    (*vertices)[first + 2].set(right, top, 0.0f);
    (*vertices)[first + 3].set(left, top, 0.0f);
    for (int i = 0; i < 4; ++i)
        (*colours)[first + i] = colour;
    vertices->dirty();
    colours->dirty();
    geometry->dirtyBound();
}

osgText::Text* textLine()
{
    auto* text = new osgText::Text;
    text->setFont(CVectorText2D::ChineseFont());
    text->setCharacterSizeMode(osgText::Text::OBJECT_COORDS);
    text->setAxisAlignment(osgText::Text::XY_PLANE);
    text->setAlignment(osgText::Text::LEFT_BASE_LINE);
    text->setColor(osg::Vec4(1.0f, 1.0f, 1.0f, 1.0f));
    text->setDataVariance(osg::Object::DYNAMIC);
    return text;
}

float widthOf(osgText::Text* text)
{
    const osg::BoundingBox& box = text->getBoundingBox();
    return box.valid() ? box.xMax() - box.xMin() : 0.0f;
}
} // namespace

CCaption::CCaption()
    : m_camera(new osg::Camera), m_band(quads(1)), m_bar(quads(2)), m_line(textLine()), m_heading(textLine())
{
    m_camera->setReferenceFrame(osg::Camera::ABSOLUTE_RF);
    m_camera->setRenderOrder(osg::Camera::NESTED_RENDER);
    m_camera->setClearMask(0);
    m_camera->setAllowEventFocus(false);
    m_camera->setComputeNearFarMode(osg::CullSettings::DO_NOT_COMPUTE_NEAR_FAR);
    m_camera->setCullingActive(false);
    m_camera->setViewMatrix(osg::Matrix::identity());
    osg::StateSet* state = m_camera->getOrCreateStateSet();
    state->setMode(GL_LIGHTING, osg::StateAttribute::OFF | osg::StateAttribute::OVERRIDE);
    state->setMode(GL_DEPTH_TEST, osg::StateAttribute::OFF | osg::StateAttribute::OVERRIDE);
    state->setMode(GL_BLEND, osg::StateAttribute::ON);
    state->setAttributeAndModes(new osg::BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA));
    // After everything of the scene, its transparent bins included.
    state->setRenderBinDetails(1000, "RenderBin");
    osg::ref_ptr<osg::Geode> geode = new osg::Geode;
    geode->addDrawable(m_band.get());
    geode->addDrawable(m_bar.get());
    geode->addDrawable(m_heading.get());
    geode->addDrawable(m_line.get());
    m_camera->addChild(geode.get());
    SetVisible(false);
}

void CCaption::SetVisible(bool visible) { m_camera->setNodeMask(visible ? ~0u : 0u); }

bool CCaption::IsVisible() const { return m_camera->getNodeMask() != 0u; }

void CCaption::SetText(const QString& text)
{
    m_text = text;
    m_line->setText(text.toStdString(), osgText::String::ENCODING_UTF8);
}

void CCaption::SetTitle(const QString& title)
{
    m_title = title;
    m_heading->setText(title.toStdString(), osgText::String::ENCODING_UTF8);
}

void CCaption::SetProgress(double share) { m_progress = share < 0.0 ? -1.0 : std::min(1.0, share); }

double CCaption::scaleFor(int height) { return std::max(0.5, height / kReferenceLines); }

void CCaption::Layout(int width, int height)
{
    const double s = scaleFor(height);
    const float margin = std::round(kMarginPixels * s);
    const float padding = std::round(kPaddingPixels * s);
    const float textSize = std::round(kTextPixels * s);
    const float titleSize = std::round(kTitlePixels * s);
    const bool bar = m_progress >= 0.0;
    const float barHeight = bar ? std::max(2.0f, float(std::round(kBarHeightPixels * s))) : 0.0f;
    m_line->setCharacterSize(textSize);
    m_heading->setCharacterSize(titleSize);
    const float widest = std::max({widthOf(m_line.get()), widthOf(m_heading.get()),
                                   bar ? float(std::round(kBarWidthPixels * s)) : 0.0f});
    const float bandWidth = std::min(widest + 2.0f * padding, float(width * kMaxWidthShare));
    const float inner = bandWidth - 2.0f * padding;

    float y = margin + padding;
    setQuad(m_bar.get(), 0, margin + padding, y, margin + padding + (bar ? inner : 0.0f), y + barHeight,
            kTrackColour);
    setQuad(m_bar.get(), 1, margin + padding, y, margin + padding + float(bar ? inner * m_progress : 0.0), y + barHeight,
            kDoneColour);
    if (bar)
        y += barHeight + padding;
    // The base line sits a fifth of the size above the bottom of the line.
    m_line->setPosition(osg::Vec3(margin + padding, y + 0.2f * textSize, 0.0f));
    y += textSize;
    if (!m_title.isEmpty()) {
        y += 0.5f * padding;
        m_heading->setPosition(osg::Vec3(margin + padding, y + 0.2f * titleSize, 0.0f));
        y += titleSize;
    }
    const float top = y + padding;
    setQuad(m_band.get(), 0, margin, margin, margin + bandWidth, top, kBandColour);
    m_camera->setProjectionMatrixAsOrtho2D(0.0, width, 0.0, height);
}

QRect CCaption::Area(int width, int height)
{
    Layout(width, height);
    const auto* vertices = static_cast<const osg::Vec3Array*>(m_band->getVertexArray());
    const osg::Vec3& low = (*vertices)[0];
    const osg::Vec3& high = (*vertices)[2];
    return QRect(QPoint(int(low.x()), height - int(std::ceil(high.y()))),
                 QPoint(int(std::ceil(high.x())) - 1, height - int(low.y()) - 1));
}

} // namespace vpe
