#pragma once

#include "sim/frontend.h"

#include <QHostAddress>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>

namespace quendrix::sim {

// Serves the board over TCP, as the WiFi board does: one client at a time (a second one is
// closed at once). A client connecting opens the link (the board resets and boots), its
// leaving closes it. A disconnect the board asks for closes the client's connection; the
// server goes on listening.
class TcpFrontEnd : public FrontEnd {
    Q_OBJECT
public:
    TcpFrontEnd(Board& board, Clock clock, QObject* parent = nullptr);
    ~TcpFrontEnd() override;

    // Port 0 takes any free port; see port().
    bool listen(const QHostAddress& address = QHostAddress::LocalHost, quint16 port = 0,
                QString* error = nullptr);
    void close();
    bool isListening() const { return server_.isListening(); }
    QHostAddress address() const { return server_.serverAddress(); }
    quint16 port() const { return server_.serverPort(); }

    void pump() override;
    bool writesPending() const override { return client_ && client_->bytesToWrite() > 0; }

protected:
    void write(const QByteArray& bytes) override;
    void dropLink() override;

private:
    void acceptClients();
    void releaseClient();

    QTcpServer server_;
    QPointer<QTcpSocket> client_;
};

}  // namespace quendrix::sim
