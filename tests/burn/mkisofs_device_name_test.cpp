// SPDX-License-Identifier: GPL-2.0-or-later
#include "burn/mkisofs_device_name.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/recording/dr_device.h"

namespace kelvane {
namespace {

// A drive that has nothing but a registry path.
class NamedDrive : public DRDevice {
 public:
  explicit NamedDrive(std::string registryPath) : registryPath_(std::move(registryPath)) {}
  std::string ioRegistryEntryPath() const override { return registryPath_; }

 private:
  std::string registryPath_;
};

TEST(MkisofsDeviceName, IsTheLastComponentOfTheRegistryPath) {
  NamedDrive drive("/sys/devices/pci0/block/sr0");
  DRDevice* const devices[] = {&drive};
  EXPECT_EQ(mkisofsDeviceName(drive, devices), "sr0");
}

TEST(MkisofsDeviceName, DrivesThatShareANameCountInTheOrderOfTheirPaths) {
  NamedDrive first("/a/burner");
  NamedDrive second("/b/burner");
  NamedDrive third("/c/burner");
  // The order in which the drives are listed does not matter.
  DRDevice* const devices[] = {&third, &first, &second};
  EXPECT_EQ(mkisofsDeviceName(first, devices), "burner");
  EXPECT_EQ(mkisofsDeviceName(second, devices), "burner/2");
  EXPECT_EQ(mkisofsDeviceName(third, devices), "burner/3");
}

TEST(MkisofsDeviceName, DrivesOfAnotherNameDoNotCount) {
  NamedDrive other("/a/aaa");
  NamedDrive first("/z/burner");
  NamedDrive longer("/a/burner2");
  NamedDrive second("/zz/burner");
  DRDevice* const devices[] = {&second, &longer, &other, &first};
  EXPECT_EQ(mkisofsDeviceName(other, devices), "aaa");
  EXPECT_EQ(mkisofsDeviceName(longer, devices), "burner2");
  EXPECT_EQ(mkisofsDeviceName(first, devices), "burner");
  EXPECT_EQ(mkisofsDeviceName(second, devices), "burner/2");
}

TEST(MkisofsDeviceName, ADriveThatIsNoLongerListedHasItsBareName) {
  NamedDrive gone("/b/burner");
  NamedDrive other("/a/burner");
  DRDevice* const devices[] = {&other};
  EXPECT_EQ(mkisofsDeviceName(gone, devices), "burner");
}

}  // namespace
}  // namespace kelvane
