// The libgphoto2 camera up to the hardware: the real library runs, but no camera is attached
// here, so detection must fail with words a photographer can act on.
#include "camera/gphoto2camera.h"

#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <gphoto2/gphoto2-port-result.h>
#include <gphoto2/gphoto2-result.h>

#include <memory>

namespace {

int threadCount() {
    return QDir(QStringLiteral("/proc/self/task"))
        .entryList(QDir::Dirs | QDir::NoDotAndDotDot)
        .size();
}

}  // namespace

class TestGphoto2Camera : public QObject {
    Q_OBJECT

private slots:
    void explainSaysWhatToDo() {
        const QString claimed = Gphoto2Camera::explain(GP_ERROR_IO_USB_CLAIM);
        QVERIFY(claimed.contains(u"anderen Programm"));
        QVERIFY(claimed.contains(u"pkill -f gvfs-gphoto2-volume-monitor"));
        QVERIFY(claimed.contains(u"aushängen"));
        for (const int missing : {GP_ERROR_MODEL_NOT_FOUND, GP_ERROR_IO_USB_FIND}) {
            const QString text = Gphoto2Camera::explain(missing);
            QVERIFY2(text.contains(u"keine Kamera gefunden") && text.contains(u"PTP"),
                     qPrintable(text));
        }
        // Anything else in the library's own words, with its code.
        const QString other = Gphoto2Camera::explain(GP_ERROR_IO);
        QVERIFY2(other.contains(QString::fromUtf8(gp_result_as_string(GP_ERROR_IO))) &&
                     other.contains(u"-7"),
                 qPrintable(other));
    }

    void withoutACameraEveryCaptureFailsClearly() {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const int threadsBefore = threadCount();
        auto camera = std::make_unique<Gphoto2Camera>();
        QCOMPARE(camera->kind(), QStringLiteral("gphoto2"));
        QSignalSpy captured(camera.get(), &Camera::captured);
        QSignalSpy failed(camera.get(), &Camera::failed);

        // Detection is tried anew on each capture, and nothing is left in the pictures folder.
        for (int plane = 1; plane <= 2; ++plane) {
            camera->capture({dir.filePath(QStringLiteral("plane_%1.jpg").arg(plane)), plane, 0});
            QTRY_COMPARE_WITH_TIMEOUT(captured.count() + failed.count(), plane, 10000);
            if (!captured.isEmpty()) QSKIP("a camera is attached to this machine");
            const QString message = failed.last().first().toString();
            QVERIFY2(message.contains(u"keine Kamera gefunden") && message.contains(u"Kabel"),
                     qPrintable(message));
        }
        QVERIFY(QDir(dir.path()).isEmpty());

        // A cancelled capture never answers; the one after it does.
        camera->capture({dir.filePath(QStringLiteral("dropped.jpg")), 3, 0});
        camera->cancel();
        camera->capture({dir.filePath(QStringLiteral("answered.jpg")), 4, 0});
        QTRY_COMPARE_WITH_TIMEOUT(failed.count(), 3, 10000);
        QTest::qWait(300);
        QCOMPARE(failed.count(), 3);

        // Releasing a camera that never opened, and going away with a capture under way.
        camera->release();
        camera->capture({dir.filePath(QStringLiteral("last.jpg")), 5, 0});
        camera.reset();
        // The worker's system thread may still be on its way out when wait() returns.
        QTRY_COMPARE_WITH_TIMEOUT(threadCount(), threadsBefore, 1000);
        QCOMPARE(captured.count(), 0);
    }
};

QTEST_GUILESS_MAIN(TestGphoto2Camera)
#include "tst_gphoto2camera.moc"
