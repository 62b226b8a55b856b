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

TEST_F(MountedUnmount, DeletedNamesOfAllKindsStandInTheHideListAsBytes) {
  const std::vector<std::string> names = {"/Mu\u0308ller", "/\xc3\xff", "/two\nlines",
                                          "/{a}",          "/ÄÖÜẞ",     "/a*b?c\\d"};
  for (const std::string& name : names) trees.addDiscFile("/all kinds" + name, "x");
  for (const std::string& name : names) {
    ASSERT_EQ(unlink(at("/all kinds" + name).c_str()), 0) << name;
  }
  ASSERT_TRUE(volume->unmountAndWait());
  std::string expected;
  for (const char* pattern :
       {"/M*ller", "/\xc3\xff", "/two\nlines", "/*a*", "/****", "/a*b?c\\d"}) {
    if (!expected.empty()) expected += '\n';
    expected += trees.overlay() + "/all kinds" + pattern;
  }
  EXPECT_EQ(contentOf(trees.hideListFile()), expected);
  for (const std::string& name : names) {
    EXPECT_EQ(statusOf(trees.overlay() + "/all kinds" + name).st_size, 0) << name;
  }
}

TEST_F(MountedUnmount, NestedDeletionsLeaveOneEmptyFile) {
  trees.addDiscFile("/one/sub/file", "x");
  sh("rm one/sub/file && rmdir one/sub one");  // From below, as the kernel demands.
  ASSERT_TRUE(volume->unmountAndWait());
  const std::string one = trees.overlay() + "/one";
  EXPECT_EQ(contentOf(trees.hideListFile()), one + "/sub/file\n" + one + "/sub\n" + one);
  EXPECT_TRUE(S_ISREG(statusOf(one).st_mode));
}

TEST_F(MountedUnmount, ADirectoryMovedAwayIsHiddenWholeAndWhatWasDeletedInItBefore) {
  sh("rm docs/a && mv docs moved && mkdir docs && echo new > docs/b && rm -r docs");
  ASSERT_TRUE(volume->unmountAndWait());
  EXPECT_TRUE(S_ISREG(statusOf(trees.overlay() + "/docs").st_mode));
  EXPECT_TRUE(S_ISDIR(statusOf(trees.overlay() + "/moved").st_mode));
  EXPECT_TRUE(namesIn(trees.overlay() + "/moved").empty());
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
