#pragma once

#include <QColor>

#include <osg/StateSet>
#include <osg/Vec4d>

namespace vpe {

// A state set with the settings the application draws with, named as the
// application thinks of them. Clip planes are kept by index (0 to 7) as
// plane equations (a, b, c, d with a·x + b·y + c·z + d >= 0 kept) in the
// coordinates of the node that carries the state set.
class CStateSet : public osg::StateSet {
public:
    enum FaceMode { FrontFaces = 0, BackFaces = 1, BothFaces = 2 };
    enum BlendMode { AlphaBlending = 0 };
    static constexpr int kMaxClipPlanes = 8;
    static constexpr int kTopDrawingPriority = 1000;

    CStateSet() = default;
    CStateSet(const osg::StateSet& other, const osg::CopyOp& copy = osg::CopyOp::SHALLOW_COPY);

    // A private copy: its attributes are copied too, so changing a clip
    // plane of the clone leaves the original alone.
    CStateSet* Clone() const;

    void SetDiffuseColor(const QColor& color);
    void SetAmbientColor(const QColor& color);
    void SetSceneBlending(int mode);
    void SetDepthTestEnabled(bool enabled);
    void SetDepthWriteEnabled(bool enabled);
    void SetTwoSidedLighting(bool enabled);
    void SetFaceMode(int mode);
    void SetPolygonOffset(float factor, float units);
    void SetLineSmooth(bool enabled);
    void SetLineWidth(float width);
    void SetLightingEnabled(bool enabled);
    // Drawn after everything of a lower priority (and over it when the depth
    // test is off). Overlays that must show over everything take the top.
    void SetDrawingPriority(int priority);
    int GetDrawingPriority() const;
    // Which colour channels drawing writes: bit 0 red, 1 green, 2 blue,
    // 3 alpha; 0xFFFF (the default) writes them all.
    void SetDrawingMask(unsigned int mask);
    unsigned int GetDrawingMask() const { return m_drawingMask; }

    void AddClipPlane(int index, const osg::Vec4d& equation);
    void RemoveClipPlane(int index);
    bool HasClipPlane(int index) const;
    osg::Vec4d GetClipPlane(int index) const;
    // Whatever planes the parents set, nothing under this state set is cut.
    void SetClipPlanesDisabled(bool disabled);
    // Makes every attribute and mode set so far win over those of the
    // renderables below (an overlay's look over the geometry it shares).
    void SetOverriding();

protected:
    ~CStateSet() override = default;

private:
    unsigned int m_drawingMask = 0xffffu;
};

} // namespace vpe
