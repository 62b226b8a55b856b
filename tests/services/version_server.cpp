// SPDX-License-Identifier: GPL-2.0-or-later
#include "services/version_server.h"

#include <QHostAddress>
#include <QTcpSocket>
#include <QTimer>
#include <stdexcept>

namespace kelvane::test {
namespace {

constexpr qint64 kMostUnread = 1 << 20;
constexpr int kDripMilliseconds = 5;

/// Keeps the socket's queue filled until the other end has had enough.
void feed(QTcpSocket* socket, const QByteArray& piece) {
  while (socket->bytesToWrite() < kMostUnread) socket->write(piece);
}

}  // namespace

VersionServer::VersionServer() {
  // Nobody's proxy has anything to do here.
  for (const char* name : {"http_proxy", "HTTP_PROXY", "all_proxy", "ALL_PROXY"}) qunsetenv(name);
  if (!server_.listen(QHostAddress::LocalHost)) throw std::runtime_error("no port on loopback");
  QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] { accept(); });
}

void VersionServer::answer(const QByteArray& path, const QByteArray& response) {
  answers_[path] = response;
}

void VersionServer::answerWithoutEnd(const QByteArray& path, const QByteArray& head,
                                     const QByteArray& piece) {
  answers_[path] = head;
  endless_[path] = piece;
}

void VersionServer::drip(const QByteArray& path, const QByteArray& head, const QByteArray& piece) {
  answers_[path] = head;
  dripping_[path] = piece;
}

QByteArray VersionServer::withStatus(const QByteArray& status, const QByteArray& body,
                                     const QByteArray& moreHeaders) {
  return "HTTP/1.1 " + status + "\r\n" + moreHeaders +
         "Content-Length: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" +
         body;
}

std::string VersionServer::address(const std::string& path) const {
  return "http://127.0.0.1:" + std::to_string(server_.serverPort()) + path;
}

void VersionServer::accept() {
  while (QTcpSocket* socket = server_.nextPendingConnection()) {
    ++openConnections_;
    QObject::connect(socket, &QTcpSocket::readyRead, &server_, [this, socket] { read(socket); });
    QObject::connect(socket, &QTcpSocket::disconnected, &server_, [this, socket] {
      --openConnections_;
      socket->deleteLater();
    });
  }
}

void VersionServer::read(QTcpSocket* socket) {
  const QByteArray head = socket->peek(socket->bytesAvailable());
  if (!head.contains("\r\n\r\n")) return;
  socket->readAll();
  requests_.push_back(head.toLower().toStdString());
  const QByteArray path = head.split(' ').value(1);
  if (silent_.contains(path)) return;
  socket->write(answers_[path]);
  if (dripping_.contains(path)) {
    auto* timer = new QTimer(socket);
    QObject::connect(timer, &QTimer::timeout, socket,
                     [socket, piece = dripping_[path]] { socket->write(piece); });
    timer->start(kDripMilliseconds);
  } else if (endless_.contains(path)) {
    const QByteArray piece = endless_[path];
    QObject::connect(socket, &QTcpSocket::bytesWritten, socket,
                     [socket, piece] { feed(socket, piece); });
    feed(socket, piece);
  } else {
    socket->disconnectFromHost();
  }
}

}  // namespace kelvane::test
