// SPDX-License-Identifier: GPL-2.0-or-later
//
// A disc that is being written is written to its end, whatever becomes of the application.
#include <gmock/gmock.h>

#include <QProcess>
#include <csignal>

#include "platform/recording/dr_burn.h"
#include "recording/burner_fixture.h"

namespace kelvane {
namespace {

constexpr size_t kBlock = 2048;
constexpr size_t kBlocks = 30000;

class SurvivingBurnTest : public testing::BurnerFixture {
 protected:
  // Starts a second application that burns the image, and waits until it is writing.
  void startApplication(const std::string& disc, const std::string& image) {
    application.start(BURN_STARTER, {QString::fromStdString(disc), QString::fromStdString(image)});
    ASSERT_TRUE(application.waitForStarted(-1));
    ASSERT_TRUE(loop.runUntil([this] {
      return application.canReadLine() || application.state() == QProcess::NotRunning;
    }));
    ASSERT_EQ(application.readLine().toStdString(), "writing\n");
  }

  QProcess application;
};

TEST_F(SurvivingBurnTest, AnApplicationThatIsKilledDoesNotCostTheDisc) {
  DRDevice* device = addDrive();
  const std::string image = makeImage("image.iso", kBlocks * kBlock);
  startApplication(*device->emulatedDisc(), image);
  application.kill();
  ASSERT_TRUE(application.waitForFinished(-1));
  EXPECT_EQ(application.exitStatus(), QProcess::CrashExit);
  ASSERT_TRUE(loop.runUntil([device] { return !device->mediaIsBusy(); }));
  EXPECT_EQ(device->status().DRDeviceMediaInfoKey->DRDeviceMediaSessionCountKey, 1U);
  EXPECT_TRUE(device->mediaIsAppendable());
  EXPECT_TRUE(blocksOf(*device->emulatedDisc(), 0, kBlocks) == contentOf(image));
}

TEST_F(SurvivingBurnTest, SignalsThatEndOtherProgramsDoNotEndTheRecorder) {
  DRDevice* device = addDrive();
  const std::string image = makeImage("image.iso", kBlocks * kBlock);
  const auto burn = makeBurn(device);
  burn->writeLayout(makeTrack(image));
  ASSERT_TRUE(
      loop.runUntil([&burn] { return burn->status().DRStatusStateKey != DRStatusStatePreparing; }));
  const auto recorder = static_cast<pid_t>(burn->recorderProcessIdentifier());
  EXPECT_EQ(getsid(recorder), recorder);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGQUIT}) {
    ASSERT_EQ(kill(recorder, number), 0);
  }
  const DRBurnStatus status = waitForEnd(*burn);
  ASSERT_EQ(status.DRStatusStateKey, DRStatusStateDone) << errorOf(status);
  EXPECT_TRUE(blocksOf(*device->emulatedDisc(), 0, kBlocks) == contentOf(image));
}

}  // namespace
}  // namespace kelvane
