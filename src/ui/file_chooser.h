// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <string>
#include <vector>

class QWidget;

namespace kelvane {

/// What the user is to choose: the desktop's choosers offer one or the other.
enum class Choice { Files, Folder };

/// Opens the desktop's chooser as a sheet over `parent` and returns. `chosen` hears the paths, as
/// the bytes that they are; it is not called where the user changes their mind.
void chooseForDisc(QWidget& parent, Choice choice,
                   std::function<void(const std::vector<std::string>& paths)> chosen);

}  // namespace kelvane
