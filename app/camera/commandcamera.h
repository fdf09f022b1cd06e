#pragma once

#include "camera/camera.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QStringList>
#include <QTimer>

class QProcess;

// Takes each picture by running the capture command the photographer already uses, for example
// "gphoto2 --capture-image-and-download --filename {file}". The command is split into a program
// and its arguments once, like QProcess::splitCommand (double quotes group, no shell), and the
// placeholders {file}, {plane} and {position} are filled in inside each argument, so a path
// with spaces, quotes, ';' or '$(...)' reaches the program as one plain argument.
class CommandCamera final : public Camera {
    Q_OBJECT
public:
    // timeoutSeconds bounds each capture: the command's run and the wait for its file.
    CommandCamera(QString command, int timeoutSeconds, QObject* parent = nullptr);
    ~CommandCamera() override;

    // Why a command cannot be used (empty, unbalanced quotes, no program, no {file}), or an
    // empty string when it can.
    static QString problem(const QString& command);
    // The program and its arguments for one shot.
    static QStringList arguments(const QString& command, const Shot& shot);

    QString kind() const override { return QStringLiteral("command"); }
    void capture(const Shot& shot) override;
    void cancel() override;

private:
    void onOutput();
    void onFinished(int exitCode, bool crashed);
    void onStartFailed();
    void onDeadline();
    void lookForFile();
    void succeed();
    void fail(const QString& what, bool withOutput = true);
    void answer(bool ok, const QString& fileOrMessage);
    void endCapture();
    void abandonProcess();

    QString m_command;
    int m_timeoutSeconds;
    QProcess* m_process = nullptr;
    QTimer m_deadline;  // the whole capture's time-out
    QTimer m_fileLook;  // looks for a file that appears after the command has exited
    QElapsedTimer m_sinceExit;
    qint64 m_lateFileLimitMs = 0;
    qint64 m_lastSize = -1;
    bool m_busy = false;
    quint64 m_generation = 0;  // answers of an ended capture carry an older number
    Shot m_shot;
    QStringList m_arguments;
    QByteArray m_output;  // the tail of what the command printed
};
