// SPDX-License-Identifier: GPL-2.0-or-later
// Discs in real drives are the desktop's to mount; here a service of the test's own stands for it.
#include <atomic>
#include <filesystem>
#include <thread>

#include "desktop/desktop_fixture.h"
#include "desktop/fake_disc_service.h"
#include "platform/volumes/visible_mounts.h"
#include "volumes/fake_device.h"
#include "volumes/temporary_prefix.h"

namespace kelvane::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class VisibleMountsOfRealDrives : public DesktopFixture {
 protected:
  VisibleMountsOfRealDrives() {
    drive_.setTracks({0, 11702});
    drive_.present = true;
  }

  /// Brings the mount up to date, on a thread that waits for the service, which answers here.
  void update() {
    std::atomic<bool> done = false;
    std::thread updating([&] {
      mounts_.update(drive_);
      done = true;
    });
    turnUntil([&done] { return done.load(); });
    updating.join();
  }

  TemporaryPrefix prefix_;
  FakeDiscService service_{bus_.services(), "sr99"};
  FakeDevice drive_{"sr99"};
  VisibleMounts mounts_;
};

TEST_F(VisibleMountsOfRealDrives, TheDesktopIsAskedToMountADiscThatNobodyHasMounted) {
  update();
  EXPECT_THAT(service_.calls, ElementsAre("Mount quietly"));
}

TEST_F(VisibleMountsOfRealDrives, ADiscThatIsOpenIsNotMountedBehindItsBack) {
  mounts_.hold("sr99");
  update();
  EXPECT_THAT(service_.calls, IsEmpty());
}

TEST_F(VisibleMountsOfRealDrives, ThereIsNothingToMountOfABlankDiscAndOfNone) {
  drive_.blank = true;
  update();
  drive_.blank = false;
  drive_.present = false;
  update();
  drive_.present = true;
  drive_.setTracks({});
  update();
  EXPECT_THAT(service_.calls, IsEmpty());
}

TEST_F(VisibleMountsOfRealDrives, ADiscThatIsComingOrBeingWrittenIsLeftAlone) {
  drive_.transitioning = true;
  update();
  drive_.transitioning = false;
  drive_.busy = true;
  update();
  EXPECT_THAT(service_.calls, IsEmpty());
}

TEST_F(VisibleMountsOfRealDrives, WithoutAVolumeThatCanBeReadNothingIsMountedAndNothingIsLeft) {
  service_.error = "org.freedesktop.UDisks2.Error.NotAuthorized";
  update();
  EXPECT_THAT(service_.calls, ElementsAre("Mount quietly"));
  EXPECT_TRUE(std::filesystem::is_empty(prefix_.volumes()));
}

}  // namespace
}  // namespace kelvane::test
