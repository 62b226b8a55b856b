// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/opened_urls.h"

#include <QDesktopServices>

namespace kelvane::testing {

OpenedUrls::OpenedUrls(const QString& scheme) : scheme_(scheme) {
  QDesktopServices::setUrlHandler(scheme_, this, "note");
}

OpenedUrls::~OpenedUrls() {
  QDesktopServices::unsetUrlHandler(scheme_);
}

void OpenedUrls::note(const QUrl& url) {
  addresses.push_back((url.isLocalFile() ? url.toLocalFile() : url.toString()).toStdString());
}

}  // namespace kelvane::testing
