#pragma once

#include <optional>

// How far apart the planes of a stack should be, from the optics: at magnification m a lens
// stopped down to f-number N, with a circle of confusion c accepted as sharp, has a depth of
// field of 2 c N (m + 1) / m^2. Planes closer than that overlap; the suggestion keeps some
// overlap so that no band between two planes is left soft.
namespace quendrix {

struct SpacingSuggestion {
    double depthOfFieldMm;  // of one plane
    double spacingMm;       // suggested distance between planes
    int intervals;          // planes - 1 over the range (what the stack's "Ebenen" counts)
};

constexpr double kPlaneOverlap = 0.2;  // each plane overlaps its neighbours by a fifth

// None when a figure is missing or makes no sense (no magnification, no range).
std::optional<SpacingSuggestion> suggestSpacing(double sensorWidthMm, double fieldOfViewMm,
                                                double fNumber, double circleOfConfusionMm,
                                                double rangeMm, double overlap = kPlaneOverlap);

}  // namespace quendrix
