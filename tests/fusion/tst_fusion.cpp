// Focus fusion with the real align_image_stack and enfuse, on stacks made here: one textured
// subject, each plane sharp in its own vertical band and blurred elsewhere, seen a little
// larger from plane to plane as through a real focus rail.
#include "fusion/fusion.h"
#include "fusion/preview.h"
#include "support/sharpness.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <cmath>
#include <vector>

namespace {

constexpr QSize kPictureSize(640, 480);
constexpr int kPlanes = 5;

// Detail at several scales, so that blurred planes still have something to be matched on.
double lattice(int x, int y, int octave) {
    quint32 h = quint32(x) * 73856093u ^ quint32(y) * 19349663u ^ quint32(octave) * 83492791u;
    h ^= h >> 13;
    h *= 0x5bd1e995u;
    h ^= h >> 15;
    return (h & 0xffff) / 65535.0;
}

double texture(double x, double y) {
    double value = 0;
    int octave = 0;
    for (const double cell : {48.0, 12.0, 3.0}) {
        const double fx = x / cell, fy = y / cell;
        const int ix = int(std::floor(fx)), iy = int(std::floor(fy));
        const double tx = fx - ix, ty = fy - iy;
        const double top = lattice(ix, iy, octave) * (1 - tx) + lattice(ix + 1, iy, octave) * tx;
        const double bottom =
            lattice(ix, iy + 1, octave) * (1 - tx) + lattice(ix + 1, iy + 1, octave) * tx;
        value += top * (1 - ty) + bottom * ty;
        ++octave;
    }
    return value / 3;
}

// The subject at `magnification` about the picture's centre.
QImage subject(QSize size, double magnification) {
    QImage image(size, QImage::Format_RGB888);
    const double cx = size.width() / 2.0, cy = size.height() / 2.0;
    for (int y = 0; y < size.height(); ++y) {
        uchar* line = image.scanLine(y);
        for (int x = 0; x < size.width(); ++x) {
            const double v = texture((x - cx) / magnification + cx, (y - cy) / magnification + cy);
            line[3 * x] = uchar(std::clamp(255 * (1.6 * v - 0.3), 0.0, 255.0));
            line[3 * x + 1] = uchar(std::clamp(255 * (1.3 - 1.6 * v), 0.0, 255.0));
            line[3 * x + 2] = uchar(127.5 + 127 * std::sin(12 * v));
        }
    }
    return image;
}

QImage gaussianBlur(const QImage& source, double sigma) {
    const int radius = int(std::ceil(3 * sigma));
    std::vector<double> kernel(2 * radius + 1);
    double sum = 0;
    for (int i = -radius; i <= radius; ++i)
        sum += kernel[i + radius] = std::exp(-i * i / (2 * sigma * sigma));
    for (double& k : kernel)
        k /= sum;
    const int w = source.width(), h = source.height();
    std::vector<double> rows(size_t(w) * h * 3);
    for (int y = 0; y < h; ++y) {
        const uchar* line = source.constScanLine(y);
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c) {
                double s = 0;
                for (int i = -radius; i <= radius; ++i)
                    s += kernel[i + radius] * line[3 * std::clamp(x + i, 0, w - 1) + c];
                rows[(size_t(y) * w + x) * 3 + c] = s;
            }
    }
    QImage out(source.size(), QImage::Format_RGB888);
    for (int y = 0; y < h; ++y) {
        uchar* line = out.scanLine(y);
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c) {
                double s = 0;
                for (int i = -radius; i <= radius; ++i)
                    s += kernel[i + radius] *
                         rows[(size_t(std::clamp(y + i, 0, h - 1)) * w + x) * 3 + c];
                line[3 * x + c] = uchar(std::clamp(s + 0.5, 0.0, 255.0));
            }
    }
    return out;
}

// Plane i of n: sharp in the i-th vertical band, blurred elsewhere, 0.4 % larger per plane.
QImage plane(QSize size, int i, int n) {
    const QImage sharp = subject(size, 1 + 0.004 * i);
    QImage picture = gaussianBlur(sharp, 3);
    const int x0 = i * size.width() / n, x1 = (i + 1) * size.width() / n;
    for (int y = 0; y < size.height(); ++y)
        std::copy(sharp.constScanLine(y) + 3 * x0, sharp.constScanLine(y) + 3 * x1,
                  picture.scanLine(y) + 3 * x0);
    return picture;
}

// Grey values by Qt's luma weights, whatever colour space a file declares.
std::vector<int> grayValues(const QImage& image) {
    const QImage rgb = image.convertToFormat(QImage::Format_RGB32);
    std::vector<int> gray;
    gray.reserve(size_t(rgb.width()) * rgb.height());
    for (int y = 0; y < rgb.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(rgb.constScanLine(y));
        for (int x = 0; x < rgb.width(); ++x)
            gray.push_back(qGray(line[x]));
    }
    return gray;
}

// The share of tiles of `result` that keep at least 60 % of the detail (variance of the
// Laplacian) of the sharpest of `pictures` there.
double sharpShare(const QImage& result, const QList<QImage>& pictures, int columns, int rows) {
    const QList<double> tiles = tileSharpness(result, columns, rows);
    QList<double> best(tiles.size(), 0.0);
    for (const QImage& picture : pictures) {
        const QList<double> own = tileSharpness(picture, columns, rows);
        for (qsizetype t = 0; t < own.size(); ++t)
            best[t] = std::max(best[t], own[t]);
    }
    qsizetype sharp = 0;
    for (qsizetype t = 0; t < tiles.size(); ++t)
        sharp += tiles[t] >= 0.6 * best[t];
    return double(sharp) / tiles.size();
}

// Mean absolute difference of the grey values, leaving out a margin where alignment may
// leave the edge uncovered.
double meanDifference(const QImage& a, const QImage& b, int margin) {
    const std::vector<int> ga = grayValues(a), gb = grayValues(b);
    double sum = 0;
    int count = 0;
    for (int y = margin; y < a.height() - margin; ++y)
        for (int x = margin; x < a.width() - margin; ++x) {
            sum += std::abs(ga[size_t(y) * a.width() + x] - gb[size_t(y) * a.width() + x]);
            ++count;
        }
    return sum / count;
}

// The processes this test started that still exist, by name.
QStringList childProcesses() {
    QStringList names;
    const QByteArray self = QByteArray::number(QCoreApplication::applicationPid());
    for (const QString& pid : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
        if (!pid.front().isDigit() || !stat.open(QIODevice::ReadOnly)) continue;
        const QByteArray text = stat.readAll();  // "pid (name) state ppid ..."
        const qsizetype open = text.indexOf('('), close = text.lastIndexOf(')');
        if (open < 0 || close < 0) continue;
        if (text.mid(close + 2).split(' ').value(1) == self)
            names << QString::fromLocal8Bit(text.mid(open + 1, close - open - 1));
    }
    return names;
}

QStringList entries(const QString& folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                                  QDir::Name);
}

}  // namespace

class TestFusion : public QObject {
    Q_OBJECT

private:
    QTemporaryDir root_;
    QByteArray tmpdir_;
    QString scratch_;  // the temporary folder the code under test sees
    QStringList planeFiles_;
    QList<QImage> planes_;

    // A fresh folder holding copies of the stack.
    QString stackFolder(const QString& name, QStringList* pictures) {
        const QString folder = root_.filePath(name);
        QDir().mkpath(folder);
        pictures->clear();
        for (const QString& file : planeFiles_) {
            const QString copy = folder + QLatin1Char('/') + QFileInfo(file).fileName();
            QFile::copy(file, copy);
            *pictures << copy;
        }
        return folder;
    }

private slots:
    void initTestCase() {
        if (!Fusion::missingTools().isEmpty()) QSKIP(qPrintable(Fusion::missingTools()));
        QVERIFY(root_.isValid());
        QDir(root_.path()).mkdir(QStringLiteral("planes"));
        for (int i = 0; i < kPlanes; ++i) {
            planes_ << plane(kPictureSize, i, kPlanes);
            planeFiles_ << root_.filePath(
                QStringLiteral("planes/plane-%1.tif").arg(i + 1, 4, 10, QLatin1Char('0')));
            QVERIFY(planes_.last().save(planeFiles_.last()));
        }
        scratch_ = root_.filePath(QStringLiteral("scratch"));
        QDir().mkpath(scratch_);
        tmpdir_ = qgetenv("TMPDIR");
        qputenv("TMPDIR", QFile::encodeName(scratch_));
    }

    void cleanupTestCase() {
        if (tmpdir_.isEmpty())
            qunsetenv("TMPDIR");
        else
            qputenv("TMPDIR", tmpdir_);
    }

    void fusedStackIsSharpEverywhereAndAligned() {
        QStringList pictures;
        const QString folder = stackFolder(QStringLiteral("fused"), &pictures);
        const QString output = folder + QStringLiteral("/fused.tif");
        Fusion fusion;
        QList<int> percents;
        QStringList stages;
        connect(&fusion, &Fusion::progress, this, [&](int percent, const QString& stage) {
            percents << percent;
            stages << stage;
        });
        QSignalSpy finished(&fusion, &Fusion::finished);
        QSignalSpy failed(&fusion, &Fusion::failed);
        fusion.start(pictures, output);
        QVERIFY(fusion.running());
        QTRY_VERIFY_WITH_TIMEOUT(!finished.isEmpty() || !failed.isEmpty(), 60000);
        QVERIFY2(failed.isEmpty(), qPrintable(failed.value(0).value(0).toString()));
        QCOMPARE(finished.first().first().toString(), output);
        QVERIFY(!fusion.running());

        QStringList expected{QStringLiteral("fused.tif")};
        for (const QString& picture : pictures)
            expected << QFileInfo(picture).fileName();
        expected.sort();
        QCOMPARE(entries(folder), expected);
        QCOMPARE(entries(scratch_), QStringList());
        // The result is any new file of the photographer's, not a private temporary one.
        QFile fresh(root_.filePath(QStringLiteral("fresh")));
        QVERIFY(fresh.open(QIODevice::WriteOnly));
        QCOMPARE(QFileInfo(output).permissions(), fresh.permissions());

        QVERIFY(std::is_sorted(percents.begin(), percents.end()));
        QCOMPARE(percents.last(), 100);
        QVERIFY2(stages.contains(QStringLiteral("Ausrichten 3/5")), qPrintable(stages.join(", ")));
        QVERIFY2(stages.contains(QStringLiteral("Verschmelzen 5/5")),
                 qPrintable(stages.join(", ")));

        const QImage fused(output);
        QCOMPARE(fused.size(), kPictureSize);
        // Sharp where the sharpest plane is, in most tiles.
        const double share = sharpShare(fused, planes_, 8, 6);
        QVERIFY2(share >= 0.9, qPrintable(QString::number(share)));
        // Aligned: everything lies where the first plane shows it, as the sharp subject does.
        const double difference = meanDifference(fused, subject(kPictureSize, 1), 16);
        QVERIFY2(difference < 2, qPrintable(QString::number(difference)));
    }

    void cancelKillsTheToolsAndLeavesNothing() {
        QStringList pictures;
        const QString folder = stackFolder(QStringLiteral("cancelled"), &pictures);
        const QString output = folder + QStringLiteral("/fused.tif");
        Fusion fusion;
        // Cancelled from inside a progress report, once during each tool.
        for (const QString& during :
             {QStringLiteral("Ausrichten"), QStringLiteral("Verschmelzen")}) {
            QStringList runningTools;
            auto connection =
                connect(&fusion, &Fusion::progress, this, [&](int, const QString& stage) {
                    if (!stage.startsWith(during) || !fusion.running()) return;
                    runningTools = childProcesses();
                    fusion.cancel();
                });
            QSignalSpy failed(&fusion, &Fusion::failed);
            fusion.start(pictures, output);
            QTRY_VERIFY_WITH_TIMEOUT(!failed.isEmpty(), 60000);
            disconnect(connection);
            QCOMPARE(failed.size(), 1);
            QVERIFY2(failed.first().first().toString().contains(QStringLiteral("abgebrochen")),
                     qPrintable(failed.first().first().toString()));
            QCOMPARE(runningTools.size(), 1);
            QCOMPARE(childProcesses(), QStringList());
            QVERIFY(!fusion.running());
            QCOMPARE(entries(folder).size(), pictures.size());
            QCOMPARE(entries(scratch_), QStringList());
        }
        // What a cancel leaves behind does not stand in the way of the next run.
        QSignalSpy finished(&fusion, &Fusion::finished);
        fusion.start(pictures, output);
        QTRY_VERIFY_WITH_TIMEOUT(!finished.isEmpty(), 60000);
        QVERIFY(QFile::exists(output));
    }

    void failuresSayWhatWentWrong() {
        QStringList pictures;
        const QString folder = stackFolder(QStringLiteral("failing"), &pictures);
        const QString output = folder + QStringLiteral("/fused.tif");
        Fusion fusion;
        QSignalSpy failed(&fusion, &Fusion::failed);
        auto failure = [&](const QStringList& input) {
            failed.clear();
            fusion.start(input, output);
            if (!QTest::qWaitFor([&] { return !failed.isEmpty(); }, 60000)) return QString();
            return failed.first().first().toString();
        };

        // Without the tools on the search path, the photographer learns what to install.
        const QByteArray path = qgetenv("PATH");
        const QString nothing = root_.filePath(QStringLiteral("nothing"));
        QDir().mkpath(nothing);
        qputenv("PATH", QFile::encodeName(nothing));
        const QString missing = Fusion::missingTools();
        const QString withoutTools = failure(pictures);
        qputenv("PATH", path);
        QVERIFY2(missing.contains(QStringLiteral("sudo apt-get install hugin-tools enfuse")),
                 qPrintable(missing));
        QCOMPARE(withoutTools, missing);

        QVERIFY(failure(pictures.mid(0, 1)).contains(QStringLiteral("mindestens 2")));
        QVERIFY(failure(pictures + QStringList{folder + QStringLiteral("/gone.tif")})
                    .contains(QStringLiteral("gone.tif")));
        const QString odd = folder + QStringLiteral("/odd.tif");
        QVERIFY(planes_.first().scaled(320, 240).save(odd));
        QVERIFY(failure(pictures + QStringList{odd}).contains(QStringLiteral("odd.tif")));
        QFile::remove(odd);

        // A picture cut short: the tool that failed says so, and what it printed last.
        QFile picture(pictures[2]);
        QVERIFY(picture.open(QIODevice::ReadWrite));
        QVERIFY(picture.resize(4000));
        picture.close();
        const QString corrupt = failure(pictures);
        QVERIFY2(corrupt.contains(QStringLiteral("align_image_stack ist mit Exit-Code")),
                 qPrintable(corrupt));
        QVERIFY2(corrupt.contains(QFileInfo(pictures[2]).fileName()), qPrintable(corrupt));
        QCOMPARE(entries(folder).size(), pictures.size());
        QCOMPARE(entries(scratch_), QStringList());
        QCOMPARE(childProcesses(), QStringList());
    }

    void previewFusesEveryThirdPictureAndSkipsWhileBusy() {
        QStringList large;
        for (int i = 0; i < 6; ++i) {
            large << root_.filePath(QStringLiteral("large-%1.png").arg(i));
            if (i < 3)
                QVERIFY(plane(QSize(1200, 900), i, 3).save(large.last(), "PNG", 100));
            else
                QVERIFY(QFile::copy(large[i - 3], large.last()));
        }
        {
            FusionPreview preview;
            QSignalSpy ready(&preview, &FusionPreview::ready);
            preview.offer(large.mid(0, 1));
            preview.offer(large.mid(0, 2));
            preview.offer(large.mid(0, 3));
            preview.offer(large);  // the first preview is still being made: skipped
            QTRY_COMPARE_WITH_TIMEOUT(ready.size(), 1, 30000);
            const QImage image = ready.first().first().value<QImage>();
            QCOMPARE(image.size(), QSize(800, 600));
            QTest::qWait(1500);  // a queued second preview would have come by now
            QCOMPARE(ready.size(), 1);
            // The skipped offer was not counted: its pictures make the next preview.
            preview.offer(large);
            QTRY_COMPARE_WITH_TIMEOUT(ready.size(), 2, 30000);
            // A reset drops the preview being made; the new run's first one comes alone.
            preview.reset();
            preview.offer(large);
            preview.reset();
            preview.offer(large.mid(0, 3));
            QTRY_COMPARE_WITH_TIMEOUT(ready.size(), 3, 30000);
            QTest::qWait(1500);
            QCOMPARE(ready.size(), 3);
            // Each band is sharp in one of the three pictures, and sharp in the preview.
            QList<QImage> shown;
            for (const QString& file : large.mid(0, 3))
                shown << QImage(file).scaledToWidth(800, Qt::SmoothTransformation);
            const double share = sharpShare(ready.last().first().value<QImage>(), shown, 6, 4);
            QVERIFY2(share >= 0.9, qPrintable(QString::number(share)));
        }
        QCOMPARE(entries(scratch_), QStringList());
    }
};

QTEST_GUILESS_MAIN(TestFusion)
#include "tst_fusion.moc"
