// SPDX-License-Identifier: GPL-2.0-or-later
// What real runs of growisofs wrote (growisofs_output/README.md), read in pieces of every kind.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "burn/dvd_burn.h"
#include "burn/growisofs_output.h"
#include "burn/growisofs_remarks.h"
#include "recording/event_loop.h"
#include "volumes/fake_device.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Lines = std::vector<std::string>;

std::string recording(const std::string& name) {
  std::ifstream file(KELVANE_SOURCE_DIR "/tests/burn/growisofs_output/" + name + ".txt",
                     std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The pieces between line feeds, the one after the last among them.
Lines split(const std::string& text) {
  Lines pieces(1);
  for (const char character : text) {
    if (character == '\n') {
      pieces.emplace_back();
    } else {
      pieces.back() += character;
    }
  }
  return pieces;
}

std::string textOfLatin1(const std::string& bytes) {
  std::string text;
  for (const char byte : bytes) {
    const auto code = static_cast<unsigned char>(byte);
    if (code < 0x80) {
      text += byte;
    } else {
      text += static_cast<char>(0xC0 | (code >> 6));
      text += static_cast<char>(0x80 | (code & 0x3F));
    }
  }
  return text;
}

// The rules once more, step by step and on lists of pieces, as nothing in the application has them.
class Oracle {
 public:
  void take(const std::string& bytes) {
    const std::string chunk = textOfLatin1(bytes);
    const Lines pieces = split(chunk);
    if (chunk.rfind(":-(", 0) == 0) {
      errors.push_back(chunk);
      return;
    }
    if (pieces.size() == 1) {
      incomplete += chunk;
      return;
    }
    const std::string line = pieces[pieces.size() - 2];
    incomplete = pieces.back();
    percent.reset();
    if (line.size() >= 14 && line.compare(6, 6, "% done") == 0) {
      percent = line.substr(0, 3);
    } else if (line.rfind(":-(", 0) == 0) {
      errors.push_back(line);
    }
  }

  Lines errors;
  std::string incomplete;
  std::optional<std::string> percent;
};

class GrowisofsRecordingsTest : public ::testing::TestWithParam<std::string> {
 protected:
  DVDBurnParameters parameters() {
    DVDBurnParameters all;
    all.currentDevice = &device;
    return all;
  }

  void expectAsTheOracle(const Lines& chunks) {
    DVDBurn burn(parameters());
    Oracle oracle;
    for (const std::string& chunk : chunks) {
      burn.processStatus(chunk);
      oracle.take(chunk);
      ASSERT_EQ(burn.percentDoneString(), oracle.percent);
    }
    ASSERT_EQ(burn.burnErrors(), oracle.errors);
    ASSERT_EQ(burn.lastIncompleteStatus(), oracle.incomplete);
  }

  testing::EventLoop loop;
  test::FakeDevice device{"kv0"};
};

TEST_P(GrowisofsRecordingsTest, CutInTwoAnywhereItIsReadByTheRules) {
  const std::string text = recording(GetParam());
  ASSERT_FALSE(text.empty());
  for (size_t cut = 0; cut <= text.size(); ++cut) {
    expectAsTheOracle({text.substr(0, cut), text.substr(cut)});
    if (HasFatalFailure()) FAIL() << "cut at " << cut;
  }
}

TEST_P(GrowisofsRecordingsTest, InPiecesOfAnyLengthItIsReadByTheRules) {
  const std::string text = recording(GetParam());
  for (size_t length = 1; length <= text.size(); ++length) {
    Lines chunks;
    for (size_t begin = 0; begin < text.size(); begin += length) {
      chunks.push_back(text.substr(begin, length));
    }
    expectAsTheOracle(chunks);
    if (HasFatalFailure()) FAIL() << "pieces of " << length;
  }
}

// As growisofs writes it: mostly a line at a time.
TEST_P(GrowisofsRecordingsTest, LineByLineEveryErrorIsRecordedAndEveryPercentageSeen) {
  DVDBurn burn(parameters());
  Lines errors;
  for (const std::string& line : split(recording(GetParam()))) {
    burn.processStatus(line + "\n");
    if (line.rfind(":-(", 0) == 0) errors.push_back(line + "\n");
    const bool tellsProgress = line.find("% done, estimate finish") != std::string::npos;
    if (!tellsProgress) continue;
    EXPECT_EQ(burn.percentDoneString(), line.substr(0, 3));
  }
  EXPECT_EQ(burn.burnErrors(), errors);
}

TEST_P(GrowisofsRecordingsTest, TheRemarksAreTheSameHoweverItIsCut) {
  const std::string text = recording(GetParam());
  GrowisofsRemarks whole;
  whole.take(text);
  whole.end();
  for (size_t cut = 0; cut <= text.size(); ++cut) {
    GrowisofsRemarks cutInTwo;
    cutInTwo.take(std::string_view(text).substr(0, cut));
    cutInTwo.take(std::string_view(text).substr(cut));
    cutInTwo.end();
    ASSERT_EQ(cutInTwo.lines(), whole.lines()) << "cut at " << cut;
  }
}

Lines allRecordings() {
  std::set<std::string> names;
  for (const auto& entry :
       std::filesystem::directory_iterator(KELVANE_SOURCE_DIR "/tests/burn/growisofs_output")) {
    if (entry.path().extension() == ".txt") names.insert(entry.path().stem().string());
  }
  return {names.begin(), names.end()};
}

INSTANTIATE_TEST_SUITE_P(All, GrowisofsRecordingsTest, ::testing::ValuesIn(allRecordings()),
                         [](const auto& recordingName) {
                           std::string name = recordingName.param;
                           std::replace(name.begin(), name.end(), '+', 'p');
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

Lines remarksOf(const std::string& name) {
  GrowisofsRemarks remarks;
  remarks.take(recording(name));
  remarks.end();
  return {remarks.lines().begin(), remarks.lines().end()};
}

TEST(GrowisofsRemarksTest, ABurnWithoutTroubleLeavesNoRemark) {
  for (const char* name : {"dvd+rw-first", "dvd+rw-append", "dvd+rw-append-60-mb", "dvd-rw-first",
                           "dvd-rw-append", "dvd-rw-sequential-first", "dvd-rw-sequential-append",
                           "dvd-r-first", "dvd-r-append", "dvd+rw-append-after-kill"}) {
    EXPECT_THAT(remarksOf(name), IsEmpty()) << name;
  }
}

TEST(GrowisofsRemarksTest, TheFileOrLimitInQuestionIsTold) {
  EXPECT_THAT(remarksOf("name-in-no-encoding"),
              ElementsAre("Incorrectly encoded string (bad\xFFname) encountered.",
                          "Possibly creating an invalid Joliet extension. Aborting.",
                          ":-( /usr/libexec/kelvanefs/mkisofs has failed: 1"));
  EXPECT_EQ(remarksOf("file-of-4-gib").front(), "File big/big is larger than 4GiB-1.");
  EXPECT_THAT(remarksOf("names-equal-in-joliet").front(),
              ::testing::EndsWith("have the same Joliet name"));
  EXPECT_THAT(remarksOf("session-past-4-gb"),
              ElementsAre(":-( next session would cross 4GB boundary, aborting..."));
  EXPECT_EQ(remarksOf("dvd+rw-does-not-fit").front(),
            ":-( /dev/sr0: 25600 blocks are free, 29478 to be written!");
}

// The verdict looks for other marks than these, so these runs may end as a success.
TEST(GrowisofsRemarksTest, WhatTheVerdictMayMissIsThere) {
  EXPECT_THAT(remarksOf("dvd-r-append-after-kill"),
              ElementsAre(":-? resuming track#2 from LBA#45632"));
  EXPECT_THAT(remarksOf("dvd-r-killed"),
              ElementsAre("/usr/bin/genisoimage: Broken pipe. cannot fwrite 32768*1"));
}

TEST(GrowisofsRemarksTest, TheLastOnesAreKeptAndAnUnfinishedLineCounts) {
  GrowisofsRemarks remarks;
  for (int number = 0; number < 100; ++number) {
    remarks.take("remark " + std::to_string(number) + "\n");
  }
  remarks.take("the end");
  remarks.end();
  ASSERT_EQ(remarks.lines().size(), GrowisofsRemarks::kMostLines);
  EXPECT_EQ(remarks.lines().back(), "the end");
  EXPECT_EQ(remarks.lines().front(), "remark 71");
}

TEST(GrowisofsRemarksTest, ALineWithoutAnEndTakesNoMemoryWithoutAnEnd) {
  GrowisofsRemarks remarks;
  for (int piece = 0; piece < 1000; ++piece) remarks.take(std::string(1000, 'x'));
  remarks.end();
  ASSERT_EQ(remarks.lines().size(), 1u);
  EXPECT_LE(remarks.lines().front().size(), 4096u);
}

}  // namespace
}  // namespace kelvane
