// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <random>
#include <string>
#include <vector>

#include "model/volume_model.h"

namespace kelvane::model {

/// Random discs and steps; the same seed gives the same ones. Few names and little depth, so that
/// steps meet.
class StepGenerator {
 public:
  explicit StepGenerator(uint64_t seed) : random_(seed) {}

  Tree disc();
  /// A step that is likely to do something in the model's present state.
  Step next(const VolumeModel& model);

  unsigned below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }

 private:
  bool oneIn(unsigned times) { return below(times) == 0; }
  StepKind kind();
  std::string name();
  std::string existing(const std::vector<std::string>& paths);
  std::string anywhere(const std::vector<std::string>& paths);
  size_t length();

  std::mt19937_64 random_;
};

}  // namespace kelvane::model
