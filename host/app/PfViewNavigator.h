#pragma once

#include <QPointF>
#include <QSize>

#include <osg/Vec3d>

namespace vpe {
class CCamera;
}

// How the mouse moves the camera of the 3D view: turning about a point of
// the model, sliding sideways with the point under the cursor, coming
// nearer to or going away from the point under the cursor, and switching
// between a perspective and an orthographic picture. The world's Z stays
// up: the camera never turns over the top or under the ground.
class PfViewNavigator {
public:
    // Turns the camera about the pivot: yaw about the world's Z, pitch
    // about the camera's right side, in degrees. A pitch that would take
    // the view past straight down or up is left out.
    static void Orbit(vpe::CCamera& camera, const osg::Vec3d& pivot, double yawDegrees, double pitchDegrees);
    // Slides the camera so that the world point that was drawn at pixel
    // `from` is drawn at `to`, in a picture of that size.
    static void Pan(vpe::CCamera& camera, const osg::Vec3d& anchor, const QPointF& from, const QPointF& to,
                    const QSize& size);
    // Brings the eye nearer the point (factor below 1) or further away
    // (above 1); the point keeps its pixel. Never nearer than the camera's
    // near distance.
    static void Zoom(vpe::CCamera& camera, const osg::Vec3d& point, double factor);
    // The same picture, about, at the focus distance, in the other
    // projection.
    static void SetProjection(vpe::CCamera& camera, int type, double focusDistance);
    // How many pixels of the picture one millimetre at that distance takes.
    static double PixelsPerUnit(const vpe::CCamera& camera, double distance, int pictureHeight);
};
