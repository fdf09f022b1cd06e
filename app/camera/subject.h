#pragma once

#include <QImage>
#include <QSize>
#include <QtGlobal>
#include <vector>

// The subject the simulated camera photographs: a bent butterfly wing seen through the rig at a
// slant, with a few pollen grains lying on it. Its depth runs from kNearSteps (top left) to
// kFarSteps (bottom right) in rail positions of axis 0, so a stack over that range finds each
// part sharp in a different picture. Every part is covered with fine, high-contrast detail
// (scale edges and ridges, the pits of the grains) for a sharpness measure to find.
//
// Depth of field, simply modelled: a point at depth d, with the focus at f, is blurred by a
// Gaussian whose standard deviation grows in proportion to |d - f| (kBlurPerStep), scaled with
// the picture. Each pixel takes the blur of its own depth: light from an occluded part never
// spreads over a nearer one, the magnification does not change with focus, and exposure stays
// the same. A picture of any size shows the same field as a 1024 x 768 one, enlarged.
class Subject {
public:
    static constexpr double kNearSteps = 2000, kFarSteps = 6000;  // the subject's depth range
    // Standard deviation of the blur, in pixels of a 1024 x 768 picture, per step of
    // defocus: half a pixel 250 steps from focus, one pixel at 500. So a stack of nine planes
    // 500 steps apart over the depth finds every part sharp in one picture, blurred in the rest.
    static constexpr double kBlurPerStep = 0.002;

    // Precomputes what every render needs (the subject, its depth and a stack of blur levels).
    // Throws std::invalid_argument (with a German message) for an empty size or one beyond 100
    // megapixels.
    explicit Subject(QSize size);
    QSize size() const { return size_; }

    // The subject with the focus at focusSteps; noise is the sensor noise (standard deviation
    // in 8-bit levels, 0 = none) drawn from seed. Deterministic for given arguments.
    // Throws std::invalid_argument for a focus that is not a finite number.
    QImage render(double focusSteps, double noise = 0, quint32 seed = 0) const;

private:
    // The subject blurred by one amount, kept at a spacing of `stride` pixels (a power of two
    // no larger than the blur) and read back by bilinear interpolation.
    struct BlurLevel {
        double sigma = 0;  // in pixels of a 1024 x 768 picture
        int stride = 1;
        int columns = 0, rows = 0;
        std::vector<quint32> pixels;  // 0x00RRGGBB, row by row
    };

    void paint();
    void buildBlurLevels();

    QSize size_;
    double scale_;                // picture pixels per pixel of a 1024 x 768 picture
    std::vector<quint16> depth_;  // rail position in steps where each pixel is sharp
    std::vector<BlurLevel> levels_;
};
