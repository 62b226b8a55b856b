// SPDX-License-Identifier: GPL-2.0-or-later
#include "burner/command_ring.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>

#include "burner/drive_answers.h"
#include "virtualdrive/temporary_folder.h"

namespace kelvane::kernelburner {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kRingOffset = 128;
constexpr std::uint32_t kRingBytes = 1024;
constexpr std::uint32_t kDataOffset = kRingOffset + kRingBytes;
constexpr std::size_t kMemoryBytes = 16384;

// The kernel's side of a ring, which lies in plain memory here.
class KernelSide {
 public:
  KernelSide() {
    mailbox().version = kRingVersion;
    mailbox().flags = kKernelTakesReadLength;
    mailbox().ringOffset = kRingOffset;
    mailbox().ringBytes = kRingBytes;
  }

  std::span<std::byte> memory() { return memory_; }
  Mailbox& mailbox() { return at<Mailbox>(0); }
  template <typename T>
  T& at(std::uint64_t offset) {
    return *reinterpret_cast<T*>(memory_.data() + offset);
  }

  // Puts a command into the ring, its data in the pieces. Gives the entry's offset.
  std::uint64_t put(const Bytes& block, const std::vector<DataPiece>& pieces = {}) {
    const auto needed =
        static_cast<std::uint32_t>(sizeof(RequestEntry) + pieces.size() * sizeof(DataPiece) + 16);
    const auto length = std::max<std::uint32_t>(needed, sizeof(ResponseEntry));
    if (mailbox().head + length > kRingBytes) pad();
    const std::uint64_t offset = kRingOffset + mailbox().head;
    auto& entry = at<RequestEntry>(offset);
    entry = {};
    entry.header.lengthAndKind = length | static_cast<std::uint32_t>(EntryKind::Command);
    entry.dataPieces = static_cast<std::uint32_t>(pieces.size());
    entry.commandBlockOffset = offset + needed - 16;
    std::copy(pieces.begin(), pieces.end(), &at<DataPiece>(offset + sizeof(RequestEntry)));
    std::memcpy(&at<std::uint8_t>(entry.commandBlockOffset), block.data(), block.size());
    advance(length);
    return offset;
  }
  void putKind(std::uint32_t kind, std::uint32_t length) {
    at<EntryHeader>(kRingOffset + mailbox().head) = {length | kind, 0, 0, 0};
    advance(length);
  }
  void pad() { putKind(0, kRingBytes - mailbox().head); }
  void advance(std::uint32_t length) { mailbox().head = (mailbox().head + length) % kRingBytes; }

  void setData(std::uint64_t offset, const Bytes& data) {
    std::memcpy(&at<std::uint8_t>(offset), data.data(), data.size());
  }
  Bytes data(std::uint64_t offset, std::size_t size) {
    return {&at<std::uint8_t>(offset), &at<std::uint8_t>(offset) + size};
  }
  const ResponseEntry& response(std::uint64_t entry) { return at<ResponseEntry>(entry); }

 private:
  alignas(64) std::array<std::byte, kMemoryBytes> memory_{};
};

class CommandRingTest : public ::testing::Test {
 protected:
  CommandRing ring() {
    std::string error;
    auto ring = CommandRing::over(kernel_.memory(), &error);
    EXPECT_TRUE(ring.has_value()) << error;
    return *std::move(ring);
  }
  static CommandRing::Handler giving(RingAnswer answer) {
    return [answer](auto, auto) { return answer; };
  }

  KernelSide kernel_;
};

TEST_F(CommandRingTest, CommandBlockReachesTheHandlerInTheLengthOfItsGroup) {
  std::vector<Bytes> blocks;
  const auto handler = [&blocks](auto block, auto) {
    blocks.emplace_back(block.begin(), block.end());
    return RingAnswer{};
  };
  kernel_.put({0x12, 1, 2, 3, 4, 5, 0xEE, 0xEE});
  kernel_.put({0x28, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0xEE});
  kernel_.put({0xA8, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 0xEE});
  kernel_.put({0x85, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15});
  EXPECT_EQ(ring().serve(handler), 4U);
  ASSERT_EQ(blocks.size(), 4U);
  EXPECT_THAT(blocks[0], ElementsAre(0x12, 1, 2, 3, 4, 5));
  EXPECT_EQ(blocks[1].size(), 10U);
  EXPECT_EQ(blocks[2].size(), 12U);
  EXPECT_EQ(blocks[3].size(), 16U);
}

TEST_F(CommandRingTest, ServedRingIsEmptyAndServesNothingTwice) {
  kernel_.put({0x00, 0, 0, 0, 0, 0});
  auto ring = this->ring();
  EXPECT_EQ(ring.serve(giving({})), 1U);
  EXPECT_EQ(kernel_.mailbox().tail, kernel_.mailbox().head);
  EXPECT_EQ(ring.serve(giving({})), 0U);
}

TEST_F(CommandRingTest, DataSentInPiecesArrivesInOnePiece) {
  kernel_.setData(kDataOffset, {1, 2, 3});
  kernel_.setData(kDataOffset + 4096, {4, 5});
  Bytes sent;
  kernel_.put({0x2A}, {{kDataOffset, 3}, {kDataOffset + 4096, 2}});
  ring().serve([&sent](auto, auto data) {
    sent.assign(data.begin(), data.end());
    return RingAnswer{};
  });
  EXPECT_THAT(sent, ElementsAre(1, 2, 3, 4, 5));
  EXPECT_THAT(kernel_.data(kDataOffset, 3), ElementsAre(1, 2, 3)) << "nothing was read";
}

TEST_F(CommandRingTest, DataReadGoesIntoThePiecesWithItsLength) {
  const auto entry = kernel_.put({0x28}, {{kDataOffset + 8192, 3}, {kDataOffset, 5}});
  ring().serve([](auto, auto data) {
    std::iota(data.begin(), data.end(), std::uint8_t{10});
    return RingAnswer{.status = 0, .sense = {}, .readBytes = 6};
  });
  EXPECT_THAT(kernel_.data(kDataOffset + 8192, 3), ElementsAre(10, 11, 12));
  EXPECT_THAT(kernel_.data(kDataOffset, 5), ElementsAre(13, 14, 15, 16, 17));
  EXPECT_EQ(kernel_.response(entry).readLength, 6U);
  EXPECT_EQ(kernel_.response(entry).header.ourFlags, kReadLengthIsGiven);
}

TEST_F(CommandRingTest, KernelThatTakesNoReadLengthIsToldNone) {
  kernel_.mailbox().flags = 0;
  const auto entry = kernel_.put({0x28}, {{kDataOffset, 4}});
  ring().serve(giving({.status = 0, .sense = {}, .readBytes = 2}));
  EXPECT_EQ(kernel_.response(entry).header.ourFlags, 0U);
}

TEST_F(CommandRingTest, RefusalCarriesItsSense) {
  const auto entry = kernel_.put({0x00});
  RingAnswer answer{.status = 2, .sense = {}, .readBytes = std::nullopt};
  std::iota(answer.sense.begin(), answer.sense.end(), std::uint8_t{1});
  ring().serve(giving(answer));
  EXPECT_EQ(kernel_.response(entry).status, 2U);
  const Bytes sense(kernel_.response(entry).sense, kernel_.response(entry).sense + 18);
  EXPECT_THAT(sense, ElementsAreArray(answer.sense));
}

TEST_F(CommandRingTest, RingGoesOnAtItsBeginningAfterPadding) {
  auto ring = this->ring();
  std::size_t served = 0;
  for (int i = 0; i < 100; ++i) {
    kernel_.put({0x28}, {{kDataOffset, 4}, {kDataOffset + 64, 4}});
    served += ring.serve(giving({}));
    ASSERT_EQ(kernel_.mailbox().tail, kernel_.mailbox().head);
  }
  EXPECT_EQ(served, 100U);
}

TEST_F(CommandRingTest, EntryOfAnUnknownKindIsMarkedAndPassedOver) {
  const auto unknown = std::uint64_t{kRingOffset} + kernel_.mailbox().head;
  kernel_.putKind(2, 32);
  kernel_.put({0x00});
  EXPECT_EQ(ring().serve(giving({})), 1U);
  EXPECT_EQ(kernel_.at<EntryHeader>(unknown).ourFlags, kNotUnderstood);
}

TEST_F(CommandRingTest, EntryThatPointsOutOfTheMemoryIsMarkedAndNotCarriedOut) {
  const auto data = kernel_.put({0x28}, {{kMemoryBytes - 4, 8}});
  const auto farData = kernel_.put({0x28}, {{~std::uint64_t{0} - 2, 8}});
  const auto pieces = kernel_.put({0x28});
  kernel_.at<RequestEntry>(pieces).dataPieces = 0xFFFFFFFF;
  const auto block = kernel_.put({0x28});
  kernel_.at<RequestEntry>(block).commandBlockOffset = kMemoryBytes - 6;
  kernel_.setData(kMemoryBytes - 6, {0x28});
  bool called = false;
  ring().serve([&called](auto, auto) {
    called = true;
    return RingAnswer{};
  });
  EXPECT_FALSE(called);
  for (const auto entry : {data, farData, pieces, block}) {
    EXPECT_EQ(kernel_.at<EntryHeader>(entry).ourFlags, kNotUnderstood);
  }
  EXPECT_EQ(kernel_.mailbox().tail, kernel_.mailbox().head);
}

TEST_F(CommandRingTest, EntryWithoutASensibleLengthEndsTheServing) {
  for (const std::uint32_t length : {0U, kRingBytes + 8}) {
    kernel_ = KernelSide();
    kernel_.at<EntryHeader>(kRingOffset).lengthAndKind = length | 1;
    kernel_.mailbox().head = 64;
    EXPECT_EQ(ring().serve(giving({})), 0U);
  }
}

TEST_F(CommandRingTest, MemoryWithoutARingOfOurVersionIsRefused) {
  std::string error;
  EXPECT_FALSE(CommandRing::over(kernel_.memory().first(64), &error));
  EXPECT_EQ(error, "The kernel's memory is too small for a mailbox.");
  kernel_.mailbox().version = 3;
  EXPECT_FALSE(CommandRing::over(kernel_.memory(), &error));
  EXPECT_EQ(error, "The kernel's ring has version 3, not 2.");
  kernel_.mailbox().version = kRingVersion;
  kernel_.mailbox().ringBytes = kMemoryBytes;
  EXPECT_FALSE(CommandRing::over(kernel_.memory(), &error));
  EXPECT_EQ(error, "The kernel's ring does not lie in its memory.");
}

// An emulated drive behind the ring.
class DriveBehindARing : public CommandRingTest {
 protected:
  DriveBehindARing() {
    std::string error;
    const virtualdrive::NewDisc blank{.medium = virtualdrive::MediumKind::CdRw};
    EXPECT_TRUE(virtualdrive::VirtualDrive::create(disc_, blank, &error)) << error;
    drive_ = virtualdrive::VirtualDrive::open(disc_, &error);
    EXPECT_TRUE(drive_) << error;
  }
  const ResponseEntry& send(const Bytes& block, std::vector<DataPiece> pieces = {}) {
    const auto entry = kernel_.put(block, pieces);
    ring().serve(answersOf(*drive_, [this] { ++timesGone_; }));
    return kernel_.response(entry);
  }
  static Bytes senseOf(const ResponseEntry& response) {
    return {response.sense[2], response.sense[12], response.sense[13]};
  }

  virtualdrive::TemporaryFolder folder_;
  std::filesystem::path disc_ = folder_ / "disc.kvdisc";
  std::optional<virtualdrive::VirtualDrive> drive_;
  int timesGone_ = 0;
};

TEST_F(DriveBehindARing, NamesItselfInTheLengthOfItsAnswer) {
  const auto& response = send({0x12, 0, 0, 0, 96, 0}, {{kDataOffset, 512}});
  EXPECT_EQ(response.status, 0U);
  EXPECT_EQ(response.readLength, 96U);
  EXPECT_EQ(kernel_.data(kDataOffset, 1), Bytes{0x05});
}

TEST_F(DriveBehindARing, RefusesWithTheSenseOfTheDrive) {
  const auto& response = send({0x00, 0, 0, 0, 0, 0});
  EXPECT_EQ(response.status, 2U);
  EXPECT_THAT(senseOf(response), ElementsAre(0x6, 0x28, 0x00)) << "the medium is new";
  EXPECT_THAT(senseOf(send({0x85, 8})), ElementsAre(0x5, 0x20, 0x00)) << "ATA PASS-THROUGH";
}

TEST_F(DriveBehindARing, WritesWhatTheCommandSends) {
  send({0x00, 0, 0, 0, 0, 0});
  kernel_.setData(kDataOffset, Bytes(2048, 0xA5));
  EXPECT_EQ(send({0x2A, 0, 0, 0, 0, 0, 0, 0, 1, 0}, {{kDataOffset, 2048}}).status, 0U);
  std::ifstream sectors(drive_->sectorsFile(), std::ios::binary);
  const std::string written{std::istreambuf_iterator<char>(sectors), {}};
  EXPECT_EQ(written, std::string(2048, '\xA5'));
}

TEST_F(DriveBehindARing, ThatDisappearsRefusesEverythingAndSaysSo) {
  std::ofstream(disc_ / "faults") << "on command 1: gone\n";
  EXPECT_THAT(senseOf(send({0x12, 0, 0, 0, 96, 0})), ElementsAre(0x5, 0x25, 0x00));
  EXPECT_THAT(senseOf(send({0x00, 0, 0, 0, 0, 0})), ElementsAre(0x5, 0x25, 0x00));
  EXPECT_EQ(timesGone_, 2);
}

}  // namespace
}  // namespace kelvane::kernelburner
