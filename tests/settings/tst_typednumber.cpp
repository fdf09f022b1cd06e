#include "settings/typednumber.h"

#include <QtTest>

using namespace quendrix;

namespace {

const QLocale en(QLocale::English, QLocale::UnitedStates);
const QLocale de(QLocale::German, QLocale::Germany);

// How some of the panel's boxes are read.
const NumberBoxRule sensorWidth{false, true, false, 0, 1000};      // in the locale
const NumberBoxRule lead{true, false, false, 0.01, 1000};          // Val
const NumberBoxRule planes{true, false, true, 1, 32766};           // Val, whole
const NumberBoxRule picturePause{true, false, false, 1, 3600000};  // Val
const NumberBoxRule stackEnd{true, true, true, 0, 100000};         // both ways, whole
const NumberBoxRule rings{true, true, false, 0, 10000};            // both ways

}  // namespace

class TypedNumberTest : public QObject {
    Q_OBJECT

private slots:
    // What a person means: the locale's separators where they belong, else a lone separator
    // is the decimal point.
    void meantNumberReadsTheTextAsAPersonWould() {
        QCOMPARE(meantNumber("1.234.567,5", de), 1234567.5);
        QCOMPARE(meantNumber("1,000", en), 1000.0);
        QCOMPARE(meantNumber(" -2e3 ", en), -2000.0);
        QCOMPARE(meantNumber("23.", de), 23.0);  // half typed: nothing to mark yet
        QCOMPARE(meantNumber("1.2.3", de), std::nullopt);
        QCOMPARE(meantNumber("12abc", de), std::nullopt);
        QCOMPARE(meantNumber("", de), std::nullopt);
    }

    // A point typed under German: the locale's conversion makes 236 of it.
    void germanPointInALocaleBoxIsMarkedWithWhatWasUnderstood() {
        const TypedNumber misread = judgeTypedNumber("23.6", sensorWidth, de);
        QVERIFY(!misread.asTyped);
        QVERIFY2(misread.note.contains("Gelesen als 236.") && misread.note.contains("„23,6“"),
                 qPrintable(misread.note));
        QVERIFY(judgeTypedNumber("23,6", sensorWidth, de).asTyped);
        QVERIFY(judgeTypedNumber("1.000", sensorWidth, de).asTyped);  // a thousand, grouped
        // The same text is fine in English, and a comma there is the misread one.
        QVERIFY(judgeTypedNumber("23.6", sensorWidth, en).asTyped);
        const TypedNumber comma = judgeTypedNumber("22,5", sensorWidth, en);
        QVERIFY(!comma.asTyped);
        QVERIFY2(comma.note.contains("225") && comma.note.contains("„22.5“"),
                 qPrintable(comma.note));
    }

    // Val stops at the comma and suggests the point it reads.
    void commaInAValBoxIsMarked() {
        const TypedNumber misread = judgeTypedNumber("1,25", lead, de);
        QVERIFY(!misread.asTyped);
        QVERIFY2(misread.note.contains("Gelesen als 1.") && misread.note.contains("„1.25“"),
                 qPrintable(misread.note));
        QVERIFY(judgeTypedNumber("1.25", lead, de).asTyped);
        QVERIFY(judgeTypedNumber(" 1.25 ", lead, de).asTyped);
        // What it suggests is read as typed: "0.023" is no grouped 23, and no text is offered
        // where German would read thousands ("123.456").
        const TypedNumber small = judgeTypedNumber(",023", lead, de);
        QVERIFY2(small.note.contains("„0.023“"), qPrintable(small.note));
        QVERIFY(judgeTypedNumber("0.023", lead, de).asTyped);
        QVERIFY2(!judgeTypedNumber("123,456", lead, de).note.contains("„"),
                 qPrintable(judgeTypedNumber("123,456", lead, de).note));
    }

    // Texts that are no number, and numbers that make no sense in the box.
    void noNumbersAndNumbersOutOfRangeAreMarked() {
        const TypedNumber letters = judgeTypedNumber("abc", planes, de);
        QVERIFY(!letters.asTyped);
        QVERIFY2(letters.note.contains("Keine Zahl.") && letters.note.contains("Gelesen als 0."),
                 qPrintable(letters.note));
        QVERIFY(letters.note.contains("ganze Zahl von 1 bis 32766"));
        const TypedNumber refused = judgeTypedNumber("abc", sensorWidth, de);
        QVERIFY2(refused.note.contains("nicht angenommen"), qPrintable(refused.note));
        QVERIFY(judgeTypedNumber("", picturePause, de).note.startsWith("Leer."));
        QVERIFY(judgeTypedNumber("12abc", picturePause, de).note.contains("Gelesen als 12."));
        QVERIFY(judgeTypedNumber("1e999", sensorWidth, de).note.startsWith("Zu groß"));

        for (const char* text : {"0", "-3", "40000"}) {
            const TypedNumber outside = judgeTypedNumber(text, planes, de);
            QVERIFY2(!outside.asTyped && outside.note.startsWith("Außerhalb"), text);
        }
        QVERIFY(judgeTypedNumber("2.5", planes, de).note.startsWith("Keine ganze Zahl."));
        QVERIFY(!judgeTypedNumber("0", picturePause, de).asTyped);
        QVERIFY(!judgeTypedNumber("-150", picturePause, de).asTyped);
        QVERIFY(judgeTypedNumber("20", planes, de).asTyped);
        QVERIFY(judgeTypedNumber("150", picturePause, de).asTyped);
        // A misread text whose meaning is out of range gets no suggestion to type it.
        QVERIFY(!judgeTypedNumber("1,5", planes, de).note.contains("eingeben"));
    }

    // A box that one handler reads with Val and another in the locale: both must agree.
    void boxReadTwoWaysIsMarkedWhenTheWaysDisagree() {
        const TypedNumber grouped = judgeTypedNumber("1.000", stackEnd, de);
        QVERIFY(!grouped.asTyped);
        QVERIFY2(
            grouped.note.contains("Gelesen als 1 und als 1000.") && grouped.note.contains("„1000“"),
            qPrintable(grouped.note));
        QVERIFY(judgeTypedNumber("1000", stackEnd, de).asTyped);
        // No text gives 23.6 both ways, so none is suggested.
        const TypedNumber fraction = judgeTypedNumber("23,6", rings, de);
        QVERIFY(!fraction.asTyped);
        QVERIFY2(!fraction.note.contains("eingeben"), qPrintable(fraction.note));
        QVERIFY(judgeTypedNumber("23", rings, de).asTyped);
    }
};

QTEST_APPLESS_MAIN(TypedNumberTest)
#include "tst_typednumber.moc"
