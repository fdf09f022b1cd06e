#pragma once

#include <QString>
#include <optional>

// Reading the board's lines and choosing what a command's reply must contain.
namespace quendrix {

// The acknowledge marker a reply to `command` must contain: the command's first character
// in upper case followed by "|" ("t16#" expects "T|"). A direction command ("v", "z" for
// axis 0, "V", "Z" for axis 1) on an axis with backlash set waits for the end of the
// take-up move instead: "|F".
QString acknowledgeMarker(const QString& command, int backlashAxis0, int backlashAxis1);

// The number that follows the first `marker` in `line`, read as Val reads it; 0 when the
// marker is missing or no number follows. A number beyond the range of a Double (line noise:
// "#12e456") gives none: the field it stands for keeps its value.
std::optional<double> numberAfter(const QString& line, const QString& marker);

// The micro-step exponent of a divisor: 16 -> 4, 8 -> 3, 4 -> 2, 2 -> 1, 1 -> 0; none for
// any other divisor.
std::optional<int> microStepExponent(double divisor);

// Whether `line` acknowledges by its shape: its second character is "|" and its first is one
// of the board's identification characters.
bool isAcknowledgementLine(const QString& line, const QString& kennung);

// Takes the first complete line, up to and with its CR LF, off the front of `received`; a
// stray lead byte "Â" the board can send before a line is dropped. None while no line is
// complete.
std::optional<QString> cutLine(QString& received);
// A line without its line end.
QString withoutLineEnd(const QString& line);

// What a receive handler does with a complete line: evaluate it, keep it as the last line,
// take it as an acknowledgement. Over the serial port every line without "q" or "Q"
// acknowledges and is the last line; the identification and axis status lines, which carry
// them, are only evaluated. Over the socket only the first character decides: status lines
// start with one of "qQ&@", are the last line and do not acknowledge by themselves; any
// other line above " " acknowledges; empty lines are dropped unseen.
struct LineHandling {
    bool evaluate = false;
    bool lastLine = false;
    bool acknowledges = false;
    bool operator==(const LineHandling&) const = default;
};
LineHandling handlingOf(const QString& line, bool viaSocket);

}  // namespace quendrix
