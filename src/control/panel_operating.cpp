// Tab "Steuerung": axis selection, position readout, motion of both axes, bellows and field
// of view, focus stack, lens changer, reference points and the log boxes.

#include <quendrix/Panel.h>

#include "control/glyphlabel.h"
#include "control/panelkit.h"

#include <QGridLayout>
#include <QLocale>
#include <QSlider>

namespace quendrix {

using namespace kit;

namespace {
const char* const kAxisName[2] = {QT_TRANSLATE_NOOP("quendrix::Panel", "Abstand"),
                                  QT_TRANSLATE_NOOP("quendrix::Panel", "Balgen")};
}  // namespace

void Panel::buildOperatingTab(QWidget* page) {
    buildAxisSelection(page);
    buildPositionReadout(page);
    buildAxisMotion(page);
    buildBellows(page);
    buildStack(page);
    buildLensChanger(page);
    buildReferencePoints(page);
    buildLogBoxes(page);
    column(page)->addStretch();
}

// The motor the jog buttons and readouts refer to, each with its state picture and shape.
void Panel::buildAxisSelection(QWidget* page) {
    auto* row = new QHBoxLayout;
    for (int axis : {0, 1}) {
        Image1[axis] = picture(page, element("Image1", axis));
        Shape1[axis] = shape(page, element("Shape1", axis));
        obMotor[axis] = option(page, element("obMotor", axis), tr(kAxisName[axis]));
        row->addWidget(Image1[axis]);
        row->addWidget(Shape1[axis]);
        row->addWidget(obMotor[axis]);
        row->addStretch();
    }
    obMotor[0]->setChecked(true);
    column(page)->addLayout(row);
}

void Panel::buildPositionReadout(QWidget* page) {
    auto* grid = new QGridLayout;
    //: The readout shows millimetres exactly when its caption holds "mm", so only the one in
    //: millimetres may hold it.
    Label9 = label(page, QStringLiteral("Label9"), tr("Position [Schritte]"));
    grid->addWidget(Label9, 0, 1);
    grid->addWidget(caption(page, tr("Schritte")), 0, 2);
    grid->addWidget(caption(page, QStringLiteral("mm")), 0, 3);
    grid->addWidget(caption(page, QStringLiteral("Encoder")), 0, 4);
    grid->addWidget(caption(page, tr("Weg")), 0, 5);
    for (int axis : {0, 1}) {
        const QString zero = QStringLiteral("0");
        lblPosition[axis] = readout(page, element("lblPosition", axis), zero);
        lblPosition1[axis] = readout(page, element("lblPosition1", axis), zero);
        lblPosition2[axis] = readout(page, element("lblPosition2", axis), zero);
        lblEncoder[axis] = readout(page, element("lblEncoder", axis), zero);
        Label13[axis] = readout(page, element("Label13", axis), zero);
        Label13[axis]->setToolTip(tr("Verfahrweg [Schritte]"));
        const int row = axis + 1;
        grid->addWidget(caption(page, tr(kAxisName[axis])), row, 0);
        grid->addWidget(lblPosition[axis], row, 1);
        grid->addWidget(lblPosition1[axis], row, 2);
        grid->addWidget(lblPosition2[axis], row, 3);
        grid->addWidget(lblEncoder[axis], row, 4);
        grid->addWidget(Label13[axis], row, 5);
    }
    column(page)->addLayout(grid);
}

void Panel::buildAxisMotion(QWidget* page) {
    buildMotionFrame(page, 0);
    buildJogButtons(FrameT[0]);
    buildMotionFrame(page, 1);
    // Check0(2) and Check0(3) have no role; they exist so that the array is complete.
    for (int i : {2, 3}) {
        Check0[i] = check(page, element("Check0", i), {});
        Check0[i]->hide();
    }
}

// Run, direction and speed of one axis, and its step timing. Check0(axis) runs the motor,
// Check0(4 + axis) sets the direction, the three-state Check0(6 + axis) the speed (1 normal).
void Panel::buildMotionFrame(QWidget* page, int axis) {
    QGroupBox* box = FrameT[axis] = frame(page, element("FrameT", axis), tr(kAxisName[axis]));
    auto* layout = layoutIn<QVBoxLayout>(box);

    auto* checks = new QGridLayout;
    checks->setSpacing(2);
    Check0[axis] = check(box, element("Check0", axis), tr("Lauf"));
    Check0[4 + axis] = check(box, element("Check0", 4 + axis), tr("Richtung"));
    // The marks start as the boxes do: direction 0 (down, close), normal speed.
    Label7[axis] = make<GlyphLabel>(box, element("Label7", axis));
    Label7[axis]->setText(axis == 0 ? QStringLiteral("ê") : QStringLiteral("Ø×"));
    Check0[6 + axis] = check(box, element("Check0", 6 + axis), tr("Tempo"));
    Check0[6 + axis]->setTristate(true);
    Check0[6 + axis]->setCheckState(Qt::Checked);
    Label8[axis] = make<GlyphLabel>(box, element("Label8", axis));
    Label8[axis]->setText(QStringLiteral("/"));
    checks->addWidget(Check0[axis], 0, 0);
    checks->addWidget(Check0[4 + axis], 1, 0);
    checks->addWidget(Label7[axis], 1, 1);
    checks->addWidget(Check0[6 + axis], 2, 0);
    checks->addWidget(Label8[axis], 2, 1);

    Takt[axis] = frame(box, element("Takt", axis), tr("Takt"));
    auto* timing = layoutIn<QHBoxLayout>(Takt[axis]);
    Taktpause[axis] = number(Takt[axis], element("Taktpause", axis),
                             axis == 0 ? QStringLiteral("800") : QStringLiteral("8000"));
    Taktpause[axis]->setMaximumWidth(60);
    Taktsetzen[axis] = button(Takt[axis], element("Taktsetzen", axis), tr("Takt setzen"));
    timing->addWidget(Taktpause[axis]);
    timing->addWidget(Taktsetzen[axis]);

    auto* top = new QHBoxLayout;
    top->addLayout(checks);
    top->addStretch();
    top->addWidget(Takt[axis], 0, Qt::AlignTop);
    layout->addLayout(top);

    column(page)->addWidget(box);
}

// Jog buttons of the distance rail: 0 fast, 1 slow, 2 slowest, 3 a 16-step nudge, 4 at the
// speed set with Check0(6); then lifting by a distance and turning.
void Panel::buildJogButtons(QGroupBox* box) {
    static const char* const up[5] = {"▲▲", "▲", "△", "+16", QT_TR_NOOP("Auf")};
    static const char* const down[5] = {"▼▼", "▼", "▽", "−16", QT_TR_NOOP("Ab")};
    static const char* const how[5] = {QT_TR_NOOP("schnell"), QT_TR_NOOP("langsam"),
                                       QT_TR_NOOP("sehr langsam"), QT_TR_NOOP("16 Schritte"),
                                       QT_TR_NOOP("mit eingestelltem Tempo")};
    auto* grid = new QGridLayout;
    grid->setSpacing(4);
    for (int i = 0; i < 5; ++i) {
        const QString manner = tr(how[i]);
        Auf[i] = button(box, element("Auf", i), tr(up[i]), tr("Aufwärts, %1").arg(manner));
        Ab[i] = button(box, element("Ab", i), tr(down[i]), tr("Abwärts, %1").arg(manner));
        squeeze(Auf[i]);
        squeeze(Ab[i]);
        grid->addWidget(Auf[i], 0, i);
        grid->addWidget(Ab[i], 1, i);
    }
    auto* layout = static_cast<QVBoxLayout*>(box->layout());
    layout->addLayout(grid);

    auto* lift = new QHBoxLayout;
    cmdHeben = button(box, QStringLiteral("cmdHeben"), tr("Heben"));
    cmdSenken = button(box, QStringLiteral("cmdSenken"), tr("Senken"));
    Label41 = label(box, QStringLiteral("Label41"), tr("Anheben [mm]"));
    Anheben = number(box, QStringLiteral("Anheben"), QStringLiteral("30"));
    Anheben->setMaximumWidth(50);
    Drehen = button(box, QStringLiteral("Drehen"), tr("Drehen"));
    lift->addWidget(cmdHeben);
    lift->addWidget(cmdSenken);
    lift->addWidget(Label41);
    lift->addWidget(Anheben);
    lift->addStretch();
    lift->addWidget(Drehen);
    layout->addLayout(lift);
}

// Bellows: jog, extension, image width, field of view with its slider, calibration capture.
void Panel::buildBellows(QWidget* page) {
    Frame4 = frame(page, QStringLiteral("Frame4"), tr("Balgen"));
    auto* layout = layoutIn<QVBoxLayout>(Frame4);

    auto* jog = new QHBoxLayout;
    for (int i : {0, 1}) {
        const QString second = i == 0 ? QString() : QStringLiteral(" 2");
        const QString tipSuffix = i == 0 ? QString() : tr(", zweites Tempo");
        B_AUF[i] = button(Frame4, element("B_AUF", i), tr("Auf", "the bellows opens") + second,
                          tr("Balgen öffnen") + tipSuffix);
        B_ZU[i] = button(Frame4, element("B_ZU", i), tr("Zu") + second,
                         tr("Balgen schließen") + tipSuffix);
    }
    for (QPushButton* jogButton : {B_AUF[0], B_AUF[1], B_ZU[0], B_ZU[1]})
        jog->addWidget(jogButton);
    layout->addLayout(jog);

    auto* sizes = new QHBoxLayout;
    Balgenauszug = frame(Frame4, QStringLiteral("Balgenauszug"), tr("Balgenauszug"));
    auto* extension = layoutIn<QHBoxLayout>(Balgenauszug);
    Label6 = label(Balgenauszug, QStringLiteral("Label6"), tr("Auszug [mm]"));
    lbAuszug = readout(Balgenauszug, QStringLiteral("lbAuszug"), QStringLiteral("0"));
    // The extension stands clear of its frame, with room for three whole digits; the caption
    // beside it keeps its whole text.
    lbAuszug->setMargin(2);
    lbAuszug->setMinimumWidth(lbAuszug->fontMetrics().horizontalAdvance(QStringLiteral("000,000")) +
                              2 * (lbAuszug->frameWidth() + lbAuszug->margin()));
    Label6->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Preferred);
    extension->addWidget(Label6);
    extension->addWidget(lbAuszug);
    Label18 = label(Frame4, QStringLiteral("Label18"), tr("Bildbreite [mm]"));
    Bildbreite = number(Frame4, QStringLiteral("Bildbreite"), QStringLiteral("0"));
    Bildbreite->setMaximumWidth(60);
    sizes->addWidget(Balgenauszug);
    sizes->addStretch();
    sizes->addWidget(Label18, 0, Qt::AlignBottom);
    sizes->addWidget(Bildbreite, 0, Qt::AlignBottom);
    layout->addLayout(sizes);

    Frame4a = frame(Frame4, QStringLiteral("Frame4a"), tr("Sehfeld"));
    auto* view = layoutIn<QGridLayout>(Frame4a);
    Label26 = label(Frame4a, QStringLiteral("Label26"), tr("Sehfeld [mm]"));
    lblSehfeld = readout(Frame4a, QStringLiteral("lblSehfeld"), QStringLiteral("0"));
    lblSehfeld2 = readout(Frame4a, QStringLiteral("lblSehfeld2"), QStringLiteral("0"));
    Slider1 = make<QSlider>(Frame4a, QStringLiteral("Slider1"));
    Slider1->setOrientation(Qt::Horizontal);
    Slider1->setRange(0, 100000);  // micrometres
    Label15 = label(Frame4a, QStringLiteral("Label15"), QStringLiteral("min"));
    Sf_min = number(Frame4a, QStringLiteral("Sf_min"), {});
    Sf_min->setMaximumWidth(50);
    Label12 = label(Frame4a, QStringLiteral("Label12"), QStringLiteral("max"));
    Sf_max = number(Frame4a, QStringLiteral("Sf_max"), {});
    Sf_max->setMaximumWidth(50);
    view->addWidget(Label26, 0, 0, 1, 2);
    view->addWidget(lblSehfeld, 0, 2);
    view->addWidget(lblSehfeld2, 0, 3, 1, 2);
    view->addWidget(Label15, 1, 0);
    view->addWidget(Sf_min, 1, 1);
    view->addWidget(Slider1, 1, 2, 1, 2);
    view->addWidget(Label12, 1, 4, Qt::AlignRight);
    view->addWidget(Sf_max, 1, 5);
    view->setColumnStretch(2, 1);
    view->setColumnStretch(3, 1);
    layout->addWidget(Frame4a);

    // Capture and finish are shown by the calibration layout only.
    auto* capture = new QHBoxLayout;
    Check1 = check(Frame4, QStringLiteral("Check1"), tr("Einmessen"));
    cmdAufnehmen = button(Frame4, QStringLiteral("cmdAufnehmen"), tr("Aufnehmen"));
    cmdFertig = button(Frame4, QStringLiteral("cmdFertig"), tr("Fertig"));
    Kopie2 = button(Frame4, QStringLiteral("Kopie2"), tr("Kopie"));
    cmdAufnehmen->hide();
    cmdFertig->hide();
    capture->addWidget(Check1);
    capture->addWidget(cmdAufnehmen);
    capture->addWidget(cmdFertig);
    capture->addStretch();
    capture->addWidget(Kopie2);
    layout->addLayout(capture);

    column(page)->addWidget(Frame4);
}

// Focus stack: begin and end positions, planes, step count, path, resolution, pause.
void Panel::buildStack(QWidget* page) {
    Frame12 = frame(page, QStringLiteral("Frame12"), tr("Fokusstapel"));
    auto* grid = layoutIn<QGridLayout>(Frame12);

    Beginn = button(Frame12, QStringLiteral("Beginn"), tr("Beginn"));
    BBeginn[0] = number(Frame12, element("BBeginn", 0), QStringLiteral("0"));
    Ende = button(Frame12, QStringLiteral("Ende"), tr("Ende"));
    BEnde[0] = number(Frame12, element("BEnde", 0), QStringLiteral("0"));
    Ebenen = number(Frame12, QStringLiteral("Ebenen"), QStringLiteral("20"));
    Schrittzahl = number(Frame12, QStringLiteral("Schrittzahl"), QStringLiteral("0"));
    Weglaenge = number(Frame12, QStringLiteral("Weglaenge"), QStringLiteral("0,00"));
    Weglaenge->setReadOnly(true);
    Aufloesung = number(Frame12, QStringLiteral("Aufloesung"), {});
    Aufloesung->setReadOnly(true);
    wartezeit = number(Frame12, QStringLiteral("wartezeit"), QStringLiteral("150"));

    grid->addWidget(Beginn, 0, 0);
    grid->addWidget(BBeginn[0], 0, 1);
    grid->addWidget(Ende, 0, 2);
    grid->addWidget(BEnde[0], 0, 3);
    grid->addWidget(caption(Frame12, tr("Ebenen")), 1, 0);
    grid->addWidget(Ebenen, 1, 1);
    grid->addWidget(caption(Frame12, tr("Schritte")), 1, 2);
    grid->addWidget(Schrittzahl, 1, 3);
    grid->addWidget(caption(Frame12, tr("Weg [mm]")), 2, 0);
    grid->addWidget(Weglaenge, 2, 1);
    grid->addWidget(caption(Frame12, tr("Auflösung")), 2, 2);
    grid->addWidget(Aufloesung, 2, 3);
    grid->addWidget(caption(Frame12, QStringLiteral("Pause [ms]")), 3, 0);
    grid->addWidget(wartezeit, 3, 1);

    AutoKomb = button(Frame12, QStringLiteral("AutoKomb"), tr("Stapel"));
    Mittelw = button(Frame12, QStringLiteral("Mittelw"), tr("Mittelwert"));
    //: The layer counter: the panel reads its number back from after ": ", which must stay.
    Schicht = button(Frame12, QStringLiteral("Schicht"), tr("Schicht: %1").arg(0));
    Combine = button(Frame12, QStringLiteral("Combine"), tr("Kombinieren"));
    Combine->setEnabled(false);
    Kopie = button(Frame12, QStringLiteral("Kopie"), tr("Kopie"));
    auto* actions = new QHBoxLayout;
    for (QPushButton* action : {AutoKomb, Mittelw, Schicht, Combine, Kopie}) {
        squeeze(action, action->fontMetrics().horizontalAdvance(action->text()) + 20);
        actions->addWidget(action);
    }
    grid->addLayout(actions, 4, 0, 1, 4);

    // The running stack's progress, and the spacing advisor: aperture and circle of confusion
    // in, the suggested number of planes out.
    Fortschritt = label(Frame12, QStringLiteral("Fortschritt"), {});
    Fortschritt->hide();
    auto* advisor = new QGridLayout;
    Blende = edit(Frame12, QStringLiteral("Blende"), QStringLiteral("8"));
    Zerstreuungskreis =
        edit(Frame12, QStringLiteral("Zerstreuungskreis"), Frame12->locale().toString(0.03));
    Vorschlag = label(Frame12, QStringLiteral("Vorschlag"), {});
    Vorschlag->setWordWrap(true);
    VorschlagUebernehmen = button(Frame12, QStringLiteral("VorschlagUebernehmen"), tr("Übernehmen"),
                                  tr("Die vorgeschlagene Zahl der Ebenen übernehmen"));
    advisor->addWidget(caption(Frame12, tr("Blende")), 0, 0);
    advisor->addWidget(Blende, 0, 1);
    auto* circleLabel = caption(Frame12, tr("Unschärfe [mm]"));
    circleLabel->setToolTip(tr("Zerstreuungskreis: der Durchmesser, der noch als scharf gilt"));
    advisor->addWidget(circleLabel, 0, 2);
    advisor->addWidget(Zerstreuungskreis, 0, 3);
    advisor->addWidget(Vorschlag, 1, 0, 1, 3);
    advisor->addWidget(VorschlagUebernehmen, 1, 3);
    grid->addWidget(Fortschritt, 5, 0, 1, -1);
    grid->addLayout(advisor, 6, 0, 1, -1);

    column(page)->addWidget(Frame12);
}

// The lens in use and the lens changer; shown on lens-changer and microscope rigs only.
void Panel::buildLensChanger(QWidget* page) {
    Frame1 = frame(page, QStringLiteral("Frame1"), tr("Optik"));
    auto* lens = layoutIn<QHBoxLayout>(Frame1);
    lblOptik = label(Frame1, QStringLiteral("lblOptik"), QStringLiteral("ohne"));
    Slider2 = make<QSlider>(Frame1, QStringLiteral("Slider2"));
    Slider2->setOrientation(Qt::Horizontal);
    Slider2->setRange(0, 1000);
    Slider2->hide();
    lens->addWidget(lblOptik);
    lens->addWidget(Slider2, 1);
    Frame1->hide();
    column(page)->addWidget(Frame1);

    Frame6 = frame(page, QStringLiteral("Frame6"), tr("Objektivwechsler"));
    auto* positions = layoutIn<QHBoxLayout>(Frame6);
    for (int i = 0; i < 5; ++i) {
        lbObjektiv[i] = readout(Frame6, element("lbObjektiv", i), QString::number(i + 1));
        lbObjektiv[i]->setAlignment(Qt::AlignCenter);
        lbObjektiv[i]->setToolTip(
            tr("Objektiv an Position %1; ein Klick schwenkt es ein").arg(i + 1));
        positions->addWidget(lbObjektiv[i]);
    }
    Frame6->hide();
    column(page)->addWidget(Frame6);
}

// Reference points: zero and maximum, and top, bottom and middle each with a picture and a
// shape. The middle point is used by some rigs only.
void Panel::buildReferencePoints(QWidget* page) {
    static const char* const names[5] = {QT_TR_NOOP("Null"), QT_TR_NOOP("Max"), QT_TR_NOOP("Oben"),
                                         QT_TR_NOOP("Unten"), QT_TR_NOOP("Mitte")};
    Frame5 = frame(page, QStringLiteral("Frame5"), tr("Referenzpunkte"));
    auto* row = layoutIn<QHBoxLayout>(Frame5);
    for (int i = 0; i < 5; ++i) {
        Label4[i] = label(Frame5, element("Label4", i), tr(names[i]));
        if (i >= 2) {
            Image1[i] = picture(Frame5, element("Image1", i));
            Shape1[i] = shape(Frame5, element("Shape1", i));
            row->addWidget(Image1[i]);
            row->addWidget(Shape1[i]);
        }
        row->addWidget(Label4[i]);
        row->addSpacing(8);
    }
    row->addStretch();
    Label4[4]->hide();
    Image1[4]->hide();
    Shape1[4]->hide();
    Frame5->hide();
    column(page)->addWidget(Frame5);
}

// Identification line of the controller and the last line received from it.
void Panel::buildLogBoxes(QWidget* page) {
    Text1[0] = edit(page, element("Text1", 0));
    Text1[0]->setToolTip(tr("Kennung des Steuergeräts"));
    Text1[1] = edit(page, element("Text1", 1));
    Text1[1]->setToolTip(tr("Zuletzt empfangen"));
    for (QLineEdit* log : Text1) {
        log->setReadOnly(true);
        // The board's lines are plain ASCII; laid out without kerning and ligature lookups,
        // a line costs a fraction of the time, and every reply passes through here.
        QFont plain = log->font();
        plain.setStyleStrategy(QFont::PreferNoShaping);
        log->setFont(plain);
        column(page)->addWidget(log);
    }
}

}  // namespace quendrix
