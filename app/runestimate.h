#pragma once

#include <QList>

// The time left of a running stack. A stack is the approach to its start, a first pause of
// twice the pause between pictures, the first picture, and then for every further plane a
// plane step, the pause and the picture. Before anything is measured the plan's own figures
// count; each picture taken tells how long the camera takes, and each step from one picture
// to the next how long a plane step and its pause take, and these replace the plan's figures.
class RunEstimate {
public:
    struct Plan {
        int pictures = 0;            // planes + 1
        double pauseSeconds = 0;     // the pause between pictures
        double approachSeconds = 0;  // the drive to the start
        double moveSeconds = 0;      // one plane step
        double cameraSeconds = 0;    // one picture, as far as known before the run
    };

    // The approach begins.
    void start(const Plan& plan, double now);
    // The rig stands at the start; the first (doubled) pause runs.
    void approached(double now);
    void pictureRequested(int plane, double now);
    void pictureTaken(int plane, double now);
    // Time that did not belong to the run (a pause held by the photographer) is left out.
    void leaveOut(double seconds) { last_ += seconds; }

    // Seconds left, never below 0.
    double remaining(double now) const;
    int taken() const { return taken_; }
    int pictures() const { return plan_.pictures; }
    // Seconds one picture took, on average over this run; the plan's figure before the first.
    double cameraSeconds() const;

private:
    enum class Stage { Approach, FirstPause, Picture, Step };
    double stepSeconds() const;  // from a picture on disk to the next one asked for
    double perPlane() const { return stepSeconds() + cameraSeconds(); }

    Plan plan_;
    Stage stage_ = Stage::Approach;
    double last_ = 0;  // when the stage began
    int requested_ = 0;
    int taken_ = 0;
    QList<double> cameraTimes_;
    QList<double> stepTimes_;
};
