// SPDX-License-Identifier: GPL-2.0-or-later
// git on a mounted volume.
#include "overlayfs/mounted_volume.h"

namespace kelvane::tests {
namespace {

class MountedVersionControl : public MountedOverlay {
 protected:
  void SetUp() override {
    MountedOverlay::SetUp();
    if (IsSkipped()) return;
    const CommandResult made = runShell("cd " + trees.disc() + " && " + who() +
                                        "git init -q -b main repo && cd repo && echo 1 > f && git "
                                        "add f && git commit -qm one");
    ASSERT_EQ(made.status, 0) << made.output;
    mount();
  }
  /// Who the author is; git shall not look for it in the tester's own home.
  std::string who() const {
    return "export HOME=" + trees.root() +
           " GIT_AUTHOR_NAME=a GIT_AUTHOR_EMAIL=a@b GIT_COMMITTER_NAME=a GIT_COMMITTER_EMAIL=a@b;";
  }
};

TEST_F(MountedVersionControl, GitInitialisesCommitsClonesAndPushes) {
  sh(who() +
     "git init -q own && cd own && echo 1 > f && git add f && git commit -qm one && cd .. &&"
     " git clone -q own clone && cd clone && echo 2 > f && git commit -qam two &&"
     " git push -q origin HEAD:refs/heads/two && git fsck");
}

TEST_F(MountedVersionControl, GitClonesARepositoryOfTheDiscAndCommits) {
  sh(who() +
     "git clone -q repo clone && cd clone && echo 2 > f && git commit -qam two && git fsck");
  EXPECT_EQ(sh("git -C clone log --format=%s"), "two\none\n");
}

TEST_F(MountedVersionControl, GitBranchesMergesStashesRebasesAndCollectsGarbage) {
  sh(who() +
     "git clone -q repo c && cd c && git checkout -qb x && echo x > g && git add g &&"
     " git commit -qm x && git checkout -q main && echo 2 > f && git commit -qam two &&"
     " git merge -q x -m merged && echo 3 > f && git stash -q && git stash pop -q && git add f &&"
     " git commit -qm three && git checkout -q x && git rebase -q main && git mv g h &&"
     " git commit -qm moved && git gc -q && git fsck && git status --porcelain");
  EXPECT_EQ(sh("cat c/f c/h"), "3\nx\n");
}

TEST_F(MountedVersionControl, GitReadsARepositoryThatOnlyTheDiscHas) {
  EXPECT_EQ(sh("git -C repo -c safe.directory='*' log --format=%s"), "one\n");
  sh("git -C repo -c safe.directory='*' status --porcelain");
}

TEST_F(MountedVersionControl, GitCommitsInARepositoryOfTheDiscOnceItHasBeenCopied) {
  const std::string commit = "cd repo && echo 2 > f && git commit -qam two";
  EXPECT_NE(shFails(who() + commit).find("Read-only file system"), std::string::npos);
  sh(who() + "cp -a repo x && rm -rf repo && mv x repo && " + commit + " && git fsck");
  EXPECT_EQ(sh("git -C repo log --format=%s"), "two\none\n");
}

}  // namespace
}  // namespace kelvane::tests
