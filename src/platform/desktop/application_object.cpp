// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/application_object.h"

#include <utility>

namespace kelvane::desktop {

ApplicationObject::ApplicationObject(std::function<void()> activated)
    : activated_(std::move(activated)) {}

void ApplicationObject::Activate(const QVariantMap& /*platformData*/) {
  activated_();
}

}  // namespace kelvane::desktop
