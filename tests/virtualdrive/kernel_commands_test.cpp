// SPDX-License-Identifier: GPL-2.0-or-later
// What Linux and udev send to a drive by themselves: when it is found, when its disc is mounted,
// and from time to time.
#include "drive_fixture.h"

namespace kelvane::virtualdrive {
namespace {

constexpr std::size_t kCut = 4096;

struct Question {
  const char* purpose;
  Block block;
  Sense sense;
  /// How many bytes the answer has at least.
  std::size_t bytes;
};

class KernelCommands : public DriveTest {
 protected:
  void expectAnswers(const std::vector<Question>& questions) {
    for (const auto& question : questions) {
      SCOPED_TRACE(question.purpose);
      const auto reply = ask(question.block, kCut);
      EXPECT_EQ(reply.sense, question.sense);
      EXPECT_GE(reply.data.size(), question.bytes);
    }
  }
};

TEST_F(KernelCommands, OfADriveThatIsFoundAreAnswered) {
  makeDisc(MediumKind::CdR);
  writeSession(400, 1);
  expectAnswers({
      {"who are you, in short", {0x12, 0, 0, 0, 36, 0}, kGood, 36},
      {"who are you", {0x12, 0, 0, 0, 96, 0}, kGood, 96},
      {"which pages", {0x12, 1, 0x00, 0, 255, 0}, kGood, 7},
      {"serial number", {0x12, 1, 0x80, 0, 255, 0}, kGood, 20},
      {"identification", {0x12, 1, 0x83, 0, 255, 0}, kGood, 24},
      {"block limits", {0x12, 1, 0xB0, 0, 255, 0}, kInvalidFieldInCommand, 0},
      {"ready", {0x00, 0, 0, 0, 0, 0}, kGood, 0},
      {"capabilities", {0x1A, 0, 0x2A, 0, 128, 0}, kGood, 32},
      {"is it a Mount Rainier drive", {0x46, 2, 0, 0x28, 0, 0, 0, 0, 24, 0}, kGood, 8},
      {"can it write anywhere", {0x46, 2, 0, 0x20, 0, 0, 0, 0, 24, 0}, kGood, 8},
      {"last session, as old drives are asked", {0x43, 0, 0, 0, 0, 0, 0, 0, 12, 0x40}, kGood, 12},
      {"table of contents", {0x43, 0, 0, 0, 0, 0, 1, 0, 12, 0}, kGood, 12},
      {"capacity", {0x25, 0, 0, 0, 0, 0, 0, 0, 0, 0}, kGood, 8},
      {"disc information", {0x51, 0, 0, 0, 0, 0, 0, 0, 34, 0}, kGood, 34},
      {"length of track information", {0x52, 1, 0, 0, 0, 1, 0, 0, 8, 0}, kGood, 8},
      {"track information", {0x52, 1, 0, 0, 0, 1, 0, 0, 32, 0}, kGood, 32},
  });
}

TEST_F(KernelCommands, OfAMountAndOfPollingAreAnswered) {
  makeDisc(MediumKind::CdR);
  writeSession(400, 1);
  expectAnswers({
      {"what has happened", {0x4A, 1, 0, 0, 0x10, 0, 0, 0, 8, 0}, kGood, 8},
      {"lock the tray", {0x1E, 0, 0, 0, 1, 0}, kGood, 0},
      {"the volume descriptor", {0x28, 0, 0, 0, 0, 16, 0, 0, 1, 0}, kGood, kSectorBytes},
      {"unlock the tray", {0x1E, 0, 0, 0, 0, 0}, kGood, 0},
  });
}

TEST_F(KernelCommands, ThatAreMeantForDisksAreRefusedAsUnknown) {
  makeDisc(MediumKind::CdR);
  expectAnswers({
      {"ATA PASS-THROUGH (16)", {0x85, 0x08, 0x0E, 0, 0, 0, 1}, kUnknownCommand, 0},
      {"READ CAPACITY (16)", {0x9E, 0x10}, kUnknownCommand, 0},
      {"REPORT SUPPORTED OPERATION CODES", {0xA3, 0x0C}, kUnknownCommand, 0},
      {"WRITE SAME (16)", {0x93}, kUnknownCommand, 0},
  });
}

TEST_F(KernelCommands, OfADriveWithoutADiscSayThatThereIsNone) {
  makeDisc(MediumKind::CdR);
  ASSERT_EQ(send({0x1B, 0, 0, 0, 2, 0}), kGood);
  expectAnswers({
      {"ready", {0x00, 0, 0, 0, 0, 0}, kTrayOpen, 0},
      {"table of contents", {0x43, 0, 0, 0, 0, 0, 1, 0, 12, 0}, kTrayOpen, 0},
      {"capacity", {0x25, 0, 0, 0, 0, 0, 0, 0, 0, 0}, kTrayOpen, 0},
      {"disc information", {0x51, 0, 0, 0, 0, 0, 0, 0, 34, 0}, kTrayOpen, 0},
      {"capabilities", {0x1A, 0, 0x2A, 0, 128, 0}, kGood, 32},
      {"what has happened", {0x4A, 1, 0, 0, 0x10, 0, 0, 0, 8, 0}, kGood, 8},
  });
}

}  // namespace
}  // namespace kelvane::virtualdrive
