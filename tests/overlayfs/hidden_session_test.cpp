// SPDX-License-Identifier: GPL-2.0-or-later
// What mkisofs makes of the hide list: the overlay directory is built into a session as the burn
// builds it, and read back by programs that are not ours.
#include "overlayfs/delegate_fixture.h"

namespace kelvane::tests {
namespace {

class HiddenSession : public DelegateTest {
 protected:
  /// Puts the files on the disc and deletes them.
  void deleteFromDisc(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) trees.addDiscFile(path, "x");
    makeDelegate();
    for (const std::string& path : paths) {
      ASSERT_TRUE(delegate->removeItemAtPath(path, nullptr)) << path;
    }
  }

  /// Unmounts and builds the session.
  void build() {
    delegate->willUnmount();
    const std::string hide = trees.hideListFile();
    const CommandResult built = runShell(
        "genisoimage -quiet -D -r -J -joliet-long -input-charset utf-8 -hide-list '" + hide +
        "' -hide-joliet-list '" + hide + "' -o '" + image() + "' '" + trees.overlay() + "'");
    ASSERT_EQ(built.status, 0) << built.output;
  }

  /// The paths in the session, in one of its trees (option of isoinfo: -R or -J), sorted.
  std::string listed(const std::string& tree) const {
    return runShell("isoinfo -f " + tree + " -i '" + image() + "' | sort").output;
  }
  std::string image() const { return trees.root() + "/session.iso"; }
};

TEST_F(HiddenSession, NamesWithTheEightCharactersAreGoneFromBothTrees) {
  std::vector<std::string> paths;
  for (const std::string character :
       {"ä", "ö", "ü", "ß", "Ä", "Ö", "Ü", "ẞ", "{", "}", "[", "]", "a\u0308", "o\u0308", "u\u0308",
        "A\u0308", "O\u0308", "U\u0308"}) {
    paths.push_back("/docs/x" + character + "y");
  }
  paths.emplace_back("/Müller[1].txt");
  paths.emplace_back("/{a,b}");
  paths.emplace_back("/ä/ö/ü");
  deleteFromDisc(paths);
  create("/kept", "kept");
  build();
  EXPECT_EQ(listed("-R"), "/docs\n/kept\n/ä\n/ä/ö\n");
  EXPECT_EQ(listed("-J").find("x"), std::string::npos) << listed("-J");
}

TEST_F(HiddenSession, APatternHidesWhatItMatchesInTheSameDirectoryOnly) {
  deleteFromDisc({"/Müller", "/docs/[a]"});
  for (const char* path : {"/Maller", "/other/Maller", "/docs/xax", "/docs/sub/xax"}) create(path);
  build();
  EXPECT_EQ(listed("-R"), "/docs\n/docs/sub\n/docs/sub/xax\n/other\n/other/Maller\n");
}

TEST_F(HiddenSession, NamesThatAreNoUtf8AreHidden) {
  deleteFromDisc({"/\xff[\xfe", "/sub/\xc3"});
  build();
  EXPECT_EQ(listed("-R"), "/sub\n");
}

TEST_F(HiddenSession, AWildcardInANameHidesWhatItMatchesToo) {
  deleteFromDisc({"/a*b", "/c?d"});
  for (const char* path : {"/axxb", "/cxd", "/cxxd"}) create(path);
  build();
  EXPECT_EQ(listed("-R"), "/cxxd\n");
}

TEST_F(HiddenSession, ANameWithABackslashStaysAsAnEmptyFile) {
  deleteFromDisc({"/back\\slash"});
  build();
  EXPECT_EQ(listed("-R"), "/back\\slash\n");
}

// docs/limits.md warns of this.
TEST_F(HiddenSession, ANameWithALineFeedStaysAndItsLinesHideOthers) {
  deleteFromDisc({"/sub/two\nlines"});
  for (const char* path : {"/sub/two", "/two", "/lines", "/other/lines", "/kept"}) create(path);
  build();
  EXPECT_EQ(listed("-R"), "/kept\n/other\n/sub\n/sub/two\n/two\nlines\n");
}

TEST_F(HiddenSession, NestedDeletionsAreHiddenInBothOrders) {
  deleteFromDisc({"/up/a/b", "/down/a/b"});
  for (const char* path : {"/up/a", "/up"}) delegate->removeItemAtPath(path, nullptr);
  create("/kept");
  build();
  EXPECT_EQ(listed("-R"), "/down\n/down/a\n/kept\n");
}

TEST_F(HiddenSession, ADirectoryAndThenWhatWasInItAreHidden) {
  trees.addDiscFile("/docs/a", "x");
  makeDelegate();
  delegate->removeItemAtPath("/docs", nullptr);
  delegate->removeItemAtPath("/docs/a", nullptr);
  delegate->removeItemAtPath("/docs", nullptr);
  create("/kept");
  build();
  EXPECT_EQ(listed("-R"), "/kept\n");
}

TEST_F(HiddenSession, WithoutDeletionsEverythingIsThere) {
  makeDelegate();
  for (const char* path : {"/a", "/b/c"}) create(path);
  build();
  EXPECT_EQ(listed("-R"), "/a\n/b\n/b/c\n");
}

}  // namespace
}  // namespace kelvane::tests
