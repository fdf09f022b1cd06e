#pragma once

#include <QObject>
#include <QString>
#include <array>
#include <optional>

class ctlQuendrix;

namespace quendrix {

class Panel;
class Waiter;

// The link to the board: every command goes out through Output, which waits for the previous
// command's acknowledgement and then for its own; everything that arrives, from the serial
// port or the socket, is cut into lines and evaluated by Auswerten, which turns it into
// acknowledgements, axis positions and displays. The host's own handshake (SetOK and the
// wait for the release) lives here too.
class Link : public QObject {
    Q_OBJECT

public:
    Link(ctlQuendrix& control, Panel& panel, Waiter& waiter);

    // Sends one command and returns once the board acknowledged it or after about 2 s.
    void Output(const QString& Befehl);
    // Evaluates arrived text (any number of lines, possibly a partial one). wifi tells that it
    // came from the socket; it only changes how the line is logged.
    void Auswerten(const QString& ComInNeu, bool wifi);
    // Bytes that arrived on the serial port or (viaSocket) the socket: they are cut into lines,
    // each handed to Auswerten as the transport's receive handler does it.
    void received(const QByteArray& bytes, bool viaSocket);
    void SetOK(bool Wert) { bFreigabe = Wert; }
    // Waits until the host releases (SetOK(true)), Escape is held, or 31 s have passed; after
    // the 31 s it tells the operator who is waiting.
    void waitForRelease(const QString& caller);
    // Ends every wait on the board at once (the control is going away).
    void terminate() { bQuittiert = true; }

    // How many finished-move reports ("|F") the axis has sent so far.
    quint64 finishedMoves(int axis) const { return finishedMoves_[axis]; }
    // Whether the move started after finishedMoves(axis) was `before` has ended: the axis's
    // status text shows "|F", or a finished-move report came since. The count matters on a
    // noisy cable, where a stray status line can replace the "|F" in the status text before
    // the wait looks at it.
    bool moveEnded(int axis, quint64 before) const {
        return sKennText[axis].contains(u"|F") || finishedMoves_[axis] != before;
    }

    // Link state the control's subsystems share.
    bool bQuittiert = false;                  // the board answered the last command
    QString sErwartet;                        // what the reply to the last command must contain
    QString sEmpfang;                         // received text not yet cut into lines
    QString sLetzteZeile;                     // the last complete line a receive handler took
    QString sRest;                            // text handed to Auswerten and not yet evaluated
    bool bFreigabe = false;                   // the host's release
    std::array<QString, 3> sKennText;         // last status line per axis; 1 also identification
    std::array<qint32, 2> backlash = {0, 0};  // the axes' backlash settings (from tSpiel)
    std::array<qint32, 2> AchsPosition = {0, 0};  // steps, as last reported
    std::array<qint32, 2> encoder = {0, 0};
    bool bBereit = false;  // the ready flag: device start-up completed

signals:
    // An axis reported a new position; the optical model follows the bellows and distance.
    void positionReported(int axis);
    // The lens changer reported the lens in place; lblOptik now names it.
    void lensShown();
    // An axis reported the end of a move ("|F").
    void moveFinished(int axis);

private:
    void serialReceived();
    void socketReceived();
    // Takes the complete lines out of sEmpfang; the transports differ in which lines count
    // as an acknowledgement by themselves.
    void takeSerialLines();
    void takeSocketLines();
    void failed(const QString& text);

    // Parts of Auswerten.
    void evaluateStatusLine(const QString& line, QChar first);
    void evaluateAxisLine(const QString& line, int axis);
    void evaluateChangerLine(const QString& line);
    void setPosition(int axis, std::optional<double> steps);
    void showPosition(int axis);
    void showEncoder(int axis, std::optional<double> value);
    void showChangerPosition(std::optional<double> position);

    ctlQuendrix& control_;
    Panel& panel_;
    Waiter& waiter_;
    std::array<quint64, 2> finishedMoves_ = {0, 0};
};

}  // namespace quendrix
