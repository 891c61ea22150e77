#pragma once

#include <QColor>
#include <QString>

#include <osg/Vec3d>
#include <osgText/Text>

namespace vpe {

// Text that always faces the screen, sized in screen pixels, anchored at a
// point of the model; Chinese is drawn with the Simplified Chinese face.
class CVectorText2D : public osgText::Text {
public:
    // Where the anchor point sits on the text.
    enum AlignmentScheme {
        LeftBottom = 0,
        CenterBottom = 1,
        LeftCenter = 2,
        CenterCenter = 3,
        LeftTop = 4,
        CenterTop = 5,
        // The anchor on the middle of the first line's base line.
        CenterBaseLine = 6,
    };

    CVectorText2D();

    void SetPosition(const osg::Vec3d& position);
    void SetText(const QString& text);
    QString GetText() const { return m_text; }
    void SetSizeInPixels(float pixels);
    void SetColor(const QColor& color);
    void SetAlignmentScheme(AlignmentScheme scheme);

    float GetSizeInPixels() const { return m_pixels; }

    // The font file and face that fontconfig gives for Simplified Chinese;
    // false when fontconfig has none.
    static bool FindChineseFace(std::string& file, int& index);
    // That face, read once for the process (OpenSceneGraph's default face
    // when there is none).
    static osgText::Font* ChineseFont();

    // Renders drawn at a multiple of the picture's size (anti-aliasing) draw
    // labels that much larger, so that they keep their size in the picture.
    static float GetPixelScale() { return s_pixelScale; }
    // Sets the scale and applies it to every label under the node.
    static void SetPixelScale(float scale, osg::Node* scene);

protected:
    ~CVectorText2D() override = default;

private:
    void applySize();

    static float s_pixelScale;
    QString m_text;
    float m_pixels = 16.0f;
};

} // namespace vpe
