// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <array>
#include <string>

#include "model/step.h"
#include "model/volume_model.h"

namespace kelvane::model {

/// Takes steps on a mounted volume by system calls.
class VolumeRunner {
 public:
  explicit VolumeRunner(std::string root) : root_(std::move(root)) { handles_.fill(-1); }
  ~VolumeRunner() { closeHandles(); }
  VolumeRunner(const VolumeRunner&) = delete;
  VolumeRunner& operator=(const VolumeRunner&) = delete;

  Outcome apply(const Step& step);
  void closeHandles();

 private:
  std::string at(const std::string& path) const { return root_ + path; }
  Outcome openAndWrite(const Step& step, int flags) const;
  Outcome read(const Step& step) const;
  Outcome stat(const Step& step) const;
  Outcome list(const Step& step) const;
  Outcome setTime(const Step& step) const;
  Outcome useHandle(const Step& step);

  std::string root_;
  std::array<int, kHandleCount> handles_;
};

/// Everything below a folder, read whole; of links the text. A name that a listing shows and that
/// is not there stands in it as of type '?'.
Tree readTree(const std::string& root);

/// The differences of two trees, a line each, empty where there is none. Modes are compared only on
/// a volume.
enum class Compare { Everything, NamesAndContent };
std::string differences(const Tree& expected, const Tree& actual, Compare compare);

}  // namespace kelvane::model
