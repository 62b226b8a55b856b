// SPDX-License-Identifier: GPL-2.0-or-later
#include "ui/disc_erasing.h"

#include <QMenu>
#include <algorithm>
#include <vector>

#include "ui/media_controller.h"
#include "ui/view_parts.h"

namespace kelvane {

bool anyErasable(const MediaController& discs) {
  const std::vector<DeviceRecord>& records = discs.arrangedObjects();
  return std::any_of(records.begin(), records.end(),
                     [](const DeviceRecord& disc) { return disc.RW; });
}

std::optional<size_t> erasableRow(const MediaController& discs) {
  const std::vector<DeviceRecord>& records = discs.arrangedObjects();
  std::optional<size_t> row = discs.selectionIndex();
  if (!row) {
    for (size_t index = 0; index < records.size(); ++index) {
      if (!records[index].RW) continue;
      if (row) return std::nullopt;
      row = index;
    }
  }
  return row && *row < records.size() && records[*row].RW ? row : std::nullopt;
}

void showEraseMenu(const MediaController& discs, size_t row, QWidget& list, const QPoint& where,
                   const std::function<void(size_t row)>& erase) {
  const std::vector<DeviceRecord>& records = discs.arrangedObjects();
  if (row >= records.size() || !records[row].RW) return;
  auto* menu = new QMenu(&list);
  menu->setObjectName(QStringLiteral("diskMenu"));
  menu->setAccessibleName(localizedText("AccessibleDiskIcon"));
  menu->setAttribute(Qt::WA_DeleteOnClose);
  const DRDevice* drive = records[row].DRDevice;
  menu->addAction(localizedText("EraseDisc"), &list, [&discs, row, drive, erase] {
    // The list may have changed under the menu.
    const std::vector<DeviceRecord>& now = discs.arrangedObjects();
    if (row < now.size() && now[row].DRDevice == drive && now[row].RW) erase(row);
  });
  menu->popup(where);
}

}  // namespace kelvane
