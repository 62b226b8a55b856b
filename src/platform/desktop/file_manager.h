// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QObject>
#include <chrono>
#include <functional>
#include <string>

#include "platform/desktop/patience.h"

namespace kelvane::desktop {

/// Shows what stands at `path` in the user's file manager (org.freedesktop.FileManager1): a folder
/// or volume is opened, of anything else the folder around it, with the item selected.
///
/// Returns at once. Where no file manager is reached this way, none answers in time or it refuses,
/// `otherwise` is called from the event loop, unless `context` has been deleted. Main thread only.
void showInFileManager(const std::string& path, QObject* context, std::function<void()> otherwise,
                       std::chrono::milliseconds patience = kPatience);

}  // namespace kelvane::desktop
