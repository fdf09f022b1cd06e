// The minimal host example as its readers use it: built against the installed package and run
// on the board simulator, it takes a stack's pictures and releases each plane; run again, it
// finds its rig through the properties it kept in its bag.
#include <QDir>
#include <QImage>
#include <QProcess>
#include <QtTest>

namespace {

struct Run {
    int exitCode = -1;
    QString output;
};

Run run(const QString& program, const QStringList& arguments, int seconds) {
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    if (!process.waitForFinished(seconds * 1000)) process.kill();
    process.waitForFinished();
    Run result;
    result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.output = QString::fromLocal8Bit(process.readAll());
    return result;
}

// Starts the board simulator on a pseudo-terminal; returns the device's path.
QString startBoard(QProcess& board) {
    board.start(QStringLiteral(SIMULATOR), QStringList());
    if (!board.waitForReadyRead(10000)) return {};
    const QString banner = QString::fromLatin1(board.readLine()).trimmed();
    return banner.startsWith(QStringLiteral("serial: ")) ? banner.mid(8) : QString();
}

// Points the settings file at the board's device, keeping everything else in it.
bool setPort(const QString& settings, const QString& device) {
    QFile file(settings);
    QByteArray text;
    if (file.open(QIODevice::ReadOnly)) text = file.readAll();
    file.close();
    const qsizetype at = text.indexOf("port=");
    if (at < 0)
        text.prepend("[Platz0]\r\nport=" + device.toUtf8() + "\r\n");
    else
        text.replace(at, text.indexOf('\r', at) - at, "port=" + device.toUtf8());
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

QStringList picturesIn(const QString& folder) {
    return QDir(folder).entryList({QStringLiteral("*.png")}, QDir::Files, QDir::Name);
}

}  // namespace

class TestMinimalHost : public QObject {
    Q_OBJECT

private slots:
    void takesAStacksPicturesAndKeepsItsProperties() {
        const QDir work(QStringLiteral(WORK_DIR));
        const Run build = run(
            QStringLiteral(CMAKE_COMMAND),
            {QStringLiteral("-DSOURCE_DIR=" SOURCE_DIR), QStringLiteral("-DBUILD_DIR=" BUILD_DIR),
             QStringLiteral("-DWORK_DIR=" WORK_DIR), QStringLiteral("-DGENERATOR=" GENERATOR),
             QStringLiteral("-DPROJECT_DIR=" SOURCE_DIR "/examples/minimal-host"),
             QStringLiteral("-P"), QStringLiteral(INSTALL_SCRIPT)},
            500);
        QVERIFY2(build.exitCode == 0, qPrintable(build.output));
        const QString host = work.filePath(QStringLiteral("build/minimal-host"));

        const QString settings = work.filePath(QStringLiteral("rig_L.ini"));
        QFile file(settings);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Platz00]\r\nTaktpause=200\r\nBeginn=6000\r\nEnde=2000\r\n");
        file.close();
        QProcess board;
        const QString device = startBoard(board);
        QVERIFY(!device.isEmpty());
        QVERIFY(setPort(settings, device));

        // First run: a first placement, the settings file named on the command line.
        const QString bag = work.filePath(QStringLiteral("host.bag"));
        const QString first = work.filePath(QStringLiteral("first"));
        const Run stack = run(
            host,
            {QStringLiteral("--ini"), settings, QStringLiteral("--bag"), bag,
             QStringLiteral("--pictures"), first, QStringLiteral("--stack"), QStringLiteral("3")},
            120);
        QVERIFY2(stack.exitCode == 0, qPrintable(stack.output));
        QCOMPARE(picturesIn(first), (QStringList{"plane-0001.png", "plane-0002.png",
                                                 "plane-0003.png", "plane-0004.png"}));
        QVERIFY(!QImage(first + QStringLiteral("/plane-0004.png")).isNull());
        QVERIFY2(stack.output.contains(QStringLiteral("combine 4 pictures")),
                 qPrintable(stack.output));

        // Second run: the panel restored from the bag finds the rig without being told. A new
        // board, as after the rig was switched off and on again.
        board.terminate();
        board.waitForFinished(5000);
        QProcess newBoard;
        const QString newDevice = startBoard(newBoard);
        QVERIFY(!newDevice.isEmpty());
        QVERIFY(setPort(settings, newDevice));
        const QString second = work.filePath(QStringLiteral("second"));
        const Run again = run(host,
                              {QStringLiteral("--bag"), bag, QStringLiteral("--pictures"), second,
                               QStringLiteral("--stack"), QStringLiteral("1")},
                              120);
        newBoard.terminate();
        newBoard.waitForFinished(5000);
        QVERIFY2(again.exitCode == 0, qPrintable(again.output));
        QCOMPARE(picturesIn(second), (QStringList{"plane-0001.png", "plane-0002.png"}));
        QVERIFY2(again.output.contains(QStringLiteral("combine 2 pictures")),
                 qPrintable(again.output));
    }
};

QTEST_MAIN(TestMinimalHost)
#include "tst_minimalhost.moc"
