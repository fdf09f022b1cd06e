#include "core/stepadvisor.h"

#include "settings/numbers.h"

#include <cmath>

namespace quendrix {

std::optional<SpacingSuggestion> suggestSpacing(double sensorWidthMm, double fieldOfViewMm,
                                                double fNumber, double circleOfConfusionMm,
                                                double rangeMm, double overlap) {
    if (!(sensorWidthMm > 0 && fieldOfViewMm > 0 && fNumber > 0 && circleOfConfusionMm > 0 &&
          rangeMm > 0 && overlap >= 0 && overlap < 1))
        return std::nullopt;
    const double m = sensorWidthMm / fieldOfViewMm;
    const double depth = 2 * circleOfConfusionMm * fNumber * (m + 1) / (m * m);
    const double spacing = depth * (1 - overlap);
    const int intervals = std::max(1, clampedInt(std::ceil(rangeMm / spacing - 1e-9)));
    return SpacingSuggestion{depth, spacing, intervals};
}

}  // namespace quendrix
