// SPDX-License-Identifier: GPL-2.0-or-later
// The mount table as programs read it. Where this machine has a drive of the same name, its mounts
// stand in the table; they belong to another disc than the one that is shown, and growisofs would
// unmount them.
#undef _FILE_OFFSET_BITS
#include <mntent.h>

#include <string_view>

#include "virtualdrive/shim/next_function.h"
#include "virtualdrive/shim/shown_drive.h"

namespace shim = kelvane::virtualdrive::shim;

KELVANE_STANDS_IN mntent* getmntent(FILE* table) noexcept {
  static auto* next = shim::nextFunction<mntent*(FILE*)>("getmntent");
  const auto* shown = shim::shownDrive();
  auto* entry = next(table);
  while (shown != nullptr && entry != nullptr && shown->isDevicePath(entry->mnt_fsname)) {
    entry = next(table);
  }
  return entry;
}

KELVANE_STANDS_IN mntent* getmntent_r(FILE* table, mntent* room, char* text, int size) noexcept {
  static auto* next = shim::nextFunction<mntent*(FILE*, mntent*, char*, int)>("getmntent_r");
  const auto* shown = shim::shownDrive();
  auto* entry = next(table, room, text, size);
  while (shown != nullptr && entry != nullptr && shown->isDevicePath(entry->mnt_fsname)) {
    entry = next(table, room, text, size);
  }
  return entry;
}
