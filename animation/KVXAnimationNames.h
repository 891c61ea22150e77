#pragma once

// Names under which the module's clocks and engine objects live in the
// host's registries, shared by the schedule and the key-frame halves.
namespace KVXAnimationNames {

inline constexpr const char* kCameraAnimationClockTimer = "kvx_camera_animation_clock_timer";
// The schedule manager and the key-frame manager share this clock.
inline constexpr const char* kDateAnimationClockTimer = "kvx_date_animation_clock_timer";
inline constexpr const char* kVideoRecordClockTimer = "kvx_video_record_clock_timer";
inline constexpr const char* kRouteAnimationClockTimer = "kvx_route_animation_clock_timer";
inline constexpr const char* kPlatformTowerClockTimer = "kvx_platform_tower_clock_timer";

// The engine animation and animator that keep the clock running while the
// schedule plays.
inline constexpr const char* kAnimControllerName = "ANIM_CONTROLLER_NAME";
// The engine animation and animator of key-frame camera playback.
inline constexpr const char* kCameraAnimationName = "camera_animation";

} // namespace KVXAnimationNames
