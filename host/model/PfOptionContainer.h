#pragma once

// The host's drawing options that the module reads: how finely curved and
// cut geometry is tessellated.
class PfOptionContainer {
public:
    static PfOptionContainer* GetInstance();

    // Scales the length under which tessellated triangles count as slivers
    // and are dropped (1.0: a hundredth of a millimetre).
    double GetDistEpsilonCoefficient() const { return m_distEpsilonCoefficient; }
    void SetDistEpsilonCoefficient(double coefficient) { m_distEpsilonCoefficient = coefficient; }
    // Scales the angle between faces above which their shared edge is drawn
    // as a feature line (1.0: 20 degrees).
    double GetAngleEpsilonCoefficient() const { return m_angleEpsilonCoefficient; }
    void SetAngleEpsilonCoefficient(double coefficient) { m_angleEpsilonCoefficient = coefficient; }

private:
    double m_distEpsilonCoefficient = 1.0;
    double m_angleEpsilonCoefficient = 1.0;
};
