#pragma once

#include <QDate>

// One step of a tower crane's lifting schedule: from this day on the crane
// stands this high (model length units).
struct KVXTowerLiftingData {
    QDate date;
    int height = 0;
};
