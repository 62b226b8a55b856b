// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/recording/dr_device.h"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>
#include <typeinfo>

#include "platform/recording/file_lock.h"
#include "recording/burner_fixture.h"

namespace kelvane {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using virtualdrive::EjectManner;
using virtualdrive::MediumKind;

class DRDeviceTest : public testing::BurnerFixture {
 protected:
  std::optional<int64_t> startOf(const DRDevice& device, size_t position) {
    const auto media = device.status().DRDeviceMediaInfoKey;
    return media->DRDeviceTrackInfoKey.at(media->DRDeviceTrackRefsKey.at(position))
        .DRTrackStartAddressKey;
  }
  /// An image that readers take for a volume.
  std::string makeVolume(const std::string& name) {
    const std::string path = makeImage(name, 300 * 2048);
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(16 * 2048);
    file << "\1CD001";
    return path;
  }
};

TEST_F(DRDeviceTest, ABlankDiscHasTheOpenTrackAlone) {
  DRDevice* device = addDrive();
  EXPECT_TRUE(device->isValid());
  EXPECT_TRUE(device->writesCD());
  EXPECT_TRUE(device->mediaIsPresent());
  EXPECT_TRUE(device->mediaIsBlank());
  EXPECT_TRUE(device->mediaIsAppendable());
  EXPECT_FALSE(device->mediaIsTransitioning());
  EXPECT_FALSE(device->mediaIsBusy());
  EXPECT_EQ(device->mediaType(), DRDeviceMediaTypeCDR);
  EXPECT_THAT(device->status().DRDeviceMediaInfoKey->DRDeviceTrackRefsKey, ElementsAre(1));
  EXPECT_EQ(startOf(*device, 0), 0);
  EXPECT_EQ(device->status().DRDeviceMediaInfoKey->DRDeviceMediaSessionCountKey, 0U);
  EXPECT_GT(device->status().DRDeviceMediaInfoKey->DRDeviceMediaBlocksFreeKey, 300000);
}

TEST_F(DRDeviceTest, TheOpenTrackStartsWhereTheNextSessionMay) {
  DRDevice* device = addDrive();
  ASSERT_EQ(burn(device, makeImage("first.iso", 300 * 2048)).DRStatusStateKey, DRStatusStateDone);
  EXPECT_THAT(device->status().DRDeviceMediaInfoKey->DRDeviceTrackRefsKey, ElementsAre(1, 2));
  // 300 blocks and their run-out, then lead-out and lead-in.
  EXPECT_EQ(startOf(*device, 0), 0);
  EXPECT_EQ(startOf(*device, 1), 11702);
  ASSERT_EQ(burn(device, makeImage("second.iso", 300 * 2048)).DRStatusStateKey, DRStatusStateDone);
  EXPECT_THAT(device->status().DRDeviceMediaInfoKey->DRDeviceTrackRefsKey, ElementsAre(1, 2, 3));
  EXPECT_EQ(startOf(*device, 1), 11702);
  EXPECT_EQ(startOf(*device, 2), 11702 + 302 + 6900);
}

TEST_F(DRDeviceTest, ASessionWithoutAVolumeIsLeftOutWhereAnEarlierOneHasOne) {
  DRDevice* device = addDrive();
  const auto burnAll = [&](const std::vector<std::string>& images) {
    for (const std::string& image : images) {
      ASSERT_EQ(burn(device, image).DRStatusStateKey, DRStatusStateDone);
    }
  };
  burnAll({makeVolume("first.iso"), makeVolume("second.iso")});
  EXPECT_THAT(device->status().DRDeviceMediaInfoKey->DRDeviceTrackRefsKey, ElementsAre(1, 2, 3));
  burnAll({makeImage("broken.iso", 300 * 2048)});
  EXPECT_THAT(device->status().DRDeviceMediaInfoKey->DRDeviceTrackRefsKey, ElementsAre(1, 2, 4));
  EXPECT_EQ(device->status().DRDeviceMediaInfoKey->DRDeviceMediaSessionCountKey, 2U);
  burnAll({makeVolume("fourth.iso")});
  EXPECT_THAT(device->status().DRDeviceMediaInfoKey->DRDeviceTrackRefsKey,
              ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(DRDeviceTest, ADiscIsToldFromOthersUntilItIsWrittenTo) {
  DRDevice* device = addDrive();
  DRDevice* other = addDrive();
  EXPECT_EQ(device->mediaIdentity(), other->mediaIdentity()) << "blank discs are all alike";
  ASSERT_EQ(burn(device, makeVolume("first.iso")).DRStatusStateKey, DRStatusStateDone);
  const std::string first = device->mediaIdentity();
  EXPECT_NE(first, other->mediaIdentity());
  EXPECT_TRUE(device->ejectMedia());
  EXPECT_EQ(device->mediaIdentity(), "");
  EXPECT_TRUE(device->loadMedia());
  EXPECT_EQ(device->mediaIdentity(), first);
  ASSERT_EQ(burn(device, makeVolume("second.iso")).DRStatusStateKey, DRStatusStateDone);
  EXPECT_NE(device->mediaIdentity(), first);
}

TEST_F(DRDeviceTest, DiscsOfTheSameFormAreToldByTheirVolumes) {
  const std::string one = makeVolume("one.iso");
  const std::string other = makeVolume("other.iso");
  std::fstream file(other, std::ios::binary | std::ios::in | std::ios::out);
  file.seekp(16 * 2048 + 40);
  file << "ANOTHER NAME";
  file.close();
  DRDevice* drives[] = {addDrive(), addDrive()};
  ASSERT_EQ(burn(drives[0], one).DRStatusStateKey, DRStatusStateDone);
  ASSERT_EQ(burn(drives[1], other).DRStatusStateKey, DRStatusStateDone);
  EXPECT_NE(drives[0]->mediaIdentity(), drives[1]->mediaIdentity());
}

TEST_F(DRDeviceTest, AClosedDiscHasNoOpenTrackAndCannotBeAppendedTo) {
  DRDevice* device = addDrive();
  const auto burn = makeBurn(device);
  burn->setAppendable(false);
  burn->writeLayout(makeTrack(makeImage("only.iso", 300 * 2048)));
  ASSERT_EQ(waitForEnd(*burn).DRStatusStateKey, DRStatusStateDone);
  EXPECT_TRUE(device->mediaIsPresent());
  EXPECT_FALSE(device->mediaIsBlank());
  EXPECT_FALSE(device->mediaIsAppendable());
  EXPECT_THAT(device->status().DRDeviceMediaInfoKey->DRDeviceTrackRefsKey, ElementsAre(1));
  EXPECT_EQ(device->status().DRDeviceMediaInfoKey->DRDeviceMediaSessionCountKey, 1U);
}

TEST_F(DRDeviceTest, ARewritableDiscIsOneOfItsOwnType) {
  EXPECT_EQ(addDrive(MediumKind::CdRw)->mediaType(), DRDeviceMediaTypeCDRW);
}

TEST_F(DRDeviceTest, TheTypesShareTheirFirst17Characters) {
  for (const char* type :
       {DRDeviceMediaTypeCDR, DRDeviceMediaTypeCDRW, DRDeviceMediaTypeDVDR, DRDeviceMediaTypeDVDRW,
        DRDeviceMediaTypeDVDPlusRW, DRDeviceMediaTypeDVDPlusR, DRDeviceMediaTypeBDRE}) {
    EXPECT_EQ(std::string(type).substr(0, kMediaTypePrefixLength), "DRDeviceMediaType");
  }
  EXPECT_EQ(std::string(DRDeviceMediaTypeDVDPlusRW).substr(kMediaTypePrefixLength), "DVDPlusRW");
}

TEST_F(DRDeviceTest, WithItsTrayOpenADriveHasNoDiscButIsStillThere) {
  DRDevice* device = addDrive();
  EXPECT_TRUE(device->ejectMedia());
  EXPECT_FALSE(open(*device->emulatedDisc()).mediaLoaded());
  EXPECT_TRUE(device->isValid());
  EXPECT_FALSE(device->mediaIsPresent());
  EXPECT_FALSE(device->mediaIsBlank());
  EXPECT_FALSE(device->mediaType());
  EXPECT_FALSE(device->status().DRDeviceMediaInfoKey);
  EXPECT_TRUE(device->writesCD());
  EXPECT_TRUE(device->loadMedia());
  EXPECT_TRUE(device->mediaIsPresent());
}

TEST_F(DRDeviceTest, ATrayThatAProgramHasLockedOpensAllTheSame) {
  DRDevice* device = addDrive();
  const std::vector<uint8_t> prevent{0x1E, 0, 0, 0, 1, 0};
  ASSERT_TRUE(device->mediaIsPresent());
  ASSERT_TRUE(open(*device->emulatedDisc()).execute(prevent, {}, {}).good());
  EXPECT_TRUE(device->ejectMedia());
  EXPECT_FALSE(device->mediaIsPresent());
}

TEST_F(DRDeviceTest, AFolderThatIsRemovedTakesTheDriveWithIt) {
  DRDevice* device = addDrive();
  std::filesystem::remove_all(*device->emulatedDisc());
  EXPECT_FALSE(device->isValid());
  EXPECT_FALSE(device->mediaIsPresent());
  EXPECT_FALSE(device->mediaIsBusy());
  EXPECT_FALSE(device->ejectMedia());
  EXPECT_FALSE(device->acquireExclusiveAccess());
  EXPECT_FALSE(device->status().DRDeviceMediaInfoKey);
}

TEST_F(DRDeviceTest, EveryDriveIsOfTheOneClass) {
  const DRDevice* device = addDrive();
  EXPECT_EQ(typeid(*device), typeid(DRDevice));
}

TEST_F(DRDeviceTest, EmulatedDrivesAreNamedInTheOrderInWhichTheyCame) {
  const DRDevice* first = addDrive();
  const DRDevice* second = addDrive();
  EXPECT_EQ(first->bsdName(), "kv0");
  EXPECT_EQ(second->bsdName(), "kv1");
  EXPECT_THAT(first->ioRegistryEntryPath(), EndsWith("/kv0"));
  EXPECT_FALSE(first->displayName().empty());
  EXPECT_THAT(DRDevice::devices(), ElementsAre(first, second));
  EXPECT_EQ(std::string(getenv("KELVANEFS_EMULATED_DRIVES")),
            "kv0=" + *first->emulatedDisc() + "\nkv1=" + *second->emulatedDisc() + "\n");
}

TEST_F(DRDeviceTest, AddingADriveClosesItsTray) {
  const std::string disc = makeDisc("disc");
  std::string error;
  ASSERT_TRUE(open(disc).ejectDisc(EjectManner::Button, &error));
  EXPECT_TRUE(insert(disc)->mediaIsPresent());
}

TEST_F(DRDeviceTest, WhatIsNoDiscIsRefusedWithAReason) {
  DriveRegistry& registry = DriveRegistry::shared();
  std::string error;
  EXPECT_EQ(registry.addEmulatedDrive(folder.file("nothing.kvdisc"), &error), nullptr);
  EXPECT_THAT(error, HasSubstr("nothing.kvdisc"));
  std::filesystem::create_directory(folder.file("empty.kvdisc"));
  error.clear();
  EXPECT_EQ(registry.addEmulatedDrive(folder.file("empty.kvdisc"), &error), nullptr);
  EXPECT_FALSE(error.empty());
  EXPECT_THAT(DRDevice::devices(), IsEmpty());
}

TEST_F(DRDeviceTest, OneDiscCannotBeInTwoDrivesHoweverItIsWritten) {
  const DRDevice* device = addDrive();
  std::string error;
  const std::string disc = *device->emulatedDisc();
  std::filesystem::create_directory_symlink(disc, folder.file("link.kvdisc"));
  for (const std::string& path : {disc, disc + "/", folder.file("link.kvdisc")}) {
    EXPECT_EQ(DriveRegistry::shared().addEmulatedDrive(path, &error), nullptr) << path;
    EXPECT_THAT(error, HasSubstr("in a drive already"));
  }
}

TEST_F(DRDeviceTest, OfTheMachineIsNotFoundUnderANameThatIsNoOpticalDrive) {
  for (const std::string path : {"/dev/null", "/dev/sr987", "/dev/", "/dev/../tmp/sr0"}) {
    std::string error;
    EXPECT_EQ(DriveRegistry::shared().addRealDrive(path, &error), nullptr) << path;
    EXPECT_EQ(error, path + " is no optical drive.");
  }
  EXPECT_TRUE(DriveRegistry::shared().devices().empty());
}

TEST_F(DRDeviceTest, ExclusiveAccessKeepsOthersOutUntilItIsReleased) {
  DRDevice* device = addDrive();
  constexpr std::chrono::milliseconds kNoPatience{0};
  EXPECT_TRUE(device->acquireExclusiveAccess());
  EXPECT_TRUE(device->acquireExclusiveAccess());
  EXPECT_FALSE(FileLock::acquire(*device->emulatedDisc(), kNoPatience));
  EXPECT_FALSE(device->mediaIsBusy());
  device->releaseExclusiveAccess();
  const auto foreign = FileLock::acquire(*device->emulatedDisc(), kNoPatience);
  EXPECT_TRUE(foreign);
  EXPECT_FALSE(device->acquireExclusiveAccess());
}

TEST_F(DRDeviceTest, WhileARecordingRunsTheDriveIsBusyAndTheAnswersStayAsTheyWere) {
  DRDevice* device = addDrive();
  device->beginRecording();
  EXPECT_TRUE(device->mediaIsBusy());
  std::string error;
  ASSERT_TRUE(open(*device->emulatedDisc()).ejectDisc(EjectManner::Needle, &error));
  EXPECT_TRUE(device->mediaIsPresent());
  EXPECT_TRUE(device->status().DRDeviceMediaInfoKey);
  EXPECT_FALSE(device->ejectMedia());
  device->endRecording();
  EXPECT_FALSE(device->mediaIsBusy());
  EXPECT_FALSE(device->mediaIsPresent());
}

TEST_F(DRDeviceTest, ARecorderOfAnotherProcessMakesTheDriveBusyToo) {
  DRDevice* device = addDrive();
  const auto recorder =
      FileLock::acquire(*device->emulatedDisc() + "/sectors", std::chrono::milliseconds(0));
  EXPECT_TRUE(device->mediaIsBusy());
}

TEST_F(DRDeviceTest, AnswersFromSeveralThreadsAtOnce) {
  DRDevice* device = addDrive();
  std::vector<std::thread> threads;
  std::atomic<int> rightAnswers{0};
  for (int number = 0; number < 4; ++number) {
    threads.emplace_back([device, &rightAnswers] {
      for (int round = 0; round < 25; ++round) {
        if (device->mediaIsPresent() && device->status().DRDeviceMediaInfoKey) ++rightAnswers;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(rightAnswers, 100);
}

TEST_F(DRDeviceTest, WhoCannotAskForTheDiscDoesNotTakeItForGone) {
  DRDevice* device = addDrive();
  ASSERT_TRUE(device->mediaIsPresent());
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit none{0, before.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const bool isPresent = device->mediaIsPresent();
  const std::optional<std::string> type = device->mediaType();
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_TRUE(isPresent) << "the changes of its volume would be thrown away";
  EXPECT_EQ(type, DRDeviceMediaTypeCDR);
  EXPECT_TRUE(device->ejectMedia());
  EXPECT_FALSE(device->mediaIsPresent());
}

TEST_F(DRDeviceTest, ADamagedDescriptionIsADriveWithoutADisc) {
  DRDevice* device = addDrive();
  std::ofstream(*device->emulatedDisc() + "/disc.json") << "{ no longer a disc";
  EXPECT_FALSE(device->mediaIsBlank());
  EXPECT_FALSE(device->mediaIsAppendable());
  EXPECT_FALSE(device->status().DRDeviceMediaInfoKey);
}

}  // namespace
}  // namespace kelvane
