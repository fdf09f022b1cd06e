#include "hostwindow.h"

#include "boardfinder.h"
#include "connectionwatcher.h"
#include "fusion/fusion.h"
#include "fusion/preview.h"
#include "linkbar.h"
#include "session/capturesession.h"
#include "session/picturefolder.h"
#include "shortcuts.h"
#include "stackbox.h"
#include "stackcontrol.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QImageReader>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QSerialPort>
#include <QSettings>
#include <QSpinBox>
#include <QStatusBar>
#include <QTime>
#include <QTimer>
#include <QVBoxLayout>

namespace {
QString native(const QString& path) {
    return QDir::toNativeSeparators(path);
}
}  // namespace

HostWindow::HostWindow()
    : panel_(new ctlQuendrix(this)),
      session_(new CaptureSession(*panel_, this)),
      fusion_(new Fusion(this)),
      preview_(new FusionPreview(this)),
      stack_(new StackControl(*panel_, *session_, this)),
      stackBox_(new StackBox(*panel_, *stack_)),
      shortcuts_(new Shortcuts(*this, *panel_, *stack_)),
      connection_(new ConnectionWatcher(*panel_, this)),
      finder_(new BoardFinder(this)),
      linkBar_(new LinkBar),
      pictures_(new QListWidget),
      picture_(new QLabel),
      fusionProgress_(new QProgressBar),
      cancelFusion_(new QPushButton(tr("Abbrechen"))) {
    setWindowTitle(QStringLiteral("Quendrix"));
    panel_->setObjectName(QStringLiteral("Quendrix"));
    // The panel keeps its own size at the left; the rest of the window is for the pictures.
    auto* central = new QWidget;
    auto* column = new QVBoxLayout(central);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(linkBar_);
    auto* row = new QHBoxLayout;
    row->addWidget(panel_, 0, Qt::AlignLeft | Qt::AlignTop);
    row->addWidget(buildSide(), 1);
    column->addLayout(row, 1);
    setCentralWidget(central);
    // The window shows a run's progress beside its stop and pause, with a time estimate that
    // knows the camera and the approach; the panel's own progress line is kept out of sight.
    if (auto* own = panel_->findChild<QLabel*>(QStringLiteral("Fortschritt"))) {
        auto* aside = new QWidget(this);
        aside->hide();
        own->setParent(aside);
    }
    statusBar()->showMessage(tr("Steuerung wird gesucht …"));

    connect(session_, &CaptureSession::pictureTaken, this,
            [this](int plane, const QString& file, qint64 position) {
                note(tr("Bild %1 aufgenommen (%2 Schritte): %3")
                         .arg(plane)
                         .arg(position)
                         .arg(QFileInfo(file).fileName()));
                if (plane == 1) preview_->reset();
                preview_->offer(session_->runPictures());
            });
    connect(session_, &CaptureSession::copyTaken, this,
            [this](const QString& file) { note(tr("Kopie aufgenommen: %1").arg(native(file))); });
    connect(session_, &CaptureSession::averaged, this, [this](const QString& file, int count) {
        note(tr("Mittelwert aus %1 Bildern: %2").arg(count).arg(native(file)));
        showPicture(QImage(file));
    });
    connect(session_, &CaptureSession::combineRequested, this, &HostWindow::combine);
    connect(session_, &CaptureSession::failed, this, &HostWindow::report);
    connect(preview_, &FusionPreview::ready, this, [this](const QImage& image) {
        if (!fusion_->running()) showPicture(image);
    });
    connect(fusion_, &Fusion::progress, this, [this](int percent, const QString& stage) {
        fusionProgress_->setValue(percent);
        fusionProgress_->setFormat(stage + QStringLiteral("  %p %"));
    });
    connect(fusion_, &Fusion::finished, this, [this](const QString& file) {
        fusionProgress_->setVisible(false);
        cancelFusion_->setVisible(false);
        note(tr("Stapel kombiniert: %1").arg(native(file)));
        statusBar()->showMessage(tr("Stapel kombiniert: %1").arg(native(file)));
        QImageReader reader(file);
        reader.setAutoTransform(true);
        showPicture(reader.read());
    });
    connect(fusion_, &Fusion::failed, this, [this](const QString& message) {
        fusionProgress_->setVisible(false);
        cancelFusion_->setVisible(false);
        report(message);
    });
    connect(cancelFusion_, &QPushButton::clicked, fusion_, &Fusion::cancel);
    connect(stack_, &StackControl::reported, this, &HostWindow::note);
    connect(stack_, &StackControl::notice, this,
            [this](const QString& text) { statusBar()->showMessage(text, 8000); });
    connect(shortcuts_, &Shortcuts::notice, this,
            [this](const QString& text) { statusBar()->showMessage(text, 8000); });
    connect(stackBox_, &StackBox::note, this, &HostWindow::note);
    connect(stackBox_, &StackBox::problem, this, &HostWindow::report);
    stackBox_->reloadPresets();
    connect(panel_, &ctlQuendrix::SehfeldNeu, this, [this](const QString& width) {
        statusBar()->showMessage(tr("Bildbreite %1 mm").arg(width.trimmed()));
    });
    connect(panel_, &ctlQuendrix::settingProblem, this, &HostWindow::report);
    connect(panel_, &ctlQuendrix::Bereitschaft, this, [this](bool ready) {
        ready_ = ready_ || ready;
        statusBar()->showMessage(ready ? tr("Bereit") : tr("Steuerung nicht bereit"));
    });
    connect(connection_, &ConnectionWatcher::lost, this, &HostWindow::linkLost);
    connect(connection_, &ConnectionWatcher::restored, this, [this] {
        ready_ = true;
        linkBar_->hide();
        stack_->setLinkLost(false);
        note(tr("Verbindung zur Steuerung wiederhergestellt (%1).").arg(connection_->where()));
    });
    connect(connection_, &ConnectionWatcher::failed, this,
            [this](const QString& why, const QString& advice) {
                report(why);
                offerReconnect(why, advice);
            });
    connect(linkBar_, &LinkBar::reconnectClicked, this, &HostWindow::reconnect);
    connect(linkBar_, &LinkBar::searchClicked, this, &HostWindow::searchBoard);
    connect(finder_, &BoardFinder::found, this, &HostWindow::boardFound);
    connect(finder_, &BoardFinder::notFound, this, [this](const QStringList& tried) {
        const QString why =
            tried.isEmpty() ? tr("Keine Steuerung gefunden: es gibt keinen seriellen Anschluss.")
                            : tr("Keine Steuerung gefunden. Gefragt: %1.")
                                  .arg(tried.join(QStringLiteral("; ")));
        report(why);
        offerReconnect(why, tr("Bitte prüfen: Kabel und Stromversorgung der Steuerung."));
    });
}

// The panel goes first among the window's parts; what its going does to the link is no loss.
HostWindow::~HostWindow() {
    connection_->stopWatching();
    finder_->cancel();
}

void HostWindow::setBoard(Options::Board board) {
    connection_->setBoard(board);
    linkBar_->offerSearch(!connection_->wifi());
}

void HostWindow::offerReconnect(const QString& why, const QString& advice) {
    linkBar_->showProblem(why, advice);
}

// The run in progress ends where it is; its pictures stay in its folder.
void HostWindow::linkLost(const QString& what) {
    stack_->stopForLostLink();
    report(what);
    linkBar_->showProblem(what, tr("Die Bilder bis hierher bleiben im Ordner des Laufs. Nach dem "
                                   "Neuverbinden steht die Steuerung, wo sie zuletzt gemeldet "
                                   "wurde."));
}

void HostWindow::reconnect() {
    if (connection_->starting() || finder_->running()) return;
    linkBar_->showBusy(tr("Die Steuerung wird neu verbunden (%1) …").arg(connection_->where()));
    statusBar()->showMessage(tr("Steuerung wird gesucht …"));
    // After the click has returned: the start-up waits for the board with events running.
    QTimer::singleShot(0, this, [this] { connection_->reconnect(); });
}

// Every serial port is asked, and those the application's settings name ("boardSearch/ports",
// e.g. a pseudo-terminal of a simulated board); "boardSearch/systemPorts" false asks only
// those.
void HostWindow::searchBoard() {
    if (connection_->starting() || finder_->running()) return;
    const QSettings stored;
    const QStringList named = stored.value(QStringLiteral("boardSearch/ports")).toStringList();
    const bool systemPorts = stored.value(QStringLiteral("boardSearch/systemPorts"), true).toBool();
    const QSerialPort& port = *panel_->MSComm1();
    const QString held = port.isOpen() ? serialDevice(port) : QString();
    const QString section = panel_->MotorName();
    const qint32 baud =
        panel_->ini(section, QStringLiteral("baud"), QStringLiteral("115200")).trimmed().toInt();
    linkBar_->showBusy(tr("Die Steuerung wird an allen seriellen Anschlüssen gesucht …"));
    finder_->start(BoardFinder::candidates(named, systemPorts, held), baud > 0 ? baud : 115200);
}

// The port goes into the rig's settings, where the start-up reads it, and the start-up runs.
void HostWindow::boardFound(const QString& device, const QString& identification) {
    const QString section = panel_->MotorName();
    panel_->setini(section, QStringLiteral("port"), device);
    note(tr("Steuerung „%1“ an %2 gefunden; als „port“ in [%3] von %4 eingetragen.")
             .arg(identification, device, section, native(panel_->inifile())));
    reconnect();
}

void HostWindow::setPlatform(quendrix::Platform& platform) {
    stack_->setPlatform(platform);
}

// The stack's controls, what was taken, the preview and the camera, in one column that takes
// the window's room: the preview most of it.
QWidget* HostWindow::buildSide() {
    auto* side = new QWidget;
    auto* column = new QVBoxLayout(side);
    pictures_->setObjectName(QStringLiteral("Aufnahmenliste"));
    picture_->setObjectName(QStringLiteral("Vorschau"));
    picture_->setAlignment(Qt::AlignCenter);
    picture_->setMinimumSize(300, 225);
    picture_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    picture_->setText(tr("Noch kein Stapel"));
    picture_->installEventFilter(this);
    fusionProgress_->setObjectName(QStringLiteral("Kombinieren"));
    fusionProgress_->setFormat(QStringLiteral("%p %"));
    fusionProgress_->setVisible(false);
    cancelFusion_->setObjectName(QStringLiteral("KombinierenAbbrechen"));
    cancelFusion_->setVisible(false);
    auto* progressRow = new QHBoxLayout;
    progressRow->addWidget(fusionProgress_, 1);
    progressRow->addWidget(cancelFusion_);
    column->addWidget(stackBox_);
    column->addWidget(pictures_, 2);
    column->addWidget(picture_, 3);
    column->addLayout(progressRow);
    column->addWidget(buildCameraBox());
    return side;
}

QWidget* HostWindow::buildCameraBox() {
    auto* box = new QWidget;
    auto* form = new QFormLayout(box);
    form->setContentsMargins(0, 0, 0, 0);
    cameraKind_ = new QComboBox;
    cameraKind_->setObjectName(QStringLiteral("Kamera"));
    cameraKind_->addItem(tr("Simuliert"), QStringLiteral("sim"));
    cameraKind_->addItem(tr("Befehl"), QStringLiteral("command"));
    cameraKind_->addItem(QStringLiteral("gphoto2 (USB)"), QStringLiteral("gphoto2"));
    captureCommand_ = new QLineEdit;
    captureCommand_->setObjectName(QStringLiteral("Aufnahmebefehl"));
    captureCommand_->setPlaceholderText(
        QStringLiteral("gphoto2 --capture-image-and-download --filename {file}"));
    captureCommand_->setToolTip(
        tr("{file}: die Bilddatei, {plane}: die Schicht (ab 1), {position}: Achse 0 in Schritten"));
    captureTimeout_ = new QSpinBox;
    captureTimeout_->setObjectName(QStringLiteral("Zeitlimit"));
    captureTimeout_->setRange(1, 86400);
    captureTimeout_->setSuffix(QStringLiteral(" s"));
    picturesRoot_ = new QLineEdit;
    picturesRoot_->setObjectName(QStringLiteral("Bilderordner"));
    form->addRow(tr("Kamera"), cameraKind_);
    form->addRow(tr("Befehl"), captureCommand_);
    form->addRow(tr("Zeitlimit"), captureTimeout_);
    form->addRow(tr("Bilder in"), picturesRoot_);
    connect(cameraKind_, &QComboBox::activated, this, &HostWindow::applyCamera);
    connect(captureCommand_, &QLineEdit::editingFinished, this, &HostWindow::applyCamera);
    connect(captureTimeout_, &QSpinBox::editingFinished, this, &HostWindow::applyCamera);
    connect(picturesRoot_, &QLineEdit::editingFinished, this, &HostWindow::applyCamera);
    return box;
}

void HostWindow::setCamera(const CameraChoice& choice, std::function<double()> focus,
                           const QString& picturesRoot) {
    focus_ = std::move(focus);
    const QSettings stored;
    cameraKind_->setCurrentIndex(qMax(0, cameraKind_->findData(choice.kind)));
    captureCommand_->setText(!choice.command.isEmpty()
                                 ? choice.command
                                 : stored.value(QStringLiteral("capture/command")).toString());
    captureTimeout_->setValue(choice.timeoutSeconds);
    picturesRoot_->setText(
        native(!picturesRoot.isEmpty()
                   ? picturesRoot
                   : stored.value(QStringLiteral("capture/pictures"), picturefolder::defaultRoot())
                         .toString()));
    applyCamera();
}

// The camera as the box says; a choice that cannot work says why and leaves no camera, so no
// run goes on without its pictures.
void HostWindow::applyCamera() {
    if (session_->capturing()) {
        report(tr("Die Kamera wird nach der laufenden Aufnahme gewechselt."));
        QMetaObject::invokeMethod(this, &HostWindow::applyCamera, Qt::QueuedConnection);
        return;
    }
    CameraChoice choice;
    choice.kind = cameraKind_->currentData().toString();
    choice.command = captureCommand_->text().trimmed();
    choice.timeoutSeconds = captureTimeout_->value();
    captureCommand_->setEnabled(choice.kind == u"command");
    captureTimeout_->setEnabled(choice.kind == u"command");
    QSettings stored;
    stored.setValue(QStringLiteral("capture/command"), choice.command);
    stored.setValue(QStringLiteral("capture/pictures"), picturesRoot_->text().trimmed());
    session_->setPicturesRoot(QDir::fromNativeSeparators(picturesRoot_->text().trimmed()));
    QString error;
    session_->setCamera(choice.make(focus_, &error));
    if (!error.isEmpty()) report(error);
}

void HostWindow::combine(const QStringList& pictures, const QString& output) {
    note(tr("%1 Bilder werden kombiniert …").arg(pictures.size()));
    if (fusion_->running()) {
        report(tr("Es wird noch ein Stapel kombiniert; dieser bleibt unkombiniert."));
        return;
    }
    preview_->reset();
    fusionProgress_->setValue(0);
    fusionProgress_->setVisible(true);
    cancelFusion_->setVisible(true);
    fusion_->start(pictures, output);
}

void HostWindow::showPicture(const QImage& picture) {
    if (picture.isNull()) return;
    shown_ = picture;
    picture_->setPixmap(QPixmap::fromImage(
        picture.scaled(picture_->size(), Qt::KeepAspectRatio, Qt::SmoothTransformation)));
}

bool HostWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == picture_ && event->type() == QEvent::Resize && !shown_.isNull())
        showPicture(shown_);
    return QMainWindow::eventFilter(watched, event);
}

void HostWindow::note(const QString& text) {
    pictures_->addItem(QTime::currentTime().toString(QStringLiteral("HH:mm:ss  ")) + text);
    pictures_->scrollToBottom();
}

void HostWindow::report(const QString& problem) {
    note(tr("Achtung: ") + problem);
    statusBar()->showMessage(problem);
}

void HostWindow::closeEvent(QCloseEvent* event) {
    // A rig that never came into service has not read its settings: writing the panel's
    // defaults back would overwrite them.
    stack_->stopForClosing();
    finder_->cancel();
    connection_->stopWatching();
    // Without a link (or while one is being made) nothing waits for the board: the panel's
    // stop commands would each wait out their acknowledgement in vain. The state is saved as
    // the panel last knew it.
    if (connection_->isLost() || connection_->starting()) panel_->Terminate();
    if (ready_ && !shutDown_) {
        shutDown_ = true;
        statusBar()->showMessage(tr("Steuerung wird abgeschaltet …"));
        fusion_->cancel();
        session_->setCamera(nullptr);
        try {
            panel_->Motor_Abschalten();
        } catch (const std::exception& error) {
            // Shutting down ignores the board's failures; nothing else is expected to fail.
            qWarning("quendrix: the shutdown failed: %s", error.what());
        }
    }
    event->accept();
}
