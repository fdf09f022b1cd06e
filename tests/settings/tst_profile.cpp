#include "settings/cp1252.h"
#include "settings/profile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>
#include <filesystem>

using namespace quendrix;
using namespace Qt::StringLiterals;

namespace {

QByteArray readFile(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<unreadable>");
}

// Hand-edited: odd spacing, all three line ends, duplicates, ";" lines, broken headers.
const char* const kRig =
    "top=0\r\n[ Lens Data ]  old]\r\n\tFocal  Length = 65 mm \r\nFOCAL  LENGTH=dup\r\n"
    ";k=1\nk=2 ; no comment\nq1=\"a\"b\"\rq2= ' x ' \rq3=\"open\nq4=\"mixed'\nq5=\"\nempty=\n"
    "noequals\n[T\nt=1\n[U=3\n[Ma\xDF]\n\xC4=\xA0v\xA0\n[lens data]\nextra=1\n";

}  // namespace

class TestProfile : public QObject {
    Q_OBJECT

private slots:
    void codec();
    void read_data();
    void read() {
        QFETCH(QString, section);
        QFETCH(QString, key);
        QFETCH(QString, expected);
        QCOMPARE(profile::readValue(kRig, section, key, "dflt"), expected);
    }
    void readLimits();
    void write_data();
    void write();
    void files();
    void failedWrite();
    void killedWriters();
};

void TestProfile::codec() {
    QCOMPARE(toCp1252(u"€"_s), QByteArray("\x80"));
    QCOMPARE(fromCp1252("\x80\x9F\x8A"), u"€ŸŠ"_s);
    QCOMPARE(toCp1252(u"Maßstab"_s), QByteArray("Ma\xDFstab"));
    QCOMPARE(toCp1252(u"Â"_s), QByteArray(1, char(194)));
    // Unassigned bytes keep their code point; characters outside the page become one "?" each.
    QCOMPARE(fromCp1252("\x81\x8D\x8F\x90\x9D"), u"\u0081\u008D\u008F\u0090\u009D"_s);
    QCOMPARE(toCp1252(u"\u0080Ω😀"_s), QByteArray("???"));
    QByteArray all;
    for (int b = 0; b < 256; ++b)
        all.append(char(b));
    QCOMPARE(toCp1252(fromCp1252(all)), all);
}

void TestProfile::read_data() {
    QTest::addColumn<QString>("section");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("expected");  // "dflt": not found
    const char* rows[][4] = {
        {"names ignore ASCII case and outer blanks", "lens data ", " FOCAL  LENGTH\t", "65 mm"},
        {"inner blanks of a section must match", "LensData", "Focal  Length", "dflt"},
        {"inner blanks of a key must match", "Lens Data", "Focal Length", "dflt"},
        {"second duplicate section is not seen", "Lens Data", "extra", "dflt"},
        {"; starts a key name", "Lens Data", ";k", "1"},
        {"no end-of-line comments", "Lens Data", "k", "2 ; no comment"},
        {"one pair of quotes goes", "Lens Data", "q1", "a\"b"},
        {"single quotes, inner blanks stay", "Lens Data", "q2", " x "},
        {"unclosed quote stays", "Lens Data", "q3", "\"open"},
        {"mixed quotes stay", "Lens Data", "q4", "\"mixed'"},
        {"a lone quote stays", "Lens Data", "q5", "\""},
        {"empty value", "Lens Data", "empty", ""},
        {"line without = is no key", "Lens Data", "noequals", "dflt"},
        {"[ without ] opens no section", "T", "t", "dflt"},
        {"[ without ] may be a key", "Lens Data", "[U", "3"},
        {"only ASCII case folds", "MAß", "ä", "dflt"},
        {"no-break space is no blank", "maß", "Ä", "\u00A0v\u00A0"},
        {"nameless section", "", "top", "0"},
        {"nameless section ends at a header", " ", "k", "dflt"},
    };
    for (const auto& row : rows) {
        QTest::newRow(row[0]) << QString::fromUtf8(row[1]) << QString::fromUtf8(row[2])
                              << QString::fromUtf8(row[3]);
    }
}

void TestProfile::readLimits() {
    const QString a3000(3000, 'a');
    const QString a2047(2047, 'a');
    QCOMPARE(profile::readValue("[S]\nk=\"" + toCp1252(a3000) + '"', "S", "k", ""), a2047);
    QCOMPARE(profile::readValue({}, "S", "k", a3000), a2047);
    // Trailing blanks of the default go, leading and inner ones stay, also after the cut.
    QCOMPARE(profile::readValue(kRig, "S", "k", "  d e \t  "), "  d e \t");
    QCOMPARE(profile::readValue({}, "S", "k", QString(2046, 'a') + "  b"), QString(2046, 'a'));
}

void TestProfile::write_data() {
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QString>("section");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("after");
    const char* rows[][6] = {
        {"change keeps the key's spelling and line end", "[S]\n  Speed \t=  5 \n[T]\r", "s",
         " SPEED", "7", "[S]\nSpeed=7\n[T]\r"},
        {"new key before blank separators", "[A]\r\nx=1\r\n\r\n \r\n[B]\r\n", "a", "y", "2",
         "[A]\r\nx=1\r\ny=2\r\n\r\n \r\n[B]\r\n"},
        {"new key at an unterminated end", "[A]\nx=1", "A", "y", "2", "[A]\nx=1\r\ny=2\r\n"},
        {"new key under a bare header", "[A]\n[B]\n", "A", "y", "2", "[A]\ny=2\r\n[B]\n"},
        {"write goes to the first duplicate section", "[S]\na=1\n[S]\nb=2\n", "S", "b", "3",
         "[S]\na=1\nb=3\r\n[S]\nb=2\n"},
        {"nameless section after its comment", ";top\r\n\r\n[A]\r\n", "", "k", "v",
         ";top\r\nk=v\r\n\r\n[A]\r\n"},
        {"empty nameless section", "\n[A]\n", "", "k", "v", "k=v\r\n\n[A]\n"},
        {"new section, file ends in a blank line", "[A]\nx=1\n \t\n", "B", "k", "v",
         "[A]\nx=1\n \t\n[B]\r\nk=v\r\n"},
        {"new section follows directly", "[A]\r\nx=1\r\n", "B", "k", "v",
         "[A]\r\nx=1\r\n[B]\r\nk=v\r\n"},
        {"new section, file without line end", "[A]\nx=1", "B", "k", "v",
         "[A]\nx=1\r\n[B]\r\nk=v\r\n"},
        {"new section in an empty file", "", " B\t", " k ", " v ", "[B]\r\nk= v \r\n"},
        {"a value with a line break is refused", "[S]\nk=1\nm=2\n", "S", "k", "a\r\nb",
         "[S]\nk=1\nm=2\n"},
        {"a key with = is refused", "[S]\n", "S", "a=b", "1", "[S]\n"},
        {"a new key line shaped like a header is refused", "[S]\nm=2\n", "S", "[x", "y]",
         "[S]\nm=2\n"},
        {"so is a changed one", "[S]\n[U=1\nm=2\n", "s", "[u", "2]", "[S]\n[U=1\nm=2\n"},
        {"a section name with ] is refused", "", "S]", "k", "1", ""},
        {"a character the code page cannot hold is refused", "[S]\n", "S", "k", "\u03a9", "[S]\n"},
        {"keys of [] are the nameless section's", "[A]\r\n[]\r\nk=1\r\n", "", "K", "2",
         "[A]\r\n[]\r\nk=2\r\n"},
        {"... unless keys stand before the first header", "t=0\r\n[]\r\nk=1\r\n", "", "k", "2",
         "t=0\r\nk=2\r\n[]\r\nk=1\r\n"},
        {"marked UTF-8: the first section is found", "\xEF\xBB\xBF[A]\r\nx=1\r\n", "a", "x",
         "\u03a9", "\xEF\xBB\xBF[A]\r\nx=\xCE\xA9\r\n"},
        {"marked UTF-8: nameless key after the mark", "\xEF\xBB\xBF[A]\r\n", "", "k", "\u00e4",
         "\xEF\xBB\xBFk=\xC3\xA4\r\n[A]\r\n"},
    };
    for (const auto& row : rows) {
        QTest::newRow(row[0]) << QByteArray(row[1]) << QString::fromUtf8(row[2])
                              << QString::fromUtf8(row[3]) << QString::fromUtf8(row[4])
                              << QByteArray(row[5]);
    }
}

void TestProfile::write() {
    QFETCH(QByteArray, before);
    QFETCH(QString, section);
    QFETCH(QString, key);
    QFETCH(QString, value);
    QFETCH(QByteArray, after);
    QString refusal;
    const QByteArray written = profile::writeValue(before, section, key, value, &refusal);
    QCOMPARE(written, after);
    QCOMPARE(refusal.isEmpty(), written != before);
    if (written != before)
        QCOMPARE(profile::readValue(written, section, key, "dflt"), value.trimmed());
}

void TestProfile::files() {
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath("rig.ini");
    QCOMPARE(profile::readString(path, "S", "k", "none  "), "none");

    QString error = "stale";
    QVERIFY(profile::writeString(path, "Maße", "Größe", "5 € ä", &error));
    QVERIFY(error.isEmpty());
    QCOMPARE(readFile(path), QByteArray("[Ma\xDF"
                                        "e]\r\nGr\xF6\xDF"
                                        "e=5 \x80 \xE4\r\n"));
    QCOMPARE(profile::readString(path, "MAße", "GRößE", ""), u"5 € ä"_s);

    // Every other byte of a hand-edited file survives a change, a new key and a new section.
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(kRig) > 0);
    file.close();
    QVERIFY(profile::writeString(path, "lens data", "focal  length", "100 mm"));
    QVERIFY(profile::writeString(path, "LENS DATA", "long", QString(3000, 'x')));
    QVERIFY(profile::writeString(path, "New", "k", "v"));
    QByteArray expected = kRig;
    expected.replace("\tFocal  Length = 65 mm ", "Focal  Length=100 mm")
        .replace("[U=3\n", "[U=3\nlong=" + QByteArray(3000, 'x') + "\r\n");
    QCOMPARE(readFile(path), expected + "[New]\r\nk=v\r\n");
    QCOMPARE(profile::readString(path, "Lens Data", "long", ""), QString(2047, 'x'));
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{"rig.ini"});

    // Every read goes to the file: another program's edit of the same size within the same
    // tick of the file clock is seen, and so is a deletion.
    QVERIFY(profile::writeString(path, "C", "k", "2"));
    QCOMPARE(profile::readString(path, "C", "k", ""), "2");
    const auto written =
        std::filesystem::last_write_time(std::filesystem::path(path.toStdString()));
    const QByteArray edited = readFile(path).replace("k=2", "k=3");
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(edited) == edited.size());
    file.close();
    std::filesystem::last_write_time(std::filesystem::path(path.toStdString()), written);
    QCOMPARE(profile::readString(path, "C", "k", ""), "3");

    // A write through a symbolic link replaces its target; temporary files a killed writer left
    // are removed, files that only look alike are not.
    QVERIFY(QFile::link(path, dir.filePath("link.ini")));
    const QString own = QString::number(QCoreApplication::applicationPid());
    for (const QString& name :
         {"rig.ini.quendrix-tmp-" + own, QStringLiteral("rig.ini.backup"),
          QStringLiteral("rig.ini.quendrix-tmp-x1Y2z3"), "other.ini.quendrix-tmp-" + own}) {
        QFile other(dir.filePath(name));
        QVERIFY(other.open(QIODevice::WriteOnly));
    }
    QVERIFY(profile::writeString(dir.filePath("link.ini"), "C", "k", "4"));
    QVERIFY(QFileInfo(dir.filePath("link.ini")).isSymLink());
    QCOMPARE(profile::readString(path, "C", "k", ""), "4");
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden | QDir::System),
             QStringList({"link.ini", "other.ini.quendrix-tmp-" + own, "rig.ini", "rig.ini.backup",
                          "rig.ini.quendrix-tmp-x1Y2z3"}));

    QVERIFY(QFile::remove(path));
    QCOMPARE(profile::readString(path, "C", "k", "gone"), "gone");
}

void TestProfile::failedWrite() {
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString blocker = dir.filePath("blocker");
    QVERIFY(profile::writeString(blocker, "S", "k", "1"));
    const QByteArray original = readFile(blocker);

    QString error;
    QVERIFY(!profile::writeString(blocker + "/rig.ini", "S", "k", "2", &error));
    QVERIFY(error.contains("rig.ini"));
    QVERIFY(!profile::writeString(blocker, "S]", "k", "2", &error));
    QVERIFY(error.contains("S]"));
    QVERIFY(!profile::writeString(blocker, "S", "[x]", "2"));
    QVERIFY(!profile::writeString(blocker, "S", "k\n", "2"));
    QCOMPARE(readFile(blocker), original);
}

// Writers killed at random moments, many in the middle of a write: the file is always one whole
// version, and leftovers of killed writers never pile up; a normal write removes them all.
void TestProfile::killedWriters() {
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath("rig.ini");
    // Large enough that a write takes a while.
    QVERIFY(profile::writeString(path, "Daten", "Polster", QString(50000, 'p')));
    QVERIFY(profile::writeString(path, "Zähler", "n", "0"));
    const QByteArray base = readFile(path);

    constexpr int kKills = 120;
    qint64 highest = 0;
    for (int round = 0; round < kKills; ++round) {
        QProcess writer;
        writer.start(PROFILEWRITER, {path, QString::number(highest + 1)});
        QVERIFY2(writer.waitForStarted(), qPrintable(writer.errorString()));
        // Once it has written, it is killed a moment later: often in the middle of its next write.
        const auto counter = [&] {
            return profile::readString(path, "Zähler", "n", "").toLongLong();
        };
        QTRY_VERIFY_WITH_TIMEOUT(counter() > highest, 20000);
        QThread::usleep(QRandomGenerator::global()->bounded(0, 8000));
        writer.kill();
        QVERIFY(writer.waitForFinished());
        QVERIFY2(writer.exitStatus() == QProcess::CrashExit, writer.readAllStandardError());

        const QByteArray now = readFile(path);
        const QString n = profile::readValue(now, "Zähler", "n", "");
        QCOMPARE(now, profile::writeValue(base, "Zähler", "n", n));
        highest = std::max(highest, n.toLongLong());
        // At most the last killed writer's temporary file.
        const QStringList files =
            QDir(dir.path()).entryList(QDir::Files | QDir::Hidden | QDir::System);
        QVERIFY2(files.size() <= 2, qPrintable(files.join(' ')));
    }
    QVERIFY(profile::writeString(path, "Zähler", "n", "done"));
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden | QDir::System),
             QStringList{"rig.ini"});
}

QTEST_GUILESS_MAIN(TestProfile)
#include "tst_profile.moc"
