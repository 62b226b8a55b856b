// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QByteArray>
#include <QTcpServer>
#include <functional>
#include <map>
#include <string>
#include <vector>

class QTcpSocket;

namespace kelvane::test {

/// A web server on the loopback interface that says exactly what the test has it say. It works in
/// the event loop of its thread.
class VersionServer {
 public:
  VersionServer();

  /// What is sent at a request for `path`, to the byte; the connection is closed after it.
  void answer(const QByteArray& path, const QByteArray& response);
  /// A whole answer with this body.
  void answerBody(const QByteArray& body) { answer("/version", withStatus("200 OK", body)); }
  /// Requests for `path` are never answered.
  void keepWaiting(const QByteArray& path) { silent_[path] = true; }
  /// What is sent after the head of the answer, again and again, as fast as it is read.
  void answerWithoutEnd(const QByteArray& path, const QByteArray& head, const QByteArray& piece);

  /// What is sent after the head of the answer, in small steps: a piece every few milliseconds.
  void drip(const QByteArray& path, const QByteArray& head, const QByteArray& piece);

  static QByteArray withStatus(const QByteArray& status, const QByteArray& body,
                               const QByteArray& moreHeaders = {});

  /// The address of "/version" here.
  std::string endpoint() const { return address("/version"); }
  std::string address(const std::string& path) const;
  /// The heads of the requests so far, in small letters.
  const std::vector<std::string>& requests() const { return requests_; }
  /// Connections that are still open.
  int openConnections() const { return openConnections_; }

 private:
  void accept();
  void read(QTcpSocket* socket);

  QTcpServer server_;
  std::map<QByteArray, QByteArray> answers_;
  std::map<QByteArray, QByteArray> endless_;  ///< The pieces.
  std::map<QByteArray, QByteArray> dripping_;
  std::map<QByteArray, bool> silent_;
  std::vector<std::string> requests_;
  int openConnections_ = 0;
};

}  // namespace kelvane::test
