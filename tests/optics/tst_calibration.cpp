// The calibration list of the bellows rig: its arithmetic, its file, and the measuring series
// driven through the panel.
#include "control/calibrationplot.h"
#include "control/internals.h"
#include "core/calibrationmath.h"
#include "optics/calibration.h"
#include "optics/calibrationfile.h"
#include "support/errors.h"
#include "support/testplatform.h"

#include <quendrix/ctlQuendrix.h>

#include <QComboBox>
#include <QFile>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QtTest>

using namespace quendrix;
using namespace quendrix::calibration;
using Answer = quendrix::MsgBox::Answer;

namespace {

// A table of (field width, extension, magnification, focal length, offset) rows.
DoubleTable tableOf(const QList<QList<double>>& rows) {
    DoubleTable table(0, 4, 0, int(rows.size()) - 1);
    for (int j = 0; j < rows.size(); ++j)
        for (int i = 0; i < 5; ++i)
            table(i, j) = rows[j].value(i);
    return table;
}

// With a 24 mm sensor, field widths 48, 40 and 30 mm are magnifications 0.5, 0.6 and 0.8; at
// extensions 40, 50 and 70 mm they lie on a = 100 m - 10.
const QByteArray kOldFile =
    " 24 \r\n4\r\n2\r\n\"Sehfeld\",\"Auszug\",\"Ma\xdf"
    "stab\",\"Brennweite\",\"s0\"\r\n"
    "3E+01\r\n 70 \r\n.8\r\n0\r\n-.25\r\n"
    "4.8E+01\r\n40\r\n.5\r\n1.5E-02\r\n0\r\n"
    "40\r\n50\r\n0\r\n0\r\n0\r\n";

// A header that promises far more rows than follow.
const QByteArray kHugeHeader = "24\r\n4\r\n99999999\r\n\"a\",\"b\",\"c\",\"d\",\"e\"\r\n1\r\n";

}  // namespace

class TestCalibration : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> dir_;
    std::unique_ptr<TestPlatform> platform_;
    std::unique_ptr<ctlQuendrix> control_;
    double extension_ = 0;

    ctlQuendrix& control() { return *control_; }
    Panel& panel() { return *control_->panel(); }
    Calibration& cal() { return *quendrix::internals(control_).calibration(); }
    TestPlatform& platform() { return *platform_; }
    QString listFile() const { return dir_->filePath("EOS 5DMakro 100_Platz0_Synchronliste.txt"); }

    void writeList(const QByteArray& bytes) {
        QFile file(listFile());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QByteArray readList() {
        QFile file(listFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QString gridText(int row, int column) {
        QTableWidgetItem* item = panel().Grid1->item(row, column);
        return item ? item->text() : QString();
    }

private slots:
    void init() {
        dir_ = std::make_unique<QTemporaryDir>();
        platform_ = std::make_unique<TestPlatform>();
        platform_->folder = dir_->path();
        control_ = std::make_unique<ctlQuendrix>();
        control_->setPlatform(platform_.get());
        control_->setLocale(QLocale(QLocale::German, QLocale::Germany));
        control_->App_Path = dir_->path();
        control_->setinifile(dir_->filePath("quendrix.ini"));
        control_->setKameratyp("EOS 5D");
        control_->setMotorName("Platz0");
        control_->setSensorbreite(24);
        {
            const QSignalBlocker quiet(panel().cbOptik);
            panel().cbOptik->addItem("Makro 60");
            panel().cbOptik->addItem(" Makro 100 ");
            panel().cbOptik->setCurrentIndex(2);
        }
        cal().currentExtension = [this] { return extension_; };
    }
    void cleanup() {
        control_.reset();
        platform_.reset();
        dir_.reset();
    }

    void rowsYieldFocalLengthAndOffset() {
        // 47.2 mm and 33.714... mm on a 23.6 mm sensor: magnifications 0.5 and 0.7.
        DoubleTable table = tableOf({{47.2, 40}, {23.6 / 0.7, 60}});
        evaluateRows(table, 23.6);
        QCOMPARE(table(Magnification, 0), 0.5);
        QVERIFY(qFuzzyCompare(table(Magnification, 1), 0.7));
        QVERIFY(qFuzzyCompare(table(FocalLength, 0), 100.0));
        QVERIFY(qFuzzyCompare(table(Offset, 0), 10.0));
        QCOMPARE(table(FocalLength, 1), 0.0);  // the last row keeps what it held
        QVERIFY(qFuzzyCompare(fittedLine(table)->extensionAt(0.6), 50.0));

        // A row without a field width keeps its magnification; the means skip values <= 0.
        table = tableOf({{0, 40, 0.5}, {40, 50, 0, 7, -3}});
        evaluateRows(table, 24);
        QCOMPARE(table(Magnification, 0), 0.5);
        QVERIFY(qFuzzyCompare(table(FocalLength, 0), 100.0));
        QVERIFY(qFuzzyCompare(*meanOfPositive(table, FocalLength), 53.5));
        QVERIFY(qFuzzyCompare(*meanOfPositive(table, Offset), 10.0));

        // Equal magnifications give no focal length; one row gives no means at all.
        table = tableOf({{40, 50}, {40, 60}});
        QCOMPARE(errorOf([&] { evaluateRows(table, 24); }), int(RuntimeError::DivisionByZero));
        table = tableOf({{48, 40}});
        evaluateRows(table, 24);
        QVERIFY(!meanOfPositive(table, FocalLength) && !fittedLine(table));
    }

    // Rows added and removed: a new row of zeros at the end; removing the last row clears the
    // focal length and offset its predecessor had from it; the last row gone, a fresh series.
    void rowsAreAppendedAndRemoved() {
        DoubleTable table = withRowAppended(tableOf({{40, 50, 0.6, 100, 10}}));
        QCOMPARE(rowCount(table), 2);
        QCOMPARE(table(FocalLength, 0), 100.0);
        QCOMPARE(table(Extension, 1), 0.0);
        table(Extension, 1) = 70;
        const DoubleTable first = withoutRow(table, 0);
        QCOMPARE(rowCount(first), 1);
        QCOMPARE(first(Extension, 0), 70.0);
        const DoubleTable last = withoutRow(table, 1);
        QCOMPARE(last(Extension, 0), 50.0);
        QCOMPARE(last(FocalLength, 0), 0.0);
        QCOMPARE(last(Offset, 0), 0.0);
        QVERIFY(isFresh(withoutRow(last, 0)) && isFresh(withRowAppended(DoubleTable())));
        QVERIFY(isFresh(freshTable()) && !isFresh(table));
    }

    void fieldWidthIsInterpolatedBetweenMeasurements() {
        // Rows out of order still bracket by extension.
        const DoubleTable table = tableOf({{30, 70}, {48, 40}, {40, 50}});
        QCOMPARE(*interpolateFieldWidth(table, 45), 44.0);
        QCOMPARE(*interpolateFieldWidth(table, 60), 35.0);
        QCOMPARE(*interpolateFieldWidth(table, 70), 30.0);
        QVERIFY(!interpolateFieldWidth(table, 39.9) && !interpolateFieldWidth(table, 70.1));
        QVERIFY(!interpolateFieldWidth(tableOf({{48, 40}}), 40));
        // Two measurements at the same extension bracket nothing between themselves.
        QCOMPARE(*interpolateFieldWidth(tableOf({{48, 40}, {47, 40}, {40, 50}}), 45), 43.5);
    }

    void fileItemsAreReadTolerantly() {
        CalibrationFile file = parseCalibrationFile(kOldFile);
        QCOMPARE(file.sensorWidth, 24.0f);
        QCOMPARE(file.table.ubound(2), 2);
        QCOMPARE(file.table(FieldWidth, 0), 30.0);
        QCOMPARE(file.table(Extension, 0), 70.0);
        QCOMPARE(file.table(Offset, 0), -0.25);
        QCOMPARE(file.table(FocalLength, 1), 0.015);

        // LF line ends, items on one line separated by commas, fewer columns than five.
        file = parseCalibrationFile("23.6\n2\n1\n\"a\", \"b,c\" ,\"d\"\n 1.5 , 2,3\n4,5,6");
        QCOMPARE(file.table(Extension, 0), 2.0);
        QCOMPARE(file.table(Magnification, 1), 6.0);
        QCOMPARE(file.table(Offset, 1), 0.0);

        // Short of the promised items, an item that is no number, a negative index.
        QByteArray shortFile = kOldFile;
        shortFile.chop(3);  // the last number
        QCOMPARE(errorOf([&] { parseCalibrationFile(shortFile); }),
                 int(RuntimeError::InputPastEndOfFile));
        QCOMPARE(errorOf([&] { parseCalibrationFile(kHugeHeader); }),
                 int(RuntimeError::InputPastEndOfFile));
        QCOMPARE(errorOf([&] { parseCalibrationFile(QByteArray(kOldFile).replace("-.25", "x")); }),
                 int(RuntimeError::TypeMismatch));
        QCOMPARE(errorOf([&] { parseCalibrationFile("24\r\n4\r\n-1\r\n"); }),
                 int(RuntimeError::SubscriptOutOfRange));
    }

    void fileIsWrittenAsTheListHasAlwaysBeen() {
        const DoubleTable table = tableOf({{47.2, 40, 0.5, 100, -0.25}, {1.0 / 3, 1e20}});
        const QByteArray bytes = formatCalibrationFile(23.6f, table);
        QCOMPARE(bytes, QByteArray("23.6\r\n4\r\n1\r\n\"Sehfeld\",\"Auszug\",\"Ma\xdf"
                                   "stab\",\"Brennweite\",\"s0\"\r\n"
                                   "47.2\r\n40\r\n0.5\r\n100\r\n-0.25\r\n"
                                   "0.333333333333333\r\n1E+20\r\n0\r\n0\r\n0\r\n"));
        QCOMPARE(parseCalibrationFile(bytes).table(Extension, 1), 1e20);
    }

    void loadingAListSetsTheLens() {
        QCOMPARE(cal().fileName(), listFile());
        writeList(kOldFile);
        control().setSensorbreite(22.3f);
        QSignalSpy changed(&cal(), &Calibration::tableChanged);
        cal().load();

        QCOMPARE(changed.count(), 1);
        QCOMPARE(control().Sensorbreite(), 24.0f);
        QCOMPARE(control().Brennweite(), 100.0f);
        QCOMPARE(panel().txOffset->text(), QString("110,00"));
        QCOMPARE(control().AzOffset(), 110.0);
        QVERIFY(panel().Option1->isEnabled() && panel().Option1->isChecked());

        // Sorted by extension; the last row keeps the values it was stored with.
        const DoubleTable& m = control().Matrix;
        QCOMPARE(m(Extension, 0), 40.0);
        QCOMPARE(m(Extension, 2), 70.0);
        QVERIFY(qFuzzyCompare(m(Magnification, 1), 0.6));
        QVERIFY(qFuzzyCompare(m(FocalLength, 1), 100.0));
        QCOMPARE(m(Offset, 2), -0.25);
        QCOMPARE(*cal().fieldWidthAt(45), 44.0);
        QVERIFY(!cal().fieldWidthAt(30));

        QCOMPARE(panel().Grid1->rowCount(), 3);
        QCOMPARE(gridText(0, 0) + gridText(0, 2) + gridText(0, 3) + gridText(2, 4),
                 QString("048,000,5000100,00-0,25"));
        QCOMPARE(panel().Grid1->horizontalHeaderItem(4)->text(), QString("      s0"));

        // Another lens without a list: no bellows computation, no table.
        panel().cbOptik->setItemText(2, "Makro 200");
        cal().load();
        QVERIFY(!panel().Option1->isEnabled() && !panel().Option1->isChecked());
        QVERIFY(control().Matrix.isEmpty());
        QVERIFY(!cal().fieldWidthAt(45));
        QCOMPARE(gridText(0, 0), QString());
    }

    void aListThatCannotBeLoadedChangesNothing() {
        writeList(kOldFile);
        cal().load();
        const DoubleTable before = control().Matrix;

        QByteArray truncated = QByteArray(kOldFile).replace(" 24 ", "22.3");
        truncated.chop(3);
        const QList<QPair<QByteArray, int>> broken = {
            {truncated, RuntimeError::InputPastEndOfFile},
            {QByteArray(kOldFile).replace("4.8E+01", "4.8E"), RuntimeError::TypeMismatch},
            {"22.3\r\n4\r\n0\r\n\"a\",\"b\",\"c\",\"d\",\"e\"\r\n48\r\n40\r\n0\r\n0\r\n0\r\n",
             RuntimeError::DivisionByZero},  // one row: nothing to average
        };
        for (const auto& [bytes, error] : broken) {
            writeList(bytes);
            QCOMPARE(errorOf([&] { cal().load(); }), error);
            QCOMPARE(control().Matrix, before);
            QCOMPARE(control().Sensorbreite(), 24.0f);
            QCOMPARE(panel().txOffset->text(), QString("110,00"));
            QCOMPARE(panel().Grid1->rowCount(), 3);
        }
    }

    void synchronStartsASeries() {
        writeList(kOldFile);
        control().setControltyp(1);  // only the bellows rig is measured
        cal().Synchron_Click();
        QVERIFY(platform().messages.isEmpty());
        control().setControltyp(0);

        platform().messageAnswers = {Answer::Cancel};
        cal().Synchron_Click();
        QCOMPARE(platform().messages.size(), 1);
        QCOMPARE(platform().messages[0].prompt, QString("Neue Meßreihe (alte Werte löschen)?"));
        QCOMPARE(platform().messages[0].style,
                 MsgBox::YesNoCancel | MsgBox::Question | MsgBox::DefaultButton2);
        QCOMPARE(platform().messages[0].title, QString("Balgengerät einmessen"));
        QVERIFY(panel().cmdAufnehmen->isHidden() && control().Matrix.isEmpty());

        // Measured with another sensor: a warning, and the series goes on from the list.
        control().setSensorbreite(22.3f);
        platform().messages.clear();
        platform().messageAnswers = {Answer::No};
        cal().Synchron_Click();
        QCOMPARE(platform().messages.size(), 2);
        QCOMPARE(platform().messages[1].prompt, QString("Sensorbreite geändert!"));
        QCOMPARE(platform().messages[1].style, MsgBox::OKOnly | MsgBox::Exclamation);
        QCOMPARE(control().Matrix(Extension, 0), 40.0);
        QVERIFY(!panel().cmdAufnehmen->isHidden() && !panel().cmdFertig->isHidden());
        QCOMPARE(panel().Grid1->rowCount(), 3);

        // No list yet: a fresh series, whatever the answer.
        QFile::remove(listFile());
        platform().messages.clear();
        platform().messageAnswers = {Answer::Yes};
        cal().Synchron_Click();
        QCOMPARE(platform().messages.size(), 1);
        QVERIFY(isFresh(control().Matrix));
        QCOMPARE(panel().Grid1->rowCount(), 1);
        QCOMPARE(gridText(0, 0), QString());
    }

    void aSeriesIsRecordedSavedAndLoadedAgain() {
        platform().messageAnswers = {Answer::No};
        cal().Synchron_Click();
        QVERIFY(isFresh(control().Matrix));

        // The first measurement fills the fresh row; one row yields no focal length yet.
        panel().txBrennweite->setText("50");
        const auto record = [&](const char* width, double extension) {
            panel().Bildbreite->setText(width);
            extension_ = extension;
            cal().cmdAufnehmen_Click();
        };
        record("30", 70);
        QCOMPARE(control().Matrix.ubound(2), 0);
        QCOMPARE(control().Matrix(Extension, 0), 70.0);
        QCOMPARE(panel().txBrennweite->text(), QString("50"));
        record("48", 40);
        QCOMPARE(panel().txBrennweite->text(), QString("100"));
        QCOMPARE(panel().txOffset->text(), QString("110,00"));
        record("40", 50);
        QCOMPARE(gridText(2, 0), QString("040,00"));

        // Refused: a width that is no number, a magnification the last row already has.
        const DoubleTable recorded = control().Matrix;
        panel().Bildbreite->setText("abc");
        QCOMPARE(errorOf([&] { cal().cmdAufnehmen_Click(); }), int(RuntimeError::TypeMismatch));
        QCOMPARE(errorOf([&] { record("40", 55); }), int(RuntimeError::DivisionByZero));
        QCOMPARE(control().Matrix, recorded);

        platform().messages.clear();
        platform().messageAnswers = {Answer::Yes, Answer::Yes, Answer::Yes};
        cal().cmdFertig_Click();
        QCOMPARE(platform().messages.size(), 3);
        QCOMPARE(platform().messages[0].prompt, QString("Sollen die Werte gespeichert werden"));
        QCOMPARE(platform().messages[0].title, QString("Synchronliste speichern"));
        QVERIFY(
            readList().startsWith("24\r\n4\r\n2\r\n\"Sehfeld\",\"Auszug\",\"Ma\xdf"
                                  "stab\",\"Brennweite\",\"s0\"\r\n30\r\n70\r\n0.8\r\n"));
        QCOMPARE(control().Matrix(Extension, 0), 40.0);  // sorted once saved
        QCOMPARE(control().ini("EOS 5D", "Brennweite0_2", ""), QString("100"));
        QCOMPARE(control().ini("EOS 5D", "offset0_2", ""), QString("110,00"));
        QVERIFY(panel().cmdAufnehmen->isHidden() && panel().cmdFertig->isHidden());

        // What was saved loads as it was measured.
        const DoubleTable saved = control().Matrix;
        control().setSensorbreite(22.3f);
        control().Matrix = DoubleTable();
        cal().load();
        QCOMPARE(control().Sensorbreite(), 24.0f);
        QCOMPARE(control().AzOffset(), 110.0);
        for (int j = 0; j <= 2; ++j)
            for (int i = FieldWidth; i <= Magnification; ++i)
                QCOMPARE(control().Matrix(i, j), saved(i, j));

        // Nothing stored when the answers are No.
        platform().messageAnswers = {Answer::No};
        cal().Synchron_Click();
        record("24", 90);
        platform().messageAnswers = {Answer::No, Answer::No, Answer::No};
        cal().cmdFertig_Click();
        QCOMPARE(parseCalibrationFile(readList()).table.ubound(2), 2);
    }

    void rowsAreCorrectedAndDeleted() {
        writeList(kOldFile);
        cal().load();
        QTableWidget* grid = panel().Grid1;
        QLineEdit* cell = panel().Zelle;

        // Derived columns are not edited.
        emit grid->cellDoubleClicked(1, Magnification);
        QVERIFY(cell->isHidden());

        emit grid->cellDoubleClicked(1, FieldWidth);
        QVERIFY(!cell->isHidden());
        QCOMPARE(cell->text(), QString("40"));
        cell->setText("x");
        QCOMPARE(errorOf([&] { cal().Zelle_KeyDown(13); }), int(RuntimeError::TypeMismatch));
        QVERIFY(!cell->isHidden());
        cell->setText("99");
        cal().Zelle_KeyDown(27);
        QVERIFY(cell->isHidden());
        QCOMPARE(control().Matrix(FieldWidth, 1), 40.0);

        // Typed in the editor, Enter stores the number and evaluates the table again.
        grid->setCurrentCell(1, Extension);
        QTest::keyClick(grid, Qt::Key_F2);
        QVERIFY(!cell->isHidden());
        cell->clear();
        QTest::keyClicks(cell, "52,5");
        QTest::keyClick(cell, Qt::Key_Return);
        QVERIFY(cell->isHidden());
        QCOMPARE(control().Matrix(Extension, 1), 52.5);
        QCOMPARE(gridText(1, 1), QString("052,50"));
        QVERIFY(qFuzzyCompare(control().Matrix(FocalLength, 0), 125.0));  // (40-52.5)/(0.5-0.6)

        // The last row deleted: the one before it loses the values it had with it.
        grid->setCurrentCell(2, 0);
        cal().Loeschen_Click();
        QCOMPARE(control().Matrix.ubound(2), 1);
        QCOMPARE(control().Matrix(FocalLength, 1), 0.0);
        QCOMPARE(grid->rowCount(), 2);
        grid->setCurrentCell(0, 0);
        cal().Loeschen_Click();
        QCOMPARE(control().Matrix.ubound(2), 0);
        QCOMPARE(control().Matrix(Extension, 0), 52.5);
        cal().Loeschen_Click();
        QVERIFY(isFresh(control().Matrix));
        QCOMPARE(gridText(0, 0), QString());
    }

    void thePlotFollowsTheTable() {
        auto* plot = control().findChild<CalibrationPlot*>("Kalibrierkurve");
        QVERIFY(plot);
        QLayout* column = panel().Grid1->parentWidget()->layout();
        QCOMPARE(column->indexOf(plot), column->indexOf(panel().Grid1) + 1);
        plot->resize(300, 150);

        // Painting must cope with no rows, one row, equal values and many rows.
        for (const DoubleTable& table :
             {DoubleTable(), tableOf({{48, 40, 0.5}}), tableOf({{48, 40, 0.5}, {48, 40, 0.5}})}) {
            plot->setTable(table);
            QVERIFY(!plot->grab().isNull());
        }
        writeList(kOldFile);
        cal().load();  // the plot is told
        QVERIFY(!plot->grab().isNull());
    }
};

QTEST_MAIN(TestCalibration)
#include "tst_calibration.moc"
