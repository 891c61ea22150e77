#include "PfEdPolylinePrompt.h"

#include <osg/Vec3d>

namespace {
PfEdPolylinePrompt::Picker& picker()
{
    static PfEdPolylinePrompt::Picker installed;
    return installed;
}
} // namespace

void PfEdPolylinePrompt::SetPicker(Picker picker_) { picker() = std::move(picker_); }

bool PfEdPolylinePrompt::Pick(const QString& prompt, std::vector<osg::Vec3d>& points)
{
    if (!picker())
        return false;
    std::vector<osg::Vec3d> picked;
    if (!picker()(prompt, picked))
        return false;
    points = std::move(picked);
    return true;
}
