// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/tool/commands.h"

namespace kelvane::virtualdrive::tool {

int moveTray(const std::filesystem::path& disc, Tray what, EjectManner manner) {
  const auto drive = openDisc(disc);
  if (!drive) return kDiscUnusable;
  std::string error;
  const bool moved =
      what == Tray::Insert ? drive->insertDisc(&error) : drive->ejectDisc(manner, &error);
  if (moved) return kDone;
  complain(error);
  return kFailed;
}

}  // namespace kelvane::virtualdrive::tool
