// SPDX-License-Identifier: GPL-2.0-or-later
// Discs in real drives are the desktop's to mount; here a service of the test's own stands for it.
#include <filesystem>

#include "desktop/desktop_fixture.h"
#include "desktop/fake_disc_service.h"
#include "platform/volumes/mount_table.h"
#include "platform/volumes/visible_mounts.h"
#include "volumes/disc_fixture.h"
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

  /// Brings the mount up to date, and lets the service answer on this thread.
  void updateByTheService() {
    mounts_.update(drive_);
    turnUntil([this] { return !service_.calls.empty(); });
    mounts_.unmountAllOf("sr99");
  }

  /// Brings the mount up to date, for which nobody needs to be asked.
  void updateQuietly() {
    mounts_.update(drive_);
    mounts_.unmountAllOf("sr99");
    turn();
    EXPECT_THAT(service_.calls, IsEmpty());
  }

  TemporaryPrefix prefix_;
  FakeDiscService service_{bus_.services(), "sr99"};
  FakeDevice drive_{"sr99"};
  VisibleMounts mounts_;
};

TEST_F(VisibleMountsOfRealDrives, TheDesktopIsAskedToMountADiscThatNobodyHasMounted) {
  updateByTheService();
  EXPECT_THAT(service_.calls, ElementsAre("Mount quietly"));
}

TEST_F(VisibleMountsOfRealDrives, ADiscThatIsOpenIsNotMountedBehindItsBack) {
  mounts_.hold("sr99");
  updateQuietly();
}

TEST_F(VisibleMountsOfRealDrives, ThereIsNothingToMountOfABlankDiscAndOfNone) {
  drive_.blank = true;
  updateQuietly();
  drive_.blank = false;
  drive_.present = false;
  updateQuietly();
  drive_.present = true;
  drive_.setTracks({});
  updateQuietly();
}

TEST_F(VisibleMountsOfRealDrives, ADiscThatIsComingOrBeingWrittenIsLeftAlone) {
  drive_.transitioning = true;
  updateQuietly();
  drive_.transitioning = false;
  drive_.busy = true;
  updateQuietly();
}

TEST_F(VisibleMountsOfRealDrives, WithoutAVolumeThatCanBeReadNothingIsMountedAndNothingIsLeft) {
  service_.error = "org.freedesktop.UDisks2.Error.NotAuthorized";
  updateByTheService();
  EXPECT_THAT(service_.calls, ElementsAre("Mount quietly"));
  EXPECT_TRUE(std::filesystem::is_empty(prefix_.volumes()));
}

/// A disc in a drive that counts as a real one, and a desktop that does not mount it. No other test
/// mounts from a drive of that name: a disc that others have mounted is left to them.
class VisibleMountsBesideARefusingDesktop : public DiscFixture {
 protected:
  void SetUp() override {
    DiscFixture::SetUp();
    if (IsSkipped()) return;
    makeDisc("kv2", "DISC");
    drive_.setTracks({0, 11702});
    drive_.present = true;
    service_.error = "org.freedesktop.UDisks2.Error.NotAuthorized";
  }

  int argc_ = 1;
  char name_[5] = "test";
  char* argv_[2] = {name_, nullptr};
  QCoreApplication application_{argc_, argv_};
  PrivateBus bus_;
  FakeDiscService service_{bus_.services(), "kv2"};
  FakeDevice drive_{"kv2"};
  VisibleMounts mounts_{[this] { return std::vector<DRDevice*>{&drive_}; }};
};

// The service answers on the thread that has asked for the mount: if that waited for the answer, it
// would never come.
TEST_F(VisibleMountsBesideARefusingDesktop, NobodyWaitsForItsAnswer) {
  mounts_.update(drive_);
  turnUntil([this] { return isMountPoint(prefix_.volumes() + "/DISC"); });
  EXPECT_THAT(service_.calls, ElementsAre("Mount quietly"));
}

TEST_F(VisibleMountsBesideARefusingDesktop,
       ADiscThatGoesWhileItIsBeingMountedIsUnmountedBehindThat) {
  mounts_.update(drive_);
  drive_.present = false;
  mounts_.update(drive_);
  const size_t questions = drive_.questions.size();
  turnUntil([this, questions] { return drive_.questions.size() > questions; });
  EXPECT_THAT(service_.calls, ElementsAre("Mount quietly"));
  EXPECT_TRUE(std::filesystem::is_empty(prefix_.volumes()));
}

// A disc that cannot be mounted would otherwise be tried twice, since an insertion leads to a scan.
TEST_F(VisibleMountsBesideARefusingDesktop, AScanDoesNotLookAtADriveWhoseDiscIsBeingMounted) {
  mounts_.updateAll();
  const std::vector<std::string> questions = drive_.questions;
  mounts_.updateAll();
  EXPECT_EQ(drive_.questions, questions);
  turnUntil([this] { return isMountPoint(prefix_.volumes() + "/DISC"); });
}

}  // namespace
}  // namespace kelvane::test
