// The application's window when the link to the rig breaks, on the board simulator: a board
// unplugged (its pseudo-terminal closed) or a WiFi connection dropped (the simulator's server
// gone) stops a running stack with its pictures kept, the window offers to reconnect and the
// rig comes back ready where it was; a board plugged in again under another device is found by
// asking the ports; the settings file keeps the rig's state through all of it.
#include "boardfinder.h"
#include "connectionwatcher.h"
#include "control/internals.h"
#include "hostwindow.h"
#include "link/link.h"
#include "linkbar.h"
#include "session/capturesession.h"
#include "settings/profile.h"
#include "sim/board.h"
#include "sim/ptyfrontend.h"
#include "sim/tcpfrontend.h"
#include "stackcontrol.h"
#include "support/testplatform.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSerialPort>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

using Phase = StackControl::Phase;

class TestLinkLoss : public QObject {
    Q_OBJECT

    QTemporaryDir dir_;
    std::unique_ptr<TestPlatform> platform_;
    std::unique_ptr<quendrix::sim::Board> board_;
    std::vector<std::unique_ptr<quendrix::sim::FrontEnd>> fronts_;
    std::unique_ptr<HostWindow> window_;
    QStringList asked_;
    std::function<void()> due_;  // done once, from inside the panel's waits, when dueWhen holds
    std::function<bool()> dueWhen_;

    QString ini() const { return dir_.filePath("rig_L.ini"); }

    quendrix::sim::PtyFrontEnd& addPty(quendrix::sim::Board& board) {
        auto pty = std::make_unique<quendrix::sim::PtyFrontEnd>(
            board, [this] { return platform_->now(); });
        if (!pty->open()) qFatal("no pseudo-terminal");
        pty->setAutoPump(true);
        fronts_.push_back(std::move(pty));
        return static_cast<quendrix::sim::PtyFrontEnd&>(*fronts_.back());
    }

    // A window on a scripted clock whose rig's settings name `key` = `value` (the port or the
    // WiFi address), with a stack plan and a camera that writes a file per picture.
    HostWindow& open(Options::Board kind, const QString& key, const QString& value) {
        {
            QFile file(ini());
            file.remove();
            if (!file.open(QIODevice::WriteOnly)) qFatal("cannot write the settings");
            file.write(QStringLiteral("[Stativ]\r\n%1=%2\r\nLichtregler0=1\r\n"
                                      "[Stativ0]\r\nPosition=0\r\nBeginn=400\r\nEnde=0\r\n"
                                      "Serie=4\r\nWartezeit=10\r\nMaxPosition=100000\r\n"
                                      "Taktpause=200\r\n")
                           .arg(key, value)
                           .toLatin1());
        }
        window_ = std::make_unique<HostWindow>();
        window_->setPlatform(*platform_);
        window_->setBoard(kind);
        ctlQuendrix& panel = window_->panel();
        panel.setLocale(QLocale(QLocale::German));
        panel.setMotorName("Stativ");
        panel.setKameratyp("Kamera");
        panel.setinifile(ini());
        connect(&panel, &ctlQuendrix::Schicht, this, [this](const QString& nr) { asked_ << nr; });
        const QString script = dir_.filePath("camera.sh");
        QFile camera(script);
        if (!camera.open(QIODevice::WriteOnly)) qFatal("cannot write the camera");
        camera.write("#!/bin/sh\nprintf x > \"$1\"\n");
        camera.close();
        camera.setPermissions(camera.permissions() | QFileDevice::ExeOwner);
        window_->setCamera(
            {"command", script + " {file}", 10}, [] { return 0.0; }, dir_.filePath("runs"));
        window_->show();
        return *window_;
    }

    QStringList listed() const {
        auto* list = window_->findChild<QListWidget*>("Aufnahmenliste");
        QStringList items;
        for (int row = 0; row < list->count(); ++row)
            items << list->item(row)->text().mid(10);  // after the time of day
        return items;
    }

    QPushButton* button(const char* name) const {
        auto* found = window_->findChild<QPushButton*>(name);
        if (!found) qFatal("no %s", name);
        return found;
    }

    bool ready() const { return quendrix::internals(window_->panel()).link()->bBereit(); }

    QString stored(const QString& section, const QString& key) const {
        return window_->panel().ini(section, key, "(none)");
    }

    // Clicks one of the bar's buttons and waits until the rig is back in service.
    bool clickAndAwaitService(const char* name) {
        QTest::mouseClick(button(name), Qt::LeftButton);
        return QTest::qWaitFor(
                   [this] {
                       return !window_->connection().starting() && !window_->linkBar().isVisible();
                   },
                   60000) &&
               ready() && !window_->connection().isLost();
    }

private slots:
    void initTestCase() {
        QVERIFY(dir_.isValid());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, dir_.filePath("config"));
    }

    void init() {
        asked_.clear();
        due_ = nullptr;
        platform_ = std::make_unique<TestPlatform>();
        platform_->realSecondsPerIdle = 0.001;
        platform_->clockHeld = [this] { return window_ && window_->session().capturing(); };
        platform_->onIdle = [this](TestPlatform&) {
            for (const auto& front : fronts_)
                front->pump();
            if (due_ && dueWhen_()) std::exchange(due_, nullptr)();
        };
        board_ = std::make_unique<quendrix::sim::Board>(quendrix::sim::Options{});
    }

    void cleanup() {
        window_.reset();
        fronts_.clear();
        board_.reset();
        platform_.reset();
    }

    // The board is unplugged while the third picture is taken: the stack stops there, its
    // pictures stay, nothing more is asked for, the dead port is closed (the panel says
    // "Keine Verbindung" for what it is still asked to send), and no stack starts without the
    // board. Closing and opening the device again (the same name, through a link) and
    // "Neu verbinden" bring the rig back where it stood, and a whole stack runs.
    void aStackStopsWhenTheBoardIsUnpluggedAndTheRigComesBackWhereItStood() {
        quendrix::sim::PtyFrontEnd& pty = addPty(*board_);
        const QString device = dir_.filePath("ttyRig");
        QVERIFY(pty.linkTo(device));
        HostWindow& window = open(Options::Board::Serial, "port", device);
        quendrix::Panel& p = *window.panel().panel();
        QVERIFY(window.connection().reconnect());  // the first start-up
        QVERIFY(!window.linkBar().isVisible());

        qint32 unpluggedAt = -1;
        dueWhen_ = [&] { return asked_.size() == 3 && window.session().capturing(); };
        due_ = [&] {
            unpluggedAt = board_->axis(0).position;
            pty.close();
        };
        QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(window.stackControl().phase(), Phase::Idle, 30000);
        QCOMPARE(unpluggedAt, 200);
        platform_->advance(5);  // longer than any pause: nothing is asked for any more
        QTest::qWait(200);
        QCOMPARE(asked_, QStringList({"1", "2", "3"}));
        const QStringList kept = window.session().runPictures();
        QVERIFY(kept.size() >= 2);
        for (const QString& picture : kept)
            QVERIFY2(QFileInfo::exists(picture), qPrintable(picture));
        QVERIFY2(listed().contains(QString("Stapel abgebrochen (Verbindung verloren): %1 von 5 "
                                           "Bildern")
                                       .arg(kept.size())),
                 qPrintable(listed().join('\n')));
        QVERIFY(window.linkBar().isVisible());
        QVERIFY2(window.linkBar().text().contains(device) &&
                     window.linkBar().text().contains("nicht mehr da"),
                 qPrintable(window.linkBar().text()));
        QVERIFY(button("NeuVerbinden")->isEnabled() && button("SteuerungSuchen")->isVisible());
        QVERIFY(!window.panel().MSComm1()->isOpen());
        window.panel().Output("s#");
        QCOMPARE(p.Text1[1]->text(), QString("Keine Verbindung"));
        QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
        QCOMPARE(window.stackControl().phase(), Phase::Idle);
        QCOMPARE(asked_.size(), 3);

        // Plugged in again: the board powers on at 0, the start-up tells it where it stood.
        QVERIFY(pty.open());
        QVERIFY(pty.linkTo(device));
        QVERIFY(clickAndAwaitService("NeuVerbinden"));
        QCOMPARE(stored("Stativ0", "Position"), QString::number(unpluggedAt));
        QCOMPARE(board_->axis(0).position, unpluggedAt);
        QVERIFY(listed().last().startsWith("Verbindung zur Steuerung wiederhergestellt"));
        asked_.clear();
        QTest::mouseClick(p.AutoKomb, Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(window.stackControl().phase(), Phase::Idle, 30000);
        QCOMPARE(asked_, QStringList({"1", "2", "3", "4", "5"}));
        QVERIFY(listed().contains("Stapel vollständig: 5 von 5 Bildern"));
        QCOMPARE(board_->axis(0).position, 0);
    }

    // An adapter plugged in again under another device: "Steuerung suchen" asks every port
    // the settings name (and here no port of the system's), passes over one that is silent,
    // an Arduino that is no rig and a device that does not exist, and starts the rig on the
    // port where it answers; the settings file names that port from then on. Before the board
    // is back, the search says what each port did.
    void theBoardIsFoundUnderItsNewDevice() {
        const QStringList system = BoardFinder::candidates({}, true);
        QVERIFY2(system.filter(QRegularExpression("^/dev/pts/")).isEmpty(),
                 qPrintable(system.join(' ')));

        quendrix::sim::PtyFrontEnd& before = addPty(*board_);
        quendrix::sim::Options nano;
        nano.rig = quendrix::sim::Rig::UnknownArduino;
        quendrix::sim::Board other(nano);
        quendrix::sim::PtyFrontEnd& otherPort = addPty(other);
        // A device nobody answers on: the master side is held and never read.
        const int silent = posix_openpt(O_RDWR | O_NOCTTY);
        QVERIFY(silent >= 0 && grantpt(silent) == 0 && unlockpt(silent) == 0);
        const QString silentPath = QString::fromLocal8Bit(ptsname(silent));
        const QString missing = dir_.filePath("ttyGone");

        HostWindow& window = open(Options::Board::Serial, "port", before.devicePath());
        QVERIFY(window.connection().reconnect());
        QSettings settings;
        settings.setValue("boardSearch/systemPorts", false);

        // Opened while the old device is still held, the new one gets another name.
        quendrix::sim::PtyFrontEnd* after = &addPty(*board_);
        QVERIFY(after->devicePath() != before.devicePath());
        before.close();
        QTRY_VERIFY_WITH_TIMEOUT(window.linkBar().isVisible(), 20000);

        settings.setValue("boardSearch/ports",
                          QStringList({silentPath, otherPort.devicePath(), missing}));
        QTest::mouseClick(button("SteuerungSuchen"), Qt::LeftButton);
        QVERIFY(!button("SteuerungSuchen")->isEnabled());
        QTRY_VERIFY_WITH_TIMEOUT(button("SteuerungSuchen")->isEnabled(), 30000);
        const QString said = window.linkBar().text();
        QVERIFY2(said.startsWith("Keine Steuerung gefunden") &&
                     said.contains(silentPath + ": keine Antwort") &&
                     said.contains(otherPort.devicePath() + ": antwortet „Arduino Nano") &&
                     said.contains(missing + ": lässt sich nicht öffnen"),
                 qPrintable(said));
        QCOMPARE(stored("Stativ", "port"), before.devicePath());
        QVERIFY(!window.panel().MSComm1()->isOpen());

        settings.setValue("boardSearch/ports", QStringList({silentPath, otherPort.devicePath(),
                                                            missing, after->devicePath()}));
        QVERIFY(clickAndAwaitService("SteuerungSuchen"));
        QCOMPARE(stored("Stativ", "port"), after->devicePath());
        QCOMPARE(serialDevice(*window.panel().MSComm1()), after->devicePath());
        QVERIFY(listed().filter("als „port“ in [Stativ]").size() == 1);
        ::close(silent);
    }

    // The WiFi board's server goes away: the window says so and offers no port search; the
    // panel says "Keine WiFi Verbindung" for what it is still asked to send. The server back on
    // its port, "Neu verbinden" brings the rig back. Dropped once more and the window closed,
    // nothing waits for the missing board and the settings file holds the rig's state: the
    // position it was last at, the plan, the address untouched.
    void aDroppedWifiLinkIsReconnectedAndClosingAfterADropKeepsTheSettings() {
        auto tcp = std::make_unique<quendrix::sim::TcpFrontEnd>(
            *board_, [this] { return platform_->now(); });
        QVERIFY(tcp->listen());
        tcp->setAutoPump(true);
        const quint16 port = tcp->port();
        quendrix::sim::TcpFrontEnd& server = *tcp;
        fronts_.push_back(std::move(tcp));
        const QString address = QString("127.0.0.1:%1").arg(port);
        HostWindow& window = open(Options::Board::Wifi, "IP", address);
        quendrix::Panel& p = *window.panel().panel();
        QVERIFY(window.connection().reconnect());

        server.close();
        QTRY_VERIFY_WITH_TIMEOUT(window.linkBar().isVisible(), 20000);
        QVERIFY2(window.linkBar().text().contains(address), qPrintable(window.linkBar().text()));
        QVERIFY(!button("SteuerungSuchen")->isVisible());
        window.panel().Output("s#");
        QCOMPARE(p.Text1[1]->text(), QString("Keine WiFi Verbindung"));

        QVERIFY(server.listen(QHostAddress::LocalHost, port));
        QVERIFY(clickAndAwaitService("NeuVerbinden"));
        window.panel().Output("t300#");  // 300 steps, whichever way the axis is set
        QTRY_VERIFY_WITH_TIMEOUT(!board_->axis(0).moving, 20000);
        const QString movedTo = QString::number(board_->axis(0).position);
        QVERIFY(movedTo == "300" || movedTo == "-300");
        QTRY_COMPARE_WITH_TIMEOUT(p.lblPosition1[0]->text(), movedTo, 20000);
        p.BBeginn[0]->setText("350");

        server.close();
        QTRY_VERIFY_WITH_TIMEOUT(window.linkBar().isVisible(), 20000);
        const double closingFrom = platform_->now();
        window.close();
        // Each of the panel's five stop commands would wait out its acknowledgement.
        QVERIFY2(platform_->now() - closingFrom < 1,
                 qPrintable(QString::number(platform_->now() - closingFrom)));
        QCOMPARE(stored("Stativ0", "Position"), movedTo);
        QCOMPARE(stored("Stativ0", "Beginn"), QString("350"));
        QCOMPARE(stored("Stativ0", "Serie"), QString("4"));
        QCOMPARE(stored("Stativ", "IP"), address);
        QCOMPARE(stored("Stativ", "Lichtregler0"), QString("1"));
    }
};

QTEST_MAIN(TestLinkLoss)
#include "tst_linkloss.moc"
