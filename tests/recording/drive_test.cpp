// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/drive.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>

#include "recording/scripted_transport.h"

namespace kelvane {
namespace {

using testing::ScriptedTransport;

// A CD-R that has just been inserted, and every question after that in vain.
class DriveThatFallsSilent : public ::testing::TestWithParam<int> {
 protected:
  DriveThatFallsSilent() {
    std::vector<uint8_t> configuration(8);
    configuration[3] = 4;
    configuration[7] = 0x09;
    transport_->answerGood();               // TEST UNIT READY
    transport_->answerGood(configuration);  // GET CONFIGURATION
    transport_->answerCheckCondition({0x05, 0x20, 0x00});
    transport_->silence = GetParam();
  }

  ScriptedTransport* transport_ = new ScriptedTransport;
  Drive drive_{{}, std::unique_ptr<mmc::Transport>(transport_)};
};

using DriveThatCannotBeAsked = DriveThatFallsSilent;

TEST_P(DriveThatCannotBeAsked, HasTheDiscThatItHadBefore) {
  const MediaState before = drive_.mediaState();
  EXPECT_TRUE(before.present);
  EXPECT_EQ(drive_.mediaState(), before);
}

INSTANTIATE_TEST_SUITE_P(Reasons, DriveThatCannotBeAsked,
                         ::testing::Values(EMFILE, ENFILE, EACCES, EPERM, EBUSY, EIO, ETIMEDOUT));

using DriveThatIsGone = DriveThatFallsSilent;

TEST_P(DriveThatIsGone, HasNoDisc) {
  EXPECT_TRUE(drive_.mediaState().present);
  EXPECT_FALSE(drive_.mediaState().present);
}

INSTANTIATE_TEST_SUITE_P(Reasons, DriveThatIsGone,
                         ::testing::Values(ENOENT, ENXIO, ENODEV, ENOMEDIUM));

}  // namespace
}  // namespace kelvane
