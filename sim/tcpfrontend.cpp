#include "sim/tcpfrontend.h"

#include "sim/board.h"

namespace quendrix::sim {

TcpFrontEnd::TcpFrontEnd(Board& board, Clock clock, QObject* parent)
    : FrontEnd(board, std::move(clock), parent) {
    connect(&server_, &QTcpServer::newConnection, this, [this] {
        acceptClients();
        if (autoPump()) pump();
    });
}

TcpFrontEnd::~TcpFrontEnd() {
    close();
}

bool TcpFrontEnd::listen(const QHostAddress& address, quint16 port, QString* error) {
    if (server_.listen(address, port)) {
        board().linkClosed(now());  // nobody connected yet
        return true;
    }
    if (error) *error = server_.errorString();
    return false;
}

void TcpFrontEnd::close() {
    server_.close();
    if (client_) {
        client_->abort();
        releaseClient();
    }
}

void TcpFrontEnd::acceptClients() {
    while (QTcpSocket* socket = server_.nextPendingConnection()) {
        if (client_) {
            socket->abort();  // busy: one client at a time
            socket->deleteLater();
            continue;
        }
        client_ = socket;
        client_->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        connect(client_, &QTcpSocket::disconnected, this, [this] { releaseClient(); });
        connect(client_, &QTcpSocket::readyRead, this, [this] {
            if (autoPump()) pump();
        });
        setLinkUp(true);
    }
}

void TcpFrontEnd::releaseClient() {
    if (client_) {
        client_->disconnect(this);
        client_->deleteLater();
        client_ = nullptr;
    }
    setLinkUp(false);
}

void TcpFrontEnd::pump() {
    const Pumping guard(pumping_);
    if (!guard.entered()) return;
    if (!client_ && server_.isListening()) {
        server_.waitForNewConnection(0);  // accepts without the event loop (scripted tests)
        acceptClients();
    }
    if (client_ && client_->state() == QAbstractSocket::ConnectedState &&
        client_->bytesAvailable() == 0)
        client_->waitForReadyRead(0);  // may also find that the client has gone
    if (!client_ || client_->state() != QAbstractSocket::ConnectedState) {
        if (client_) releaseClient();
        board().advance(now());
        return;
    }
    exchange(client_->readAll());
}

void TcpFrontEnd::write(const QByteArray& bytes) {
    client_->write(bytes);
    client_->flush();
}

void TcpFrontEnd::dropLink() {
    QTcpSocket* socket = client_;
    socket->disconnect(this);
    client_ = nullptr;
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    socket->flush();
    socket->disconnectFromHost();
    if (socket->state() == QAbstractSocket::UnconnectedState) socket->deleteLater();
    setLinkUp(false);
}

}  // namespace quendrix::sim
