#include "linkbar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

LinkBar::LinkBar(QWidget* parent)
    : QFrame(parent),
      text_(new QLabel),
      reconnect_(new QPushButton(tr("Neu verbinden"))),
      search_(new QPushButton(tr("Steuerung suchen"))) {
    setObjectName(QStringLiteral("Verbindungsleiste"));
    reconnect_->setObjectName(QStringLiteral("NeuVerbinden"));
    search_->setObjectName(QStringLiteral("SteuerungSuchen"));
    reconnect_->setToolTip(tr("Die Steuerung noch einmal starten, am eingetragenen Anschluss"));
    search_->setToolTip(
        tr("Die Steuerung an allen seriellen Anschlüssen suchen und den gefundenen eintragen"));
    text_->setObjectName(QStringLiteral("Verbindungsmeldung"));
    text_->setWordWrap(true);
    text_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // A warning's colours, its text dark as well, so that a dark theme keeps it readable.
    setAutoFillBackground(true);
    QPalette warning = palette();
    warning.setColor(QPalette::Window, QColor(255, 224, 178));
    warning.setColor(QPalette::WindowText, Qt::black);
    setPalette(warning);
    setFrameShape(QFrame::StyledPanel);
    auto* row = new QHBoxLayout(this);
    row->addWidget(text_, 1);
    row->addWidget(reconnect_);
    row->addWidget(search_);
    connect(reconnect_, &QPushButton::clicked, this, &LinkBar::reconnectClicked);
    connect(search_, &QPushButton::clicked, this, &LinkBar::searchClicked);
    hide();
}

void LinkBar::showProblem(const QString& text, const QString& advice) {
    text_->setText(text);
    text_->setToolTip(advice);
    reconnect_->setEnabled(true);
    search_->setEnabled(true);
    search_->setVisible(searchOffered_);
    show();
}

void LinkBar::showBusy(const QString& text) {
    text_->setText(text);
    text_->setToolTip({});
    reconnect_->setEnabled(false);
    search_->setEnabled(false);
    show();
}

void LinkBar::offerSearch(bool offer) {
    searchOffered_ = offer;
    search_->setVisible(offer);
}

QString LinkBar::text() const {
    return text_->text();
}
