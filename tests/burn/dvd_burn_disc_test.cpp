// SPDX-License-Identifier: GPL-2.0-or-later
// Burns by the real growisofs on emulated discs, also of kinds that the application does not open.
#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>

#include "burn/dvd_burn.h"
#include "burn/noted_bar.h"
#include "platform/foundation/child_task.h"
#include "platform/foundation/notification_center.h"
#include "recording/event_loop.h"
#include "volumes/disc_fixture.h"
#include "volumes/fake_device.h"

namespace kelvane {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

struct Medium {
  const char* name;  // As kelvanedisc has it.
  /// Whether the session replaces the volume descriptors of the disc, so that it is found at its
  /// beginning.
  bool isOverwritten;
};

class DVDBurnDiscTest : public ::testing::TestWithParam<Medium> {
 protected:
  void SetUp() override {
    disc_ = prefix_.path() + "/disc.kvdisc";
    ASSERT_TRUE(test::runProgram(
        {KELVANE_BIN_DIR "/kelvanedisc", "create", disc_, "--media", GetParam().name}));
    std::ofstream(prefix_.path() + "/list.hide") << "";
    drives_.emplace("KELVANEFS_EMULATED_DRIVES", "kv0=" + disc_);
  }

  /// Burns what the folder `source` holds, and waits for the end.
  std::vector<std::string> burn(const std::string& source, const std::string& burntoemptydisk) {
    DVDBurnParameters parameters;
    parameters.dvdvolumename = "SAMPLE";
    parameters.bsddevicepath = "/dev/rkv0";
    parameters.sourcepath = source;
    parameters.burntoemptydisk = burntoemptydisk;
    parameters.progressIndicator = &bar_;
    parameters.currentDevice = &device_;
    parameters.hideFilePath = prefix_.path() + "/list.hide";
    std::atomic<bool> finished = false;
    NotificationCenter::defaultCenter().addObserver(
        this, kKelvaneDidFinishDVD, nullptr, [&finished](const Notification&) { finished = true; });
    DVDBurn burn(parameters);
    burn.startDVDBurnInOwnThread();
    EXPECT_TRUE(loop_.runUntil([&finished] { return finished.load(); }));
    loop_.deliverQueued();
    NotificationCenter::defaultCenter().removeObserver(this);
    return burn.burnErrors();
  }

  std::string makeSource(const std::string& name, size_t bytes) {
    const std::string folder = prefix_.path() + "/" + name;
    std::filesystem::create_directory(folder);
    std::ofstream(folder + "/" + name + ".txt") << std::string(bytes, 'x');
    return folder;
  }

  /// The paths that isoinfo lists in the session at this block.
  std::string listing(int64_t start) const {
    ChildTask task;
    task.setLaunchPath("isoinfo");
    task.setArguments({"-R", "-f", "-i", disc_ + "/sectors", "-T", std::to_string(start)});
    EXPECT_TRUE(task.launch());
    task.waitBlocking(-1);
    return task.readStandardOutputToEnd();
  }

  /// Where the last session begins, as a person would look it up.
  int64_t lastSessionStart() const {
    if (GetParam().isOverwritten) return 0;
    ChildTask task;
    task.setLaunchPath(KELVANE_BIN_DIR "/kelvanedisc");
    task.setArguments({"info", disc_});
    EXPECT_TRUE(task.launch());
    task.waitBlocking(-1);
    const std::string text = task.readStandardOutputToEnd();
    const std::string mark = "start ";
    return std::stoll(text.substr(text.rfind(mark) + mark.size()));
  }

  test::TemporaryPrefix prefix_;
  testing::EventLoop loop_;
  testing::NotedBar bar_;
  test::FakeDevice device_{"kv0"};
  std::string disc_;
  std::optional<test::ScopedVariable> drives_;
};

TEST_P(DVDBurnDiscTest, AFirstSessionAndTwoThatContinueItShowAllThatIsNotHidden) {
  EXPECT_THAT(burn(makeSource("one", 10), "YES"), IsEmpty());
  EXPECT_THAT(listing(0), HasSubstr("/one.txt"));
  EXPECT_THAT(burn(makeSource("two", 10), "NO"), IsEmpty());
  EXPECT_THAT(listing(lastSessionStart()), HasSubstr("/one.txt"));
  EXPECT_THAT(listing(lastSessionStart()), HasSubstr("/two.txt"));

  // What is deleted has an empty file in its place, and stands on the list.
  const std::string third = makeSource("three", 10);
  std::ofstream(third + "/one.txt") << "";
  std::ofstream(prefix_.path() + "/list.hide") << third << "/one.txt";
  EXPECT_THAT(burn(third, "NO"), IsEmpty());
  const std::string paths = listing(lastSessionStart());
  EXPECT_THAT(paths, Not(HasSubstr("/one.txt")));
  EXPECT_THAT(paths, HasSubstr("/two.txt"));
  EXPECT_THAT(paths, HasSubstr("/three.txt"));
}

TEST_P(DVDBurnDiscTest, TheBarFollowsALargeSession) {
  EXPECT_THAT(burn(makeSource("large", 60'000'000), "YES"), IsEmpty());
  ASSERT_FALSE(bar_.values.empty());
  EXPECT_TRUE(std::is_sorted(bar_.values.begin(), bar_.values.end()));
  EXPECT_LE(bar_.values.back(), 2.0);
  EXPECT_TRUE(bar_.isIndeterminate) << "the last lines tell no progress";
}

TEST_P(DVDBurnDiscTest, AnEmptyDiscCannotBeContinued) {
  EXPECT_THAT(burn(makeSource("one", 10), "NO"), Not(IsEmpty()));
}

INSTANTIATE_TEST_SUITE_P(Media, DVDBurnDiscTest,
                         ::testing::Values(Medium{"dvd-r", false}, Medium{"dvd-rw", false},
                                           Medium{"dvd+rw", true}),
                         [](const auto& medium) {
                           std::string name = medium.param.name;
                           std::replace(name.begin(), name.end(), '+', 'p');
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

}  // namespace
}  // namespace kelvane
