// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ui/roomy_button.h"

namespace kelvane {

/// The button that puts an ejected disc back into its emulated drive. With one such drive it does
/// so at once, with several it offers a menu of them.
class InsertDiscButton : public RoomyButton {
  Q_OBJECT

 public:
  explicit InsertDiscButton(QWidget* parent = nullptr);

  /// `names` are the discs of the drives, in the user's words; `insert` is called with the index of
  /// the one that was chosen.
  void setDiscs(const std::vector<std::string>& names, std::function<void(size_t index)> insert);

  bool hasDiscs() const { return hasDiscs_; }

 private:
  void insertDisc(size_t index);

  std::function<void(size_t)> insert_;
  bool hasDiscs_ = false;
  bool single_ = false;
};

}  // namespace kelvane
