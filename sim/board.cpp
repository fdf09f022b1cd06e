#include "sim/board.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace quendrix::sim {

namespace {

// The leading whole number of a value: an optional sign and digits; empty without a digit.
std::optional<qint64> leadingNumber(const QByteArray& value) {
    int i = 0;
    const bool negative = value.startsWith('-');
    if (negative || value.startsWith('+')) ++i;
    qint64 number = 0;
    bool any = false;
    for (; i < value.size() && value[i] >= '0' && value[i] <= '9'; ++i) {
        number = std::min<qint64>(number * 10 + (value[i] - '0'), 1'000'000'000'000LL);
        any = true;
    }
    if (!any) return std::nullopt;
    return negative ? -number : number;
}

int toInt(qint64 n) {
    return int(
        std::clamp<qint64>(n, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

char upper(char c) {
    return c >= 'a' && c <= 'z' ? char(c - 32) : c;
}
bool isUpper(char c) {
    return c >= 'A' && c <= 'Z';
}
char lower(char c) {
    return isUpper(c) ? char(c + 32) : c;
}

QByteArray number(qint64 n) {
    return QByteArray::number(n);
}

// Printable characters, the first never a blank, with no "q", "Q", "|" or "@" (so no status
// line and no acknowledgement of a two-axis or lens-changer board) and neither "A" nor "u"
// (so never "Arduino" or "unbekannt").
QByteArray printableJunk(Random& random, int length) {
    static const QByteArray forbidden = "qQ|@Au";
    QByteArray line;
    line.reserve(length);
    while (line.size() < length) {
        const char c = char(0x20 + random.below(0x7F - 0x20));
        if (forbidden.contains(c) || (line.isEmpty() && c == ' ')) continue;
        line += c;
    }
    return line;
}

// The kinds of hostile garbage. None of them contains "|F" (a finished move), "Arduino" or
// "unbekannt", starts like an acknowledgement (a letter, "q" or "@", then "|"), or has "|B"
// without out-of-range "#" and "~" fields: nothing in them may count as a reply or change
// the state a reader keeps.

// 1 to 40 bytes of any value but CR and LF. They never start with a status letter ("q", "Q",
// "@"): a reader would take the line for a status line and might find a valid number after
// "#", "~", "*" or "|Q" in it. The second byte is never "|", and "|" is never followed by "F"
// or "B".
QByteArray binaryJunk(Random& random) {
    const int length = 1 + random.below(40);
    QByteArray line;
    while (line.size() < length) {
        const char c = char(random.below(256));
        const bool unwanted =
            c == '\r' || c == '\n' || (line.isEmpty() && QByteArray("qQ@").contains(c)) ||
            (line.size() == 1 && c == '|') || (line.endsWith('|') && (c == 'F' || c == 'B')) ||
            (c == 'o' && line.endsWith("Arduin")) || (c == 't' && line.endsWith("unbekann"));
        if (!unwanted) line += c;
    }
    return line;
}

// A status line cut short.
QByteArray truncatedStatus(Random& random) {
    static const char* const shapes[] = {"q", "Q", "@", "q #", "Q ~", "@ |", "q *"};
    return shapes[random.below(int(std::size(shapes)))];
}

// A number beyond a 32-bit integer and beyond a double: a mantissa of 1 to 3 digits with an
// exponent of 309 to 999, or 401 to 600 digits; either with a sign at random.
QByteArray outOfRangeNumber(Random& random) {
    QByteArray n = random.chance(0.5) ? "-" : "";
    const bool exponent = random.chance(0.5);
    n += char('1' + random.below(9));
    for (int more = exponent ? random.below(3) : 400 + random.below(200); more > 0; --more)
        n += char('0' + random.below(10));
    if (exponent) n += 'e' + number(309 + random.below(691));
    return n;
}

// A status line of an axis ("q", "Q") or of the lens changer ("@") whose every number is out
// of range, with its fields in random order. A "|B" line always has "#" and "~" fields: one
// without "#" reads as position 0.
QByteArray outOfRangeStatus(Random& random) {
    const char letter = "qQ@"[random.below(3)];
    const QList<QByteArray> markers = letter == '@' ? QList<QByteArray>{"#", "~", "|Q", "|?|Q"}
                                                    : QList<QByteArray>{"#", "~", "*", ":"};
    const bool moving = random.chance(0.5);
    QList<QByteArray> fields;
    for (const QByteArray& marker : markers)
        if ((moving && (marker == "#" || marker == "~")) || random.chance(0.5)) fields += marker;
    if (fields.isEmpty()) fields += markers[random.below(int(markers.size()))];
    for (int i = int(fields.size()) - 1; i > 0; --i)
        fields.swapItemsAt(i, random.below(i + 1));
    QByteArray line(1, letter);
    for (const QByteArray& marker : fields)
        line += ' ' + marker + outOfRangeNumber(random);
    if (moving) line += " |B";
    return line;
}

// 64 KiB to 256 KiB of printable junk.
QByteArray hugeJunk(Random& random) {
    return printableJunk(random, 64 * 1024 + random.below(192 * 1024 + 1));
}

}  // namespace

int Board::Turn::passedAt(double t) const {
    const int distance = std::abs(to - from);
    const int done =
        std::min(distance, int(std::floor((t - start) / changerSecondsPerPosition + 1e-9)));
    return from + (to > from ? 1 : -1) * std::max(0, done);
}

Board::Board(Options options)
    : options_(options),
      random_(options.faults.seed),
      garbageRandom_(options.faults.seed ^ 0x9E3779B9u),
      replies_(random_, options.faults.splitReplies) {
    powerOn();
    scheduleNoise(0);
    scheduleGarbage(0);
}

int Board::axisCount() const {
    return options_.rig == Rig::Bellows ? 2 : 1;
}

QByteArray Board::identification() const {
    switch (options_.rig) {
        case Rig::Bellows:
            return options_.motorPowerOff ? "Arduino Photostand Motorspannung aus"
                                          : "Arduino Photostand";
        case Rig::LensChanger: {
            const char id[] = {'@', '%', '\x80'};
            return QByteArray("Arduino Photostepper ") + id[int(options_.drive)];
        }
        case Rig::Microscope:
            return "Arduino Mikroskop";
        case Rig::Binocular:
            return "Arduino Binokular";
        case Rig::UnknownArduino:
            return "Arduino Nano bereit";
        case Rig::Silent:
            break;
    }
    return {};
}

void Board::powerOn() {
    axes_ = {};
    moves_ = {};
    for (int a = 0; a < 2; ++a) {
        axes_[a].rail = options_.rails[a];
        axes_[a].encoder = axes_[a].position + options_.encoderOffset;
    }
    changer_ = 0;
    turn_.reset();
    lights_ = {};
    rotateCount_ = lastRotate_ = 0;
}

void Board::linkOpened(double now) {
    clock_ = std::max(clock_, now);
    powerOn();
    framer_.clear();
    replies_.clear();
    arriving_.clear();
    wireInFree_ = wireOutFree_ = clock_;
    linkOpen_ = true;
    bootEnd_ = clock_ + options_.faults.bootDelay;
    commandsThisLink_ = 0;
    disconnectRequested_ = false;
    scheduleNoise(bootEnd_);
    scheduleGarbage(bootEnd_);
}

void Board::linkClosed(double now) {
    runUntil(now);
    linkOpen_ = false;
    framer_.clear();
    replies_.clear();
    arriving_.clear();
    nextNoise_.reset();
    nextGarbage_.reset();
}

void Board::setReceivedObserver(std::function<void(const Received&)> observer) {
    observer_ = std::move(observer);
}

void Board::receive(const QByteArray& bytes, double now) {
    runUntil(now);
    if (!linkOpen_ || disconnectRequested_) return;
    const WireTiming& wire = options_.wire;
    if (!wire.on()) {
        if (booting(clock_)) return;
        for (const QByteArray& text : framer_.feed(bytes))
            if (!take(text, clock_)) break;
        return;
    }
    // Each byte crosses the wire after the ones before it; a command is complete with its
    // last byte, and the firmware takes it a little later.
    double t = std::max(now + wire.adapterSeconds, wireInFree_);
    for (const char byte : bytes) {
        t += wire.secondsPerByte();
        if (booting(t)) continue;
        for (const QByteArray& text : framer_.feed(QByteArray(1, byte)))
            arriving_.append(Arriving{text, t + wire.commandSeconds});
    }
    wireInFree_ = t;
}

bool Board::take(const QByteArray& text, double now) {
    received_.append(Received{text, now});
    if (observer_) observer_(received_.back());
    const char letter = text.front();
    const char terminator = text.back();
    const QByteArray value = text.mid(1, text.size() - 2);
    if (options_.rig != Rig::Silent)
        execute(Command{text, letter, terminator, value, leadingNumber(value)}, now);
    const int limit = options_.faults.disconnectAfter;
    if (limit > 0 && ++commandsThisLink_ >= limit) {
        disconnectRequested_ = true;
        arriving_.clear();
        return false;
    }
    return true;
}

QByteArray Board::output(double now) {
    runUntil(now);
    return replies_.take(clock_);
}

void Board::advance(double now) {
    runUntil(now);
}

std::optional<double> Board::nextDue() const {
    const std::optional<double> reply = replies_.nextDue();
    const std::optional<double> event = nextEvent();
    if (reply && event) return std::min(*reply, *event);
    return reply ? reply : event;
}

AxisState Board::axis(int index) const {
    AxisState state = axes_.at(index);
    state.moving = moves_.at(index).has_value();
    return state;
}

void Board::setPosition(int axis, qint32 steps) {
    // The simulated carriage stands where its counter says: setting the counter puts it there,
    // as a carriage that stayed put while the board was off is where the host last saw it.
    // A rail has no room beyond its ends.
    AxisState& state = axes_.at(axis);
    if (state.rail) steps = std::clamp(steps, 0, *state.rail);
    const qint64 delta = qint64(steps) - state.position;
    moveTo(axis, steps);
    state.lowest = state.highest = steps;
    // A running move goes on by the same number of steps from there.
    if (moves_[axis]) moves_[axis]->shift(delta, state);
}

void Board::moveTo(int axis, qint32 steps) {
    AxisState& state = axes_[axis];
    state.position = steps;
    state.encoder = steps + options_.encoderOffset;
    state.lowest = std::min(state.lowest, steps);
    state.highest = std::max(state.highest, steps);
}

// --- Commands ----------------------------------------------------------------------------

void Board::execute(const Command& command, double now) {
    Reply reply;
    if (command.terminator == '!')
        reply = lightCommand(command);
    else if (command.letter == '?')
        reply = query(command, now);
    else
        reply = motionCommand(command, now);
    if (reply == Reply::Unknown) send("unbekannt: " + command.text, now);
    if (reply == Reply::Acknowledge) acknowledge(command, now);
}

Board::Reply Board::motionCommand(const Command& command, double now) {
    const char letter = command.letter;
    const int n = toInt(command.number.value_or(0));
    if (letter == 'Q') {
        acknowledge(command, now);
        for (int a = 0; a < 2; ++a)
            if (moves_[a]) finishMove(a, now, true);
        lights_.channel = {};
        lights_.module = false;
        return Reply::Done;
    }
    if (options_.rig == Rig::LensChanger && QByteArray("hijkg").contains(letter)) {
        acknowledge(command, now);
        turnChanger(int(QByteArray("hijkg").indexOf(letter)), now);
        return Reply::Done;
    }
    if (QByteArray("trsvzwgmpceax").contains(lower(letter))) {
        const int axis = isUpper(letter) ? 1 : 0;
        if (axis >= axisCount()) return Reply::Acknowledge;  // no such axis: nothing moves
        return axisCommand(command, axis, now);
    }
    switch (letter) {
        case 'l':
        case 'L':
            lights_.channel[isUpper(letter)] = n != 0;
            return Reply::Acknowledge;
        case 'd':
        case 'D':
            lights_.brightness[isUpper(letter)] = n;
            return Reply::Acknowledge;
        case 'b':
        case 'y':
        case 'h':
        case 'H':
            return Reply::Acknowledge;
        default:
            return Reply::Unknown;
    }
}

Board::Reply Board::axisCommand(const Command& command, int a, double now) {
    AxisState& axis = axes_[a];
    const std::optional<qint64> value = command.number;
    const int n = toInt(value.value_or(0));
    switch (lower(command.letter)) {
        case 't':
            if (!value || *value == 1) return Reply::Acknowledge;  // settings taken over
            if (options_.rig == Rig::LensChanger && options_.drive == Drive::Can && *value >= 0) {
                AxisState toward = axis;  // an absolute target; the direction setting stays
                toward.direction = *value >= axis.position ? 1 : 0;
                startMove(a, Move::travel(toward, std::abs(*value - axis.position), now), command,
                          now);
            } else {
                startMove(a, Move::travel(axis, std::abs(*value), now), command, now);
            }
            return Reply::Done;
        case 'r':
            startMove(a, Move::travel(axis, std::nullopt, now), command, now);
            return Reply::Done;
        case 's':
            acknowledge(command, now);
            if (moves_[a]) finishMove(a, now, true);
            return Reply::Done;
        case 'v':
        case 'z':
            setDirection(a, lower(command.letter) == 'v' ? 1 : 0, command, now);
            return Reply::Done;
        case 'w':
            if (value && n > 0) axis.pause = n;
            if (value && n <= 0) axis.startTime = n;
            return Reply::Acknowledge;
        case 'g':
            if (value && n >= 0 && n <= 4) axis.microExponent = n;
            if (value && n < 0) axis.stepStage = n;
            return Reply::Acknowledge;
        case 'm':
            if (value) axis.maxPosition = n;
            return Reply::Acknowledge;
        case 'p':
            if (value) placeCarriage(a, command, now);
            return Reply::Done;
        case 'c':
            axis.inversion = n;
            return Reply::Acknowledge;
        case 'e':
            axis.limits = n != 0;
            return Reply::Acknowledge;
        case 'a':
            axis.backlash = n;
            return Reply::Acknowledge;
        case 'x':
            if (value)
                axis.optics = n;
            else
                setPosition(a, 0);
            return Reply::Acknowledge;
    }
    return Reply::Unknown;
}

Board::Reply Board::lightCommand(const Command& command) {
    const int n = toInt(command.number.value_or(0));
    switch (command.letter) {
        case 'l':
            lights_.module = n != 0;
            break;
        case 'd':
            lights_.moduleBrightness = n;
            break;
        case 'm':
            lights_.moduleSelect = n;
            break;
        case 't':
        case 'T':
            lights_.ringMode = n;
            break;
        case 's':
            if (command.value.startsWith('-'))
                lights_.segments.remove(-n);
            else
                lights_.segments.insert(n);
            break;
        case 'w':
            lights_.white = n;
            break;
        case 'r':
            lights_.red = n;
            break;
        case 'f':
            lights_.green = n;
            break;
        case 'b':
            lights_.blue = n;
            break;
        case 'q':
            ++rotateCount_;
            lastRotate_ = n;
            break;
        default:
            return Reply::Unknown;
    }
    return Reply::Acknowledge;
}

Board::Reply Board::query(const Command& command, double now) {
    if (command.value.isEmpty()) {
        send(identification(), now);
        return Reply::Done;
    }
    if (command.value == "0") {
        send(queryLine(0), now);
        return Reply::Done;
    }
    if (command.value == "1") {
        send(axisCount() > 1 ? queryLine(1) : QByteArray("Q?| keine Achse"), now);
        return Reply::Done;
    }
    return Reply::Unknown;
}

// --- Motion ------------------------------------------------------------------------------

void Board::startMove(int a, const Move& move, const Command& command, double now) {
    moves_[a].reset();  // a new move replaces a running one without a finishing line
    send(movingLine(a), now);
    acknowledge(command, now);
    moves_[a] = move.delayed(options_.wire.moveSeconds);
    if (moves_[a]->end <= now) finishMove(a, now, false);
}

// "p n#": the counter is set. A value beyond the rail leaves the carriage against the switch
// at that end, which the board reports as a move that the switch ended where it started.
void Board::placeCarriage(int a, const Command& command, double now) {
    acknowledge(command, now);
    const qint64 wanted = *command.number;
    setPosition(a, toInt(wanted));
    if (moves_[a] || !axes_[a].rail || wanted == axes_[a].position) return;
    send(statusPrefix(a) + " |! Endschalter " + (wanted < 0 ? "unten" : "oben"), now);
    send(movingLine(a), now);
    send(finishedLine(a), now);
}

void Board::setDirection(int a, int direction, const Command& command, double now) {
    AxisState& axis = axes_[a];
    const bool changes = axis.direction != direction;
    axis.direction = direction;
    if (axis.backlash < 1) {
        acknowledge(command, now);
        return;
    }
    // With backlash the component waits for "|F" instead of an acknowledgement.
    moves_[a].reset();
    if (!changes) {
        send(finishedLine(a), now);
        return;
    }
    send(movingLine(a), now);
    moves_[a] = Move::takeUp(axis, now);
}

void Board::finishMove(int a, double now, bool stopped) {
    const Move move = *moves_[a];
    moves_[a].reset();
    moveTo(a, stopped ? move.positionAt(now) : move.to);
    if (!stopped && !move.limitNotice.isEmpty())
        send(statusPrefix(a) + " |! Endschalter " + move.limitNotice, now);
    if (move.kind != Move::Kind::TakeUp) send(movingLine(a), now);
    send(finishedLine(a), now);
}

void Board::turnChanger(int to, double now) {
    turn_.reset();  // a new choice turns from wherever the changer is now
    if (to == changer_) {
        send(changerFinishedLine(), now);
        return;
    }
    turn_ = Turn{changer_, to, now, now + changerSecondsPerPosition * std::abs(to - changer_)};
}

void Board::runUntil(double now) {
    // Events within a nanosecond of `now` are due: a move of 1000 steps at 2500 steps/s
    // started at 0.8 s ends at 1.2 s, whatever the rounding of its end time.
    constexpr double slack = 1e-9;
    now = std::max(now, clock_);
    for (;;) {
        const auto [time, source] = earliestEvent();
        if (source == Source::None || time > now + slack) break;
        clock_ = std::max(clock_, time);
        processEvent(source, time);
    }
    clock_ = std::max(clock_, now);
    for (int a = 0; a < 2; ++a)
        if (moves_[a]) moveTo(a, moves_[a]->positionAt(now));
    if (turn_) changer_ = turn_->passedAt(now);
}

std::pair<double, Board::Source> Board::earliestEvent() const {
    std::pair<double, Source> best{0, Source::None};
    auto consider = [&best](double time, Source source) {
        if (best.second == Source::None || time < best.first) best = {time, source};
    };
    if (!arriving_.isEmpty()) consider(arriving_.front().time, Source::Command);
    if (moves_[0]) consider(moves_[0]->nextEvent(), Source::Axis0);
    if (moves_[1]) consider(moves_[1]->nextEvent(), Source::Axis1);
    if (turn_) consider(nextTickOrEnd(turn_->start, turn_->end, turn_->ticksSent), Source::Changer);
    if (nextNoise_) consider(*nextNoise_, Source::Noise);
    if (nextGarbage_) consider(*nextGarbage_, Source::Garbage);
    return best;
}

std::optional<double> Board::nextEvent() const {
    const auto [time, source] = earliestEvent();
    if (source == Source::None) return std::nullopt;
    return time;
}

void Board::processEvent(Source source, double t) {
    if (source == Source::Command) {
        take(arriving_.takeFirst().text, t);
    } else if (source == Source::Noise) {
        sendNoise(t);
        scheduleNoise(t);
    } else if (source == Source::Garbage) {
        sendGarbage(t);
        scheduleGarbage(t);
    } else if (source == Source::Changer) {
        Turn& turn = *turn_;
        if (nextTickOrEnd(turn.start, turn.end, turn.ticksSent) >= turn.end) {
            changer_ = turn.to;
            turn_.reset();
            send(changerFinishedLine(), t);
        } else {
            ++turn.ticksSent;
            changer_ = turn.passedAt(t);
            send("@ |Q" + number(changer_), t);
        }
    } else {
        const int a = source == Source::Axis0 ? 0 : 1;
        Move& move = *moves_[a];
        if (move.nextEvent() >= move.end) {
            finishMove(a, t, false);
        } else {
            ++move.ticksSent;
            moveTo(a, move.positionAt(t));
            send(movingLine(a), t);
        }
    }
}

// --- Lines -------------------------------------------------------------------------------

QByteArray Board::statusPrefix(int a) const {
    if (options_.rig == Rig::LensChanger) return "@";
    return a == 0 ? "q" : "Q";
}

QByteArray Board::axisFields(int a) const {
    const AxisState& axis = axes_[a];
    QByteArray fields = " #" + number(axis.position) + " ~" + number(axis.encoder);
    if (options_.microSteps) fields += " *" + number(axis.divisor());
    return fields;
}

QByteArray Board::movingLine(int a) const {
    if (options_.rig == Rig::LensChanger) return "@ #" + number(axes_[a].position) + " |B";
    return statusPrefix(a) + axisFields(a) + " |B";
}

QByteArray Board::finishedLine(int a) const {
    if (options_.rig == Rig::LensChanger) return changerFinishedLine();
    return statusPrefix(a) + axisFields(a) + " |F :0";
}

QByteArray Board::changerFinishedLine() const {
    return "@ |F" + number(changer_) + " #" + number(axes_[0].position);
}

QByteArray Board::queryLine(int a) const {
    const AxisState& axis = axes_[a];
    if (options_.rig == Rig::LensChanger)
        return "@ ?| |?" + number(changer_) + " #" + number(axis.position);
    QByteArray line = statusPrefix(a) + "?|";
    if (options_.microSteps) line += "*" + number(axis.divisor());
    return line + " #" + number(axis.position) + " ~" + number(axis.encoder);
}

// A line of the board's own making (not noise or garbage).
void Board::send(const QByteArray& line, double now) {
    if (!linkOpen_ || line.isEmpty()) return;
    enqueue(line, now);
    const int every = options_.faults.garbageEvery;
    if (every > 0 && ++linesSent_ % every == 0) sendGarbage(now);
}

void Board::enqueue(const QByteArray& line, double now) {
    if (!linkOpen_) return;
    QByteArray bytes;
    if (random_.chance(options_.faults.strayLeadByteProbability)) bytes += '\xC2';
    bytes += line + "\r\n";
    double due = now + options_.faults.replyDelay;
    if (const WireTiming& wire = options_.wire; wire.on()) {
        // The line crosses the wire after the lines before it, then waits in the adapter.
        wireOutFree_ = std::max(due, wireOutFree_) + bytes.size() * wire.secondsPerByte();
        due = wireOutFree_ + wire.adapterSeconds;
    }
    replies_.add(bytes, due);
}

void Board::acknowledge(const Command& command, double now) {
    ++acksSent_;
    const int every = options_.faults.dropAckEvery;
    if (every > 0 && acksSent_ % every == 0) return;
    if (random_.chance(options_.faults.dropAckProbability)) return;
    send(upper(command.letter) + QByteArray("|") + command.text.mid(1), now);
}

// When a fault that comes `rate` times a second on average comes next after `after`; never
// while the link is closed, nor from the silent rig.
std::optional<double> Board::nextOccurrence(double after, double rate, Random& random) const {
    if (rate <= 0 || !linkOpen_ || options_.rig == Rig::Silent) return std::nullopt;
    return after - std::log(1 - random.uniform()) / rate;
}

void Board::scheduleNoise(double after) {
    nextNoise_ = nextOccurrence(after, options_.faults.noisePerSecond, random_);
}

void Board::sendNoise(double now) {
    enqueue(printableJunk(random_, 3 + random_.below(22)), now);
}

void Board::scheduleGarbage(double after) {
    nextGarbage_ = nextOccurrence(after, options_.faults.garbagePerSecond, garbageRandom_);
}

// One line of hostile garbage, of a kind chosen at random. It takes no stray lead byte, and
// it joins the queue as a whole line, so it comes between the board's lines, never inside one.
void Board::sendGarbage(double now) {
    QByteArray line;
    switch (garbageRandom_.below(4)) {
        case 0:
            line = binaryJunk(garbageRandom_);
            break;
        case 1:
            line = truncatedStatus(garbageRandom_);
            break;
        case 2:
            line = outOfRangeStatus(garbageRandom_);
            break;
        default:
            line = hugeJunk(garbageRandom_);
            break;
    }
    replies_.add(line + "\r\n", now + options_.faults.replyDelay);
}

}  // namespace quendrix::sim
