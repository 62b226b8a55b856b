// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <string>

#include "ui/window_outlets.h"

namespace kelvane {

/// An alert of the warning style with an "OK" button, whose informative text has the message's key
/// with "Long" appended.
inline Alert warningAlert(const std::string& messageKey, const std::string& detail) {
  Alert alert;
  alert.style = Alert::Style::Warning;
  alert.buttonKeys = {"OK"};
  alert.messageKey = messageKey;
  alert.informativeKey = messageKey + "Long";
  alert.detail = detail;
  return alert;
}

}  // namespace kelvane
