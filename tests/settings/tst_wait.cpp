// The wait helper: what ends a wait, and that it lets the event loop run meanwhile.
#include "settings/wait.h"
#include "support/testplatform.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QTimer>
#include <QtTest>

using quendrix::Waiter;

class TestWait : public QObject {
    Q_OBJECT

private slots:
    void endsWhenAnEventMakesTheConditionTrue() {
        TestPlatform platform;
        Waiter waiter(platform);
        bool acknowledged = false;
        QTimer::singleShot(0, this, [&] { acknowledged = true; });
        QCOMPARE(waiter.waitFor([&] { return acknowledged; }, 2), Waiter::Result::Done);
        QVERIFY(platform.now() - 1000.0 < 2);
    }

    void endsAtItsLimitOnTheClock() {
        TestPlatform platform;
        Waiter waiter(platform);
        const double start = platform.now();
        QCOMPARE(waiter.waitFor([] { return false; }, 31), Waiter::Result::TimedOut);
        QVERIFY(platform.now() - start >= 31);
        QVERIFY(platform.now() - start < 31 + Waiter::kPollSeconds);
        // A condition that holds already ends the wait before any sleep.
        const int idles = platform.idleCount;
        QCOMPARE(waiter.waitFor([] { return true; }, 0), Waiter::Result::Done);
        QCOMPARE(platform.idleCount, idles);
    }

    void escapeEndsOnlyWaitsThatAllowIt() {
        TestPlatform platform;
        Waiter waiter(platform);
        // Escape goes down three seconds into the wait.
        const double start = platform.now();
        platform.onIdle = [start](TestPlatform& p) {
            if (p.now() - start >= 3) p.keysDown.insert(quendrix::VirtualKey::Escape);
        };
        QCOMPARE(waiter.waitFor([] { return false; }, Waiter::kNoLimit, Waiter::Escape::Ends),
                 Waiter::Result::Escaped);
        QVERIFY(platform.now() - start >= 3 && platform.now() - start < 4);
        QCOMPARE(waiter.waitFor([] { return false; }, 2, Waiter::Escape::Ignored),
                 Waiter::Result::TimedOut);
    }

    void cancellingEndsThePendingWaitAndEveryLaterOne() {
        TestPlatform platform;
        Waiter waiter(platform);
        platform.onIdle = [&](TestPlatform& p) {
            if (p.idleCount == 5) waiter.cancelAll();
        };
        QCOMPARE(waiter.waitFor([] { return false; }, Waiter::kNoLimit), Waiter::Result::Cancelled);
        const int idles = platform.idleCount;
        QCOMPARE(waiter.waitFor([] { return false; }, 10), Waiter::Result::Cancelled);
        QCOMPARE(platform.idleCount, idles);
    }

    void nestedWaitsEachKeepTheirOwnLimit() {
        // A reply handler may itself wait while an outer wait is pending.
        TestPlatform platform;
        Waiter waiter(platform);
        bool innerRan = false;
        const double start = platform.now();
        QTimer::singleShot(0, this, [&] {
            QCOMPARE(waiter.waitFor([] { return false; }, 2), Waiter::Result::TimedOut);
            innerRan = true;
        });
        QCOMPARE(waiter.waitFor([] { return false; }, 5), Waiter::Result::TimedOut);
        QVERIFY(innerRan);
        QVERIFY(platform.now() - start >= 5);
    }

    void qtPlatformSleepsUntilAnEventArrives() {
        quendrix::Platform& platform = quendrix::qtPlatform();
        Waiter waiter(platform);
        bool fired = false;
        QTimer::singleShot(30, this, [&] { fired = true; });
        QElapsedTimer wall;
        wall.start();
        QCOMPARE(waiter.waitFor([&] { return fired; }, 5), Waiter::Result::Done);
        QVERIFY(wall.elapsed() < 4000);
        const double start = platform.now();
        QCOMPARE(waiter.waitFor([] { return false; }, 0.2), Waiter::Result::TimedOut);
        QVERIFY(platform.now() - start >= 0.2);
    }

    void qtPlatformKnowsWhichKeyIsHeld() {
        quendrix::Platform& platform = quendrix::qtPlatform();
        QLineEdit box;
        box.show();
        QVERIFY(!platform.isKeyDown(quendrix::VirtualKey::Escape));
        QTest::keyPress(&box, Qt::Key_Escape);
        QVERIFY(platform.isKeyDown(quendrix::VirtualKey::Escape));
        QVERIFY(!platform.isKeyDown(quendrix::VirtualKey::Return));
        QTest::keyRelease(&box, Qt::Key_Escape);
        QVERIFY(!platform.isKeyDown(quendrix::VirtualKey::Escape));
        QTest::keyPress(&box, Qt::Key_A);
        QVERIFY(platform.isKeyDown('A'));
        QTest::keyRelease(&box, Qt::Key_A);
    }
};

QTEST_MAIN(TestWait)
#include "tst_wait.moc"
