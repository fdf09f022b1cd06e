#include "settings/numbers.h"
#include "settings/textformat.h"

#include "support/errors.h"

#include <QtTest>
#include <cmath>

using namespace quendrix;

namespace {

const QLocale en(QLocale::English, QLocale::UnitedStates);
const QLocale de(QLocale::German, QLocale::Germany);

}  // namespace

class NumbersTest : public QObject {
    Q_OBJECT

private slots:
    void valReadsTheLeadingNumber() {
        QLocale::setDefault(de);  // must make no difference
        QCOMPARE(Val("  -1.5e3xyz"), -1500.0);
        QCOMPARE(Val("\t 2D-2"), 0.02);
        QCOMPARE(Val(".5"), 0.5);
        QCOMPARE(Val("-"), 0.0);
        QCOMPARE(Val("1e"), 1.0);
        QCOMPARE(Val("7E+x"), 7.0);
        QCOMPARE(Val("22,5"), 22.0);
        QCOMPARE(Val("1.2.3"), 1.2);
        QCOMPARE(errorOf([] { Val("1e400"); }), 6);
        // The same without an error: nothing beyond the range.
        QCOMPARE(ValInRange("1e400"), std::nullopt);
        QCOMPARE(ValInRange("12e3x"), 12000.0);
        QCOMPARE(wholeValIn("2.5", 0, 4), 2);
        QCOMPARE(wholeValIn("4.6", 0, 4), std::nullopt);
        QCOMPARE(wholeValIn("-1e300", -5, 5), std::nullopt);
        // Cutting a text never leaves half of a character made of two code units.
        QCOMPARE(leftWhole(QStringLiteral("ab\U0001F600c"), 3), QStringLiteral("ab"));
        QCOMPARE(leftWhole(QStringLiteral("ab\U0001F600c"), 4), QStringLiteral("ab\U0001F600"));
        QLocale::setDefault(QLocale::c());
        QCOMPARE(Trim("  \t a \t  "), QString("\t a \t"));
    }

    void textToNumberUnderLocale() {
        QCOMPARE(textToDouble("22,5", de), 22.5);
        QCOMPARE(textToDouble("22,5", en), 225.0);
        QCOMPARE(textToDouble("22.5", de), 225.0);
        QCOMPARE(textToDouble("  -1.234.567,25 ", de), -1234567.25);
        QCOMPARE(textToDouble("+.5E-2", en), 0.005);
        QCOMPARE(textToDouble("1e-400", en), 0.0);
        for (const char* text : {"", "   ", "1x", "1e", "e5", "--1", "1 2", "1,5,5", ","})
            QVERIFY2(errorOf([&] { textToDouble(text, de); }) == 13, text);
        QCOMPARE(errorOf([] { textToDouble("1e400", en); }), 6);
        QCOMPARE(errorOf([] { divide(0, 0); }), 11);
    }

    void conversionsRoundHalfToEvenAndOverflow() {
        QCOMPARE(toInteger(2.5), qint16(2));
        QCOMPARE(toInteger(3.5), qint16(4));
        QCOMPARE(toInteger(-2.5), qint16(-2));
        QCOMPARE(toInteger(-32768.5), qint16(-32768));
        QCOMPARE(errorOf([] { toInteger(32767.5); }), 6);
        QCOMPARE(errorOf([] { toInteger(std::nan("")); }), 6);
        QCOMPARE(toLong(-2147483648.5), qint32(-2147483647 - 1));
        QCOMPARE(errorOf([] { toLong(2147483647.5); }), 6);
        QCOMPARE(textToLong("1.000.000,5", de), qint32(1000000));
        QCOMPARE(errorOf([] { textToInteger("40000", en); }), 6);
        QCOMPARE(toSingle(3.4028235e38), 3.4028235e38f);
        QCOMPARE(errorOf([] { toSingle(3.5e38); }), 6);
        QCOMPARE(errorOf([] { textToSingle("1E39", en); }), 6);
    }

    void numbersToText() {
        const struct {
            const QLocale& locale;
            float value;
            const char* text;
        } singles[] = {
            {en, 40.5f, "40.5"},         {de, 22.5f, "22,5"},      {en, 0.1f, "0.1"},
            {en, 1 / 3.0f, "0.3333333"}, {en, 1234567, "1234567"}, {en, 12345678, "1.234568E+07"},
            {en, 9999999.6f, "1E+07"},   {de, 1.5e20f, "1,5E+20"}, {en, 0.0001f, "0.0001"},
            {en, 0.00001f, "1E-05"},     {en, -1e-7f, "-1E-07"},   {en, -0.0f, "0"},
        };
        for (const auto& c : singles)
            QCOMPARE(singleToText(c.value, c.locale), QString(c.text));
        QCOMPARE(doubleToText(0.1 + 0.2, en), QString("0.3"));
        QCOMPARE(doubleToText(-1234567.5, de), QString("-1234567,5"));
        QCOMPARE(doubleToText(999999999999999.0, en), QString("999999999999999"));
        QCOMPARE(doubleToText(1e15, en), QString("1E+15"));
    }

    void formatWithPatterns() {
        const struct {
            const QLocale& locale;
            double value;
            const char* pattern;
            const char* text;
        } cases[] = {
            {de, 1250, "#,##0 µ", "1.250 µ"},
            {en, 1250, "#,##0 µ", "1,250 µ"},
            {de, 10, "##0.00", "10,00"},
            {en, 10, "##0.00", "10.00"},
            {de, 1234567.891, "##,##0.000", "1.234.567,891"},
            {en, 12, "##,##0.00", "12.00"},
            {en, 5, "000.00", "005.00"},
            {de, 0.5, "###0.000", "0,500"},
            {en, 0.25, "#0.0 µ", "0.3 µ"},
            {en, 2.675, "#0.00", "2.68"},
            {en, 1.005, "#0.00 µ", "1.01 µ"},
            {en, -2.675, "#0.00", "-2.68"},
            {en, 999.996, "#,##0.00", "1,000.00"},
            {en, -0.004, "##0.00", "0.00"},
            {en, 1e-20, "0.00", "0.00"},
            {en, 1.5, "0.0##", "1.5"},
            {en, 0.5, "#.00", ".50"},
        };
        for (const auto& c : cases) {
            QCOMPARE(formatNumber(c.value, QString::fromUtf8(c.pattern), c.locale),
                     QString::fromUtf8(c.text));
        }
    }
};

QTEST_MAIN(NumbersTest)
#include "tst_numbers.moc"
