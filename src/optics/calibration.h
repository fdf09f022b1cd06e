#pragma once

#include <quendrix/Array2D.h>

#include <QObject>
#include <QString>
#include <functional>
#include <optional>

namespace quendrix {

class OpticalSetup;
class Panel;
class Rig;
namespace calibration {
struct CalibrationFile;
}

// The synchronisation list of a bellows rig: per camera, lens and motor, a measuring series of
// field widths at bellows extensions, kept in a text file and in the control's public table
// Matrix (column, row): 0 field width, 1 extension, 2 magnification, 3 focal length and
// 4 offset derived from a row and the next. Loading it yields the lens's focal length and
// offset (the properties Brennweite and AzOffset) and chooses the bellows computation
// (Option1) for the field of view.
class Calibration : public QObject {
    Q_OBJECT

public:
    // matrix is the control's public table Matrix; appPath its App_Path, where lists are kept.
    Calibration(Rig& rig, Panel& panel, OpticalSetup& optical, DoubleTable& matrix,
                const QString& appPath);

    // Where the current lens's list is kept: App_Path, the path separator, Kameratyp, the lens
    // name (cbOptik's text without surrounding blanks), "_", MotorName, "_Synchronliste.txt".
    QString fileName() const;

    // Loads the current lens's list (when a lens is chosen on a bellows rig, and at start-up):
    // the sensor width it was measured with, the table sorted by extension and evaluated, the
    // focal length and offset it yields; Option1 is enabled and chosen. No file: Option1 is
    // disabled and cleared and the table emptied, so the lens has no field of view from the
    // bellows. Errors (a file shorter than its header (62), an item that is no number (13), two
    // rows of equal magnification or no focal length or offset to average (11)) throw
    // RuntimeError and leave the table, the grid and the properties as they were.
    void load();

    // The field width the loaded table gives at `extension` (rings plus bellows extension),
    // interpolated linearly between the two rows that bracket it; none outside the table or
    // when no table is loaded.
    std::optional<double> fieldWidthAt(double extension) const;

    // The extension at which the current measurement is taken (rings plus bellows), from the
    // optics.
    std::function<double()> currentExtension;

    // Panel handlers.
    // Starts or continues a measuring series (bellows rigs only): asks whether to start anew,
    // takes up the lens's list as it is kept, warns when it was measured with another sensor
    // width, and shows the measuring buttons.
    void Synchron_Click();
    // Records a row: the field width in Bildbreite at currentExtension(). With two rows or more
    // the focal length and offset boxes show what the series yields.
    void cmdAufnehmen_Click();
    // Ends the series: offers to save the list, sorts it, offers to store the focal length and
    // the offset for this camera, motor and lens, and hides the measuring buttons.
    void cmdFertig_Click();
    // Deletes the row selected in Grid1; the last remaining row is cleared instead.
    void Loeschen_Click();
    // The key pressed in the cell editor: Enter (13) stores the typed number, Escape (27)
    // drops it. The editor opens on a field width or extension cell by a double click, F2 or
    // Enter on the grid.
    void Zelle_KeyDown(int keyCode);

signals:
    // The table changed (loaded, recorded, corrected, deleted).
    void tableChanged();

private:
    bool eventFilter(QObject* watched, QEvent* event) override;

    // The current lens's file read, sorted by extension and evaluated with the sensor width it
    // was measured with; nothing is changed.
    calibration::CalibrationFile readSorted() const;
    // A table changed by a measurement, a correction or a deletion: evaluated with the current
    // sensor width and made the control's; with two rows or more the focal length and offset
    // boxes show what it yields. Nothing changes when the evaluation fails.
    void commitSeries(DoubleTable table);
    // Grid1 shows the control's table; a fresh series shows one blank row.
    void showTable();
    void blankGrid();
    void setMeasuring(bool measuring);

    // The cell editor Zelle, floated over a cell of the field width or extension column.
    void openEditor(int row, int column);
    void closeEditor();

    Rig& rig_;
    Panel& panel_;
    OpticalSetup& optical_;
    DoubleTable& matrix_;
    const QString& appPath_;
    int editRow_ = -1;
    int editColumn_ = -1;
};

}  // namespace quendrix
