#include "CVectorText2D.h"

#include "CNodeVisitor.h"
#include "CScene.h"

#include <fontconfig/fontconfig.h>
#include <osgDB/Options>
#include <osgText/Font>

namespace vpe {

float CVectorText2D::s_pixelScale = 1.0f;

namespace {

class LabelScaler : public CNodeVisitor {
protected:
    void VisitVisualNode(CVisualNode& node) override
    {
        for (unsigned int i = 0; i < node.getNumDrawables(); ++i) {
            if (auto* label = dynamic_cast<CVectorText2D*>(node.getDrawable(i)))
                label->SetSizeInPixels(label->GetSizeInPixels());
        }
    }
};

// Read once: every label of the process shares the face.
osgText::Font* chineseFont()
{
    static osg::ref_ptr<osgText::Font> font = []() -> osg::ref_ptr<osgText::Font> {
        std::string file;
        int index = 0;
        if (!CVectorText2D::FindChineseFace(file, index))
            return osgText::Font::getDefaultFont();
        osg::ref_ptr<osgDB::Options> options = new osgDB::Options("index=" + std::to_string(index));
        osg::ref_ptr<osgText::Font> face = osgText::readRefFontFile(file, options.get());
        return face ? face : osgText::Font::getDefaultFont();
    }();
    return font.get();
}

osgText::Text::AlignmentType alignmentOf(CVectorText2D::AlignmentScheme scheme)
{
    switch (scheme) {
    case CVectorText2D::LeftBottom: return osgText::Text::LEFT_BOTTOM;
    case CVectorText2D::CenterBottom: return osgText::Text::CENTER_BOTTOM;
    case CVectorText2D::LeftCenter: return osgText::Text::LEFT_CENTER;
    case CVectorText2D::CenterCenter: return osgText::Text::CENTER_CENTER;
    case CVectorText2D::LeftTop: return osgText::Text::LEFT_TOP;
    case CVectorText2D::CenterTop: return osgText::Text::CENTER_TOP;
    case CVectorText2D::CenterBaseLine: return osgText::Text::CENTER_BASE_LINE;
    }
    return osgText::Text::CENTER_BOTTOM;
}

} // namespace

bool CVectorText2D::FindChineseFace(std::string& file, int& index)
{
    // The face matters: the same .ttc holds Japanese, Korean and Chinese
    // faces, and the family name alone picks the first (Japanese) one.
    FcPattern* pattern = FcNameParse(reinterpret_cast<const FcChar8*>("Noto Sans CJK SC:lang=zh-cn"));
    if (!pattern)
        return false;
    FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
    FcDefaultSubstitute(pattern);
    FcResult result = FcResultNoMatch;
    FcPattern* match = FcFontMatch(nullptr, pattern, &result);
    FcPatternDestroy(pattern);
    if (!match)
        return false;
    FcChar8* path = nullptr;
    const bool found = FcPatternGetString(match, FC_FILE, 0, &path) == FcResultMatch &&
                       FcPatternGetInteger(match, FC_INDEX, 0, &index) == FcResultMatch;
    if (found)
        file = reinterpret_cast<const char*>(path);
    FcPatternDestroy(match);
    return found;
}

osgText::Font* CVectorText2D::ChineseFont() { return chineseFont(); }

CVectorText2D::CVectorText2D()
{
    setFont(chineseFont());
    setAxisAlignment(osgText::Text::SCREEN);
    setCharacterSizeMode(osgText::Text::SCREEN_COORDS);
    applySize();
    setAlignment(osgText::Text::CENTER_BOTTOM);
    setDataVariance(osg::Object::DYNAMIC);
    setNodeMask(~CScene::kCastsShadowMask);
    getOrCreateStateSet()->setMode(GL_LIGHTING, osg::StateAttribute::OFF);
}

void CVectorText2D::SetPosition(const osg::Vec3d& position) { setPosition(osg::Vec3(position)); }

void CVectorText2D::SetText(const QString& text)
{
    m_text = text;
    setText(text.toStdString(), osgText::String::ENCODING_UTF8);
}

void CVectorText2D::SetSizeInPixels(float pixels)
{
    m_pixels = pixels;
    applySize();
}

void CVectorText2D::applySize() { setCharacterSize(m_pixels * s_pixelScale); }

void CVectorText2D::SetPixelScale(float scale, osg::Node* scene)
{
    s_pixelScale = scale;
    if (!scene)
        return;
    LabelScaler scaler;
    scene->accept(scaler);
}

void CVectorText2D::SetColor(const QColor& color)
{
    setColor(osg::Vec4(color.redF(), color.greenF(), color.blueF(), color.alphaF()));
}

void CVectorText2D::SetAlignmentScheme(AlignmentScheme scheme) { setAlignment(alignmentOf(scheme)); }

} // namespace vpe
