// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/mmc/emulated_transport.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <vector>

#include "foundation/temporary_folder.h"
#include "platform/recording/mmc/command.h"
#include "platform/recording/mmc/configuration.h"
#include "platform/recording/mmc/disc_information.h"
#include "platform/recording/mmc/inquiry.h"
#include "platform/recording/mmc/unit_ready.h"

namespace kelvane::mmc {
namespace {

class EmulatedTransportTest : public ::testing::Test {
 protected:
  EmulatedTransportTest() {
    std::string error;
    EXPECT_TRUE(virtualdrive::VirtualDrive::create(disc, {}, &error)) << error;
    transport.emplace(*virtualdrive::VirtualDrive::open(disc, &error));
  }

  testing::TemporaryFolder folder;
  const std::string disc = folder.file("disc.kvdisc");
  std::optional<EmulatedTransport> transport;
};

TEST_F(EmulatedTransportTest, CarriesTheQuestionsThatAreAskedOfARealDrive) {
  EXPECT_EQ(testUnitReady(*transport), Readiness::Ready);
  EXPECT_EQ(readConfiguration(*transport)->currentProfile, Profile::CdR);
  EXPECT_TRUE(readDiscInformation(*transport)->canTakeSession());
  EXPECT_FALSE(readInquiry(*transport)->product.empty());
}

TEST_F(EmulatedTransportTest, HandsOnTheSenseOfARefusal) {
  ASSERT_EQ(testUnitReady(*transport), Readiness::Ready);
  const std::vector<uint8_t> noSuchCommand{0xFF, 0, 0, 0, 0, 0};
  const Answer answer = transport->read(noSuchCommand, {}, kQuestionTimeLimit);
  EXPECT_EQ(answer.status, Status::CheckCondition);
  EXPECT_EQ(answer.sense, (Sense{0x5, 0x20, 0x00}));
}

TEST_F(EmulatedTransportTest, GivesNoMoreDataThanWasAskedFor) {
  const std::vector<uint8_t> inquiry{0x12, 0, 0, 0, 36, 0};
  std::vector<uint8_t> data(8, 0);
  const Answer answer = transport->read(inquiry, data, kQuestionTimeLimit);
  EXPECT_TRUE(answer.isGood());
  EXPECT_EQ(answer.transferred, data.size());
  EXPECT_EQ(data[0], 0x05);  // a CD or DVD drive
}

TEST_F(EmulatedTransportTest, TakesDataToTheDisc) {
  ASSERT_EQ(testUnitReady(*transport), Readiness::Ready);
  const std::vector<uint8_t> write{0x2A, 0, 0, 0, 0, 0, 0, 0, 1, 0};
  const std::vector<uint8_t> block(2048, 0x77);
  EXPECT_TRUE(transport->write(write, block, kQuestionTimeLimit).isGood());
  EXPECT_EQ(readDiscInformation(*transport)->lastSession, LastSessionState::Incomplete);
}

TEST_F(EmulatedTransportTest, IsUnreachableOnceTheFolderIsGone) {
  std::filesystem::remove_all(disc);
  EXPECT_EQ(testUnitReady(*transport), Readiness::Unreachable);
  const std::vector<uint8_t> testReady(6, 0);
  EXPECT_EQ(transport->read(testReady, {}, kQuestionTimeLimit).errorNumber, ENODEV);
}

}  // namespace
}  // namespace kelvane::mmc
