// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/foundation/node_access.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>

namespace kelvane {
namespace {

constexpr char kRule[] = R"(KERNEL=="sr0", GROUP="cdrom")";

NodeAccess closedNode() {
  NodeAccess access;
  access.exists = true;
  access.group = "cdrom";
  access.user = "ada";
  return access;
}

TEST(MissingAccess, IsNotDescribedWhereTheNodeCanBeUsed) {
  NodeAccess access = closedNode();
  access.isUsable = true;
  EXPECT_EQ(describeMissingAccess("/dev/sr0", access, kRule), "");
}

TEST(MissingAccess, OfSomebodyOutsideTheGroupNamesTheGroupAndHowToJoinIt) {
  NodeAccess access = closedNode();
  access.groupIsAllowed = true;
  EXPECT_EQ(describeMissingAccess("/dev/sr0", access, kRule),
            "/dev/sr0 can be used by the group cdrom only, and you do not belong to it. As root, "
            "run: adduser ada cdrom. Then log out and in again.");
}

TEST(MissingAccess, OfSomebodyWhoHasJustJoinedAsksForANewSession) {
  NodeAccess access = closedNode();
  access.groupIsAllowed = true;
  access.joinsAtNextLogin = true;
  EXPECT_EQ(describeMissingAccess("/dev/sr0", access, kRule),
            "/dev/sr0 can be used by the group cdrom. You belong to it, but this session does not "
            "know yet: log out and in again.");
}

TEST(MissingAccess, ThatNoGroupWouldGiveNamesARule) {
  EXPECT_EQ(describeMissingAccess("/dev/sr0", closedNode(), kRule),
            "You may not read and write /dev/sr0. A rule of udev gives access to it: "
            "KERNEL==\"sr0\", GROUP=\"cdrom\".");
}

TEST(MissingAccess, ToNothingSaysThatThereIsNothing) {
  EXPECT_EQ(describeMissingAccess("/dev/sr0", {}, kRule), "There is no /dev/sr0.");
  EXPECT_FALSE(accessToNode("/nonexistent/node").exists);
}

class AccessToNode : public testing::Test {
 protected:
  AccessToNode() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kvnode-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
    chmod(folder_.c_str(), 0755);
    node_ = folder_ + "/node";
    std::ofstream(node_).close();
  }
  ~AccessToNode() override { std::filesystem::remove_all(folder_); }

  /// Whether `holds` is true for a user who is not root, in a process of its own where need be.
  static bool asOrdinaryUser(const std::function<bool()>& holds) {
    if (geteuid() != 0) return holds();
    constexpr uid_t kNobody = 65534;
    const pid_t child = fork();
    if (child == 0) {
      const bool changed = setgid(kNobody) == 0 && setuid(kNobody) == 0;
      _exit(changed && holds() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status == 0;
  }

  std::string folder_;
  std::string node_;
};

TEST_F(AccessToNode, IsSeenByWhoeverHasIt) {
  chmod(node_.c_str(), 0666);
  EXPECT_TRUE(accessToNode(node_).isUsable);
  EXPECT_TRUE(asOrdinaryUser([this] { return accessToNode(node_).isUsable; }));
}

TEST_F(AccessToNode, IsMissedByWhoeverMayOnlyRead) {
  chmod(node_.c_str(), 0444);
  EXPECT_TRUE(asOrdinaryUser([this] {
    const NodeAccess access = accessToNode(node_);
    return access.exists && !access.isUsable && !access.groupIsAllowed;
  }));
}

TEST_F(AccessToNode, KnowsTheGroupThatHasIt) {
  chmod(node_.c_str(), 0060);
  const NodeAccess access = accessToNode(node_);
  EXPECT_TRUE(access.groupIsAllowed);
  EXPECT_FALSE(access.group.empty());
  EXPECT_FALSE(access.user.empty());
  EXPECT_TRUE(access.joinsAtNextLogin) << "the file's group is one of its owner's";
}

}  // namespace
}  // namespace kelvane
