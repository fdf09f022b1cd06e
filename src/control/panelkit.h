#pragma once

// Construction helpers for the panel form. Every control gets its name as objectName; an
// element of a control array is named "Name(i)".

#include <QBoxLayout>
#include <QCheckBox>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QString>
#include <QStyle>
#include <QTabWidget>

#include <algorithm>

namespace quendrix::kit {

// "Name(i)", the name of element i of a control array.
inline QString element(const char* name, int index) {
    return QStringLiteral("%1(%2)").arg(QLatin1String(name)).arg(index);
}

template <class W>
W* make(QWidget* parent, const QString& name) {
    auto* widget = new W(parent);
    widget->setObjectName(name);
    return widget;
}

template <class W>
W* make(QWidget* parent, const QString& name, const QString& text) {
    W* widget = make<W>(parent, name);
    widget->setText(text);
    return widget;
}

inline QLabel* label(QWidget* parent, const QString& name, const QString& caption) {
    return make<QLabel>(parent, name, caption);
}

// A label that shows a measured value: sunken, right-aligned.
inline QLabel* readout(QWidget* parent, const QString& name, const QString& caption) {
    QLabel* shown = label(parent, name, caption);
    shown->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    shown->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    shown->setMinimumWidth(40);
    return shown;
}

// An unnamed caption in front of a field.
inline QLabel* caption(QWidget* parent, const QString& text) {
    return new QLabel(text, parent);
}

inline QLineEdit* edit(QWidget* parent, const QString& name, const QString& text = {}) {
    return make<QLineEdit>(parent, name, text);
}

// A short text box for a number.
inline QLineEdit* number(QWidget* parent, const QString& name, const QString& text) {
    QLineEdit* box = edit(parent, name, text);
    box->setAlignment(Qt::AlignRight);
    box->setMaximumWidth(80);
    return box;
}

inline QPushButton* button(QWidget* parent, const QString& name, const QString& caption,
                           const QString& toolTip = {}) {
    auto* pushed = make<QPushButton>(parent, name, caption);
    pushed->setToolTip(toolTip);
    return pushed;
}

// Lets the buttons of a row share its width evenly instead of asking for the style's width for
// text buttons; each keeps minimumWidth. (The stretch makes the layout respect the minimum.)
inline void squeeze(QPushButton* pushed, int minimumWidth = 56) {
    QSizePolicy policy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    policy.setHorizontalStretch(1);
    pushed->setSizePolicy(policy);
    pushed->setMinimumWidth(minimumWidth);
}

inline QCheckBox* check(QWidget* parent, const QString& name, const QString& caption) {
    return make<QCheckBox>(parent, name, caption);
}

inline QRadioButton* option(QWidget* parent, const QString& name, const QString& caption) {
    return make<QRadioButton>(parent, name, caption);
}

inline QGroupBox* frame(QWidget* parent, const QString& name, const QString& title) {
    auto* box = make<QGroupBox>(parent, name);
    box->setTitle(title);
    return box;
}

// A picture box showing a small lamp; the running panel swaps the pixmap.
inline QLabel* picture(QWidget* parent, const QString& name) {
    QPixmap lamp(14, 14);
    lamp.fill(Qt::transparent);
    QPainter painter(&lamp);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Qt::darkGray, 1));
    painter.setBrush(Qt::lightGray);
    painter.drawEllipse(QRectF(1.5, 1.5, 11, 11));
    painter.end();
    QLabel* shown = label(parent, name, {});
    shown->setPixmap(lamp);
    shown->setFixedSize(16, 16);
    return shown;
}

// A shape: a small outlined box.
inline QFrame* shape(QWidget* parent, const QString& name) {
    auto* box = make<QFrame>(parent, name);
    box->setFrameShape(QFrame::Box);
    box->setFixedSize(12, 12);
    return box;
}

// A compact layout inside a frame.
template <class L>
L* layoutIn(QWidget* box) {
    auto* layout = new L(box);
    layout->setContentsMargins(6, 4, 6, 4);
    layout->setSpacing(4);
    return layout;
}

// The column every tab page lays its parts out in.
inline QVBoxLayout* column(QWidget* page) {
    return static_cast<QVBoxLayout*>(page->layout());
}

// A tab page that scrolls when it is taller than kPageHeight. Room for the vertical scroll bar
// is always kept, so the page never needs to scroll sideways.
class Page : public QScrollArea {
public:
    static constexpr int kPageHeight = 760;  // pixels: the operating tab of the bellows rig

    explicit Page(QWidget* parent) : QScrollArea(parent) {
        setWidgetResizable(true);
        setFrameShape(QFrame::NoFrame);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    }

    QSize sizeHint() const override {
        const QSize content = widget() ? widget()->sizeHint() : QSize();
        const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this);
        return {content.width() + bar, std::min(content.height(), kPageHeight)};
    }
};

// Adds a tab with a page whose parts are laid out in one column; returns the page.
inline QWidget* addPage(QTabWidget* tabs, const QString& title) {
    auto* scroll = new Page(tabs);
    auto* page = new QWidget(scroll);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->setSpacing(6);
    scroll->setWidget(page);
    tabs->addTab(scroll, title);
    return page;
}

// The page of tab `index`, as addPage made it.
inline QWidget* page(QTabWidget* tabs, int index) {
    return static_cast<Page*>(tabs->widget(index))->widget();
}

}  // namespace quendrix::kit
