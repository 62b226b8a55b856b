// SPDX-License-Identifier: GPL-2.0-or-later
//
// Sessions built by mkisofs and burned here, read back by programs that were not written here.
#include <gmock/gmock.h>

#include <QProcess>
#include <filesystem>
#include <fstream>

#include "platform/recording/dr_burn.h"
#include "recording/burner_fixture.h"

namespace kelvane {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class SessionReadbackTest : public testing::BurnerFixture {
 protected:
  struct Output {
    int exitStatus;
    std::string text;
  };

  Output run(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForFinished(-1)) << program.toStdString();
    return {process.exitCode(), process.readAll().toStdString()};
  }

  void writeFile(const std::string& path, const std::string& content) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << content;
  }

  // Builds an image of the folder that continues the disc's last session, if it has one.
  std::string buildImage(DRDevice* device, const std::string& source) {
    const std::string image = folder.file("session.iso");
    QStringList arguments{"-quiet",   "-D",           "-r",
                          "-J",       "-joliet-long", "-V",
                          "READBACK", "-o",           QString::fromStdString(image)};
    const auto media = *device->status().DRDeviceMediaInfoKey;
    const auto& tracks = media.DRDeviceTrackRefsKey;
    if (tracks.size() > 1) {
      const auto start = [&media](DRTrackReference track) {
        return QString::number(*media.DRDeviceTrackInfoKey.at(track).DRTrackStartAddressKey);
      };
      arguments << "-M" << QString::fromStdString(*device->emulatedDisc() + "/sectors") << "-C"
                << start(tracks[tracks.size() - 2]) + "," + start(tracks.back());
    }
    arguments << QString::fromStdString(source);
    const Output output = run("genisoimage", arguments);
    EXPECT_EQ(output.exitStatus, 0) << output.text;
    return image;
  }

  // What xorriso finds in the session that begins there.
  std::string listing(DRDevice* device, size_t sessionStart) {
    return run("xorriso", {"-load", "sbsector", QString::number(sessionStart), "-indev",
                           "stdio:" + sectors(device), "-find", "/", "-exec", "report_lba"})
        .text;
  }

  std::string extracted(DRDevice* device, size_t sessionStart, const QString& path) {
    const std::string file = folder.file("extracted");
    std::filesystem::remove(file);
    run("xorriso", {"-osirrox", "on", "-load", "sbsector", QString::number(sessionStart), "-indev",
                    "stdio:" + sectors(device), "-extract", path, QString::fromStdString(file)});
    return contentOf(file);
  }

  static QString sectors(DRDevice* device) {
    return QString::fromStdString(*device->emulatedDisc() + "/sectors");
  }
};

TEST_F(SessionReadbackTest, TwoSessionsReadBackAsTheyWereBuilt) {
  DRDevice* device = addDrive();
  writeFile(folder.file("one/stays.txt"), "from the first session");
  writeFile(folder.file("one/changes.txt"), "before");
  const std::string firstImage = buildImage(device, folder.file("one"));
  ASSERT_EQ(burn(device, firstImage).DRStatusStateKey, DRStatusStateDone);

  const size_t second = nextAddress(device);
  writeFile(folder.file("two/changes.txt"), "after");
  writeFile(folder.file("two/new/large.bin"), std::string(3'000'001, 'x'));
  const DRBurnStatus status = burn(device, buildImage(device, folder.file("two")));
  ASSERT_EQ(status.DRStatusStateKey, DRStatusStateDone) << errorOf(status);

  EXPECT_EQ(extracted(device, second, "/stays.txt"), "from the first session");
  EXPECT_EQ(extracted(device, second, "/changes.txt"), "after");
  EXPECT_EQ(extracted(device, second, "/new/large.bin"), std::string(3'000'001, 'x'));
  EXPECT_EQ(extracted(device, 0, "/changes.txt"), "before");
  EXPECT_THAT(listing(device, 0), Not(HasSubstr("large.bin")));

  const Output names =
      run("isoinfo", {"-R", "-f", "-T", QString::number(second), "-i", sectors(device)});
  EXPECT_THAT(names.text, HasSubstr("/new/large.bin\n"));
  EXPECT_THAT(names.text, HasSubstr("/stays.txt\n"));
}

TEST_F(SessionReadbackTest, AnotherBurningProgramAppendsToADiscThatWasWrittenHere) {
  DRDevice* device = addDrive();
  writeFile(folder.file("one/ours.txt"), "ours");
  ASSERT_EQ(burn(device, buildImage(device, folder.file("one"))).DRStatusStateKey,
            DRStatusStateDone);
  writeFile(folder.file("two/theirs.txt"), "theirs");
  const size_t second = nextAddress(device);
  const std::string image = buildImage(device, folder.file("two"));
  const QString disc = QString::fromStdString(*device->emulatedDisc());
  const Output output =
      run(KELVANE_BIN_DIR "/kelvanedisc", {"run", disc, "--", "cdrskin", "-v", "dev=/dev/sr0",
                                           "-multi", "-tao", QString::fromStdString(image)});
  ASSERT_EQ(output.exitStatus, 0) << output.text;
  EXPECT_EQ(extracted(device, second, "/theirs.txt"), "theirs");

  const size_t third = nextAddress(device);
  EXPECT_GT(third, second);
  writeFile(folder.file("three/again.txt"), "ours again");
  const DRBurnStatus status = burn(device, buildImage(device, folder.file("three")));
  ASSERT_EQ(status.DRStatusStateKey, DRStatusStateDone) << errorOf(status);
  EXPECT_EQ(extracted(device, third, "/ours.txt"), "ours");
  EXPECT_EQ(extracted(device, third, "/theirs.txt"), "theirs");
  EXPECT_EQ(extracted(device, third, "/again.txt"), "ours again");
}

}  // namespace
}  // namespace kelvane
