// SPDX-License-Identifier: GPL-2.0-or-later
#include "services/update_check.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrl>
#include <algorithm>
#include <charconv>
#include <limits>
#include <memory>
#include <system_error>

namespace kelvane {
namespace {

constexpr int kMostRedirects = 10;

QNetworkRequest requestFor(const QUrl& url) {
  QNetworkRequest request(url);
  request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
  request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
  request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
  request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
  request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
  request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                       QNetworkRequest::NoLessSafeRedirectPolicy);
  request.setMaximumRedirectsAllowed(kMostRedirects);
  request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("KelvaneFS"));
  // A few digits; so nothing is ever unpacked here.
  request.setRawHeader("Accept-Encoding", "identity");
  return request;
}

/// Whether all of an answer has come. The errors below that of the first refusal by the server are
/// those of the connection; those of the protocol mean that what came cannot be trusted.
bool isWhole(const QNetworkReply& reply) {
  if (!reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid()) return false;
  const QNetworkReply::NetworkError error = reply.error();
  if (error == QNetworkReply::NoError) return true;
  const bool refusedContent =
      error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError;
  return refusedContent || error >= QNetworkReply::InternalServerError;
}

}  // namespace

int32_t buildNumberOf(std::string_view reply) {
  const auto isForeign = [](char character) { return (character & 0x80) != 0; };
  if (std::any_of(reply.begin(), reply.end(), isForeign)) return 0;
  const size_t begin = reply.find_first_not_of(" \t\r\n\v\f");
  if (begin == std::string_view::npos || reply[begin] == '-') return 0;
  int32_t number = 0;
  const auto [end, error] =
      std::from_chars(reply.data() + begin, reply.data() + reply.size(), number);
  if (error == std::errc::result_out_of_range) return std::numeric_limits<int32_t>::max();
  return number;
}

std::string fetchUpdateReply(const std::string& endpoint, std::chrono::milliseconds timeout,
                             const std::stop_token& stop) {
  const QUrl url(QString::fromStdString(endpoint), QUrl::StrictMode);
  const bool isWeb =
      url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
  if (!url.isValid() || !isWeb) return {};

  QNetworkAccessManager network;
  const std::unique_ptr<QNetworkReply> reply(network.get(requestFor(url)));
  constexpr qint64 kLongest = kLongestUpdateReply;
  reply->setReadBufferSize(kLongest + 1);
  QEventLoop loop;
  QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
  QObject::connect(reply.get(), &QNetworkReply::readyRead, &loop, [&reply] {
    if (reply->bytesAvailable() > kLongest) reply->abort();
  });
  QTimer::singleShot(timeout, reply.get(), &QNetworkReply::abort);
  const std::stop_callback giveUp(stop, [&reply] {
    QMetaObject::invokeMethod(reply.get(), &QNetworkReply::abort, Qt::QueuedConnection);
  });
  if (!reply->isFinished()) loop.exec();
  if (!isWhole(*reply) || reply->bytesAvailable() > kLongest) return {};
  return reply->readAll().toStdString();
}

}  // namespace kelvane
