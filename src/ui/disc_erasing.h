// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <QPoint>
#include <cstddef>
#include <functional>
#include <optional>

class QWidget;

namespace kelvane {

class MediaController;

/// Which disc of the list an erase can mean. Main thread only.

/// Whether any disc of the list can be erased, be it selected or not.
bool anyErasable(const MediaController& discs);

/// The row of the disc that the erase button means: the selected one; where none is selected,
/// because none can be opened, the only one that can be erased. Empty where that cannot be erased.
std::optional<size_t> erasableRow(const MediaController& discs);

/// Opens the menu of a row, at `where` on the screen: also a disc that cannot be opened, and hence
/// not be selected, can be erased. `erase` hears of the row if the user chooses to and the disc is
/// still there. No menu opens for a disc that cannot be erased. `discs` outlives `list`.
void showEraseMenu(const MediaController& discs, size_t row, QWidget& list, const QPoint& where,
                   const std::function<void(size_t row)>& erase);

}  // namespace kelvane
