#pragma once

#include <QFrame>
#include <QString>

class QLabel;
class QPushButton;

// The bar across the top of the window while the rig is out of service: what happened to the
// link, and the two ways back, "Neu verbinden" (the start-up once more) and, for a serial
// board, "Steuerung suchen" (the board on whichever port it now is).
class LinkBar : public QFrame {
    Q_OBJECT
public:
    explicit LinkBar(QWidget* parent = nullptr);

    // Shows the bar saying `text`; `advice` (what to check) goes into its tool tip.
    void showProblem(const QString& text, const QString& advice = {});
    // Shows the bar saying what is being tried; its buttons wait meanwhile.
    void showBusy(const QString& text);
    // A WiFi board is not searched for on the serial ports.
    void offerSearch(bool offer);
    QString text() const;

signals:
    void reconnectClicked();
    void searchClicked();

private:
    QLabel* text_;
    QPushButton* reconnect_;
    QPushButton* search_;
    bool searchOffered_ = true;
};
