// SPDX-License-Identifier: GPL-2.0-or-later
// What the patterns of deleted items hide besides, held against the real image builder: a session
// is built on a disc from the overlay directory, and exactly the items that were foretold are not
// in it.
#include "overlayfs/hidden_items.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <set>
#include <sstream>

#include "overlayfs/delegate_fixture.h"

namespace kelvane::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kNextSession[] = "11700";
constexpr char kOptions[] = " -quiet -D -r -J -joliet-long -input-charset utf-8 ";

class HiddenItems : public DelegateTest {
 protected:
  /// Deletes the items, which the disc has, from a volume on which `added` were made.
  void change(const std::vector<std::string>& deleted, const std::vector<std::string>& added) {
    for (const std::string& path : deleted) trees.addDiscFile(path, "x");
    makeDelegate();
    for (const std::string& path : added) create(path, "new");
    for (const std::string& path : deleted) {
      ASSERT_TRUE(delegate->removeItemAtPath(path, nullptr)) << path;
    }
    deleted_ = deleted;
    delegate->willUnmount();
    wanted_ = pathsOfVolume();
  }

  std::vector<std::string> foretold() {
    const auto effects =
        effectsOfHiding(trees.overlay(), trees.hideListFile(), delegate->changes(), {});
    EXPECT_TRUE(effects.has_value());
    shownStill_ = effects.value_or(HideEffects()).shownStill;
    std::vector<std::string> paths;
    for (const HiddenItem& item : effects.value_or(HideEffects()).hiddenToo) {
      paths.push_back(item.path + (item.isFolder ? "/" : ""));
    }
    return paths;
  }

  /// What is wanted and not in a session that is built now, without what lies in a missing folder.
  std::vector<std::string> missing(const std::string& environment = {}) {
    const std::set<std::string> there = pathsOfSession(environment);
    std::vector<std::string> paths;
    for (const std::string& path : wanted_) {
      if (there.contains(path)) continue;
      const bool isInside = std::ranges::any_of(paths, [&path](const std::string& folder) {
        return folder.ends_with('/') && path.starts_with(folder);
      });
      if (!isInside) paths.push_back(path + (isFolder(path) ? "/" : ""));
    }
    return paths;
  }

  /// What was deleted, and is in a session that is built now, sorted.
  std::vector<std::string> deletedAndThere() {
    const std::set<std::string> there = pathsOfSession({});
    std::vector<std::string> paths;
    std::ranges::copy_if(deleted_, std::back_inserter(paths),
                         [&there](const std::string& path) { return there.contains(path); });
    std::ranges::sort(paths);
    return paths;
  }

  std::set<std::string> linesOf(const std::string& command) const {
    std::set<std::string> lines;
    std::istringstream output(runShell(command).output);
    for (std::string line; std::getline(output, line);) lines.insert(line);
    return lines;
  }

  std::vector<std::string> shownStill_;  ///< As foretold the last time.

  std::string image(const std::string& name) const { return trees.root() + "/" + name + ".iso"; }

 private:
  bool isFolder(const std::string& path) const {
    return runShell("test -d '" + trees.overlay() + path + "' -o -d '" + trees.disc() + path + "'")
               .status == 0;
  }

  // The paths of both trees, sorted, without the deleted ones.
  std::set<std::string> pathsOfVolume() const {
    std::set<std::string> paths = linesOf("for tree in '" + trees.disc() + "' '" + trees.overlay() +
                                          "'; do cd \"$tree\" && find . -mindepth 1; done |"
                                          " sed 's/^\\.//'");
    for (const std::string& path : deleted_) paths.erase(path);
    return paths;
  }

  /// The paths of a session that is built now.
  std::set<std::string> pathsOfSession(const std::string& environment) {
    build(environment);
    return linesOf("isoinfo -f -R -N " + std::string(kNextSession) + " -i '" + image("session") +
                   "'");
  }

  void build(const std::string& environment) {
    const std::string hide = trees.hideListFile();
    const CommandResult built = runShell(
        "genisoimage" + std::string(kOptions) + "-o '" + image("disc") + "' '" + trees.disc() +
        "' && " + environment + " genisoimage -hide-list '" + hide + "' -hide-joliet-list '" +
        hide + "'" + kOptions + "-o '" + image("session") + "' -M '" + image("disc") + "' -C 0," +
        kNextSession + " '" + trees.overlay() + "'");
    ASSERT_EQ(built.status, 0) << built.output;
  }

  std::vector<std::string> deleted_;
  std::set<std::string> wanted_;
};

TEST_F(HiddenItems, ThereAreNoneWherePatternsNameWhatWasDeletedAlone) {
  change({"/a.txt", "/docs/b.txt"}, {"/docs/a.txt", "/other/b.txt"});
  EXPECT_THAT(foretold(), IsEmpty());
  EXPECT_THAT(missing(), IsEmpty());
}

TEST_F(HiddenItems, AreNewFilesThatAStarMatches) {
  change({"/a*b"}, {"/axxb", "/ab", "/axxbx", "/.axb"});
  EXPECT_THAT(foretold(), ElementsAre("/ab", "/axxb"));
  EXPECT_EQ(missing(), foretold());
}

TEST_F(HiddenItems, AreNotThoseBehindASlashNorThoseOnlyTheDiscHas) {
  trees.addDiscFile("/d/axxb", "x");
  trees.addDiscFile("/aoldb", "x");
  change({"/a*b"}, {"/a/b", "/d/ab", "/other/a1b"});
  EXPECT_THAT(foretold(), IsEmpty());
  EXPECT_THAT(missing(), IsEmpty());
}

TEST_F(HiddenItems, AreThoseInEveryFolderThatAFolderOfThePatternMatches) {
  change({"/d*e/x"}, {"/d1e/x", "/d2e/x", "/d2e/y", "/d/e/x"});
  EXPECT_THAT(foretold(), ElementsAre("/d1e/x", "/d2e/x"));
  EXPECT_EQ(missing(), foretold());
}

TEST_F(HiddenItems, AreThoseInWhichUmlautsBracketsAndBracesStandForAnything) {
  change({"/Müller", "/docs/[1].txt", "/{x}"},
         {"/Maller", "/Mller", "/docs/21.txt", "/docs/.1..txt", "/ax", "/axb"});
  EXPECT_THAT(foretold(),
              ElementsAre("/Maller", "/Mller", "/ax", "/axb", "/docs/.1..txt", "/docs/21.txt"));
  EXPECT_EQ(missing(), foretold());
}

TEST_F(HiddenItems, AreWholeFoldersWithWhatTheDiscHasInThem) {
  trees.addDiscFile("/axe/of the disc", "x");
  change({"/a*e"}, {"/axe/new", "/axe/deep/new"});
  EXPECT_THAT(foretold(), ElementsAre("/axe/"));
  EXPECT_EQ(missing(), foretold());
}

TEST_F(HiddenItems, AreThoseOfOneCharacterInTheLocaleOfTheEnvironment) {
  change({"/x?y"}, {"/xay", "/xüy", "/xabcy"});
  for (const char* locale : {"C.UTF-8", "C"}) {
    setenv("LC_ALL", locale, 1);
    const auto expected = std::string(locale) == "C" ? std::vector<std::string>{"/xay"}
                                                     : std::vector<std::string>{"/xay", "/xüy"};
    EXPECT_EQ(foretold(), expected) << locale;
    EXPECT_EQ(missing("LC_ALL=" + std::string(locale)), expected) << locale;
  }
  unsetenv("LC_ALL");
}

TEST_F(HiddenItems, AreThoseThatABackslashNamesByTakingTheNextCharacterAsItIs) {
  change({"/back\\slash", "/star\\*"}, {"/backslash", "/star*", "/starry"});
  EXPECT_THAT(foretold(), ElementsAre("/backslash", "/star*"));
  EXPECT_EQ(missing(), foretold());
}

TEST_F(HiddenItems, AreThoseThatALineOfANameMatches) {
  change({"/sub/two\nlines"}, {"/sub/two", "/two", "/lines", "/other/lines", "/kept"});
  EXPECT_THAT(foretold(), ElementsAre("/lines", "/other/lines", "/sub/two"));
}

TEST_F(HiddenItems, OfManyPatternsAndItemsAreExactlyTheMissingOnes) {
  std::vector<std::string> deleted;
  std::vector<std::string> added;
  for (const std::string name : {"a*", "?b", "xä", "[c]", "d\\d", "plain", "e*e*"}) {
    for (const std::string folder : {"/", "/f/", "/f*/"}) deleted.push_back(folder + name);
  }
  for (const std::string name :
       {"a", "ab", "bb", "b", "c", "xcx", "dd", "d", "plain2", "eee", "ee"}) {
    for (const std::string folder : {"/", "/f/", "/fx/", "/g/"}) added.push_back(folder + name);
  }
  change(deleted, added);
  EXPECT_FALSE(foretold().empty());
  EXPECT_EQ(missing(), foretold());
}

TEST_F(HiddenItems, ThatNobodyWantsToKnowAnyMoreAreNotLookedFor) {
  change({"/a*b"}, {"/axxb"});
  std::stop_source source;
  source.request_stop();
  EXPECT_FALSE(effectsOfHiding(trees.overlay(), trees.hideListFile(), delegate->changes(),
                               source.get_token())
                   .has_value());
}

TEST_F(HiddenItems, ThatWereDeletedAreShownStillWhereNoPatternNamesThem) {
  change({"/back\\slash", "/docs/a\\b", "/star\\*", "/plain", "/x*y", "/Müller [1]"},
         {"/docs/new"});
  EXPECT_THAT(foretold(), IsEmpty());
  EXPECT_THAT(shownStill_, ElementsAre("/back\\slash", "/docs/a\\b", "/star\\*"));
  EXPECT_EQ(shownStill_, deletedAndThere());
}

TEST_F(HiddenItems, ThatWereDeletedUnderANameOfTwoLinesAreShownStill) {
  change({"/sub/two\nlines", "/plain"}, {});
  EXPECT_THAT(foretold(), IsEmpty());
  EXPECT_THAT(shownStill_, ElementsAre("/sub/two\nlines"));
}

}  // namespace
}  // namespace kelvane::tests
