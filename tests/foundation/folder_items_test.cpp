// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/folder_items.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <map>

#include "foundation/temporary_folder.h"

namespace kelvane {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::Pair;

class FolderItems : public ::testing::Test {
 protected:
  FolderItems() {
    fs::create_directories(root() + "/a/b");
    for (const char* file : {"/one", "/a/two", "/a/b/three"}) std::ofstream(root() + file) << "x";
    fs::create_directory_symlink(root() + "/a", root() + "/link");
  }
  std::string root() const { return folder_.file("root"); }

  /// What was visited, by path, and whether it counts as a folder.
  std::map<std::string, bool> visited(const std::function<Visit(const FolderItem&)>& rule) {
    std::map<std::string, bool> items;
    EXPECT_TRUE(visitItemsBelow(root(), {}, [&](const FolderItem& item) {
      EXPECT_TRUE(item.path.ends_with("/" + item.name));
      items[item.path] = item.isFolder;
      return rule(item);
    }));
    return items;
  }

  testing::TemporaryFolder folder_;
};

TEST_F(FolderItems, AreAllVisitedAndLinksAreNotFollowed) {
  EXPECT_THAT(visited([](const FolderItem&) { return Visit::GoOn; }),
              ElementsAre(Pair("/a", true), Pair("/a/b", true), Pair("/a/b/three", false),
                          Pair("/a/two", false), Pair("/link", false), Pair("/one", false)));
}

TEST_F(FolderItems, InAFolderThatIsPassedOverAreNotVisited) {
  EXPECT_THAT(visited([](const FolderItem& item) {
                return item.name == "a" ? Visit::PassOver : Visit::GoOn;
              }),
              ElementsAre(Pair("/a", true), Pair("/link", false), Pair("/one", false)));
}

TEST_F(FolderItems, AreNoneAfterTheEndAndNoneOfAFolderThatIsNotThere) {
  int visits = 0;
  EXPECT_TRUE(visitItemsBelow(root(), {}, [&visits](const FolderItem&) {
    ++visits;
    return Visit::End;
  }));
  EXPECT_EQ(visits, 1);
  EXPECT_TRUE(visitItemsBelow(root() + "/nothing", {}, [](const FolderItem&) {
    ADD_FAILURE();
    return Visit::GoOn;
  }));
}

TEST_F(FolderItems, AreNotVisitedOnceAStopIsRequested) {
  std::stop_source source;
  int visits = 0;
  EXPECT_FALSE(visitItemsBelow(root(), source.get_token(), [&](const FolderItem&) {
    ++visits;
    source.request_stop();
    return Visit::GoOn;
  }));
  EXPECT_EQ(visits, 1);
}

}  // namespace
}  // namespace kelvane
