// Fuzz target: a live crane reading from the monitoring platform, any bytes.
// The manager takes in what is a reading and ignores the rest; the reading
// it keeps is always finite or untouched.

#include "animation/KVXPlatformAnimationManager.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    KVXPlatformAnimationManager* manager = KVXPlatformAnimationManager::getInstance();
    manager->setPlatformTowerData(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    const KVXPlatformTowerAnimationData& reading = manager->getCurrentData();
    if (reading.deviceId.size() > static_cast<int>(size))
        std::abort(); // nothing is made up
    return 0;
}
