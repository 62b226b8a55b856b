// SPDX-License-Identifier: GPL-2.0-or-later
// The kernel remembers names, attributes, listings and pages for a day. It must never show what no
// longer holds.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "overlayfs/mounted_volume.h"

namespace kelvane::tests {
namespace {

class MountedCache : public MountedOverlay {
 protected:
  void SetUp() override {
    MountedOverlay::SetUp();
    if (IsSkipped()) return;
    trees.addDiscFile("/docs/a", "disc a");
    trees.addDiscFile("/docs/sub/deep/b", "disc b");
    trees.addDiscFile("/top", "disc top");
    mount();
    // Everything is known to the kernel before each test begins.
    sh("ls -lR . >/dev/null && cat top docs/a docs/sub/deep/b >/dev/null");
  }
};

TEST_F(MountedCache, ANameThatDidNotExistIsSeenOnceItIsMade) {
  EXPECT_FALSE(exists(at("/new")));
  EXPECT_FALSE(exists(at("/new")));
  sh("echo x > new && mkdir -p d/e");
  EXPECT_TRUE(exists(at("/new")));
  EXPECT_TRUE(exists(at("/d/e")));
}

TEST_F(MountedCache, ADeletedNameIsGoneAndARecreatedFileIsNew) {
  sh("rm top");
  EXPECT_FALSE(exists(at("/top")));
  sh("echo fresh > top");
  EXPECT_EQ(contentOf(at("/top")), "fresh\n");
}

TEST_F(MountedCache, ARecreatedDirectoryShowsTheDiscsItemsThatWereNotDeleted) {
  // A copy from the disc hides only the directory's own path.
  sh("mv docs away && ! stat docs 2>/dev/null && mkdir docs");
  EXPECT_EQ(contentOf(at("/docs/a")), "disc a");
  EXPECT_EQ(sh("ls docs"), "a\nsub\n");
}

TEST_F(MountedCache, ARecreatedDirectoryIsEmptyWhereEachItemWasDeleted) {
  sh("rm -r docs && mkdir docs");
  EXPECT_EQ(sh("ls docs"), "");
  EXPECT_FALSE(exists(at("/docs/a")));
}

TEST_F(MountedCache, MissingNamesOfAMovedDirectoryAreLookedUpAgainWhereTheDiscHasThem) {
  sh("mv docs away && mkdir fresh && ! stat fresh/a 2>/dev/null && mv fresh docs");
  EXPECT_EQ(contentOf(at("/docs/a")), "disc a");
  EXPECT_EQ(sh("ls docs"), "a\nsub\n");
}

TEST_F(MountedCache, DirectoriesShowTheirNewAttributesOnceTheOverlayHasThem) {
  EXPECT_EQ(statusOf(at("/docs")).st_mode & 07777, 0777U);
  sh("echo x > docs/sub/deep/new");
  for (const std::string path : {"/docs", "/docs/sub", "/docs/sub/deep"}) {
    const auto shown = statusOf(at(path));
    const auto real = statusOf(trees.overlay() + path);
    EXPECT_EQ(shown.st_mode, real.st_mode) << path;
    EXPECT_EQ(shown.st_mtim.tv_sec, real.st_mtim.tv_sec) << path;
  }
}

TEST_F(MountedCache, AReaderSeesWhatReplacesTheDiscsFileByTruncation) {
  const int reader = open(at("/top").c_str(), O_RDONLY);
  ASSERT_GE(reader, 0);
  char buffer[64] = {};
  ASSERT_EQ(pread(reader, buffer, sizeof(buffer), 0), 8);
  sh("printf 'a much longer text than before' > top");
  std::fill(std::begin(buffer), std::end(buffer), '\0');
  EXPECT_EQ(pread(reader, buffer, sizeof(buffer), 0), 30);
  EXPECT_STREQ(buffer, "a much longer text than before");
  // Once the kernel has forgotten its pages, it asks through the reader's own opening.
  posix_fadvise(reader, 0, 0, POSIX_FADV_DONTNEED);
  EXPECT_EQ(pread(reader, buffer, sizeof(buffer), 0), 30);
  EXPECT_STREQ(buffer, "a much longer text than before");
  close(reader);
}

TEST_F(MountedCache, AListingFollowsEveryChange) {
  EXPECT_EQ(sh("ls"), "docs\ntop\n");
  sh("touch b; ls; rm top");
  EXPECT_EQ(sh("ls"), "b\ndocs\n");
  sh("mv b c; ls");
  EXPECT_EQ(sh("ls"), "c\ndocs\n");
}

TEST_F(MountedCache, SizesFollowWritesAndTruncation) {
  sh("printf 12345 > f && truncate -s 3 f");
  EXPECT_EQ(statusOf(at("/f")).st_size, 3);
  EXPECT_EQ(contentOf(at("/f")), "123");
  sh("truncate -s 6 f");
  EXPECT_EQ(contentOf(at("/f")), std::string("123\0\0\0", 6));
}

TEST_F(MountedCache, ALinkThatReplacesALinkHasItsText) {
  sh("ln -s one l && readlink l && ln -sfn other l");
  EXPECT_EQ(sh("readlink l"), "other\n");
}

TEST_F(MountedCache, InodeNumbersStayWhileAnItemIsChangedAndDifferBetweenItems) {
  const auto before = statusOf(at("/top")).st_ino;
  sh("echo changed > top");
  EXPECT_EQ(statusOf(at("/top")).st_ino, before);
  sh("mv top moved");
  EXPECT_TRUE(exists(at("/top")));
  EXPECT_NE(statusOf(at("/top")).st_ino, statusOf(at("/moved")).st_ino);
  EXPECT_EQ(sh("find . -printf '%i\\n' | sort | uniq -d"), "");
}

}  // namespace
}  // namespace kelvane::tests
