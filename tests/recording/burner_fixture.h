// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "foundation/temporary_folder.h"
#include "platform/recording/dr_burn.h"
#include "platform/recording/dr_device.h"
#include "platform/recording/dr_erase.h"
#include "platform/recording/drive_registry.h"
#include "recording/event_loop.h"
#include "virtualdrive/virtual_drive.h"

namespace kelvane::testing {

/// Emulated drives with blank discs, the recorder of this build, and images to burn.
class BurnerFixture : public ::testing::Test {
 protected:
  BurnerFixture();
  ~BurnerFixture() override;

  /// Makes a blank disc; gives its folder.
  std::string makeDisc(const std::string& name,
                       virtualdrive::MediumKind medium = virtualdrive::MediumKind::CdR,
                       virtualdrive::Lba capacity = virtualdrive::kDefaultCdCapacity);
  /// A drive with a new blank CD-R.
  DRDevice* addDrive(virtualdrive::MediumKind medium = virtualdrive::MediumKind::CdR,
                     virtualdrive::Lba capacity = virtualdrive::kDefaultCdCapacity);
  /// A drive with a disc made by the tool: `media` as it names them, with one session of one
  /// file.
  DRDevice* addPreparedDrive(const std::string& media, size_t fileBytes = 1);
  DRDevice* insert(const std::string& disc);
  virtualdrive::VirtualDrive open(const std::string& disc);

  /// A file of that many bytes, which differ from block to block and from seed to seed.
  std::string makeImage(const std::string& name, size_t bytes, unsigned seed = 1);

  /// A burn of the image that leaves the disc open, not started yet.
  std::unique_ptr<DRBurn> makeBurn(DRDevice* device);
  std::unique_ptr<DRTrack> makeTrack(const std::string& image);
  /// Burns the image and gives the last status.
  DRBurnStatus burn(DRDevice* device, const std::string& image);
  DRBurnStatus waitForEnd(DRBurn& burn);
  DREraseStatus waitForEnd(DRErase& erase);
  /// Writes the beginning of a session and leaves it at that, as a recorder does that is killed.
  void leaveASessionUnfinished(DRDevice* device);
  /// All that the disc's folder says of it and holds.
  std::string stateOf(const DRDevice* device);

  /// Why the burn failed.
  static std::string errorOf(const DRBurnStatus& status);
  /// Where the drive would begin the next session.
  static size_t nextAddress(const DRDevice* device);

  /// The content of that many blocks of the disc.
  std::string blocksOf(const std::string& disc, size_t first, size_t count);
  std::string contentOf(const std::string& file);

  EventLoop loop;
  TemporaryFolder folder;
};

}  // namespace kelvane::testing
