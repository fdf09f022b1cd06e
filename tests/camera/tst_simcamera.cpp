// The simulated camera: its subject is sharp in a different part at each plane of a stack, its
// sensor noise averages away, and its pictures reach the disk whole, showing the rail where it
// stood when asked, or fail with a message that names the file.
#include "camera/simcamera.h"
#include "camera/subject.h"
#include "support/sharpness.h"

#include <QDir>
#include <QImageReader>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QtTest>
#include <algorithm>
#include <cmath>

namespace {

// Root mean square of the differences between the channels of a and b (same size), where b
// may be given as any per-channel values in the order of an RGB888 picture.
double rmsDifference(const QImage& a, const std::vector<double>& b) {
    const QImage rgb = a.convertToFormat(QImage::Format_RGB888);
    double sum = 0;
    for (int y = 0; y < rgb.height(); ++y) {
        const uchar* line = rgb.constScanLine(y);
        for (int i = 0; i < 3 * rgb.width(); ++i) {
            const double d = line[i] - b[std::size_t(y) * 3 * rgb.width() + i];
            sum += d * d;
        }
    }
    return std::sqrt(sum / double(b.size()));
}

std::vector<double> channels(const QImage& picture) {
    const QImage rgb = picture.convertToFormat(QImage::Format_RGB888);
    std::vector<double> values;
    for (int y = 0; y < rgb.height(); ++y)
        values.insert(values.end(), rgb.constScanLine(y), rgb.constScanLine(y) + 3 * rgb.width());
    return values;
}

}  // namespace

class TestSimCamera : public QObject {
    Q_OBJECT

private slots:
    // A stack of nine planes 500 steps apart over the subject's depth, measured on 8 x 6 tiles,
    // and pictures focused halfway between its planes.
    void eachPlaneOfAStackIsSharpInADifferentPart() {
        const Subject subject(QSize(1024, 768));
        constexpr int kColumns = 8, kRows = 6, kPlanes = 9, kTiles = kColumns * kRows;
        QList<QList<double>> sharpness, between;
        for (int plane = 0; plane < kPlanes; ++plane)
            sharpness.append(tileSharpness(subject.render(2000 + 500 * plane), kColumns, kRows));
        for (int plane = 0; plane + 1 < kPlanes; ++plane)
            between.append(tileSharpness(subject.render(2250 + 500 * plane), kColumns, kRows));
        QList<int> tilesWon(kPlanes), tilesNearBest(kPlanes);
        QList<double> whereWon(kPlanes);  // along the slant, 0 top left to 1 bottom right
        double runnersUp = 0;
        for (int tile = 0; tile < kTiles; ++tile) {
            QList<double> planes;
            for (const QList<double>& picture : sharpness)
                planes.append(picture.at(tile));
            std::sort(planes.begin(), planes.end());
            const double best = planes.last();
            runnersUp += planes.at(kPlanes - 2) / best / kTiles;
            const QString where = QString("tile %1: best %2").arg(tile).arg(best);
            // Texture everywhere, far above what sensor noise of 3 levels gives (about 80), and
            // real blur in every tile at the far end of the stack from its depth.
            QVERIFY2(best > 1000, qPrintable(where));
            QVERIFY2(planes.first() < 0.1 * best, qPrintable(where));
            // No part falls between the planes: a picture focused between two of them finds
            // it at most a few times sharper than the best plane does.
            for (const QList<double>& picture : between)
                QVERIFY2(picture.at(tile) < 4 * best, qPrintable(where));

            int winner = 0;
            for (int plane = 0; plane < kPlanes; ++plane) {
                if (sharpness.at(plane).at(tile) == best) winner = plane;
                if (sharpness.at(plane).at(tile) >= 0.7 * best) ++tilesNearBest[plane];
            }
            ++tilesWon[winner];
            whereWon[winner] +=
                0.6 * (tile % kColumns + 0.5) / kColumns + 0.4 * (tile / kColumns + 0.5) / kRows;
        }
        // The depth of field is about one plane: the neighbours of a tile's best plane are
        // clearly less sharp, except where the tile lies between the two.
        QVERIFY2(runnersUp < 0.6, qPrintable(QString::number(runnersUp)));
        for (int plane = 0; plane < kPlanes; ++plane) {
            const QString counts = QString("plane %1: sharpest on %2 tiles, near the best on %3")
                                       .arg(plane)
                                       .arg(tilesWon.at(plane))
                                       .arg(tilesNearBest.at(plane));
            QVERIFY2(tilesWon.at(plane) >= 1, qPrintable(counts));
            QVERIFY2(tilesNearBest.at(plane) <= kTiles / 2, qPrintable(counts));
            // The sharp part moves from the near corner to the far one, plane by plane.
            if (plane > 0)
                QVERIFY2(whereWon.at(plane) / tilesWon.at(plane) >
                             whereWon.at(plane - 1) / tilesWon.at(plane - 1),
                         qPrintable(counts));
        }
    }

    void noiseAveragesAway() {
        const Subject subject(QSize(320, 240));
        const std::vector<double> clean = channels(subject.render(4000));
        QCOMPARE(subject.render(4000, 3, 7), subject.render(4000, 3, 7));
        QVERIFY(subject.render(4000, 3, 7) != subject.render(4000, 3, 8));

        const double single = rmsDifference(subject.render(4000, 3, 1), clean);
        QVERIFY2(single > 2.5 && single < 3.5, qPrintable(QString::number(single)));
        constexpr int kPictures = 16;
        std::vector<double> mean(clean.size());
        for (quint32 seed = 1; seed <= kPictures; ++seed) {
            const std::vector<double> noisy = channels(subject.render(4000, 3, seed));
            for (std::size_t i = 0; i < mean.size(); ++i)
                mean[i] += noisy[i] / kPictures;
        }
        // The mean of 16 lies about a quarter as far from the noise-free picture.
        const double averaged = rmsDifference(subject.render(4000), mean);
        QVERIFY2(averaged < single / 3, qPrintable(QString::number(averaged)));
    }

    void picturesReachTheDiskWholeOrFailNamingTheFile() {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        double rail = 3500;
        SimCamera camera([&rail] { return rail; }, QSize(640, 480));
        QCOMPARE(camera.kind(), QString("sim"));
        QSignalSpy captured(&camera, &Camera::captured), failed(&camera, &Camera::failed);
        const Subject subject(QSize(640, 480));

        // The picture shows where the rail stood when asked, though it moves on at once.
        camera.setNoise(0);
        const QString png = dir.filePath("plane 1.png");
        camera.capture({png, 1, 3500});
        rail = 6000;
        QTRY_COMPARE_WITH_TIMEOUT(captured.count(), 1, 20000);
        QCOMPARE(captured.at(0).at(0).toString(), png);
        QCOMPARE(QImage(png).convertToFormat(QImage::Format_RGB888), subject.render(3500));

        camera.setNoise(3);
        const QString tif = dir.filePath("plane 2.tif");
        camera.capture({tif, 2, 6000});
        QTRY_COMPARE_WITH_TIMEOUT(captured.count(), 2, 20000);
        QCOMPARE(QImageReader(tif).format(), QByteArray("tiff"));
        const QImage tiff(tif);
        QCOMPARE(tiff.size(), QSize(640, 480));
        const double noise = rmsDifference(tiff, channels(subject.render(6000)));
        QVERIFY2(noise > 2 && noise < 4, qPrintable(QString::number(noise)));
        // Nothing else is left behind in the folder.
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files),
                 QStringList({"plane 1.png", "plane 2.tif"}));

        QVERIFY(QDir(dir.path()).mkdir("plane 4.png"));  // a folder where the file should go
        const QStringList unwritable = {dir.filePath("missing/plane 3.png"),
                                        dir.filePath("plane 4.png"), dir.filePath("plane 5.jpg")};
        for (int i = 0; i < unwritable.size(); ++i) {
            camera.capture({unwritable.at(i), 3, 6000});
            QTRY_COMPARE_WITH_TIMEOUT(failed.count(), i + 1, 20000);
            const QString message = failed.at(i).at(0).toString();
            QVERIFY2(message.contains(QDir::toNativeSeparators(unwritable.at(i))),
                     qPrintable(message));
        }
        QVERIFY(failed.at(0).at(0).toString().contains("existiert nicht"));
        QVERIFY(failed.at(2).at(0).toString().contains("Dateiformat"));

        // A cancelled picture is never answered for; a second one asked while one is under
        // way is refused.
        const auto settle = [] {
            QThreadPool::globalInstance()->waitForDone();
            QCoreApplication::processEvents();
        };
        camera.capture({dir.filePath("plane 6.png"), 6, 6000});
        camera.cancel();
        settle();
        QCOMPARE(captured.count(), 2);
        QCOMPARE(failed.count(), 3);
        camera.capture({dir.filePath("plane 7.png"), 7, 6000});
        camera.cancel();
        camera.capture({dir.filePath("plane 8.png"), 8, 6000});
        camera.capture({dir.filePath("plane 9.png"), 9, 6000});
        QTRY_COMPARE_WITH_TIMEOUT(captured.count(), 3, 20000);
        settle();
        QCOMPARE(captured.count(), 3);
        QCOMPARE(captured.at(2).at(0).toString(), dir.filePath("plane 8.png"));
        QCOMPARE(failed.count(), 4);
        QVERIFY(failed.at(3).at(0).toString().contains("plane 9.png"));
    }
};

QTEST_GUILESS_MAIN(TestSimCamera)
#include "tst_simcamera.moc"
