#pragma once

#include "CBody.h"
#include "host/vpe/core/CReferenced.h"

namespace vpe {

class CPlane;
class CSection;

// Splits a closed body by a plane into the part on the positive side (where
// the normal points) and the part on the negative side, and gives the section
// they share.
//
// Vertices closer to the plane than 1e-9 of the body's bounding box diagonal
// count as lying on it; they are shared by both parts and by the section.
// Triangles that cross the plane are split where their edges cross it, each
// crossing point made once for both triangles of its edge. A face lying in
// the plane goes to the part it bounds: one facing along the normal is the
// top of material below it and stays with the negative part, and the other
// way round.
//
// The section's loops are the edges along which the two parts meet, chained
// by vertex, so they are closed whenever the body is. Where a loop touches
// itself or another loop at one vertex, the chain turns as far left as it
// can, which keeps loops apart.
//
// A plane that only touches the body (every vertex on one side or on the
// plane, as a plane through one of its faces) is a miss, exactly like a plane
// that passes by it: no part of zero thickness is ever made.
class CBooleanOperate {
public:
    // buildPositive, buildNegative: make the part on that side. buildSection:
    // hand back the section. capParts: close each part with the section's
    // faces; without it the parts stay open along the cut.
    CBooleanOperate(bool buildPositive, bool buildNegative, bool buildSection, bool capParts);

    // False, with null parts and an empty section, when the plane is invalid
    // or does not cut the body. True otherwise, with the parts and the
    // section asked for; a body made of separate shells that the plane cuts
    // only where they touch has an empty section.
    bool SplitBody(const CBody& body, const CPlane& plane, CRefPtr<CBody>& positivePart, CRefPtr<CBody>& negativePart,
                   CSection& section) const;

private:
    bool m_buildPositive;
    bool m_buildNegative;
    bool m_buildSection;
    bool m_capParts;
};

} // namespace vpe
