#pragma once

#include "sim/frontend.h"

#include <QString>
#include <memory>

class QSocketNotifier;

namespace quendrix::sim {

// Serves the board on a pseudo-terminal (Linux): the component opens the slave device like a
// serial port. The front end counts the opens and closes of the slave (the system reports each
// one, so a close and reopen between two pumps is not missed): the first holder opening it is
// the port being opened (the board resets and boots), the last one closing it the port being
// closed. Closing and reopening the slave works any number of times.
// A disconnect the board asks for closes the pseudo-terminal and opens a new one, whose path
// differs; a symbolic link made with linkTo() follows it.
class PtyFrontEnd : public FrontEnd {
    Q_OBJECT
public:
    PtyFrontEnd(Board& board, Clock clock, QObject* parent = nullptr);
    ~PtyFrontEnd() override;

    bool open(QString* error = nullptr);
    void close();
    bool isOpen() const { return master_ >= 0; }
    QString devicePath() const { return path_; }  // the slave, e.g. /dev/pts/7
    // Makes (or replaces) a symbolic link to the device; it is removed on close().
    bool linkTo(const QString& symlinkPath, QString* error = nullptr);

    void pump() override;
    bool writesPending() const override { return !unwritten_.isEmpty(); }

signals:
    void devicePathChanged(const QString& path);

protected:
    void write(const QByteArray& bytes) override;
    void dropLink() override;
    void autoPumpChanged() override;

private:
    bool openMaster(QString* error);
    void closeMaster();
    bool makeLink(QString* error);
    void removeLink();
    QByteArray readMaster();
    // Follows the slave's opens and closes since the last pump.
    void followHolders();
    void linkComesUp();
    void linkGoesDown(bool reopened);
    void flushWrites();
    void updateNotifier();

    int master_ = -1;
    int watch_ = -1;   // reports the slave's opens and closes
    int holders_ = 0;  // how many hold the slave open
    QString path_;
    QString linkPath_;
    QByteArray unwritten_;
    std::unique_ptr<QSocketNotifier> notifier_;
    std::unique_ptr<QSocketNotifier> watchNotifier_;
};

}  // namespace quendrix::sim
