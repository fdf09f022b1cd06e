#pragma once

#include "settings/typednumber.h"

#include <QObject>
#include <functional>
#include <vector>

class QLineEdit;
class ctlQuendrix;

namespace quendrix {

class Panel;

// Every box whose number the panel reads is watched: when its text is not read as typed (a
// "23.6" that German reads as 236, an "abc" that counts as 0, no planes, a pause of 0), the box
// turns red and its tool tip says what was understood. Fixing the text takes the mark away.
// The panel goes on reading the boxes exactly as before.
class TypedNumberMarks : public QObject {
    Q_OBJECT

public:
    TypedNumberMarks(ctlQuendrix& control, Panel& panel);

    // Judges every box again: the locale, the rig type or the axis travel changed.
    void markAll();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Box {
        QLineEdit* edit;
        std::function<NumberBoxRule()> rule;  // asked each time: some ranges follow the rig
    };
    void watch(QLineEdit* edit, std::function<NumberBoxRule()> rule);
    void watch(QLineEdit* edit, const NumberBoxRule& rule);
    void mark(const Box& box);

    ctlQuendrix& control_;
    std::vector<Box> boxes_;
};

}  // namespace quendrix
