// SPDX-License-Identifier: GPL-2.0-or-later
// The end of a mounted volume over a disc.
#include <fcntl.h>
#include <unistd.h>

#include "overlayfs/mounted_volume.h"

namespace kelvane::tests {
namespace {

class MountedUnmount : public MountedOverlay {
 protected:
  void SetUp() override {
    MountedOverlay::SetUp();
    if (IsSkipped()) return;
    trees.addDiscFile("/Müller[1].txt", "x");
    trees.addDiscFile("/docs/a", "x");
    mount();
  }
};

TEST_F(MountedUnmount, TheHideListIsCompleteWhenTheUnmountIsAnnounced) {
  sh("rm 'Müller[1].txt' && rm -r docs && echo new > new");
  ASSERT_TRUE(volume->unmountAndWait());
  EXPECT_EQ(contentOf(trees.hideListFile()), trees.overlay() + "/M*ller*1*.txt\n" +
                                                 trees.overlay() + "/docs/a\n" + trees.overlay() +
                                                 "/docs");
  EXPECT_EQ(volume->delegate().localusedbytes(), 4);
  EXPECT_EQ(volume->unmountCount(), 1);
}

TEST_F(MountedUnmount, WithoutChangesTheOverlayStaysEmpty) {
  sh("ls -lR . >/dev/null && cat docs/a");
  ASSERT_TRUE(volume->unmountAndWait());
  EXPECT_TRUE(namesIn(trees.overlay()).empty());
  EXPECT_EQ(contentOf(trees.hideListFile()), "");
}

TEST_F(MountedUnmount, TheProbeFileOfAnOpeningLeavesNothing) {
  sh(": > .kvfsvolume; setfattr -h -n user.dummy .kvfsvolume 2>/dev/null; rm .kvfsvolume");
  ASSERT_TRUE(volume->unmountAndWait());
  EXPECT_TRUE(namesIn(trees.overlay()).empty());
}

TEST_F(MountedUnmount, AFileThatIsStillOpenWhenTheVolumeIsTornAwayIsReleased) {
  const int file = open(at("/new").c_str(), O_RDWR | O_CREAT, 0644);
  ASSERT_GE(file, 0);
  ASSERT_EQ(write(file, "text", 4), 4);
  EXPECT_EQ(volume->fileSystem().unmount(), UnmountResult::Busy);
  EXPECT_EQ(contentOf(at("/new")), "text");
  EXPECT_EQ(volume->fileSystem().unmountLazily(), UnmountResult::Started);
  ASSERT_TRUE(volume->waitForDidUnmount());
  EXPECT_LT(write(file, "more", 4), 0);
  close(file);
  EXPECT_EQ(contentOf(trees.overlay() + "/new"), "text");
  EXPECT_FALSE(exists(volume->path()));
}

}  // namespace
}  // namespace kelvane::tests
