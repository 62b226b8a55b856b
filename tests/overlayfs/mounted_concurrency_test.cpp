// SPDX-License-Identifier: GPL-2.0-or-later
// Eight programs use the volume at the same time: see concurrent_user.cpp for what each of them
// does and checks.
#include <map>
#include <sstream>

#include "overlayfs/mounted_volume.h"

namespace kelvane::tests {
namespace {

constexpr int kPrograms = 8;
constexpr int kRounds = 150;
constexpr int kPoolItems = 10;
constexpr int kClaims = 40;

class MountedConcurrency : public MountedOverlay {
 protected:
  void SetUp() override {
    MountedOverlay::SetUp();
    if (IsSkipped()) return;
    for (int index = 0; index < 3; ++index) {
      trees.addDiscFile("/shared/s" + std::to_string(index), "disc\ndisc\nend\n");
    }
    for (int index = 0; index < kClaims; ++index) {
      const std::string name = "c" + std::to_string(index);
      trees.addDiscFile("/claims/" + name, "claim " + name + "\n");
    }
    mount();
    sh("mkdir -p pool/a pool/b");
    for (int index = 0; index < kPoolItems; ++index) {
      const std::string number = std::to_string(index);
      writeFile(at("/pool/a/p" + number), "item " + number + "\n");
    }
    const std::string user = KELVANE_CONCURRENT_USER " \"$PWD\" $n " + std::to_string(kRounds);
    sh("for n in $(seq " + std::to_string(kPrograms) + "); do " + user +
       " & pids=\"$pids $!\"; done; for p in $pids; do wait $p || bad=1; done; [ -z \"$bad\" ]");
  }
};

TEST_F(MountedConcurrency, EveryRecordOfTheLogIsWholeAndInItsProgramsOrder) {
  std::istringstream log(contentOf(at("/log")));
  std::map<int, int> lastRound;
  std::string program;
  std::string round;
  int number = 0;
  int count = 0;
  while (log >> program >> number >> round >> count) {
    ASSERT_EQ(program + round, "programround");
    EXPECT_EQ(count, ++lastRound[number]) << "of program " << number;
  }
  EXPECT_TRUE(log.eof());
  ASSERT_EQ(lastRound.size(), static_cast<size_t>(kPrograms));
  for (const auto& [whose, last] : lastRound) EXPECT_EQ(last, kRounds) << "of program " << whose;
}

TEST_F(MountedConcurrency, EveryItemOfThePoolIsAtOnePlace) {
  EXPECT_EQ(namesIn(at("/pool/a")).size() + namesIn(at("/pool/b")).size(),
            static_cast<size_t>(kPoolItems));
  EXPECT_EQ(sh("cat pool/*/* | sort | uniq -d"), "");
}

TEST_F(MountedConcurrency, EveryItemOfTheDiscHasOneOwner) {
  const size_t left = namesIn(at("/claims")).size();
  const std::string claimed = sh("find own* -name 'c*' | sed 's#.*/##' | sort");
  const auto taken = static_cast<size_t>(std::count(claimed.begin(), claimed.end(), '\n'));
  EXPECT_EQ(left + taken, static_cast<size_t>(kClaims));
  EXPECT_EQ(sh("{ ls claims; find own* -name 'c*' | sed 's#.*/##'; } | sort | uniq -d"), "");
}

TEST_F(MountedConcurrency, NothingOfTheFileSystemsOwnIsLeft) {
  EXPECT_EQ(sh("find . -name '.new*'"), "");
  EXPECT_EQ(runShell("find " + trees.overlay() + " -name '.kelvanefs*'").output, "");
  ASSERT_TRUE(volume->unmountAndWait());
  EXPECT_TRUE(volume->delegate().hideListIsWhole());
}

}  // namespace
}  // namespace kelvane::tests
