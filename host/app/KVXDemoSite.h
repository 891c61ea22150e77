#pragma once

class PfDbDatabase;

// A realistic small construction site, in millimetres: three buildings of
// several storeys (one element per storey), a slab with an opening, a
// temporary shed, a road, a truck, a gate, a fenced hazard zone and a tower
// crane with wall ties.
class KVXDemoSite {
public:
    static void Build(PfDbDatabase* database);
};
