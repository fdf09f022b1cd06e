#pragma once

#include <QList>
#include <QObject>
#include <QSize>
#include <QStringList>
#include <memory>

class QProcess;
class QTemporaryDir;
class QTemporaryFile;
template <typename T>
class QFutureWatcher;

// Turns the pictures of a focus stack into one picture that is sharp wherever any of them is:
// align_image_stack aligns them (the magnification changes from plane to plane) into a
// temporary folder, enfuse fuses the aligned pictures by local contrast. Both tools run as
// child processes; everything here answers from the event loop and never blocks it. The
// pictures' folder ends up holding nothing but the pictures and the result.
class Fusion : public QObject {
    Q_OBJECT
public:
    explicit Fusion(QObject* parent = nullptr);
    ~Fusion() override;  // kills a tool that still runs and removes what it left

    // What is missing to fuse, with what to install, or empty when both tools are on PATH.
    static QString missingTools();

    // Aligns `pictures` (in plane order, at least 2, all the same size) and fuses them into
    // `output`, whose suffix picks the format (tif, tiff, png, jpg, jpeg). Returns at once;
    // finished() or failed() follows later, never from inside this call. A start while a
    // fusion runs is refused with a warning and leaves the running one alone.
    void start(const QStringList& pictures, const QString& output);
    bool running() const;
    // Kills the tool under way and removes what it wrote; failed() says it was cancelled.
    void cancel();

    // The arguments the two tools are run with (without the program), kept here so that the
    // live preview and the benchmark run exactly these.
    static QStringList alignArguments(const QStringList& pictures, const QString& prefix,
                                      QSize pictureSize);
    static QStringList fuseArguments(const QStringList& inputs, const QString& output);

signals:
    void progress(int percent, const QString& stage);
    void finished(const QString& output);
    void failed(const QString& message);

private:
    enum class Stage { Idle, Inspecting, Aligning, Fusing, Checking };

    void onInspected(const QList<QSize>& sizes);
    void startAligning();
    void startFusing();
    void onChecked(QSize resultSize);
    void startTool(const QString& program, const QStringList& arguments);
    void onToolOutput();
    void onToolFinished(int exitCode, bool crashed);
    void readProgress(const QString& line);
    void report(int percent, const QString& stage);
    void inspect(const QStringList& files);
    void fail(const QString& message);
    void cleanUp();
    template <typename Handler>
    void guarded(Handler&& handler);

    Stage stage_ = Stage::Idle;
    QStringList pictures_;
    QString output_;
    QString alignProgram_;
    QString enfuseProgram_;
    QSize pictureSize_;
    QStringList aligned_;
    std::unique_ptr<QTemporaryDir> scratch_;
    std::unique_ptr<QTemporaryFile> partial_;
    QProcess* process_ = nullptr;
    QString tool_;  // the name of the tool process_ runs
    QFutureWatcher<QList<QSize>>* inspection_ = nullptr;
    QStringList toolTail_;
    int steps_ = 0;  // progress lines of the current tool's current phase
    int phase_ = 0;
    int lastPercent_ = -1;
    QString lastStage_;
};
