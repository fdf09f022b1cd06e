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

    qint32 Ebenenzaehler = 0;  // pictures still to take in the current sequence
    bool Kamera_bereit = false;
    qint32 Bereich = 0;      // steps between start and end
    QString AufloesungText;  // the plane spacing as last shown
    qint32 Serie = 0;        // the series counter of the settings ("Verzeichnis", "Serie")

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
    void buildAdvisor();
    void Fortsetzung();
    void takePosition(QLineEdit* field, int button);
    void raiseFieldOfView();
    QString layerCount() const;
    void showProgress();

    Rig& rig_;
    Panel& panel_;
    Link& link_;
    Motion& motion_;
    OpticalSetup& optical_;
    Waiter& waiter_;

    // What the operator sees of a running stack, beside the documented captions.
    QLabel* progress_ = nullptr;
    double runStart_ = 0;
    int planesTotal_ = 0;

    // The spacing advisor's inputs and answer.
    QLineEdit* aperture_ = nullptr;
    QLineEdit* confusion_ = nullptr;
    QLocale confusionLocale_;  // the language the circle is written in
    QLabel* suggestion_ = nullptr;
    QPushButton* take_ = nullptr;
    int suggestedPlanes_ = 0;
};

}  // namespace quendrix
