// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/closed_drives.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "app/recording_outlets.h"
#include "foundation/application_fixture.h"
#include "media/recorded_log.h"
#include "platform/recording/dr_notification_center.h"
#include "volumes/fake_device.h"

namespace kelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ClosedDrivesTest : public ApplicationFixture {
 protected:
  static void aDriveChanges() {
    DRNotificationCenter::currentRunLoopCenter().post(DRDeviceStatusChangedNotification, nullptr);
    QCoreApplication::processEvents();
  }

  RecordingOutlets window_;
  RecordedLog log_;
  FakeDevice one_{"sr0"};
  FakeDevice other_{"sr1"};
  std::map<std::string, std::string> reasons_;
  ClosedDrives closed_{window_,
                       [this] {
                         return std::vector<DRDevice*>{&one_, &other_};
                       },
                       [this](const DRDevice& device) { return reasons_[device.bsdName()]; }};
};

TEST_F(ClosedDrivesTest, DrivesThatCanBeUsedAreNoNews) {
  aDriveChanges();
  EXPECT_THAT(window_.calls, IsEmpty());
}

TEST_F(ClosedDrivesTest, ADriveIsToldOfOnceWithItsReason) {
  reasons_["sr1"] = "group cdrom only";
  aDriveChanges();
  aDriveChanges();
  ASSERT_THAT(window_.calls, ElementsAre("alert DriveClosed DriveClosedLong"));
  EXPECT_EQ(window_.alerts[0].detail, "group cdrom only");
  EXPECT_THAT(log_.lines(), ElementsAre("group cdrom only"));
}

TEST_F(ClosedDrivesTest, SeveralDrivesAreToldOfTogether) {
  reasons_ = {{"sr0", "first"}, {"sr1", "second"}};
  aDriveChanges();
  ASSERT_EQ(window_.alerts.size(), 1U);
  EXPECT_EQ(window_.alerts[0].detail, "first\nsecond");
}

TEST_F(ClosedDrivesTest, ADriveThatIsClosedAgainIsNewsAgain) {
  reasons_["sr0"] = "closed";
  aDriveChanges();
  reasons_["sr0"] = "";
  aDriveChanges();
  reasons_["sr0"] = "closed";
  aDriveChanges();
  EXPECT_EQ(window_.alerts.size(), 2U);
}

}  // namespace
}  // namespace kelvane::test
