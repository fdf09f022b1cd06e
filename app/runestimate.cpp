#include "runestimate.h"

#include <algorithm>
#include <numeric>

namespace {
double mean(const QList<double>& values) {
    return std::accumulate(values.begin(), values.end(), 0.0) / double(values.size());
}
}  // namespace

void RunEstimate::start(const Plan& plan, double now) {
    *this = RunEstimate();
    plan_ = plan;
    last_ = now;
}

void RunEstimate::approached(double now) {
    stage_ = Stage::FirstPause;
    last_ = now;
}

void RunEstimate::pictureRequested(int plane, double now) {
    if (stage_ == Stage::Step) stepTimes_.append(now - last_);
    stage_ = Stage::Picture;
    requested_ = plane;
    last_ = now;
}

void RunEstimate::pictureTaken(int plane, double now) {
    if (stage_ == Stage::Picture) cameraTimes_.append(now - last_);
    stage_ = Stage::Step;
    taken_ = plane;
    last_ = now;
}

double RunEstimate::cameraSeconds() const {
    return cameraTimes_.isEmpty() ? plan_.cameraSeconds : mean(cameraTimes_);
}

double RunEstimate::stepSeconds() const {
    return stepTimes_.isEmpty() ? plan_.moveSeconds + plan_.pauseSeconds : mean(stepTimes_);
}

double RunEstimate::remaining(double now) const {
    const double since = now - last_;
    const auto left = [since](double stage) { return std::max(0.0, stage - since); };
    const int pictures = plan_.pictures;
    switch (stage_) {
        case Stage::Approach:
            return left(plan_.approachSeconds) + 2 * plan_.pauseSeconds + cameraSeconds() +
                   (pictures - 1) * perPlane();
        case Stage::FirstPause:
            return left(2 * plan_.pauseSeconds) + cameraSeconds() + (pictures - 1) * perPlane();
        case Stage::Picture:
            return left(cameraSeconds()) + (pictures - requested_) * perPlane();
        case Stage::Step:
            if (taken_ >= pictures) return 0;
            return left(stepSeconds()) + cameraSeconds() + (pictures - taken_ - 1) * perPlane();
    }
    return 0;
}
