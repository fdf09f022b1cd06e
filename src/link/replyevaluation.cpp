// Auswerten: the one place where text from the board becomes state and display.
#include "core/readout.h"
#include "core/replyline.h"
#include "core/units.h"
#include "link/link.h"
#include "settings/guard.h"
#include "settings/numbers.h"
#include "settings/textformat.h"
#include "settings/wait.h"

#include <quendrix/Panel.h>
#include "settings/rig.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QSlider>

namespace quendrix {

namespace {

const QString kLineEnd = QStringLiteral("\r\n");

bool isIdentificationOrError(const QString& line) {
    return line.contains(u"Arduino") || line.contains(u"unbekannt");
}

}  // namespace

void Link::Auswerten(const QString& ComInNeu, bool wifi) {
    sRest_ += ComInNeu;
    if (!sRest_.contains(kLineEnd)) {
        if (sRest_ == u"Keine Verbindung") bQuittiert_ = true;
        return;
    }
    qsizetype end;
    while ((end = sRest_.indexOf(kLineEnd)) >= 0) {
        const QString line = sRest_.left(end);
        sRest_.remove(0, end + kLineEnd.size());

        const QString logLine = (wifi ? QStringLiteral("=> ") : QStringLiteral("_> ")) + line;
        if (line.contains(u"|!")) waiter_.doEvents();
        panel_.Text1[1]->setText(logLine);
        if (isIdentificationOrError(line)) panel_.Text1[0]->setText(logLine);

        // An acknowledgement ends this arrival's evaluation; the rest waits in sRest.
        if (isAcknowledgementLine(line, rig_.Kennung())) {
            bQuittiert_ = true;
            return;
        }
        const QChar first = line.isEmpty() ? QChar() : line.at(0);
        if (first == u'q' || first == u'Q' || first == u'@') {
            evaluateStatusLine(line, first);
            if (line.contains(sErwartet_)) bQuittiert_ = true;
        } else if (isIdentificationOrError(line)) {
            sKennText_[1] = line;
            bQuittiert_ = true;
        }
    }
}

// A status line whose displays cannot be brought up to date (the panel holds settings nothing
// can be computed from) has still been stored and logged; the failure ends only this line's
// evaluation, so a noisy line never stops the lines after it.
void Link::evaluateStatusLine(const QString& line, QChar first) {
    runQuietly([&] {
        if (first == u'@')
            evaluateChangerLine(line);
        else
            evaluateAxisLine(line, first == u'q' ? 0 : 1);
    });
}

// "q"/"Q" lines: the status of axis 0/1. A number in a field that is beyond any range leaves
// that field as it was.
void Link::evaluateAxisLine(const QString& line, int axis) {
    sKennText_[axis] = line;
    const bool finished = line.contains(u"|F") && line.size() >= 4;
    if (!finished && !line.contains(u'?') && line.contains(u"|B")) {
        setPosition(axis, numberAfter(line, QStringLiteral("#")));
        showEncoder(axis, numberAfter(line, QStringLiteral("~")));
        emit positionReported(axis);
    }
    if (line.contains(u'*')) {
        // The board offers micro-stepping on this axis and says which division is in force;
        // the option buttons follow when the operator next looks, they are not clicked here.
        panel_.cbMikroschritt[axis]->setEnabled(true);
        const std::optional<double> divisor = numberAfter(line, QStringLiteral("*"));
        if (const auto exponent = divisor ? microStepExponent(*divisor) : std::nullopt)
            setTag(axis == 0 ? panel_.micro0[0] : panel_.micro1[0], QString::number(*exponent));
    }
    if (finished) {
        // The finished-move report tells whether the axis still runs. The box only shows it:
        // evaluation must not send (and so wait), so its click is not raised.
        if (line.contains(u':')) {
            const std::optional<double> running = numberAfter(line, QStringLiteral(":"));
            if (running == 0.0 || running == 1.0) {
                const QSignalBlocker quiet(panel_.Check0[axis]);
                setValue(panel_.Check0[axis], int(*running));
            }
        }
        showPosition(axis);
        ++finishedMoves_[axis];
        emit moveFinished(axis);
    }
}

// "@" lines: the lens changer, and axis 0 on a lens-changer rig.
void Link::evaluateChangerLine(const QString& line) {
    sKennText_[0] = line;
    if (!line.contains(u"|?") && !line.contains(u"|F") && line.contains(u"|Q")) {
        showChangerPosition(numberAfter(line, QStringLiteral("|Q")));
    } else if (line.contains(u'#')) {
        const std::optional<double> steps = numberAfter(line, QStringLiteral("#"));
        setPosition(0, steps);
        showEncoder(0, steps);
        emit positionReported(0);
    }
    if (line.contains(u"|F")) {
        showChangerPosition(numberAfter(line, QStringLiteral("|F")));
        ++finishedMoves_[0];
        emit moveFinished(0);
    }
}

// A position that does not fit a Long (or none at all, see numberAfter) is noise on the line
// and is ignored.
void Link::setPosition(int axis, std::optional<double> steps) {
    if (!steps) return;
    try {
        AchsPosition_[axis] = toLong(*steps);
    } catch (const RuntimeError&) {
        return;
    }
    showPosition(axis);
}

void Link::showPosition(int axis) {
    const qint32 steps = AchsPosition_[axis];
    const QLocale locale = rig_.locale();
    panel_.lblPosition1[axis]->setText(QString::number(steps));
    std::optional<float> mm;
    try {
        mm = axisDrive(panel_.Schritte[axis]->text(), panel_.Steigung[axis]->text()).mm(steps);
    } catch (const RuntimeError&) {
        // No steps per revolution entered yet: there is nothing to show in millimetres.
    }
    if (mm) panel_.lblPosition2[axis]->setText(millimetresText(*mm, locale));
    if (axis == 0) {
        const bool inMillimetres = readoutInMillimetres(panel_.Label9->text());
        if (const auto readout = positionReadout(steps, mm, inMillimetres, locale))
            panel_.lblPosition[0]->setText(*readout);
        panel_.Slider2->setValue(steps);
    }
}

void Link::showEncoder(int axis, std::optional<double> value) {
    if (!value) return;
    try {
        encoder_[axis] = toLong(*value);
    } catch (const RuntimeError&) {
        return;
    }
    panel_.lblEncoder[axis]->setText(QString::number(encoder_[axis]));
}

// The changer's positions 0 to 4 are the labels lbObjektiv(0..4); lblOptik shows the lens
// mounted at the position reached, or "ohne". A position beyond any number changes nothing.
void Link::showChangerPosition(std::optional<double> position) {
    if (!position) return;
    const auto positions = qsizetype(panel_.lbObjektiv.size());
    const bool known =
        *position >= 0 && *position < double(positions) && *position == int(*position);
    const bool mounted = known && !Trim(panel_.lbObjektiv[int(*position)]->text()).isEmpty();
    panel_.lblOptik->setText(mounted ? panel_.lbObjektiv[int(*position)]->text()
                                     : QStringLiteral("ohne"));
    emit lensShown();
}

}  // namespace quendrix
