// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "virtualdrive/state/drive_state.h"

namespace kelvane::virtualdrive {

/// What the drive remembers, `drive.json`, UTF-8, one object:
///
///     format             "kelvane-drive"
///     version            1; a reader refuses higher numbers
///     serial             letters and digits that tell this drive from others; given once, when the
///     folder is made tray_open          true: the tray is open, the medium cannot be reached
///     removal_prevented  true: a program has locked the tray
///     unit_attention     true: the next command that needs the medium answers 6/28/00, once
///     media_event        what GET EVENT STATUS NOTIFICATION has still to tell, once: 0 nothing, 1
///     the button was pressed,
///                        2 new medium, 3 medium removed
///     read_speed, write_speed   1000 bytes a second, as programs have chosen
///     write_parameters   mode page 05h as programs have set it: its 52 bytes in hexadecimal
///
/// It stands apart from disc.json because it changes with every program that comes by, and a disc's
/// history does not.
std::string driveToJson(const DriveState& drive);

/// Empty with words in `error` where the text is damaged or of a newer version.
std::optional<DriveState> driveFromJson(std::string_view text, std::string* error);

}  // namespace kelvane::virtualdrive
