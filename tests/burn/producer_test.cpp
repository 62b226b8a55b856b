// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/producer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <vector>

#include "foundation/temporary_folder.h"

namespace {

struct Range {
  off_t begin;
  off_t end;
};
std::vector<Range> droppedRanges;

}  // namespace

// Stands in for the system's own, which not every system obeys, and notes what it is asked to drop.
int posix_fadvise(int, off_t begin, off_t length, int advice) noexcept {
  if (advice == POSIX_FADV_DONTNEED) droppedRanges.push_back({begin, begin + length});
  return 0;
}

namespace kelvane {
namespace {

// How far from the beginning of the file all of it was dropped. Ranges begin at whole pages, or the
// page would stay.
off_t droppedFrom0() {
  off_t end = 0;
  for (const Range& range : droppedRanges) {
    EXPECT_EQ(range.begin % sysconf(_SC_PAGESIZE), 0);
    if (range.begin <= end) end = std::max(end, range.end);
  }
  return end;
}

class ProducerTest : public ::testing::Test {
 protected:
  std::string makeFile(size_t bytes) {
    content.resize(bytes);
    std::mt19937 random(3);
    for (char& character : content) character = static_cast<char>(random());
    const std::string path = folder.file("image.iso");
    std::ofstream(path, std::ios::binary) << content;
    return path;
  }

  void prepare(const std::string& path) {
    producer.setFilePath(path);
    EXPECT_TRUE(producer.prepareTrack(nullptr, nullptr, nullptr));
  }

  // One request; gives what was delivered, and checks that no more was touched.
  std::string request(uint32_t length, uint64_t address = 0) {
    constexpr char kUntouched = '\x5A';
    std::vector<char> buffer(length + 16, kUntouched);
    const uint32_t count =
        producer.produceDataForTrack(nullptr, buffer.data(), length, address, 2048, nullptr);
    EXPECT_LE(count, length);
    for (size_t at = count; at < buffer.size(); ++at) EXPECT_EQ(buffer[at], kUntouched);
    return {buffer.data(), count};
  }

  testing::TemporaryFolder folder;
  std::string content;
  Producer producer;
};

TEST_F(ProducerTest, TheTrackIsAsLongAsTheFileHasWholeBlocks) {
  for (const auto& [bytes, blocks] : std::vector<std::pair<size_t, uint32_t>>{
           {0, 0}, {1, 0}, {2047, 0}, {2048, 1}, {2049, 1}, {4095, 1}, {4096, 2}}) {
    producer.setFilePath(makeFile(bytes));
    EXPECT_EQ(producer.fileSize(), DRMSF::msfWithFrames(blocks)) << bytes;
  }
}

TEST_F(ProducerTest, AMissingFileIsATrackOfLength0) {
  producer.setFilePath(folder.file("nothing"));
  EXPECT_EQ(producer.fileSize().frames(), 0U);
  prepare(folder.file("nothing"));
  EXPECT_EQ(request(2048), "");
  EXPECT_EQ(request(2048), "");
}

TEST_F(ProducerTest, AnEmptyFileDeliversNothing) {
  prepare(makeFile(0));
  EXPECT_EQ(request(2048), "");
}

TEST_F(ProducerTest, DeliversTheFileInOrderWhateverAddressIsAskedFor) {
  prepare(makeFile(5000));
  std::string delivered;
  for (const uint64_t address : {77U, 3U, 9999U}) delivered += request(1500, address);
  EXPECT_EQ(delivered, content.substr(0, 4500));
}

TEST_F(ProducerTest, ARequestForMoreThanRemainsGivesTheRemainder) {
  prepare(makeFile(5000));
  EXPECT_EQ(request(4096), content.substr(0, 4096));
  EXPECT_EQ(request(4096), content.substr(4096));
}

TEST_F(ProducerTest, OnceAllIsDeliveredTheNextRequestStartsAgain) {
  prepare(makeFile(5000));
  EXPECT_EQ(request(5000), content);
  EXPECT_EQ(request(100), content.substr(0, 100));
  EXPECT_EQ(request(4900), content.substr(100));
  EXPECT_EQ(request(6000), content);
  EXPECT_EQ(request(6000), content);
}

TEST_F(ProducerTest, PreparingAgainStartsAgainAndLooksAtTheFileAnew) {
  prepare(makeFile(5000));
  EXPECT_EQ(request(3000).size(), 3000U);
  prepare(makeFile(600));
  EXPECT_EQ(request(3000), content);
}

TEST_F(ProducerTest, AShorterFileThanWasPreparedIsNotNoticedAndFilledUpWithZeros) {
  const std::string path = makeFile(5000);
  prepare(path);
  std::filesystem::resize_file(path, 1000);
  EXPECT_EQ(request(5000), content.substr(0, 1000) + std::string(4000, '\0'));
}

TEST_F(ProducerTest, SizesAre32BitsWide) {
  const std::string path = makeFile(0);
  // 4 GiB and 4096 bytes look like 4096 bytes.
  std::filesystem::resize_file(path, (uintmax_t{1} << 32) + 4096);
  producer.setFilePath(path);
  EXPECT_EQ(producer.fileSize().frames(), 2U);
  prepare(path);
  EXPECT_EQ(request(10000).size(), 4096U);
}

TEST_F(ProducerTest, BetweenTwoAndFourGibibytesTheLengthIsNonsenseAndTheDeliveryIsNot) {
  const std::string path = makeFile(0);
  constexpr uintmax_t kSize = (uintmax_t{3} << 30) + 4096;
  std::filesystem::resize_file(path, kSize);
  producer.setFilePath(path);
  // The size is read as a signed number; it is negative here.
  EXPECT_EQ(producer.fileSize().frames(),
            static_cast<uint32_t>(-static_cast<int64_t>((uintmax_t{1} << 30) - 4096) / 2048));
  prepare(path);
  EXPECT_EQ(request(10000).size(), 10000U);
  EXPECT_EQ(request(10000).size(), 10000U) << "not the end of a pass";
}

TEST_F(ProducerTest, CleaningUpClosesTheFileAndMayHappenTwice) {
  const auto openDescriptors = [] {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::distance(begin(all), end(all));
  };
  const auto before = openDescriptors();
  prepare(makeFile(5000));
  EXPECT_EQ(openDescriptors(), before + 1);
  producer.cleanupTrackAfterBurn(nullptr);
  EXPECT_EQ(openDescriptors(), before);
  producer.cleanupTrackAfterBurn(nullptr);
}

TEST_F(ProducerTest, AllThatIsReadIsDroppedFromTheSystemsCacheInEachPass) {
  constexpr size_t kBytes = (3 << 20) + 700;
  prepare(makeFile(kBytes));
  droppedRanges.clear();
  for (size_t at = 0; at < kBytes; at += 2048) request(2048);
  request(2048);  // The first of the second pass.
  EXPECT_EQ(droppedFrom0(), off_t{kBytes});

  droppedRanges.clear();
  for (size_t at = 2048; at < kBytes; at += 2048) request(2048);
  producer.cleanupTrackAfterBurn(nullptr);
  EXPECT_EQ(droppedFrom0(), off_t{kBytes});
}

TEST_F(ProducerTest, DroppingDoesNotTakeACallForEachBlock) {
  constexpr size_t kBytes = 4 << 20;
  prepare(makeFile(kBytes));
  droppedRanges.clear();
  for (size_t at = 0; at < kBytes; at += 2048) request(2048);
  producer.cleanupTrackAfterBurn(nullptr);
  EXPECT_LE(droppedRanges.size(), 8U);
}

}  // namespace
}  // namespace kelvane
