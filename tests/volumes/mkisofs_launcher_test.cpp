// SPDX-License-Identifier: GPL-2.0-or-later
// The launcher of mkisofs, with the real image builder behind it.
#include <filesystem>
#include <fstream>

#include "platform/foundation/child_task.h"
#include "volumes/disc_fixture.h"

namespace kelvane {
namespace {

constexpr char kLauncher[] = KELVANE_LIBEXEC_DIR "/mkisofs";

class MkisofsLauncherTest : public test::DiscFixture {
 protected:
  void SetUp() override {}  // Nothing is mounted.

  struct Result {
    int status;
    std::string standardError;
  };

  static Result run(const std::vector<std::string>& arguments) {
    ChildTask task;
    task.setLaunchPath(kLauncher);
    task.setArguments(arguments);
    EXPECT_TRUE(task.launch()) << task.launchError();
    task.waitBlocking(-1);
    return {task.terminationStatus(), task.readStandardErrorToEnd()};
  }

  std::string path(const std::string& name) const { return prefix_.path() + "/" + name; }
};

TEST_F(MkisofsLauncherTest, AFirstSessionIsBuiltWithoutAWordOnStandardError) {
  std::filesystem::create_directory(path("source"));
  std::ofstream(path("source") + "/file") << "content";
  const Result result = run({"-quiet", "-D", "-r", "-J", "-joliet-long", "-input-charset", "utf-8",
                             "-V", "NAME", "-o", path("image"), path("source")});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.standardError, "");
  EXPECT_GT(std::filesystem::file_size(path("image")), 0U);
}

TEST_F(MkisofsLauncherTest, AContinuingSessionReadsThePreviousOneFromTheEmulatedDrive) {
  makeDisc("kv0", "FIRST");
  std::filesystem::create_directory(path("source"));
  std::ofstream(path("source") + "/added") << "content";
  for (const std::string name : {"kv0", "kv0/2", "/dev/rkv0"}) {
    const Result result = run({"-quiet", "-D", "-r", "-J", "-V", "NAME", "-o", path("image"), "-M",
                               name, "-C", "0,11702", path("source")});
    EXPECT_EQ(result.status, 0) << name;
    EXPECT_EQ(result.standardError, "Rock Ridge signatures found\n") << name;
  }
}

TEST_F(MkisofsLauncherTest, FailuresOfTheBuilderArePassedOn) {
  const Result result =
      run({"-quiet", "-o", path("image"), "-M", "kv5", "-C", "0,11702", path("")});
  EXPECT_NE(result.status, 0);
  EXPECT_NE(result.standardError.find("kv5"), std::string::npos) << result.standardError;
}

}  // namespace
}  // namespace kelvane
