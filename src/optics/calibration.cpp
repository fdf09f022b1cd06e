#include "optics/calibration.h"

#include "core/calibrationmath.h"
#include "optics/calibrationfile.h"
#include "optics/opticalsetup.h"
#include "settings/guard.h"
#include "settings/numbers.h"
#include "settings/quicksort.h"
#include "settings/rig.h"
#include "settings/textformat.h"

#include <quendrix/Panel.h>

#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>

namespace quendrix {

using namespace calibration;

namespace {

// How the grid shows each column.
const char* const kGridFormats[] = {"000.00", "000.00", "0.0000", "##0.00", "##0.00"};

bool isFileThere(const QString& path) {
    return QFileInfo(path).isFile();
}

}  // namespace

Calibration::Calibration(Rig& rig, Panel& panel, OpticalSetup& optical, DoubleTable& matrix,
                         const QString& appPath)
    : rig_(rig), panel_(panel), optical_(optical), matrix_(matrix), appPath_(appPath) {
    QTableWidget* grid = panel_.Grid1;
    // Only the field width and the extension are measured; the cell editor corrects them.
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->installEventFilter(this);
    panel_.Zelle->installEventFilter(this);
    connect(grid, &QTableWidget::cellDoubleClicked, this, [this](int row, int column) {
        runGuarded(rig_.platform(), [&] { openEditor(row, column); });
    });
}

QString Calibration::fileName() const {
    return appPath_ + QDir::separator() + optical_.Kameratyp() +
           Trim(panel_.cbOptik->currentText()) + QLatin1Char('_') + rig_.MotorName() +
           QStringLiteral("_Synchronliste.txt");
}

CalibrationFile Calibration::readSorted() const {
    CalibrationFile file = readCalibrationFile(fileName());
    quickSortRows(file.table, Extension);
    evaluateRows(file.table, file.sensorWidth);
    return file;
}

void Calibration::load() {
    closeEditor();
    if (!isFileThere(fileName())) {
        // An uncalibrated lens: the field of view cannot come from the bellows.
        panel_.Option1->setEnabled(false);
        panel_.Option1->setAutoExclusive(false);
        panel_.Option1->setChecked(false);
        panel_.Option1->setAutoExclusive(true);
        matrix_ = DoubleTable();
        showTable();
        emit tableChanged();
        return;
    }

    CalibrationFile file = readSorted();
    const std::optional<double> focal = meanOfPositive(file.table, FocalLength);
    const std::optional<double> offset = meanOfPositive(file.table, Offset);
    if (!focal || !offset) throw RuntimeError(RuntimeError::DivisionByZero);
    const float focalLength = toSingle(*focal);
    const double azOffset = *offset + double(focalLength);

    optical_.setSensorbreite(file.sensorWidth);
    optical_.setBrennweite(focalLength);
    optical_.setAzOffset(azOffset);
    panel_.txOffset->setText(formatNumber(azOffset, QStringLiteral("##0.00"), rig_.locale()));
    panel_.Option1->setEnabled(true);
    panel_.Option1->setChecked(true);
    matrix_ = std::move(file.table);
    showTable();
    emit tableChanged();
}

std::optional<double> Calibration::fieldWidthAt(double extension) const {
    return interpolateFieldWidth(matrix_, extension);
}

void Calibration::Synchron_Click() {
    if (rig_.Controltyp() != 0) return;
    closeEditor();
    Platform& platform = rig_.platform();
    const int answer =
        platform.messageBox(tr("Neue Meßreihe (alte Werte löschen)?"),
                            MsgBox::YesNoCancel | MsgBox::Question | MsgBox::DefaultButton2,
                            tr("Balgengerät einmessen"));
    if (answer != MsgBox::Yes && answer != MsgBox::No) return;
    if (answer == MsgBox::Yes) {
        matrix_ = freshTable();
        blankGrid();
    }

    // The series goes on from the lens's list as it is kept.
    if (!isFileThere(fileName())) {
        matrix_ = freshTable();
    } else {
        const float sensorWidth = optical_.Sensorbreite();
        CalibrationFile file = readSorted();
        optical_.setSensorbreite(file.sensorWidth);
        matrix_ = std::move(file.table);
        if (file.sensorWidth != sensorWidth)
            platform.messageBox(tr("Sensorbreite geändert!"), MsgBox::OKOnly | MsgBox::Exclamation,
                                QString());
    }
    if (answer == MsgBox::No) showTable();
    emit tableChanged();
    setMeasuring(true);
}

void Calibration::cmdAufnehmen_Click() {
    closeEditor();
    const double fieldWidth = textToDouble(panel_.Bildbreite->text(), rig_.locale());
    const double extension = currentExtension ? currentExtension() : 0.0;
    DoubleTable table = matrix_.isEmpty() ? freshTable() : matrix_;
    if (!isFresh(table)) table = withRowAppended(table);
    const int row = table.ubound(2);
    table(FieldWidth, row) = fieldWidth;
    table(Extension, row) = extension;
    commitSeries(std::move(table));
    panel_.Grid1->scrollToBottom();
}

void Calibration::cmdFertig_Click() {
    closeEditor();
    Platform& platform = rig_.platform();
    if (platform.messageBox(tr("Sollen die Werte gespeichert werden"), MsgBox::YesNo,
                            tr("Synchronliste speichern")) == MsgBox::Yes) {
        writeCalibrationFile(fileName(), optical_.Sensorbreite(),
                             matrix_.isEmpty() ? freshTable() : matrix_);
    }
    if (!matrix_.isEmpty()) quickSortRows(matrix_, Extension);
    showTable();
    emit tableChanged();

    // Per camera (the section), motor and lens.
    const QString key = rig_.MotorName().right(1) + QLatin1Char('_') +
                        QString::number(panel_.cbOptik->currentIndex());
    if (platform.messageBox(tr("Soll die neue Brennweite gespeichert werden"), MsgBox::YesNo,
                            QString()) == MsgBox::Yes) {
        const QString text = panel_.txBrennweite->text();
        const float focalLength = textToSingle(text, rig_.locale());
        rig_.setini(optical_.Kameratyp(), QStringLiteral("Brennweite") + key, text);
        optical_.setBrennweite(focalLength);
    }
    if (platform.messageBox(tr("Soll der neue Offsetwert gespeichert werden"), MsgBox::YesNo,
                            QString()) == MsgBox::Yes) {
        const QString text = panel_.txOffset->text();
        const double offset = textToDouble(text, rig_.locale());
        rig_.setini(optical_.Kameratyp(), QStringLiteral("offset") + key, text);
        optical_.setAzOffset(offset);
    }
    setMeasuring(false);
}

void Calibration::Loeschen_Click() {
    closeEditor();
    const DoubleTable& table = matrix_;
    const int row = panel_.Grid1->currentRow();
    if (table.isEmpty() || row < table.lbound(2) || row > table.ubound(2)) return;
    commitSeries(withoutRow(table, row));
}

void Calibration::Zelle_KeyDown(int keyCode) {
    if (editRow_ < 0) return;
    if (keyCode == VirtualKey::Escape) {
        closeEditor();
        return;
    }
    if (keyCode != VirtualKey::Return) return;
    const double value = textToDouble(panel_.Zelle->text(), rig_.locale());
    DoubleTable table = matrix_;
    if (!table.isEmpty() && editRow_ <= table.ubound(2)) {
        table(editColumn_, editRow_) = value;
        commitSeries(std::move(table));
    }
    closeEditor();
}

void Calibration::commitSeries(DoubleTable table) {
    evaluateRows(table, optical_.Sensorbreite());
    std::optional<float> focalLength;
    double azOffset = 0;
    if (const std::optional<FittedLine> line = fittedLine(table)) {
        focalLength = toSingle(line->focalLength);
        azOffset = line->offset + double(*focalLength);
    }
    matrix_ = std::move(table);
    if (focalLength) {
        optical_.setBrennweite(*focalLength);
        panel_.txOffset->setText(formatNumber(azOffset, QStringLiteral("##0.00"), rig_.locale()));
    }
    showTable();
    emit tableChanged();
}

void Calibration::showTable() {
    const DoubleTable& table = matrix_;
    if (table.isEmpty() || isFresh(table)) {
        blankGrid();
        return;
    }
    QTableWidget* grid = panel_.Grid1;
    grid->setRowCount(rowCount(table));
    for (int j = table.lbound(2); j <= table.ubound(2); ++j) {
        for (int i = 0; i <= kHighestColumn; ++i) {
            QTableWidgetItem* item = grid->item(j, i);
            if (!item) {
                item = new QTableWidgetItem;
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
                grid->setItem(j, i, item);
            }
            item->setText(
                formatNumber(table(i, j), QString::fromLatin1(kGridFormats[i]), rig_.locale()));
        }
    }
}

void Calibration::blankGrid() {
    panel_.Grid1->clearContents();
    panel_.Grid1->setRowCount(1);
}

void Calibration::setMeasuring(bool measuring) {
    panel_.cmdAufnehmen->setVisible(measuring);
    panel_.cmdFertig->setVisible(measuring);
}

void Calibration::openEditor(int row, int column) {
    const DoubleTable& table = matrix_;
    if (column != FieldWidth && column != Extension) return;
    if (table.isEmpty() || row < table.lbound(2) || row > table.ubound(2)) return;
    QTableWidget* grid = panel_.Grid1;
    QLineEdit* editor = panel_.Zelle;
    editRow_ = row;
    editColumn_ = column;
    editor->setGeometry(grid->visualRect(grid->model()->index(row, column)));
    editor->setText(doubleToText(table(column, row), rig_.locale()));
    editor->show();
    editor->raise();
    editor->setFocus();
    editor->selectAll();
}

void Calibration::closeEditor() {
    if (editRow_ < 0) return;
    editRow_ = editColumn_ = -1;
    const bool hadFocus = panel_.Zelle->hasFocus();
    panel_.Zelle->hide();
    if (hadFocus) panel_.Grid1->setFocus();
}

bool Calibration::eventFilter(QObject* watched, QEvent* event) {
    if (watched == panel_.Zelle && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        const int keyCode = key == Qt::Key_Return || key == Qt::Key_Enter ? VirtualKey::Return
                            : key == Qt::Key_Escape                       ? VirtualKey::Escape
                                                                          : 0;
        if (keyCode == 0) return false;
        runGuarded(rig_.platform(), [&] { Zelle_KeyDown(keyCode); });
        return true;
    }
    if (watched == panel_.Zelle && event->type() == QEvent::FocusOut) {
        // Clicking elsewhere drops the correction; a message box popping up does not.
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) closeEditor();
        return false;
    }
    if (watched == panel_.Grid1 && event->type() == QEvent::KeyPress && editRow_ < 0) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_F2 || key == Qt::Key_Return || key == Qt::Key_Enter) {
            QTableWidget* grid = panel_.Grid1;
            runGuarded(rig_.platform(),
                       [&] { openEditor(grid->currentRow(), grid->currentColumn()); });
            return editRow_ >= 0;
        }
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace quendrix
