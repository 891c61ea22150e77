// Fuzz target: a live crane reading from the monitoring platform, any bytes.
// The manager takes in what is a reading and ignores the rest; the reading
// it keeps always holds finite numbers.

#include "animation/KVXPlatformAnimationManager.h"

#include <QByteArray>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    KVXPlatformAnimationManager* manager = KVXPlatformAnimationManager::getInstance();
    manager->setPlatformTowerData(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    const KVXPlatformTowerAnimationData& reading = manager->getCurrentData();
    if (!std::isfinite(reading.rotation) || !std::isfinite(reading.height) ||
        !std::isfinite(reading.previousRotation))
        std::abort();
    return 0;
}
