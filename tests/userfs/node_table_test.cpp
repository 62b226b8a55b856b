// SPDX-License-Identifier: GPL-2.0-or-later
#include "platform/userfs/node_table.h"

#include <malloc.h>

#include <gtest/gtest.h>

namespace kelvane::tests {
namespace {

using userfs::Node;
using userfs::NodeTable;

class NodeTableTest : public testing::Test {
 protected:
  Node* add(Node* parent, const std::string& name) {
    Node* const node = table.make(parent, name);
    table.retain(node);
    return node;
  }
  NodeTable table;
};

TEST_F(NodeTableTest, FormsPaths) {
  Node* const a = add(table.root(), "a");
  Node* const b = add(a, "b");
  EXPECT_EQ(table.pathOf(table.root()), "/");
  EXPECT_EQ(table.pathOf(b), "/a/b");
  EXPECT_EQ(table.pathOf(b, "c"), "/a/b/c");
  EXPECT_EQ(table.pathOf(table.root(), "c"), "/c");
}

TEST_F(NodeTableTest, FindsByParentAndName) {
  Node* const a = add(table.root(), "a");
  Node* const inner = add(a, "a");
  EXPECT_EQ(table.find(table.root(), "a"), a);
  EXPECT_EQ(table.find(a, "a"), inner);
  EXPECT_EQ(table.find(a, "b"), nullptr);
}

TEST_F(NodeTableTest, ANodeLivesUntilItIsForgottenAsOftenAsItWasTold) {
  Node* const a = add(table.root(), "a");
  table.retain(a);
  table.forget(a, 1);
  EXPECT_EQ(table.find(table.root(), "a"), a);
  table.forget(a, 1);
  EXPECT_EQ(table.find(table.root(), "a"), nullptr);
}

TEST_F(NodeTableTest, AForgottenDirectoryLivesAsLongAsAnItemBelowIt) {
  Node* const a = add(table.root(), "a");
  Node* const b = add(a, "b");
  table.forget(a, 1);
  EXPECT_EQ(table.pathOf(b), "/a/b");
  table.forget(b, 1);
  EXPECT_EQ(table.find(table.root(), "a"), nullptr);
}

TEST_F(NodeTableTest, ADetachedNodeHasNoPlaceAndItsNameIsFree) {
  Node* const a = add(table.root(), "a");
  Node* const below = add(a, "below");
  table.detach(a);
  EXPECT_FALSE(table.isLinked(a));
  EXPECT_FALSE(table.isLinked(below));
  EXPECT_NE(add(table.root(), "a"), a);
  table.forget(below, 1);
  table.forget(a, 1);
}

TEST_F(NodeTableTest, AMoveTakesTheSubtreeAlongAndReplaces) {
  Node* const a = add(table.root(), "a");
  Node* const below = add(a, "below");
  Node* const target = add(table.root(), "target");
  table.move(a, table.root(), "target");
  EXPECT_EQ(table.pathOf(below), "/target/below");
  EXPECT_EQ(table.find(table.root(), "target"), a);
  EXPECT_EQ(table.find(table.root(), "a"), nullptr);
  EXPECT_FALSE(table.isLinked(target));
}

TEST_F(NodeTableTest, AMoveToItsOwnPlaceChangesNothing) {
  Node* const a = add(table.root(), "a");
  table.move(a, table.root(), "a");
  EXPECT_EQ(table.find(table.root(), "a"), a);
}

TEST_F(NodeTableTest, AHundredThousandFilesNeedLessThan32Megabytes) {
  const size_t before = mallinfo2().uordblks;
  Node* directory = nullptr;
  for (int number = 0; number < 100000; ++number) {
    if (number % 100 == 0) directory = add(table.root(), "directory-" + std::to_string(number));
    add(directory, "a-usual-file-name-" + std::to_string(number) + ".jpeg");
  }
  const size_t used = mallinfo2().uordblks - before;
  if (used == 0) GTEST_SKIP() << "this build's allocator does not count";
  RecordProperty("bytes", std::to_string(used));
  EXPECT_LT(used, size_t{32} << 20);
}

}  // namespace
}  // namespace kelvane::tests
