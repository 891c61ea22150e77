#pragma once

#include "host/vpe/core/CReferenced.h"

#include <QRect>
#include <QString>

#include <osg/Camera>
#include <osg/Geometry>
#include <osgText/Text>

namespace vpe {

// A caption over the picture, in screen space: a line of text (a date, for
// instance) with an optional title above it and a thin progress bar under
// it, on a dark translucent band in the bottom-left corner. It is sized to
// the picture (as it reads at 1280x720), so that it reads alike at 854x480
// and at 3840x2160, and it stays in the corner, away from the middle of the
// picture. Hidden until shown.
class CCaption : public CReferenced {
public:
    CCaption();

    void SetVisible(bool visible);
    bool IsVisible() const;
    void SetText(const QString& text);
    const QString& GetText() const { return m_text; }
    // Empty: no title line.
    void SetTitle(const QString& title);
    const QString& GetTitle() const { return m_title; }
    // The share done, 0 to 1; below 0 hides the bar.
    void SetProgress(double share);
    double GetProgress() const { return m_progress; }

    // Places everything for a picture of that size; the viewer calls it
    // before each render with the size it draws at.
    void Layout(int width, int height);
    // Where the band lies in a picture of that size, top-left origin.
    QRect Area(int width, int height);
    osg::Camera* GetNode() const { return m_camera.get(); }

protected:
    ~CCaption() override = default;

private:
    // Picture pixels per caption pixel: 1 at 720 lines.
    static double scaleFor(int height);

    osg::ref_ptr<osg::Camera> m_camera;
    osg::ref_ptr<osg::Geometry> m_band;
    osg::ref_ptr<osg::Geometry> m_bar;
    osg::ref_ptr<osgText::Text> m_line;
    osg::ref_ptr<osgText::Text> m_heading;
    QString m_text;
    QString m_title;
    double m_progress = -1.0;
};

} // namespace vpe
