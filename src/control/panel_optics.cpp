// Tab "Optik" (the bellows rig calls it "Objektive"): camera sensor, lens list and the
// calibration list of the selected lens.

#include <quendrix/Panel.h>

#include "control/calibrationplot.h"
#include "control/panelkit.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QHeaderView>
#include <QListWidget>
#include <QTableWidget>

namespace quendrix {

using namespace kit;

void Panel::buildOpticsTab(QWidget* page) {
    buildCamera(page);
    buildLensList(page);
    buildCalibration(page);
    column(page)->addStretch();
}

// The camera: its type is the frame's caption, blank until a camera is chosen.
void Panel::buildCamera(QWidget* page) {
    Frame9 = frame(page, QStringLiteral("Frame9"), QStringLiteral(" "));
    auto* form = layoutIn<QFormLayout>(Frame9);
    Sensor_breite = number(Frame9, QStringLiteral("Sensor_breite"), QStringLiteral("0"));
    SensorBreiteA = number(Frame9, QStringLiteral("SensorBreiteA"), QStringLiteral("1024"));
    SensorBreiteP = number(Frame9, QStringLiteral("SensorBreiteP"), QStringLiteral("1024"));
    Zwischenringe = number(Frame9, QStringLiteral("Zwischenringe"), QStringLiteral("0"));
    Direktanzeige = check(Frame9, QStringLiteral("Direktanzeige"), tr("Direktanzeige"));
    form->addRow(tr("Sensorbreite [mm]"), Sensor_breite);
    form->addRow(tr("Bildbreite [Pixel]"), SensorBreiteA);
    form->addRow(tr("Basisauflösung [Pixel]"), SensorBreiteP);
    form->addRow(tr("Zwischenringe [mm]"), Zwischenringe);
    form->addRow(Direktanzeige);
    column(page)->addWidget(Frame9);
}

// The lens list. OptikFaktor holds the factor of each lens, index-aligned with cbOptik; rigs
// without bellows show it beside the names.
void Panel::buildLensList(QWidget* page) {
    auto* box = new QGroupBox(tr("Objektiv"), page);
    auto* grid = layoutIn<QGridLayout>(box);
    cbOptik = make<QComboBox>(box, QStringLiteral("cbOptik"));
    cbOptik->setEditable(true);
    cbOptik->addItem(QStringLiteral("ohne"));
    cbOptik->setToolTip(tr("Objektiv auswählen"));
    OptikFaktor = make<QListWidget>(box, QStringLiteral("OptikFaktor"));
    OptikFaktor->addItem(QStringLiteral("0"));
    OptikFaktor->hide();
    NeuObjektiv = button(box, QStringLiteral("NeuObjektiv"), tr("Neu"));
    NeuName = button(box, QStringLiteral("NeuName"), tr("Umbenennen"));
    Speichern = button(box, QStringLiteral("Speichern"), tr("Speichern"));
    Autofokus = check(box, QStringLiteral("Autofokus"), tr("Autofokus"));
    OptikFaktor->setMaximumSize(80, 60);
    grid->addWidget(cbOptik, 0, 0, 1, 3);
    grid->addWidget(OptikFaktor, 0, 3, 2, 1);
    grid->addWidget(NeuObjektiv, 1, 0);
    grid->addWidget(NeuName, 1, 1);
    grid->addWidget(Speichern, 1, 2);
    grid->addWidget(Autofokus, 2, 0, 1, 3);
    column(page)->addWidget(box);
}

// Focal length and offset of the lens, and its calibration list: one row per measured
// image width. Zelle is the cell editor floated over the grid while a cell is edited.
void Panel::buildCalibration(QWidget* page) {
    auto* box = new QGroupBox(tr("Kalibrierung"), page);
    auto* layout = layoutIn<QVBoxLayout>(box);

    auto* form = new QFormLayout;
    txBrennweite = number(box, QStringLiteral("txBrennweite"), QStringLiteral("0"));
    txOffset = number(box, QStringLiteral("txOffset"), QStringLiteral("0"));
    form->addRow(tr("Brennweite [mm]"), txBrennweite);
    form->addRow(QStringLiteral("Offset [mm]"), txOffset);
    layout->addLayout(form);

    auto* mode = new QHBoxLayout;
    Option1 = option(box, QStringLiteral("Option1"), tr("Balgenberechnung"));
    Option1->setEnabled(false);
    Synchron = button(box, QStringLiteral("Synchron"), tr("Einmessen"));
    mode->addWidget(Option1);
    mode->addStretch();
    mode->addWidget(Synchron);
    layout->addLayout(mode);

    // Column titles as the list has always had them; a leading "^" centres the title.
    //: The calibration list's column titles, separated by "|"; a leading "^" centres one.
    //: B/G: the magnification (image to object), s0: the lens' offset.
    const QString format = tr("Breite|^ Auszug|^ B/G |^ Fokus |^      s0");
    const QStringList titles = format.split(QLatin1Char('|'));
    Grid1 = make<QTableWidget>(box, QStringLiteral("Grid1"));
    Grid1->setColumnCount(int(titles.size()));
    Grid1->setRowCount(1);
    for (int col = 0; col < titles.size(); ++col) {
        QString title = titles[col];
        Qt::Alignment align = Qt::AlignLeft | Qt::AlignVCenter;
        if (title.startsWith(QLatin1Char('^'))) {
            title.remove(0, 1);
            align = Qt::AlignCenter;
        }
        auto* item = new QTableWidgetItem(title);
        item->setTextAlignment(align);
        Grid1->setHorizontalHeaderItem(col, item);
    }
    Grid1->verticalHeader()->hide();
    Grid1->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    Grid1->setMinimumHeight(120);
    Zelle = make<QLineEdit>(Grid1->viewport(), QStringLiteral("Zelle"));
    Zelle->hide();
    layout->addWidget(Grid1);
    Kalibrierkurve = new CalibrationPlot(box);
    layout->addWidget(Kalibrierkurve);

    Loeschen = button(box, QStringLiteral("Loeschen"), tr("Zeile löschen"));
    layout->addWidget(Loeschen, 0, Qt::AlignRight);
    column(page)->addWidget(box);
}

}  // namespace quendrix
