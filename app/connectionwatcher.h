#pragma once

#include "options.h"
#include "rigstartup.h"

#include <QObject>
#include <QString>

class ctlQuendrix;

// Keeps an eye on the link to a rig in service. A board unplugged (its serial port gone from
// the system) or a WiFi connection dropped is noticed at once: a dead serial port is closed, so
// that the panel says "Keine Verbindung" for whatever it still tries to send instead of writing
// into nothing, and lost() tells the window. reconnect() brings the rig back through the
// panel's own start-up, after saving its state: the start-up reads the positions and the stack
// plan from the settings file, and what it finds there must be what the rig was left with.
class ConnectionWatcher : public QObject {
    Q_OBJECT
public:
    explicit ConnectionWatcher(ctlQuendrix& panel, QObject* parent = nullptr);

    // How the rig is started: serial (also the simulated rig) or WiFi.
    void setBoard(Options::Board board) { board_ = board; }
    Options::Board board() const { return board_; }
    bool wifi() const { return board_ == Options::Board::Wifi; }

    // The link broke while the rig was in service and has not been restored since.
    bool isLost() const { return lost_; }
    // A start-up is under way (the first one, or a reconnection).
    bool starting() const { return starting_; }
    // Stops watching: the window closes and the link goes down on purpose.
    void stopWatching() { watching_ = false; }

    // Runs the start-up again; returns whether the rig came back into service. A rig that was
    // in service has its state saved first.
    bool reconnect();
    // Where the board is looked for, for the window's messages: the serial device or the
    // WiFi address from the settings.
    QString where() const;

signals:
    // The link broke; `what` says which and how, in the window's language.
    void lost(const QString& what);
    // A reconnection brought the rig back into service.
    void restored();
    // A reconnection did not: why, and what to check.
    void failed(const QString& summary, const QString& advice);

private:
    void serialFailed(int error);
    void socketDropped();
    void markLost(const QString& what);
    void saveState();

    ctlQuendrix& panel_;
    Options::Board board_ = Options::Board::Simulated;
    bool inService_ = false;  // Bereitschaft(true) came and the link held since
    bool served_ = false;     // the rig was in service at some time: its state is worth saving
    bool lost_ = false;
    bool starting_ = false;
    bool watching_ = true;
};
