// SPDX-License-Identifier: GPL-2.0-or-later
// Random sequences of operations on a mounted volume, compared with the model, and the session that
// comes of them.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <iostream>
#include <random>
#include <string>

#include "model/scenario.h"
#include "platform/userfs/gm_user_file_system.h"

namespace kelvane::model {
namespace {

constexpr size_t kStepsAVolume = 1000;
constexpr size_t kVolumesATest = 10;

size_t numberFrom(const char* variable, size_t otherwise) {
  const char* const text = std::getenv(variable);
  return text == nullptr ? otherwise : std::strtoull(text, nullptr, 10);
}

class VolumeModelTest : public testing::TestWithParam<unsigned> {
 protected:
  void SetUp() override {
    std::string reason;
    if (!GMUserFileSystem::isAvailable(&reason)) GTEST_SKIP() << reason;
    umask(022);
  }

  /// Runs the scenario of a seed; where it fails, prints it as short as it can be had.
  void check(uint64_t seed, size_t steps) {
    Scenario scenario = makeScenario(seed, steps);
    if (endsInASession(scenario)) ++sessions_;
    std::optional<Failure> failure = runScenario(scenario);
    if (!failure.has_value()) return;
    const Failure first = *failure;
    scenario = shrink(std::move(scenario), &*failure);
    ADD_FAILURE() << "To repeat: KELVANE_MODEL_SEED=" << seed << " KELVANE_MODEL_STEPS=" << steps
                  << "\nstep " << first.stepIndex << ": " << first.what << "\nshortened to "
                  << scenario.steps.size() << " steps:\n"
                  << describe(scenario) << "which ends in step " << failure->stepIndex << ": "
                  << failure->what;
  }

  size_t sessions_ = 0;  // Those that were built and compared.
};

TEST_P(VolumeModelTest, RandomStepsDoWhatTheRulesSayAndTheSessionHoldsTheirResult) {
  const size_t steps = numberFrom("KELVANE_MODEL_STEPS", kStepsAVolume);
  if (std::getenv("KELVANE_MODEL_SEED") != nullptr) {
    if (GetParam() != 0) GTEST_SKIP() << "one seed is repeated";
    check(numberFrom("KELVANE_MODEL_SEED", 0), steps);
    return;
  }
  std::random_device device;
  const size_t volumes = numberFrom("KELVANE_MODEL_VOLUMES", kVolumesATest);
  for (size_t volume = 0; volume < volumes; ++volume) {
    const uint64_t seed = device();
    std::cout << "seed " << seed << ", " << steps << " steps" << std::endl;
    check(seed, steps);
    if (HasFailure()) return;
  }
  std::cout << sessions_ << " of " << volumes << " sessions built and compared" << std::endl;
  EXPECT_TRUE(sessions_ > 0 || volumes < kVolumesATest);
}

INSTANTIATE_TEST_SUITE_P(FreshSeeds, VolumeModelTest, testing::Range(0U, 10U));

class VolumeModelSeeds : public VolumeModelTest {};

TEST_P(VolumeModelSeeds, ThatAreKnownStayRight) {
  if (std::getenv("KELVANE_MODEL_SEED") != nullptr) GTEST_SKIP() << "one seed is repeated";
  check(GetParam(), kStepsAVolume);
}

INSTANTIATE_TEST_SUITE_P(Fixed, VolumeModelSeeds, testing::Values(1U, 2U, 3U));

}  // namespace
}  // namespace kelvane::model
