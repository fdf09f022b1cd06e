#pragma once

#include <QObject>
#include <QString>
#include <array>
#include <optional>

namespace quendrix {

class Panel;
class Rig;
class Waiter;

// The link to the board: every command goes out through Output, which waits for the previous
// command's acknowledgement and then for its own; everything that arrives, from the serial
// port or the socket, is cut into lines and evaluated by Auswerten, which turns it into
// acknowledgements, axis positions and displays. The host's own handshake (SetOK and the
// wait for the release) lives here too.
class Link : public QObject {
    Q_OBJECT

public:
    Link(Rig& rig, Panel& panel, Waiter& waiter);

    // Sends one command and returns once the board acknowledged it or after about 2 s.
    void Output(const QString& Befehl);
    // Evaluates arrived text (any number of lines, possibly a partial one). wifi tells that it
    // came from the socket; it only changes how the line is logged.
    void Auswerten(const QString& ComInNeu, bool wifi);
    // Bytes that arrived on the serial port or (viaSocket) the socket: they are cut into lines,
    // each handed to Auswerten as the transport's receive handler does it.
    void received(const QByteArray& bytes, bool viaSocket);
    void SetOK(bool Wert) { bFreigabe_ = Wert; }
    // Waits until the host releases (SetOK(true)), Escape is held, or 31 s have passed; after
    // the 31 s it tells the operator who is waiting.
    void waitForRelease(const QString& caller);
    // Ends every wait on the board at once (the control is going away).
    void terminate() { bQuittiert_ = true; }

    // How many finished-move reports ("|F") the axis has sent so far.
    quint64 finishedMoves(int axis) const { return finishedMoves_[axis]; }
    // Whether the move started after finishedMoves(axis) was `before` has ended: the axis's
    // status text shows "|F", or a finished-move report came since. The count matters on a
    // noisy cable, where a stray status line can replace the "|F" in the status text before
    // the wait looks at it.
    bool moveEnded(int axis, quint64 before) const {
        return sKennText_[axis].contains(u"|F") || finishedMoves_[axis] != before;
    }

    // The handshake: whether the board answered the last command. Start-up clears it before a
    // query whose answer it waits for.
    bool bQuittiert() const { return bQuittiert_; }
    void setQuittiert(bool value) { bQuittiert_ = value; }
    // What the reply to the last command must contain.
    const QString& sErwartet() const { return sErwartet_; }
    void setErwartet(const QString& text) { sErwartet_ = text; }
    // Received text not yet cut into lines, and the last complete line a receive handler took.
    const QString& sEmpfang() const { return sEmpfang_; }
    const QString& sLetzteZeile() const { return sLetzteZeile_; }
    // Text handed to Auswerten and not yet evaluated.
    const QString& sRest() const { return sRest_; }
    void setRest(const QString& text) { sRest_ = text; }
    // The last status line per axis; 1 also holds the identification.
    const std::array<QString, 3>& sKennText() const { return sKennText_; }
    void setKennText(int index, const QString& text) { sKennText_[index] = text; }
    // The axes' backlash settings (from tSpiel), which choose the reply a move ends with.
    const std::array<qint32, 2>& backlash() const { return backlash_; }
    void setBacklash(int axis, qint32 steps) { backlash_[axis] = steps; }
    // Steps of each axis as last reported (start-up sets the stored position).
    const std::array<qint32, 2>& AchsPosition() const { return AchsPosition_; }
    void setAchsPosition(int axis, qint32 steps) { AchsPosition_[axis] = steps; }
    const std::array<qint32, 2>& encoder() const { return encoder_; }
    void setEncoder(int axis, qint32 value) { encoder_[axis] = value; }
    // The ready flag: device start-up completed; shutdown clears it.
    bool bBereit() const { return bBereit_; }
    void setBereit(bool ready) { bBereit_ = ready; }
    // Forgets everything received: text, status lines, positions, encoder values and the
    // acknowledgement, as on a link just opened.
    void forgetReceived();

    // Whether the board acknowledges its commands: false once kSilentAfter commands in a row
    // went unanswered within their wait, true again with the next one answered. A board that
    // hears but does not answer costs every command its full waits and otherwise goes
    // unnoticed; this lets the host see it.
    static constexpr int kSilentAfter = 3;
    bool acknowledging() const { return unansweredInARow_ < kSilentAfter; }
    // Commands sent through Output, and how many of them went unanswered.
    quint64 commandsSent() const { return commandsSent_; }
    quint64 commandsUnanswered() const { return commandsUnanswered_; }

signals:
    // An axis reported a new position; the optical model follows the bellows and distance.
    void positionReported(int axis);
    // The lens changer reported the lens in place; lblOptik now names it.
    void lensShown();
    // An axis reported the end of a move ("|F").
    void moveFinished(int axis);
    // The board stopped acknowledging its commands, or answers again (see acknowledging()).
    void acknowledgingChanged(bool acknowledging);

private:
    void serialReceived();
    void socketReceived();
    // Takes the complete lines out of sEmpfang and hands them on.
    void takeLines(bool viaSocket);
    void failed(const QString& text);
    void countAnswer(bool answered);

    // Parts of Auswerten.
    void evaluateStatusLine(const QString& line, QChar first);
    void evaluateAxisLine(const QString& line, int axis);
    void evaluateChangerLine(const QString& line);
    void setPosition(int axis, std::optional<double> steps);
    void showPosition(int axis);
    void showEncoder(int axis, std::optional<double> value);
    void showChangerPosition(std::optional<double> position);

    Rig& rig_;
    bool bQuittiert_ = false;
    QString sErwartet_;
    QString sEmpfang_;
    QByteArray socketTail_;  // what the socket brought after its last line end
    QString sLetzteZeile_;
    QString sRest_;
    bool bFreigabe_ = false;  // the host's release
    std::array<QString, 3> sKennText_;
    std::array<qint32, 2> backlash_ = {0, 0};
    std::array<qint32, 2> AchsPosition_ = {0, 0};
    std::array<qint32, 2> encoder_ = {0, 0};
    bool bBereit_ = false;
    Panel& panel_;
    Waiter& waiter_;
    std::array<quint64, 2> finishedMoves_ = {0, 0};
    quint64 commandsSent_ = 0;
    quint64 commandsUnanswered_ = 0;
    int unansweredInARow_ = 0;
};

}  // namespace quendrix
