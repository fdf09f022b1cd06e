// The property bag's JSON document: every type the control carries comes back with its type and
// value, documents of the first version still load, malformed documents are refused without
// touching the bag, and a program without a GUI refuses GUI values instead of creating them.
#include "support/testplatform.h"

#include <quendrix/PropertyBag.h>
#include <quendrix/ctlQuendrix.h>

#include <QBrush>
#include <QCursor>
#include <QFont>
#include <QIcon>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QKeySequence>
#include <QLinearGradient>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QProcess>
#include <QRegion>
#include <QSizePolicy>
#include <QTemporaryDir>
#include <QTimeZone>
#include <QUuid>
#include <QtTest>

#include <cstdio>
#include <cstdlib>
#include <limits>

using quendrix::PropertyBag;

namespace {

QByteArray streamed(const QVariant& value) {
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_6_4);
    return value.metaType().save(out, value.constData()) ? bytes : QByteArray();
}

// Whether a value came back as it went: the same type, the same streamed bytes where the type
// streams (exact, so NaN, negative zero and time zones count), equal where it does not, and
// what neither shows: a locale's number options, which attributes a font or palette sets.
QString difference(const QVariant& written, const QVariant& read) {
    if (written.metaType() != read.metaType())
        return QStringLiteral("type %1 came back as %2").arg(written.typeName(), read.typeName());
    const QMetaType type = written.metaType();
    if (type.hasRegisteredDataStreamOperators()) {
        if (streamed(written).isEmpty() || streamed(written) != streamed(read))
            return QStringLiteral("streams differ");
    } else if (written != read) {
        return QStringLiteral("values differ");
    }
    if (type.id() == QMetaType::QLocale && written != read) return QStringLiteral("locales differ");
    if (type.id() == QMetaType::QFont &&
        written.value<QFont>().resolveMask() != read.value<QFont>().resolveMask())
        return QStringLiteral("font resolve masks differ");
    if (type.id() == QMetaType::QPalette &&
        written.value<QPalette>().resolveMask() != read.value<QPalette>().resolveMask())
        return QStringLiteral("palette resolve masks differ");
    return {};
}

QByteArray compact(const QJsonValue& value) {
    const QByteArray array = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return array.mid(1, array.size() - 2);
}

QByteArray document(int version, const QByteArray& entries) {
    return "{\"format\": \"quendrix-propertybag\", \"version\": " + QByteArray::number(version) +
           ", \"entries\": [" + entries + "]}";
}

QByteArray entry(const char* name, const char* type, const QByteArray& value) {
    return QByteArray("{\"name\": \"") + name + "\", \"type\": \"" + type +
           "\", \"value\": " + value + "}";
}

QIcon twoPictureIcon() {
    QPixmap normal(16, 16);
    normal.fill(QColor(200, 30, 30));
    QPixmap disabled(24, 24);
    disabled.fill(Qt::transparent);
    QPainter(&disabled).fillRect(4, 4, 10, 10, QColor(0, 0, 255, 100));  // semi-transparent
    QIcon icon;
    icon.addPixmap(normal);
    icon.addPixmap(disabled, QIcon::Disabled, QIcon::On);
    return icon;
}

// Without any GUI application: GUI values are refused, not created; the rest reads, enums too
// although no widget has made their types known yet. Returns what went wrong.
QString headlessProblem() {
    const auto refused = [](const char* type, const QByteArray& value) {
        PropertyBag bag;
        QString error;
        return !bag.fromJson(document(2, entry("Wert", type, value)), &error) &&
               error.contains(QLatin1String("Wert")) && error.contains(QLatin1String("GUI"));
    };
    if (!refused("QColor", "\"#ff0000\"") || !refused("QFont", "{\"pointSizeF\": 9}") ||
        !refused("QPalette", "{}") || !refused("QCursor", "\"ArrowCursor\"") ||
        !refused("QIcon", "null") || !refused("QKeySequence", "\"Ctrl+S\"") ||
        !refused("QVariantList", "[{\"type\": \"QBrush\", \"value\": \"#000000\"}]"))
        return QStringLiteral("a GUI value was not refused");
    PropertyBag old;
    if (old.fromJson(document(1, entry("Farbe", "QColor", "\"#010203\""))))
        return QStringLiteral("a version 1 colour was not refused");
    PropertyBag bag;
    QString error;
    if (!bag.fromJson(document(2, entry("Feld", "QRect", "[1, 2, 3, 4]") + "," +
                                      entry("Fokus", "Qt::FocusPolicy", "\"WheelFocus\"")),
                      &error))
        return error;
    if (bag.ReadProperty(QStringLiteral("Feld")).toRect() != QRect(1, 2, 3, 4) ||
        bag.ReadProperty(QStringLiteral("Fokus")) != QVariant::fromValue(Qt::WheelFocus))
        return QStringLiteral("non-GUI values read wrongly");
    return {};
}

// With QUENDRIX_BAG_HEADLESS set, the test program only runs headlessProblem(), before
// QTEST_MAIN creates its QApplication, and exits.
[[maybe_unused]] const bool headlessRun = [] {
    if (!qEnvironmentVariableIsSet("QUENDRIX_BAG_HEADLESS")) return false;
    QString problem;
    {
        int argc = 1;
        char name[] = "tst_propertybag";
        char* argv[] = {name, nullptr};
        QCoreApplication app(argc, argv);
        problem = headlessProblem();
    }
    std::fputs(problem.isEmpty() ? "ok\n" : qPrintable(problem + u'\n'), stdout);
    std::exit(problem.isEmpty() ? 0 : 1);
}();

}  // namespace

class TestPropertyBag : public QObject {
    Q_OBJECT

private slots:
    void everyTypeRoundTrips_data() {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QByteArray>("written");  // the value's JSON where it matters

        const auto row = [](const char* name, const QVariant& value, QByteArray written = {}) {
            QTest::newRow(name) << value << written;
        };
        row("bool", true, "true");
        row("char", QVariant::fromValue(char('A')), "65");
        row("signed char", QVariant::fromValue((signed char)-128), "-128");
        row("uchar", QVariant::fromValue(uchar(255)), "255");
        row("short", QVariant::fromValue(short(-32768)));
        row("ushort", QVariant::fromValue(ushort(65535)));
        row("int", std::numeric_limits<int>::min());
        row("uint", std::numeric_limits<uint>::max());
        row("long", QVariant::fromValue(long(-5)));
        row("char16_t", QVariant::fromValue(char16_t(0xFFFF)));
        row("qint64 2^53", qint64(1) << 53, "9007199254740992");
        row("qint64 2^53+1", (qint64(1) << 53) + 1, "\"9007199254740993\"");
        row("qint64 min", std::numeric_limits<qint64>::min(), "\"-9223372036854775808\"");
        row("quint64 max", std::numeric_limits<quint64>::max(), "\"18446744073709551615\"");
        row("float", 23.6f, "23.6");
        row("float smallest", std::numeric_limits<float>::denorm_min());
        row("float nan", std::numeric_limits<float>::quiet_NaN(), "\"nan\"");
        row("float -inf", -std::numeric_limits<float>::infinity(), "\"-inf\"");
        row("double", 0.1, "0.1");
        row("double smallest", std::numeric_limits<double>::denorm_min());
        row("double max", std::numeric_limits<double>::max());
        row("double nan", std::numeric_limits<double>::quiet_NaN(), "\"nan\"");
        row("double inf", std::numeric_limits<double>::infinity(), "\"inf\"");
        row("double -0", -0.0, "\"-0\"");
        row("QChar", QChar(u'ß'), "\"ß\"");
        row("QChar lone surrogate", QChar(char16_t(0xD800)), "\"\\ud800\"");
        row("QString", QStringLiteral("Schärfe \"1\"\n\t\\ 📷 \uFFFF") + QChar(u'\0') + u'x');
        row("QString null", QString(), "null");
        row("QString empty", QStringLiteral(""), "\"\"");
        row("QString lone surrogates",
            QString(QChar(char16_t(0xDC00))) + u'a' + QChar(char16_t(0xD83D)),
            "\"\\udc00a\\ud83d\"");
        QByteArray bytes;
        for (int i = 0; i < 256; ++i)
            bytes.append(char(255 - i));
        row("QByteArray", bytes);
        row("QByteArray short", QByteArray("\0\xff", 2), "\"AP8=\"");
        row("QByteArray null", QByteArray(), "null");
        row("QByteArray empty", QByteArray(""), "\"\"");
        row("QStringList", QStringList{QStringLiteral("a"), QString(QChar(char16_t(0xDFFF))), {}});
        row("QPoint", QPoint(-3, 4), "[-3,4]");
        row("QSize", QSize(-1, -1));
        row("QRect", QRect(1, 2, 30, 40), "[1,2,30,40]");
        row("QRect null", QRect());
        row("QRect whole plane",
            QRect(QPoint(std::numeric_limits<int>::min(), std::numeric_limits<int>::min()),
                  QPoint(std::numeric_limits<int>::max(), std::numeric_limits<int>::max())));
        row("QLine", QLine(1, 2, 3, 4));
        row("QMargins", QVariant::fromValue(QMargins(1, 2, 3, 4)), "[1,2,3,4]");
        row("QPointF", QPointF(0.1, -1e-300));
        row("QSizeF", QSizeF(1.5, std::numeric_limits<double>::infinity()));
        row("QRectF", QRectF(0.5, std::numeric_limits<double>::quiet_NaN(), 3, -0.0));
        row("QLineF", QLineF(1, 2, 3, 4.25));
        row("QMarginsF", QVariant::fromValue(QMarginsF(0.1, 0.2, 0.3, 0.4)));
        row("QRegion", QRegion(0, 0, 10, 10) | QRegion(5, 5, 10, 10) | QRegion(40, 0, 2, 2));
        row("QRegion empty", QRegion());
        row("QDate", QDate(2024, 2, 29), "\"2024-02-29\"");
        row("QDate far", QDate(-4713, 1, 1));
        row("QDate beyond ISO", QDate(12345, 6, 7));
        row("QDate null", QDate(), "null");
        row("QTime", QTime(23, 59, 59, 999), "\"23:59:59.999\"");
        row("QTime null", QTime());
        row("QDateTime UTC", QDateTime(QDate(2024, 5, 1), QTime(1, 2, 3, 4), Qt::UTC),
            "\"2024-05-01T01:02:03.004Z\"");
        row("QDateTime offset",
            QDateTime(QDate(2024, 5, 1), QTime(1, 2), Qt::OffsetFromUTC, 19800));
        row("QDateTime local", QDateTime(QDate(2024, 5, 1), QTime(1, 2), Qt::LocalTime));
        row("QDateTime zone",
            QDateTime(QDate(2024, 10, 27), QTime(2, 30), QTimeZone("Europe/Berlin")));
        row("QDateTime far", QDateTime(QDate(20000, 1, 1), QTime(0, 0), Qt::UTC));
        row("QDateTime null", QDateTime());
        row("QUrl", QUrl(QStringLiteral("https://example.org/a b?x=ü#frag")));
        row("QUuid", QUuid(QStringLiteral("{67c8770b-44f1-410a-ab9a-f9b5446f13ee}")),
            "\"67c8770b-44f1-410a-ab9a-f9b5446f13ee\"");
        row("QLocale", QLocale(QLocale::German, QLocale::Switzerland), "\"de_CH\"");
        row("QLocale C", QLocale::c());
        QLocale plain(QLocale::German);
        plain.setNumberOptions(QLocale::OmitGroupSeparator | QLocale::RejectGroupSeparator);
        row("QLocale number options", plain);
        QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Maximum, QSizePolicy::Slider);
        policy.setHorizontalStretch(3);
        policy.setHeightForWidth(true);
        policy.setRetainSizeWhenHidden(true);
        row("QSizePolicy", policy);
        row("QColor", QColor(10, 20, 30), "\"#0a141e\"");
        row("QColor alpha", QColor(10, 20, 30, 40), "\"#280a141e\"");
        row("QColor 16 bit", QColor::fromRgba64(1, 2, 3, 4));
        row("QColor hsv", QColor::fromHsv(100, 200, 50));
        row("QColor extended", QColor::fromRgbF(1.5f, 0.2f, -0.1f));
        row("QColor invalid", QColor(), "null");
        row("QBrush", QBrush(Qt::red, Qt::Dense4Pattern));
        row("QBrush none", QBrush());
        QFont font;
        font.setFamilies({QStringLiteral("DejaVu Sans"), QStringLiteral("Serif")});
        font.setPixelSize(13);
        font.setWeight(QFont::DemiBold);
        font.setItalic(true);
        font.setOverline(true);
        font.setLetterSpacing(QFont::AbsoluteSpacing, 1.5);
        font.setStyleStrategy(QFont::StyleStrategy(QFont::PreferMatch | QFont::NoAntialias));
        font.setFixedPitch(false);
        row("QFont", font);
        row("QFont default", QFont());
        QPalette palette;
        palette.setColor(QPalette::Active, QPalette::Window, Qt::red);
        palette.setBrush(QPalette::Disabled, QPalette::Text, QBrush(Qt::blue, Qt::CrossPattern));
        row("QPalette", palette);
        row("QCursor", QCursor(Qt::CrossCursor), "\"CrossCursor\"");
        row("QIcon", twoPictureIcon());
        row("QIcon null", QIcon(), "null");
        row("QKeySequence", QKeySequence(QStringLiteral("Ctrl+S, Alt+F4")), "\"Ctrl+S, Alt+F4\"");
        row("QKeySequence without names", QKeySequence(0x1234567));
        row("enum", QVariant::fromValue(Qt::StrongFocus), "\"StrongFocus\"");
        row("flags", QVariant::fromValue(Qt::ImhDigitsOnly | Qt::ImhNoPredictiveText));
        row("flags beyond keys", QVariant::fromValue(Qt::Alignment(0x40000)), "262144");
        row("QVariantList", QVariantList{1, QStringLiteral("a"), QVariantList{QRect(1, 2, 3, 4)}});
        row("QVariantMap",
            QVariantMap{{QStringLiteral("x"), std::numeric_limits<double>::quiet_NaN()},
                        {QStringLiteral("y"), QVariant()}});
        row("empty", QVariant(), "null");
    }

    void everyTypeRoundTrips() {
        QFETCH(QVariant, value);
        QFETCH(QByteArray, written);
        PropertyBag bag;
        bag.WriteProperty(QStringLiteral("Wert"), value, value.isValid() ? QVariant() : 0);
        const QByteArray json = bag.toJson();
        const QJsonObject stored =
            QJsonDocument::fromJson(json).object()[QStringLiteral("entries")][0].toObject();
        QCOMPARE(stored[QStringLiteral("type")].toString(),
                 QString::fromLatin1(value.metaType().name()));
        if (!written.isEmpty()) QCOMPARE(compact(stored[QStringLiteral("value")]), written);

        PropertyBag loaded;
        QString error;
        QVERIFY2(loaded.fromJson(json, &error), qPrintable(error));
        const QString differs = difference(value, loaded.ReadProperty(QStringLiteral("Wert")));
        QVERIFY2(differs.isEmpty(), qPrintable(differs + u'\n' + QString::fromUtf8(json)));
        QCOMPARE(loaded.toJson(), json);  // and it is written the same way again
    }

    // Every property the control shows through its meta-object, its own and those it inherits,
    // keeps its type and value through a saved and loaded bag; a new property type is covered
    // here as soon as it appears.
    void everyControlPropertyRoundTrips() {
        TestPlatform platform;
        QTemporaryDir folder;
        platform.folder = folder.path();
        ctlQuendrix control;
        control.setPlatform(&platform);
        control.setLocale(QLocale(QLocale::German, QLocale::Austria));
        control.setCaption(QStringLiteral("Balgen ") + QChar(char16_t(0xD800)));
        control.setMotorArt0(1);
        control.setControltyp(1);
        control.setBrennweite(40.5f);
        control.setSensorbreite(23.6f);
        control.setAzOffset(-2.25);
        control.setGeometry(10, 20, 300, 200);
        control.setMinimumSize(50, 40);
        QPalette palette = control.palette();
        palette.setColor(QPalette::Window, QColor(1, 2, 3));
        control.setPalette(palette);
        QFont font = control.font();
        font.setPointSizeF(10.5);
        font.setBold(true);
        control.setFont(font);
        control.setCursor(Qt::PointingHandCursor);
        control.setWindowIcon(twoPictureIcon());
        control.setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        control.setFocusPolicy(Qt::WheelFocus);
        control.setInputMethodHints(Qt::ImhDigitsOnly | Qt::ImhNoAutoUppercase);
        control.setLayoutDirection(Qt::RightToLeft);
        control.setWindowOpacity(0.5);
        control.setToolTip(QStringLiteral("Stativ"));

        PropertyBag bag;
        QSet<QByteArray> types;
        for (const QMetaObject* meta = &ctlQuendrix::staticMetaObject; meta;
             meta = meta->superClass()) {
            for (int i = meta->propertyOffset(); i < meta->propertyCount(); ++i) {
                const char* name = meta->property(i).name();
                const QVariant value = control.property(name);
                QVERIFY2(value.isValid(), name);
                bag.WriteProperty(QString::fromLatin1(name), value);
                types.insert(value.metaType().name());
            }
        }
        for (const char* type : {"QRect", "QPalette", "QFont", "QCursor", "QIcon", "QLocale",
                                 "QSizePolicy", "QRegion", "Qt::FocusPolicy", "float", "short"})
            QVERIFY2(types.contains(type), type);

        const QString file = folder.filePath(QStringLiteral("form.bag"));
        QString error;
        QVERIFY2(bag.save(file, &error), qPrintable(error));
        PropertyBag loaded;
        QVERIFY2(loaded.load(file, &error), qPrintable(error));
        QCOMPARE(loaded.names(), bag.names());
        for (const QString& name : bag.names()) {
            const QString differs = difference(bag.ReadProperty(name), loaded.ReadProperty(name));
            QVERIFY2(differs.isEmpty(), qPrintable(name + QStringLiteral(": ") + differs));
        }
    }

    void malformedDocumentsAreRefused_data() {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("blame");  // what the error must name
        const auto row = [](const char* name, const QByteArray& json, const char* blame) {
            QTest::newRow(name) << json << QString::fromUtf8(blame);
        };
        const auto one = [&](const char* name, const char* type, const QByteArray& value,
                             const char* why = "") {
            row(name, document(2, entry("Gut", "int", "1") + "," + entry(name, type, value)), why);
        };
        row("not JSON", "{\"format\": \"quendrix-propertybag\", \"entries\": [ {\"name\": ", "");
        row("not a bag", "[1, 2]", "not a property bag");
        row("other format", "{\"format\": \"other\", \"entries\": []}", "not a property bag");
        row("future version", document(3, ""), "version 3");
        row("entries not a list",
            "{\"format\": \"quendrix-propertybag\", \"version\": 2, \"entries\": {}}", "entries");
        row("entry not an object", document(2, entry("Gut", "int", "1") + ", 5"), "entry 2");
        row("entry without a name", document(2, "{\"type\": \"int\", \"value\": 1}"), "entry 1");
        row("entry twice", document(2, entry("Gut", "int", "1") + "," + entry("Gut", "int", "2")),
            "Gut");
        row("entry without a value", document(2, "{\"name\": \"Ohne\", \"type\": \"int\"}"),
            "Ohne");
        one("Unbekannt", "QPixmap", "null", "QPixmap");
        one("Unsinn", "no such type<>", "1");
        one("Kurz", "short", "40000", "40000");
        one("Bruch", "int", "1.5");
        one("Text", "int", "\"12abc\"");
        one("Negativ", "uint", "-1");
        one("Ungenau", "qulonglong", "1e19");
        one("Janein", "bool", "\"yes\"");
        one("Riesig", "float", "1e39", "float");
        one("Nan", "double", "\"NaN\"");
        one("Zeichen", "QChar", "\"ab\"");
        one("Einheit", "QString", "[97]");
        one("Basis", "QByteArray", "\"not base64!\"");
        one("Rechteck", "QRect", "[1, 2, 3]");
        one("Ecke", "QRect", "[2147483647, 0, 2, 1]");
        one("Bereich", "QRegion", "[[0, 10, 5, 5], [0, 0, 5, 5]]", "out of order");
        one("Ueberlapp", "QRegion", "[[0, 0, 5, 5], [3, 0, 5, 5]]");
        one("Datum", "QDate", "\"2024-13-01\"");
        one("Zone", "QDateTime",
            "{\"msecsSinceEpoch\": 0, \"kind\": \"TimeZone\", \"timeZone\": "
            "\"../../etc/passwd\"}",
            "time zone");
        one("Farbe", "QColor", "\"#12345\"");
        one("Art", "QColor", "{\"model\": \"Bogus\", \"components\": [1, 2, 3, 4, 5]}", "model");
        one("Schrift", "QFont", "{\"pointSizeF\": -3}", "pointSizeF");
        one("Schrift2", "QFont", "{\"colour\": 1}", "colour");
        one("Gewicht", "QFont", "{\"weight\": -5}", "weight");  // below a positive minimum
        one("Pixel", "QFont", "{\"pixelSize\": 0}", "pixelSize");
        one("Palette", "QPalette", "{\"Active\": {\"Sky\": \"#ffffff\"}}", "Sky");
        one("Politik", "QSizePolicy", "{\"horizontal\": \"Sideways\", \"vertical\": \"Fixed\"}");
        one("Fokus", "Qt::FocusPolicy", "\"NoSuchFocus\"");
        one("Zeiger", "QCursor", "\"BitmapCursor\"");
        one("Bild", "QIcon", "[{\"mode\": \"Normal\", \"state\": \"Off\", \"png\": \"AAAA\"}]");
        one("Schachtel", "QVariantList", QByteArray(20, '[') + QByteArray(20, ']'));
        QByteArray nested = "1";
        for (int i = 0; i < 20; ++i)
            nested = "[{\"type\": \"QVariantList\", \"value\": " + nested + "}]";
        one("Tief", "QVariantList", nested, "deep");
        row("version 1 rectangle", document(1, entry("Alt", "QRect", "null")), "Alt");
        row("version 1 number", document(1, entry("Alt", "int", "\"abc\"")), "Alt");
    }

    void malformedDocumentsAreRefused() {
        QFETCH(QByteArray, json);
        QFETCH(QString, blame);
        PropertyBag bag;
        bag.WriteProperty(QStringLiteral("Kennung"), QStringLiteral("@"));
        const QByteArray before = bag.toJson();
        QString error;
        QVERIFY(!bag.fromJson(json, &error));
        QVERIFY(!error.isEmpty());
        QVERIFY2(error.contains(blame), qPrintable(error));
        const QString name = QString::fromLatin1(QTest::currentDataTag());
        if (json.contains("\"" + name.toLatin1() + "\""))
            QVERIFY2(error.contains(name), qPrintable(error));  // the entry at fault is named
        QCOMPARE(bag.toJson(), before);
    }

    void firstVersionDocumentsStillLoad() {
        // As the first version wrote them, with QJsonValue::fromVariant.
        const QByteArray json = document(
            1, entry("Mikroschritt0", "int", "1") + "," + entry("Controltyp", "short", "2") + "," +
                   entry("Kennung", "QString", "\"@\"") + "," +
                   entry("Brennweite", "float", "23.600000381469727") + "," +
                   entry("Gross", "qlonglong", "1152921504606846976") + "," +
                   entry("Bytes", "QByteArray", "\"ab\"") + "," +
                   entry("Liste", "QStringList", "[\"a\", \"b\"]") + "," +
                   entry("Datum", "QDate", "\"2024-05-01\"") + "," +
                   entry("Zeit", "QDateTime", "\"2024-05-01T01:02:03.004Z\"") + "," +
                   entry("Farbe", "QColor", "\"#010203\"") + "," +
                   entry("Taste", "QKeySequence", "\"Ctrl+S\"") + "," +
                   entry("Fokus", "Qt::FocusPolicy", "\"StrongFocus\"") + "," +
                   entry("Adresse", "QUrl", "\"http://x/y%20z\"") + "," +
                   entry("Zeichen", "char", "\"A\"") + "," + entry("Leer", "", "null") + "," +
                   entry("Schrift", "QFont", "\"Sans,12,-1,5,400,0,0,0,0,0,0,0,0,0,0,1\""));
        PropertyBag bag;
        QString error;
        QVERIFY2(bag.fromJson(json, &error), qPrintable(error));
        const auto value = [&](const char* name) {
            return bag.ReadProperty(QString::fromLatin1(name), QStringLiteral("missing"));
        };
        QCOMPARE(value("Mikroschritt0"), QVariant(1));
        QCOMPARE(value("Controltyp"), QVariant::fromValue(short(2)));
        QCOMPARE(value("Kennung"), QVariant(QStringLiteral("@")));
        QCOMPARE(value("Brennweite"), QVariant(23.6f));
        QCOMPARE(value("Gross"), QVariant(qint64(1) << 60));
        QCOMPARE(value("Bytes"), QVariant(QByteArray("ab")));  // text then, not base64
        QCOMPARE(value("Liste"), QVariant(QStringList{QStringLiteral("a"), QStringLiteral("b")}));
        QCOMPARE(value("Datum"), QVariant(QDate(2024, 5, 1)));
        QCOMPARE(value("Zeit"), QVariant(QDateTime(QDate(2024, 5, 1), QTime(1, 2, 3, 4), Qt::UTC)));
        QCOMPARE(value("Farbe"), QVariant(QColor(1, 2, 3)));
        QCOMPARE(value("Taste"), QVariant(QKeySequence(Qt::CTRL | Qt::Key_S)));
        QCOMPARE(value("Fokus"), QVariant::fromValue(Qt::StrongFocus));
        QCOMPARE(value("Adresse"), QVariant(QUrl(QStringLiteral("http://x/y z"))));
        QCOMPARE(value("Zeichen"), QVariant::fromValue(char('A')));
        QVERIFY(!value("Leer").isValid());
        QCOMPARE(value("Schrift").value<QFont>().family(), QStringLiteral("Sans"));
        QCOMPARE(value("Schrift").value<QFont>().pointSize(), 12);
        QCOMPARE(bag.names().size(), 16);
    }

    void bagWithAValueItCannotStoreIsNotSaved() {
        PropertyBag bag;
        bag.WriteProperty(QStringLiteral("Kennung"), QStringLiteral("@"));
        bag.WriteProperty(QStringLiteral("Verlauf"), QBrush(QLinearGradient(0, 0, 1, 1)));
        bag.WriteProperty(QStringLiteral("Matrix"), QTransform::fromScale(2, 3));
        QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("form.bag"));
        QString error;
        QVERIFY(!bag.save(file, &error));
        QVERIFY2(error.contains(QLatin1String("Verlauf")), qPrintable(error));
        QVERIFY(!QFile::exists(file));
        // The document leaves such entries out and loads.
        PropertyBag loaded;
        QVERIFY(loaded.fromJson(bag.toJson(), &error));
        QCOMPARE(loaded.names(), QStringList{QStringLiteral("Kennung")});
    }

    void programWithoutGuiRefusesGuiValues() {
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QUENDRIX_BAG_HEADLESS"), QStringLiteral("1"));
        child.setProcessEnvironment(environment);
        child.start(QCoreApplication::applicationFilePath(), {});
        QVERIFY(child.waitForFinished(60000));
        QCOMPARE(child.readAllStandardOutput().trimmed(), QByteArray("ok"));
        QCOMPARE(child.exitCode(), 0);
    }
};

QTEST_MAIN(TestPropertyBag)
#include "tst_propertybag.moc"
