// SPDX-License-Identifier: GPL-2.0-or-later
#include "app/disc_volumes.h"

#include <gmock/gmock.h>

#include "media/fake_volume_services.h"
#include "platform/volumes/unmount.h"
#include "volumes/fake_device.h"

namespace kelvane::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A mount table from which a volume goes when it is unmounted.
class ChangingVolumes : public FakeVolumeServices {
 public:
  int unmountVolumeSync(const std::string& volume) override {
    const int status = FakeVolumeServices::unmountVolumeSync(volume);
    if (status == kUnmountDone) std::erase(visible, volume);
    return status;
  }
};

class DiscVolumes : public testing::Test {
 protected:
  std::optional<std::string> unmountAll() {
    return unmountVisibleVolumes(device_, volumes_, [this](std::chrono::milliseconds) { ++naps_; });
  }

  FakeDevice device_{"kv1"};
  ChangingVolumes volumes_;
  int naps_ = 0;
};

TEST_F(DiscVolumes, EveryVolumeOfTheDiscIsUnmountedWhicheverWayItIsNamed) {
  volumes_.addVisible("/Volumes/A", "/dev/kv1s0");
  volumes_.addVisible("/Volumes/B", "/dev/kv1");
  EXPECT_EQ(unmountAll(), std::nullopt);
  EXPECT_THAT(volumes_.unmounted, ElementsAre("/Volumes/A", "/Volumes/B"));
  EXPECT_EQ(naps_, 0);
}

TEST_F(DiscVolumes, VolumesOfOtherDrivesStayAlsoWhereTheirNameBeginsTheSame) {
  volumes_.addVisible("/Volumes/A", "/dev/kv10s0");
  volumes_.addVisible("/Volumes/B", "/dev/kv11");
  volumes_.addVisible("/Volumes/C", "/dev/kv0s0");
  EXPECT_EQ(unmountAll(), std::nullopt);
  EXPECT_THAT(volumes_.unmounted, IsEmpty());
}

TEST_F(DiscVolumes, AVolumeThatIsInUseForAMomentIsTriedAgain) {
  volumes_.addVisible("/Volumes/A", "/dev/kv1s0");
  volumes_.statuses = {kUnmountBusy, kUnmountBusy, kUnmountDone};
  EXPECT_EQ(unmountAll(), std::nullopt);
  EXPECT_EQ(naps_, 2);
}

TEST_F(DiscVolumes, AVolumeThatStaysInUseIsNamed) {
  volumes_.addVisible("/Volumes/A", "/dev/kv1s0");
  volumes_.lastStatus = kUnmountBusy;
  EXPECT_EQ(unmountAll(), "/Volumes/A");
  EXPECT_EQ(volumes_.unmounted.size(), 10u);
}

TEST_F(DiscVolumes, AVolumeThatCannotBeUnmountedForAnotherReasonIsNotTriedAgain) {
  volumes_.addVisible("/Volumes/A", "/dev/kv1s0");
  volumes_.lastStatus = EPERM;
  EXPECT_EQ(unmountAll(), "/Volumes/A");
  EXPECT_EQ(volumes_.unmounted.size(), 1u);
}

TEST_F(DiscVolumes, AMountTableThatNeverChangesDoesNotKeepUsForEver) {
  FakeVolumeServices unchanging;
  unchanging.addVisible("/Volumes/A", "/dev/kv1s0");
  EXPECT_EQ(unmountVisibleVolumes(device_, unchanging, [](std::chrono::milliseconds) {}),
            "/Volumes/A");
}

}  // namespace
}  // namespace kelvane::test
