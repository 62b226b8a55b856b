// SPDX-License-Identifier: GPL-2.0-or-later
#include "services/kv_license_controller.h"

#include <QFile>
#include <utility>

#include "platform/foundation/bundle.h"
#include "platform/foundation/strings_table.h"
#include "platform/foundation/user_defaults.h"

namespace kelvane {
namespace {

constexpr const char* kVersionKey = "licenseShownForVersion";

}  // namespace

std::string licenseText() {
  const auto path =
      Bundle::mainBundle().pathForResource(localizedString("LicenseResource"), "html");
  if (!path) return {};
  QFile file(QString::fromStdString(*path));
  if (!file.open(QIODevice::ReadOnly)) return {};
  return file.readAll().toStdString();
}

KVLicenseController::KVLicenseController(LicenseWindow& licenseWindow,
                                         std::function<void()> terminate)
    : licenseWindow_(licenseWindow), terminate_(std::move(terminate)) {
  licenseWindow_.setActions(this);
}

KVLicenseController::~KVLicenseController() {
  licenseWindow_.setActions(nullptr);
}

bool KVLicenseController::showLicenseIfNeeded() {
  licenseWindow_.setLicenseText(licenseText());
  const std::string version = Bundle::mainBundle().shortVersionString();
  if (UserDefaults::standard().stringForKey(kVersionKey) == version) return true;
  agreed_ = false;
  licenseWindow_.runModal();
  return agreed_;
}

void KVLicenseController::agree() {
  UserDefaults::standard().setString(Bundle::mainBundle().shortVersionString(), kVersionKey);
  agreed_ = true;
  licenseWindow_.stopModal();
  licenseWindow_.orderOut();
}

void KVLicenseController::disagree() {
  terminate_();
}

}  // namespace kelvane
