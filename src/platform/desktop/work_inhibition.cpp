// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/desktop/work_inhibition.h"

#include "platform/desktop/logout_inhibition.h"
#include "platform/desktop/sleep_inhibition.h"

namespace kelvane::desktop {

WorkInhibition::WorkInhibition(const std::string& why)
    : sleep_(std::make_unique<SleepInhibition>(why)),
      logout_(std::make_unique<LogoutInhibition>(why)) {}

WorkInhibition::~WorkInhibition() = default;

}  // namespace kelvane::desktop
