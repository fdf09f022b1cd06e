#include "camera/subject.h"

#include <QThread>
#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <mutex>
#include <new>
#include <numeric>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace {

constexpr double kPi = 3.14159265358979323846;
// Lengths below are in base pixels, those of a 1024 x 768 picture; a picture of another size
// scales them by the root of its area's ratio to that one.
constexpr double kBasePixels = 1024 * 768;
// The field is about 5 mm wide and a step moves the rail 0.6 µm: a base pixel spans 8 steps.
constexpr double kStepsPerBasePixel = 8;
constexpr qint64 kMaxPixels = 100'000'000;
// The blurs kept (base pixels); a pixel's blur is interpolated between its two neighbours.
constexpr std::array kLevelSigmas{0.0, 0.5,  0.71, 1.0,  1.41, 2.0,  2.83,
                                  4.0, 5.66, 8.0,  11.3, 16.0, 22.6, 32.0};

struct Colour {
    float r = 0, g = 0, b = 0;
};
Colour operator*(Colour c, float f) {
    return {c.r * f, c.g * f, c.b * f};
}
Colour operator+(Colour a, Colour b) {
    return {a.r + b.r, a.g + b.g, a.b + b.b};
}
Colour mix(Colour a, Colour b, float t) {
    return a * (1 - t) + b * t;
}

quint32 pack(Colour c) {
    const auto level = [](float v) { return quint32(std::clamp(v, 0.0f, 1.0f) * 255 + 0.5f); };
    return level(c.r) << 16 | level(c.g) << 8 | level(c.b);
}

quint64 scramble(quint64 x) {
    x ^= x >> 30;
    x *= 0xbf58476d1ce4e5b9ULL;
    x ^= x >> 27;
    x *= 0x94d049bb133111ebULL;
    return x ^ (x >> 31);
}
// A repeatable random number in [0, 1) for a cell of a lattice.
float cellRandom(qint64 i, qint64 j, quint64 salt) {
    const quint64 h = scramble(quint64(i) * 0x9e3779b97f4a7c15ULL ^ scramble(quint64(j) + salt));
    return float(h >> 40) / float(1 << 24);
}

double length(double x, double y) {
    return std::sqrt(x * x + y * y);
}

float smoothstep(float edge0, float edge1, float x) {
    const float t = std::clamp((x - edge0) / (edge1 - edge0), 0.0f, 1.0f);
    return t * t * (3 - 2 * t);
}

// Runs body(firstRow, endRow) over slices of rows on every core. It uses threads of its own, not
// Qt's global pool: the camera renders on a pool thread, and renders waiting there for slices
// queued behind each other could block the pool for good.
template <typename Body>
void forEachRowSlice(int rows, const Body& body) {
    constexpr int kSlice = 16;
    std::atomic_int next{0};
    std::exception_ptr failure;
    std::mutex failureMutex;
    const auto work = [&] {
        try {
            for (int first; (first = next.fetch_add(kSlice)) < rows;)
                body(first, std::min(first + kSlice, rows));
        } catch (...) {
            const std::lock_guard lock(failureMutex);
            failure = std::current_exception();
            next = rows;
        }
    };
    const int helpers = std::min(QThread::idealThreadCount(), (rows + kSlice - 1) / kSlice) - 1;
    std::vector<std::thread> threads;
    try {
        for (int i = 0; i < helpers; ++i)
            threads.emplace_back(work);
    } catch (const std::system_error&) {
        // Fewer threads, the same work.
    }
    work();
    for (std::thread& thread : threads)
        thread.join();
    if (failure) std::rethrow_exception(failure);
}

// The wing and the grains on it, in base pixels. Positions on the frame are fractions of its
// width and height, so a frame of any aspect shows the whole subject.
class Scene {
public:
    explicit Scene(QSizeF frame) : frame_(frame) {
        root_ = {-0.3 * frame.width(), -0.35 * frame.height()};
        reach_ = std::hypot(frame.width(), frame.height());
        const struct {
            double u, v, radius;
        } grains[] = {{0.42, 0.30, 34},
                      {0.70, 0.62, 42},
                      {0.22, 0.66, 28},
                      {0.86, 0.28, 30},
                      {0.55, 0.86, 36}};
        for (const auto& g : grains) {
            const QPointF centre(g.u * frame.width(), g.v * frame.height());
            // A ball lying on the wing: its centre stands one radius nearer than the wing.
            const double middle = wingDepth(centre) - g.radius * kStepsPerBasePixel;
            grains_.push_back({centre, g.radius, middle});
        }
    }

    // The pattern colour of the scales last met, one for each of the two rows a pixel sees;
    // neighbouring pixels mostly lie on the same scales. One per thread.
    struct ScaleMemo {
        qint64 row = -1, index = 0;
        float jitter = 0, tone = 0;
        Colour colour;
    };
    using Memo = std::array<ScaleMemo, 2>;

    // Colour and depth (steps) at point p; pixel is the size of a picture pixel in base pixels.
    void sample(QPointF p, double pixel, Memo& memo, Colour* colour, double* depth) const {
        *colour = wingColour(p, pixel, memo);
        *depth = wingDepth(p);
        for (const Grain& grain : grains_) {
            const double dx = p.x() - grain.centre.x(), dy = p.y() - grain.centre.y();
            if (std::max(std::abs(dx), std::abs(dy)) > grain.radius + 16) continue;
            // Its shadow falls down and to the right of it.
            const double shade = length(dx - 5, dy - 6) - grain.radius;
            *colour = *colour * (1 - 0.5f * smoothstep(6, -4, float(shade)));
            const double distance = length(dx, dy);
            const float cover =
                std::clamp(float((grain.radius - distance) / pixel + 0.5), 0.f, 1.f);
            if (cover <= 0) continue;
            *colour = mix(*colour, grainColour(grain, dx, dy), cover);
            if (cover >= 0.5f) {
                const double rise =
                    std::sqrt(std::max(0.0, grain.radius * grain.radius - distance * distance));
                *depth = grain.middle - rise * kStepsPerBasePixel;
            }
        }
    }

private:
    struct Grain {
        QPointF centre;
        double radius;
        double middle;  // depth of the ball's centre
    };

    // The wing is bent: its depth changes slowly at the near and far corners and fastest
    // across the middle of the frame.
    double wingDepth(QPointF p) const {
        const double t = 0.6 * p.x() / frame_.width() + 0.4 * p.y() / frame_.height();
        const double bent = t - 0.6 * std::sin(2 * kPi * t) / (2 * kPi);
        return Subject::kNearSteps + (Subject::kFarSteps - Subject::kNearSteps) * bent;
    }

    // The wing's pattern at the middle of one scale: each scale has one colour.
    Colour pattern(QPointF p) const {
        const Colour orange{0.93f, 0.45f, 0.08f}, rust{0.55f, 0.18f, 0.05f};
        const Colour black{0.09f, 0.07f, 0.06f}, yellow{0.98f, 0.82f, 0.2f};
        const Colour white{0.96f, 0.95f, 0.92f}, blue{0.25f, 0.45f, 0.9f};
        const Colour cream{0.99f, 0.86f, 0.55f};
        const double dx = p.x() - root_.x(), dy = p.y() - root_.y();
        const double reach = length(dx, dy) / reach_, angle = std::atan2(dy, dx);
        if (reach > 1.1) {  // the dark margin with a row of white spots
            const double along = angle * 28 / kPi;
            const double spot = length((along - std::round(along)) * 0.12, reach - 1.2);
            return spot < 0.035 ? white : black;
        }
        for (double vein : {0.24, 0.45, 0.66, 0.87, 1.08}) {  // radiating from the root
            if (std::abs(std::sin(angle - vein - 0.08 * reach)) * reach * reach_ < 3.5)
                return black;
        }
        for (const auto& [u, v, size] : {std::array{0.6, 0.5, 1.0}, std::array{0.28, 0.72, 0.6}}) {
            const double r = length(p.x() - u * frame_.width(), p.y() - v * frame_.height()) / size;
            if (r < 14) return white;
            if (r < 26) return blue;
            if (r < 44) return black;
            if (r < 58) return yellow;
            if (r < 63) return black;
        }
        // A pale band across the wing, ragged as the scales fall.
        const double band = std::abs(reach - 0.8 - 0.02 * std::sin(angle * 23));
        if (band < 0.025) return cream;
        return mix(rust, orange, float(std::clamp(reach * 1.6, 0.0, 1.0)));
    }

    // Rows of scales like roof tiles, each row's tips over the next row's bases, every other
    // row shifted by half a scale; thin dark gaps between them show the membrane.
    Colour wingColour(QPointF p, double pixel, Memo& memo) const {
        constexpr double kAngle = 0.6, kRowPitch = 9, kPitch = 7.5, kRadius = 3.2, kLength = 13;
        const double c = std::cos(kAngle), s = std::sin(kAngle);
        const double a = c * p.x() + s * p.y(), b = -s * p.x() + c * p.y();
        const qint64 row = qint64(std::floor(a / kRowPitch));
        Colour colour{0.05f, 0.04f, 0.035f};
        for (qint64 r = row; r >= row - 1; --r) {  // the row below first
            const double shift = (r & 1) ? 0.5 : 0;
            const qint64 k = qint64(std::round(b / kPitch - shift));
            ScaleMemo& seen = memo[r & 1];
            const bool unseen = seen.row != r || seen.index != k;
            if (unseen) seen = {r, k, cellRandom(r, k, 1) - 0.5f, cellRandom(r, k, 2), {}};
            const double centre = (k + shift + 0.08 * seen.jitter) * kPitch;
            const double base = r * kRowPitch + kRadius + seen.jitter;
            const double tip = r * kRowPitch + kLength - kRadius + 0.6 * seen.jitter;
            if (unseen) {
                const double middle = (base + tip) / 2;
                seen.colour = pattern({c * middle - s * centre, s * middle + c * centre});
            }
            const double along = a - std::clamp(a, base, tip), across = b - centre;
            const double edge = length(along, across) - kRadius;  // < 0 inside the scale
            if (r < row && edge > 0)  // the tips cast a little shadow on the row below
                colour = colour * (1 - 0.55f * std::exp(-float(edge) / 1.2f));
            const float cover = std::clamp(float(0.5 - edge / pixel), 0.f, 1.f);
            if (cover <= 0) continue;
            Colour scale = seen.colour * (0.8f + 0.35f * seen.tone);
            const float ridges = 0.88f + 0.12f * float(std::cos(2 * kPi * across / 2.2));
            const float sheen = 1 - float(across * across) / float(kRadius * kRadius);
            const float rim = 0.35f + 0.65f * smoothstep(0, 1.3f, float(-edge));
            // Dark scales shimmer blue-green, so even the black parts show every scale.
            const float dark = 1 - std::max({seen.colour.r, seen.colour.g, seen.colour.b});
            const Colour shimmer =
                Colour{0.06f, 0.1f, 0.14f} * ((0.4f + dark) * (0.5f + seen.tone));
            scale = (scale * ridges + shimmer * sheen) * rim;
            colour = mix(colour, scale, cover);
        }
        return colour;
    }

    // A pollen grain: a pale yellow ball covered with pits, lit from the top left.
    Colour grainColour(const Grain& grain, double dx, double dy) const {
        const double R = grain.radius, distance = std::min(length(dx, dy), R);
        const double scale = distance > 0 ? distance / length(dx, dy) : 0;
        const double nx = dx * scale / R, ny = dy * scale / R;
        const double nz = std::sqrt(std::max(0.0, 1 - nx * nx - ny * ny));
        const double lit = std::max(0.0, -0.5 * nx - 0.6 * ny + 0.62 * nz);
        const double half = std::max(0.0, (-0.5 * nx - 0.6 * ny + 1.62 * nz) / 1.79);
        // Pits on a latitude-longitude lattice of the ball's surface, about 5 base pixels apart.
        constexpr double kCell = 5;
        const double gu = std::atan2(nx, nz) * R / kCell, gv = std::asin(ny) * R / kCell;
        const qint64 iu = qint64(std::floor(gu)), iv = qint64(std::floor(gv));
        const double fu = gu - iu - 0.5 - 0.3 * (cellRandom(iu, iv, 3) - 0.5);
        const double fv = gv - iv - 0.5 - 0.3 * (cellRandom(iu, iv, 4) - 0.5);
        const float pit = float(length(fu, fv) * kCell);
        const float surface = 0.4f + 0.6f * smoothstep(1.4f, 1.9f, pit) +
                              0.25f * smoothstep(1.9f, 2.2f, pit) * smoothstep(2.8f, 2.2f, pit);
        const Colour body{0.95f, 0.78f, 0.3f};
        return body * (surface * float(0.25 + 0.85 * lit)) +
               Colour{1, 1, 1} * float(0.35 * std::pow(half, 30));
    }

    QSizeF frame_;
    QPointF root_;  // where the wing's veins start, off the frame to the top left
    double reach_;  // the frame's diagonal
    std::vector<Grain> grains_;
};

struct Rgb {
    float r, g, b;
};

// Channel sums weighted by taps of 14 bits back to a pixel.
quint32 packSums(const int* sums) {
    constexpr int kHalf = 1 << 13;
    return quint32((sums[0] + kHalf) >> 14) << 16 | quint32((sums[1] + kHalf) >> 14) << 8 |
           quint32((sums[2] + kHalf) >> 14);
}

// A Gaussian in 14-bit fixed point, its taps summing to 1 << 14.
std::vector<int> gaussianTaps(double sigma) {
    const int radius = std::max(1, int(std::ceil(3 * sigma)));
    std::vector<double> weights(2 * radius + 1);
    double sum = 0;
    for (int k = -radius; k <= radius; ++k)
        sum += weights[k + radius] = std::exp(-k * k / (2 * sigma * sigma));
    std::vector<int> taps;
    for (double w : weights)
        taps.push_back(int(std::lround(w / sum * (1 << 14))));
    taps[radius] += (1 << 14) - std::accumulate(taps.begin(), taps.end(), 0);
    return taps;
}

Rgb unpack(quint32 p) {
    return {float(p >> 16 & 0xff), float(p >> 8 & 0xff), float(p & 0xff)};
}

// The blur down the columns, row by row for the cache's sake: output row i is the blur around
// input row i * factor.
void blurColumns(const std::vector<quint32>& in, int columns, int rows,
                 const std::vector<int>& taps, int factor, std::vector<quint32>& out, int outRows) {
    const int radius = int(taps.size() / 2);
    forEachRowSlice(outRows, [&](int first, int end) {
        std::vector<int> sums(3 * qsizetype(columns));
        for (int i = first; i < end; ++i) {
            std::fill(sums.begin(), sums.end(), 0);
            for (int k = -radius; k <= radius; ++k) {
                const quint32* row =
                    &in[std::clamp(i * factor + k, 0, rows - 1) * qsizetype(columns)];
                const int w = taps[k + radius];
                for (int x = 0; x < columns; ++x) {
                    sums[3 * x] += w * int(row[x] >> 16 & 0xff);
                    sums[3 * x + 1] += w * int(row[x] >> 8 & 0xff);
                    sums[3 * x + 2] += w * int(row[x] & 0xff);
                }
            }
            quint32* line = &out[qsizetype(i) * columns];
            for (int x = 0; x < columns; ++x)
                line[x] = packSums(&sums[3 * x]);
        }
    });
}

// The blur along the rows: output pixel j of a row is the blur around input pixel j * factor.
void blurRows(const std::vector<quint32>& in, int columns, int rows, const std::vector<int>& taps,
              int factor, std::vector<quint32>& out, int outColumns) {
    const int radius = int(taps.size() / 2);
    forEachRowSlice(rows, [&](int first, int end) {
        for (int y = first; y < end; ++y) {
            const quint32* row = &in[qsizetype(y) * columns];
            quint32* line = &out[qsizetype(y) * outColumns];
            for (int j = 0; j < outColumns; ++j) {
                int sums[3] = {0, 0, 0};
                for (int k = -radius; k <= radius; ++k) {
                    const quint32 p = row[std::clamp(j * factor + k, 0, columns - 1)];
                    const int w = taps[k + radius];
                    sums[0] += w * int(p >> 16 & 0xff);
                    sums[1] += w * int(p >> 8 & 0xff);
                    sums[2] += w * int(p & 0xff);
                }
                line[j] = packSums(sums);
            }
        }
    });
}

}  // namespace

Subject::Subject(QSize size)
    : size_(size),
      scale_(std::sqrt(std::max(0.0, double(size.width()) * size.height() / kBasePixels))) {
    if (size.width() < 1 || size.height() < 1 || qint64(size.width()) * size.height() > kMaxPixels)
        throw std::invalid_argument("ein Bild von " + std::to_string(size.width()) + " x " +
                                    std::to_string(size.height()) +
                                    " Pixeln ist leer oder größer als 100 Megapixel");
    paint();
    buildBlurLevels();
}

void Subject::paint() {
    const int width = size_.width(), height = size_.height();
    const Scene scene(QSizeF(width / scale_, height / scale_));
    BlurLevel sharp{0, 1, width, height, std::vector<quint32>(qsizetype(width) * height)};
    depth_.resize(sharp.pixels.size());
    forEachRowSlice(height, [&](int first, int end) {
        Scene::Memo memo;
        for (int y = first; y < end; ++y) {
            for (int x = 0; x < width; ++x) {
                Colour colour;
                double depth;
                scene.sample({(x + 0.5) / scale_, (y + 0.5) / scale_}, 1 / scale_, memo, &colour,
                             &depth);
                const qsizetype i = qsizetype(y) * width + x;
                sharp.pixels[i] = pack(colour);
                depth_[i] = quint16(std::lround(depth));
            }
        }
    });
    levels_.push_back(std::move(sharp));
}

// Each level is the one before blurred further, then thinned out to every second pixel once its
// blur spans two of the previous level's pixels, so the whole stack needs little more memory
// than the sharp picture.
void Subject::buildBlurLevels() {
    const int width = size_.width(), height = size_.height();
    for (std::size_t i = 1; i < kLevelSigmas.size(); ++i) {
        const BlurLevel& from = levels_.back();
        const double sigma = kLevelSigmas[i] * scale_, before = from.sigma * scale_;
        const int factor = sigma >= 2 * from.stride ? 2 : 1;
        BlurLevel to{kLevelSigmas[i], from.stride * factor, 0, 0, {}};
        to.columns = to.stride == 1 ? width : (width - 1) / to.stride + 2;
        to.rows = to.stride == 1 ? height : (height - 1) / to.stride + 2;
        const std::vector<int> taps =
            gaussianTaps(std::sqrt(sigma * sigma - before * before) / from.stride);
        std::vector<quint32> columnsBlurred(qsizetype(to.rows) * from.columns);
        blurColumns(from.pixels, from.columns, from.rows, taps, factor, columnsBlurred, to.rows);
        to.pixels.resize(qsizetype(to.rows) * to.columns);
        blurRows(columnsBlurred, from.columns, to.rows, taps, factor, to.pixels, to.columns);
        levels_.push_back(std::move(to));
    }
}

QImage Subject::render(double focusSteps, double noise, quint32 seed) const {
    if (!std::isfinite(focusSteps))
        throw std::invalid_argument("die Fokusstellung ist keine endliche Zahl");
    noise = std::isfinite(noise) ? std::max(0.0, noise) : 0.0;

    // Which two levels, and how far between them, for each whole step of defocus.
    struct Blend {
        int level;
        float weight;
    };
    const int last = int(levels_.size()) - 1;
    const int farthest = int(std::ceil(kLevelSigmas[last] / kBlurPerStep));
    std::vector<Blend> blends(farthest + 1);
    for (int steps = 0; steps <= farthest; ++steps) {
        const double sigma = steps * kBlurPerStep;
        int level = 0;
        while (level + 1 < last && kLevelSigmas[level + 1] <= sigma)
            ++level;
        const double span = kLevelSigmas[level + 1] - kLevelSigmas[level];
        blends[steps] = {level, float(std::min(1.0, (sigma - kLevelSigmas[level]) / span))};
    }

    const int width = size_.width(), height = size_.height();
    QImage picture(size_, QImage::Format_RGB888);
    if (picture.isNull()) throw std::bad_alloc();
    // Noise of about the given deviation: the sum of four random bytes, scaled.
    const float noiseScale = float(noise / 147.8);
    forEachRowSlice(height, [&](int first, int end) {
        struct Row {
            const quint32 *upper, *lower;
            float down;
        };
        std::vector<Row> rows(levels_.size());
        for (int y = first; y < end; ++y) {
            for (std::size_t i = 0; i < levels_.size(); ++i) {
                const BlurLevel& level = levels_[i];
                const int top = y / level.stride;
                const int below = std::min(top + 1, level.rows - 1);
                rows[i] = {&level.pixels[qsizetype(top) * level.columns],
                           &level.pixels[qsizetype(below) * level.columns],
                           float(y % level.stride) / float(level.stride)};
            }
            const auto at = [&](int i, int x) -> Rgb {
                const BlurLevel& level = levels_[i];
                if (level.stride == 1) return unpack(rows[i].upper[x]);
                const int left = x / level.stride;
                const float across = float(x % level.stride) / float(level.stride);
                const float down = rows[i].down;
                const Rgb a = unpack(rows[i].upper[left]), b = unpack(rows[i].upper[left + 1]);
                const Rgb c = unpack(rows[i].lower[left]), d = unpack(rows[i].lower[left + 1]);
                const auto bilinear = [&](float Rgb::*channel) {
                    const float upper = a.*channel + (b.*channel - a.*channel) * across;
                    const float lower = c.*channel + (d.*channel - c.*channel) * across;
                    return upper + (lower - upper) * down;
                };
                return {bilinear(&Rgb::r), bilinear(&Rgb::g), bilinear(&Rgb::b)};
            };
            uchar* out = picture.scanLine(y);
            const quint16* depth = &depth_[qsizetype(y) * width];
            for (int x = 0; x < width; ++x) {
                const double defocus = std::abs(depth[x] - focusSteps);
                const Blend& blend = blends[defocus >= farthest ? farthest : int(defocus)];
                const Rgb near = at(blend.level, x), far = at(blend.level + 1, x);
                float value[3] = {near.r + (far.r - near.r) * blend.weight,
                                  near.g + (far.g - near.g) * blend.weight,
                                  near.b + (far.b - near.b) * blend.weight};
                if (noiseScale > 0) {
                    const quint64 key = quint64(y) * quint64(width) + quint64(x);
                    const quint64 h1 = scramble(key ^ scramble(seed + 0x5bd1e995ULL));
                    const quint64 h2 = scramble(h1);
                    const quint64 bits[3] = {h1, h1 >> 32, h2};
                    for (int c = 0; c < 3; ++c) {
                        const int sum = int(bits[c] & 0xff) + int(bits[c] >> 8 & 0xff) +
                                        int(bits[c] >> 16 & 0xff) + int(bits[c] >> 24 & 0xff);
                        value[c] += float(sum - 510) * noiseScale;
                    }
                }
                for (int c = 0; c < 3; ++c)
                    out[3 * x + c] = uchar(std::clamp(value[c], 0.0f, 255.0f) + 0.5f);
            }
        }
    });
    return picture;
}
