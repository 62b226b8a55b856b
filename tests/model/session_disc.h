// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

#include "model/volume_model.h"

namespace kelvane::model {

/// A disc of several sessions in a plain file, made by mkisofs, and its mount by isomount.
///
/// Functions that can fail return why, and the empty string where they did not.
class SessionDisc {
 public:
  /// Works in `folder`; the disc is mounted at `mountPoint`, a folder that is there.
  SessionDisc(std::string folder, std::string mountPoint);
  ~SessionDisc();
  SessionDisc(const SessionDisc&) = delete;
  SessionDisc& operator=(const SessionDisc&) = delete;

  /// Writes the first session from a tree.
  std::string makeFrom(const Tree& tree);
  /// Adds a session with the arguments that the application uses.
  std::string addSession(const std::string& overlayDirectory, const std::string& hideList);
  /// Mounts the last session. It has to be unmounted before another is added.
  std::string mount();
  void unmount();
  /// What xorriso reads from the last session.
  std::string readByXorriso(Tree* tree) const;

 private:
  std::string disc() const { return folder_ + "/disc.iso"; }
  std::string appendImage();

  std::string folder_;
  std::string mountPoint_;
  bool isMounted_ = false;
  uint64_t lastStart_ = 0;
  uint64_t nextStart_ = 0;
};

}  // namespace kelvane::model
