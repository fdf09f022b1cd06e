#include "hostwindow.h"

#include <quendrix/ctlQuendrix.h>

#include <QCloseEvent>
#include <QDockWidget>
#include <QListWidget>
#include <QStatusBar>
#include <QTime>
#include <QTimer>

HostWindow::HostWindow() : panel_(new ctlQuendrix(this)), pictures_(new QListWidget) {
    setWindowTitle(QStringLiteral("Quendrix"));
    panel_->setObjectName(QStringLiteral("Quendrix"));
    setCentralWidget(panel_);

    auto* dock = new QDockWidget(QStringLiteral("Aufnahmen"), this);
    dock->setObjectName(QStringLiteral("Aufnahmen"));
    dock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    pictures_->setObjectName(QStringLiteral("Aufnahmenliste"));
    dock->setWidget(pictures_);
    addDockWidget(Qt::RightDockWidgetArea, dock);
    resizeDocks({dock}, {280}, Qt::Horizontal);
    statusBar()->showMessage(QStringLiteral("Steuerung wird gesucht …"));

    connect(panel_, &ctlQuendrix::Schicht, this, &HostWindow::takePicture);
    connect(panel_, &ctlQuendrix::Kopie, this,
            [this] { note(QStringLiteral("Kopie aufgenommen")); });
    connect(panel_, &ctlQuendrix::Mittelwert, this, [this](const QString& count) {
        note(QStringLiteral("Mittelwert aus %1 Bildern berechnet").arg(count.trimmed()));
    });
    connect(panel_, &ctlQuendrix::Kombinieren, this, [this](const QString& count) {
        note(QStringLiteral("%1 Bilder zum Stapel kombiniert").arg(count.trimmed()));
    });
    connect(panel_, &ctlQuendrix::SehfeldNeu, this, [this](const QString& width) {
        statusBar()->showMessage(QStringLiteral("Bildbreite %1 mm").arg(width.trimmed()));
    });
    connect(panel_, &ctlQuendrix::settingProblem, this, &HostWindow::report);
    connect(panel_, &ctlQuendrix::Bereitschaft, this, [this](bool ready) {
        ready_ = ready_ || ready;
        statusBar()->showMessage(ready ? QStringLiteral("Bereit")
                                       : QStringLiteral("Steuerung nicht bereit"));
    });
}

void HostWindow::note(const QString& text) {
    pictures_->addItem(QTime::currentTime().toString(QStringLiteral("HH:mm:ss  ")) + text);
    pictures_->scrollToBottom();
}

void HostWindow::report(const QString& problem) {
    note(QStringLiteral("Achtung: ") + problem);
    statusBar()->showMessage(problem);
}

// The run waits until the picture is saved: released at once here, it would move on while
// the camera still exposes.
void HostWindow::takePicture(const QString& number) {
    panel_->SetOK(false);
    const QString plane = number.trimmed();
    QTimer::singleShot(kExposureMs, this, [this, plane] {
        note(QStringLiteral("Bild %1 aufgenommen").arg(plane));
        panel_->SetOK(true);
    });
}

void HostWindow::closeEvent(QCloseEvent* event) {
    // A rig that never came into service has not read its settings: writing the panel's
    // defaults back would overwrite them.
    if (ready_ && !shutDown_) {
        shutDown_ = true;
        statusBar()->showMessage(QStringLiteral("Steuerung wird abgeschaltet …"));
        try {
            panel_->Motor_Abschalten();
        } catch (const std::exception& error) {
            // Shutting down ignores the board's failures; nothing else is expected to fail.
            qWarning("quendrix: the shutdown failed: %s", error.what());
        }
    }
    event->accept();
}
