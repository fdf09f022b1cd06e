#pragma once

#include <QLocale>
#include <QObject>
#include <QString>

class QLabel;
class QLineEdit;
class QPushButton;

namespace quendrix {

class Link;
class Motion;
class OpticalSetup;
class Panel;
class Rig;
class Waiter;

// Focus stacks and averaging series. Planning derives the step between planes from the start,
// the end and the number of planes; a run, paced by Timer3, asks the host for a picture
// (Schicht), waits for the host's release, moves axis 0 one plane and waits for the move's
// end, until every plane is taken; then the host is asked to combine them (Kombinieren).
// An averaging series asks for a number of pictures at one place (Mittelwert at the end).
class Stacking : public QObject {
    Q_OBJECT

public:
    Stacking(Rig& rig, Panel& panel, Link& link, Motion& motion, OpticalSetup& optical,
             Waiter& waiter);

    // Pictures still to take in the current sequence, and whether the camera is free for one.
    qint32 Ebenenzaehler() const { return Ebenenzaehler_; }
    bool Kamera_bereit() const { return Kamera_bereit_; }
    // Steps between start and end, and the plane spacing as last shown.
    qint32 Bereich() const { return Bereich_; }
    const QString& AufloesungText() const { return AufloesungText_; }
    // The series counter of the settings ("Verzeichnis", "Serie"), set at start-up.
    qint32 Serie() const { return Serie_; }
    void setSerie(qint32 value) { Serie_ = value; }

    // Planning.
    void Ebenen_Change();
    void Schrittzahl_Change();
    void Beginn_MouseUp(int button);
    void Ende_MouseUp(int button);

    // Runs.
    void AutoKomb_Click();
    void AutoKomb_MouseUp(int button);
    void Timer3_Timer();
    void Schicht_Click();
    void Mittelw_Click();
    void Combine_Click();
    void Kopie_Click();
    void Zuruecksetzen();
    void Reset(qint16 axis);
    void Image1_MouseUp(int index, int button);
    void Kamera_aktiv(bool enabled);
    // The number of pictures of an averaging series, kept in the settings.
    qint32 seriesLength();

    // The plane spacing the optics suggest for an aperture and a circle of confusion (mm), and
    // the planes it takes over the planned range; see stepadvisor.h. It follows every new
    // field of view.
    void suggestSpacing();
    void takeSuggestion();

signals:
    // The control's events of a run: a plane is ready for its picture, an
    // averaging series or a stack is complete, a copy picture is asked for, and the field of
    // view is announced at a run's start.
    void Schicht(const QString& Nr);
    void Kopie();
    void Mittelwert(const QString& Anzahl);
    void Kombinieren(const QString& Anzahl);
    void SehfeldNeu(const QString& Bildbreite);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void connectPanel();
    void connectAdvisor();
    void Fortsetzung();
    void takePosition(QLineEdit* field, int button);
    void raiseFieldOfView();
    QString layerCount() const;
    void showProgress();

    Rig& rig_;
    qint32 Ebenenzaehler_ = 0;
    bool Kamera_bereit_ = false;
    qint32 Bereich_ = 0;
    QString AufloesungText_;
    qint32 Serie_ = 0;
    Panel& panel_;
    Link& link_;
    Motion& motion_;
    OpticalSetup& optical_;
    Waiter& waiter_;

    // When the running stack started and how many planes it takes (Fortschritt shows them).
    double runStart_ = 0;
    int planesTotal_ = 0;

    // The spacing advisor: the language its circle of confusion is written in, and the
    // number of planes it suggests.
    QLocale confusionLocale_;
    int suggestedPlanes_ = 0;
};

}  // namespace quendrix
