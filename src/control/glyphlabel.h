#pragma once

#include <QLabel>

namespace quendrix {

// A label whose caption is one of the system's direction or speed marks, which it draws as
// what they mean instead of as letters: "é" up, "ê" down, "×Ø" open (arrows apart), "Ø×"
// close (arrows together), "/" normal speed (two chevrons), "." slow (one chevron), "L"
// slowest (a bar). Any other caption is shown as text. The caption stays what it is, so code
// and hosts read the marks as always.
class GlyphLabel : public QLabel {
    Q_OBJECT

public:
    using QLabel::QLabel;
    QSize sizeHint() const override { return {28, 20}; }
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace quendrix
