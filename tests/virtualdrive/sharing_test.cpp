// SPDX-License-Identifier: GPL-2.0-or-later
// Several processes at one disc, and processes that are killed.
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <random>
#include <thread>

#include "drive_fixture.h"

namespace kelvane::virtualdrive {
namespace {

class Sharing : public DriveTest {
 protected:
  /// Runs `work` in a process of its own and gives its id.
  template <typename Work>
  static pid_t inChild(Work work) {
    const auto child = fork();
    if (child != 0) return child;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    work();
    _exit(0);
  }
  static void waitFor(pid_t child) { ASSERT_EQ(waitpid(child, nullptr, 0), child); }

  /// Writes sectors that bear their own address, as far as it comes.
  void writeForever() {
    for (Lba address = track(1, 0xFF).next;; address += 16) {
      std::string data;
      for (Lba i = 0; i < 16; ++i) {
        data += patternBytes(2048, static_cast<unsigned>(address + i));
      }
      if (!write(address, data).good()) return;
    }
  }
};

TEST_F(Sharing, KilledWriterLeavesAConsistentDiscThatCanBeContinued) {
  makeDisc(MediumKind::CdR);
  writeSession(300, 1);
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::TrackAtOnce, true), kGood);
  const auto before = contentOf(drive().sectorsFile());
  Lba reached = track(1, 0xFF).next;
  std::mt19937 random(1);
  for (int round = 0; round < 20; ++round) {
    const auto child = inChild([&] { writeForever(); });
    // Killed somewhere in its work; where, does not matter.
    const auto wanted = reached + 32 + static_cast<Lba>(random() % 64);
    while (track(1, 0xFF).next < wanted) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 1000));
    kill(child, SIGKILL);
    waitFor(child);
    const auto next = track(1, 0xFF).next;
    ASSERT_GE(next, reached + 32);
    for (const Lba address : {reached, next - 1}) {
      ASSERT_EQ(readText(address, 1), patternBytes(2048, static_cast<unsigned>(address)));
    }
    reached = next;
  }
  EXPECT_EQ(contentOf(drive().sectorsFile()).substr(0, before.size()), before);
  ASSERT_EQ(synchronize(), kGood);
  ASSERT_EQ(closeSession(), kGood);
  EXPECT_EQ(inspect().sessions.size(), 2U);
  EXPECT_EQ(inspect().tracks.at(1).recorded, reached - 11702);
}

TEST_F(Sharing, KillAtAnyMomentOfClosingAndBlankingLeavesOneOfTheTwoStates) {
  makeDisc(MediumKind::CdRw);
  std::mt19937 random(2);
  for (int round = 0; round < 30; ++round) {
    const auto child = inChild([&] {
      while (true) {
        writeSession(300, 1);
        send({0xA1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
      }
    });
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
    kill(child, SIGKILL);
    waitFor(child);
    ASSERT_EQ(discInformation().sense, kGood) << round;
    ASSERT_LE(inspect().sessions.size(), 1U);
    // Whatever it was doing, the disc can be blanked and used.
    ASSERT_EQ(send({0xA1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), kGood);
    ASSERT_EQ(discInformation().u8(2), 0x10U);
  }
}

TEST_F(Sharing, KillAtAnyMomentOfFormattingAndBlankingADvdLeavesOneOfItsModes) {
  makeDisc(MediumKind::DvdRw, 2560);
  const Block blankAll{0xA1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  const Block formatUnit{0x04, 0x11, 0, 0, 0, 0};
  const std::string quickFormat("\0\x02\0\x08\0\0\0\0\x54\0\0\x10", 12);
  std::mt19937 random(3);
  for (int round = 0; round < 30; ++round) {
    const auto child = inChild([&] {
      while (true) {
        send(formatUnit, quickFormat);
        write(0, patternBytes(64 * kSectorBytes, 1));
        closeSession();
        write(0, patternBytes(64 * kSectorBytes, 2));
        send(blankAll);
      }
    });
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
    kill(child, SIGKILL);
    waitFor(child);
    const auto information = discInformation();
    ASSERT_EQ(information.sense, kGood) << round;
    ASSERT_THAT(information.u8(2), testing::AnyOf(0x10U, 0x15U, 0x1EU)) << round;
    if (inspect().formatting) {
      ASSERT_EQ(read(0, 16).sense, kGood);
    }
    // Whatever it was doing, the disc can be blanked and written.
    ASSERT_EQ(send(blankAll), kGood);
    ASSERT_EQ(discInformation().u8(2), 0x10U);
  }
}

TEST_F(Sharing, TrackThatWasDescribedButGotNoDataHasNotHappened) {
  makeDisc(MediumKind::CdR);
  writeSession(300, 1);
  const auto closed = contentOf(disc() / "disc.json");
  ASSERT_EQ(write(11702, patternBytes(2048, 1)), kGood);
  // As a kill before the first whole sector leaves it.
  std::filesystem::resize_file(drive().sectorsFile(), 11702 * kSectorBytes + 5);
  EXPECT_EQ(discInformation().u8(2), 0x01U) << "appendable, last session empty";
  EXPECT_EQ(contentOf(disc() / "disc.json"), closed);
  EXPECT_EQ(write(11702, patternBytes(2048, 2)), kGood);
  EXPECT_EQ(readText(11702, 1), patternBytes(2048, 2));
}

TEST_F(Sharing, ProcessesTakeTurnsAndEachSectorIsWrittenOnce) {
  makeDisc(MediumKind::CdR);
  ASSERT_EQ(setWriteParameters(WriteParameters::Type::TrackAtOnce, true), kGood);
  constexpr int kWriters = 4;
  constexpr Lba kSectors = 400;
  std::vector<pid_t> children;
  children.reserve(kWriters);
  for (int writer = 0; writer < kWriters; ++writer) {
    children.push_back(inChild([&] {
      // Each asks where to write and tries; who comes too late is refused and asks again.
      while (true) {
        const auto next = track(1, 0xFF).next;
        if (next >= kSectors) return;
        const auto sense = write(next, patternBytes(2048, static_cast<unsigned>(next)));
        if (!sense.good() && sense != kInvalidAddressForWrite) _exit(1);
      }
    }));
  }
  for (const auto child : children) {
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  ASSERT_GE(track(1, 0xFF).next, kSectors);
  for (Lba address = 0; address < kSectors; ++address) {
    ASSERT_EQ(readText(address, 1), patternBytes(2048, static_cast<unsigned>(address))) << address;
  }
}

TEST_F(Sharing, ThreadsOfOneProcessTakeTurnsToo) {
  makeDisc(MediumKind::CdR);
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 50; ++round) {
        EXPECT_EQ(send({0xBB, 0, 0xFF, 0xFF, 0x0B, static_cast<std::uint8_t>(round), 0, 0, 0, 0}),
                  kGood);
        EXPECT_EQ(discInformation().sense, kGood);
      }
    });
  }
  for (auto& thread : threads) thread.join();
}

}  // namespace
}  // namespace kelvane::virtualdrive
