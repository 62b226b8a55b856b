// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "model/volume_model.h"

namespace kelvane::model {

/// A disc and what is done on the volume over it.
struct Scenario {
  Tree disc;
  int64_t freeMegabytes = 600;
  std::vector<Step> steps;
};

/// Where volume and model went apart.
struct Failure {
  size_t stepIndex = 0;  ///< The steps' count, where it was found after the last one.
  std::string what;
};

/// The scenario that a seed gives, and how it ends: each step is taken on a model as it is made up.
Scenario makeScenario(uint64_t seed, size_t stepCount);

/// Takes all steps on a mounted volume, compares each outcome, the whole tree now and then, and at
/// the end the session that mkisofs builds, as xorriso reads it. Empty where all agree.
std::optional<Failure> runScenario(const Scenario& scenario);

/// Whether `runScenario` gets as far as building the session: see VolumeModel::canBeBurned.
bool endsInASession(const Scenario& scenario);

/// A shorter scenario that fails too: steps and disc items are left out as long as it does.
Scenario shrink(Scenario scenario, Failure* failure);

/// A scenario for people to read.
std::string describe(const Scenario& scenario);

}  // namespace kelvane::model
