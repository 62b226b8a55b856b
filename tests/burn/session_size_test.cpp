// SPDX-License-Identifier: GPL-2.0-or-later
// The size of a session that is not built yet, held against the session that is built then.
#include "burn/session_size.h"

#include <gmock/gmock.h>
#include <signal.h>

#include <QCoreApplication>
#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

#include "burn/fake_bundle.h"
#include "burn/imaging_verdict.h"
#include "foundation/temporary_folder.h"
#include "platform/foundation/child_task.h"

namespace kelvane {
namespace {

namespace fs = std::filesystem;

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

SessionImageRequest aRequest() {
  return {.sessionString = "0,11702",
          .volumeName = "V",
          .imagePath = "/tmp/812.iso",
          .hideListPath = "/tmp/.812.hide",
          .deviceName = "sr0",
          .tmpDirPath = "/tmp/812"};
}

TEST(SessionSizeArguments, OfACdAreThoseOfItsSessionWithoutTheImage) {
  EXPECT_THAT(sessionSizeArguments(aRequest()),
              ElementsAre("-hide-list", "/tmp/.812.hide", "-hide-joliet-list", "/tmp/.812.hide",
                          "-quiet", "-D", "-r", "-J", "-joliet-long", "-input-charset", "utf-8",
                          "-V", "V", "-M", "sr0", "-C", "0,11702", "-print-size", "/tmp/812"));
}

TEST(SessionSizeArguments, OfADvdAreThoseThatGrowisofsPassesOn) {
  DVDBurnParameters parameters;
  parameters.dvdvolumename = "V";
  parameters.bsddevicepath = "/dev/rsr0";
  parameters.sourcepath = "/tmp/812";
  parameters.burntoemptydisk = "NO";
  parameters.hideFilePath = "/tmp/.812.hide";
  parameters.burnSpeed = 4;
  EXPECT_THAT(sessionSizeArguments(parameters, DvdContinuation{"sr0", "16,208"}),
              ElementsAre("-hide-list", "/tmp/.812.hide", "-hide-joliet-list", "/tmp/.812.hide",
                          "-joliet-long", "-D", "-J", "-r", "-input-charset", "utf-8", "-V", "V",
                          "-quiet", "-print-size", "-M", "sr0", "-C", "16,208", "/tmp/812"));
  EXPECT_THAT(sessionSizeArguments(parameters, std::nullopt), Not(Contains("-C")));
}

class SessionSizeTest : public ::testing::Test {
 protected:
  SessionSizeTest() { bundle_.addProgram("mkisofs", "exec genisoimage \"$@\""); }

  void writeFile(const std::string& path, size_t bytes) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << std::string(bytes, 'x');
  }

  SessionImageRequest request(const std::string& source, const std::string& sessionString) {
    SessionImageRequest what = aRequest();
    what.sessionString = sessionString;
    what.imagePath = folder_.file(source + ".iso");
    what.hideListPath = folder_.file("list.hide");
    what.deviceName = folder_.file("disc");
    what.tmpDirPath = folder_.file(source);
    if (!fs::exists(what.hideListPath)) writeFile(what.hideListPath, 0);
    return what;
  }

  /// Builds the session, and gives the blocks of its image.
  static uint64_t built(const SessionImageRequest& what) {
    ChildTask task;
    task.setLaunchPath("genisoimage");
    task.setArguments(mkisofsArguments(what));
    EXPECT_TRUE(task.launch());
    task.waitBlocking(-1);
    return fs::file_size(what.imagePath) / 2048;
  }

  testing::FakeBundle bundle_;
  testing::TemporaryFolder folder_;
};

TEST_F(SessionSizeTest, IsThatOfTheImageOfAFirstAndOfAFurtherSession) {
  writeFile(folder_.file("one/a"), 5000);
  writeFile(folder_.file("one/deep/er/b"), 3'000'000);
  const SessionImageRequest first = request("one", "0");
  const SessionSize ofFirst = measureSession(sessionSizeArguments(first), {});
  EXPECT_FALSE(fs::exists(first.imagePath)) << "nothing is written";
  EXPECT_EQ(ofFirst.blocks, built(first));
  fs::copy_file(first.imagePath, folder_.file("disc"));

  for (int number = 0; number < 300; ++number) {
    writeFile(folder_.file("two/new " + std::to_string(number)), static_cast<size_t>(number) * 50);
  }
  writeFile(folder_.file("two/a"), 0);
  std::ofstream(folder_.file("list.hide")) << folder_.file("two/a");
  const SessionImageRequest further = request("two", "0,11702");
  const SessionSize ofFurther = measureSession(sessionSizeArguments(further), {});
  EXPECT_EQ(judgeImaging(ofFurther.said), ImagingVerdict::Successful);
  EXPECT_EQ(ofFurther.blocks, built(further));
}

TEST_F(SessionSizeTest, LeavesOutCompanionFilesWhereTheyAreDeletedBefore) {
  writeFile(folder_.file("one/a"), 5000);
  const uint64_t without = built(request("one", "0"));
  writeFile(folder_.file("one/._a"), 5'000'000);
  writeFile(folder_.file("one/sub._/._b"), 5'000'000);
  fs::create_directories(folder_.file("one/._folder/inside"));
  std::vector<std::string> arguments = sessionSizeArguments(request("one", "0"));
  leaveOutAppleDouble(arguments);
  const SessionSize size = measureSession(arguments, {});
  ASSERT_TRUE(size.blocks.has_value());
  EXPECT_LT(*size.blocks, without + 10);
}

TEST_F(SessionSizeTest, IsNotThereWhereTheSessionCannotBeBuiltAndMkisofsSaysWhy) {
  writeFile(folder_.file("one/" + std::string(110, 'n') + "a"), 1);
  writeFile(folder_.file("one/" + std::string(110, 'n') + "b"), 1);
  const SessionSize size = measureSession(sessionSizeArguments(request("one", "0")), {});
  EXPECT_EQ(size.blocks, std::nullopt);
  EXPECT_THAT(size.said, HasSubstr("have the same Joliet name"));
}

// Such names are looked for by other means.
TEST_F(SessionSizeTest, IsToldAlsoWhereANameWillEndTheBuilding) {
  writeFile(folder_.file("one/bad\xff"), 1);
  EXPECT_TRUE(measureSession(sessionSizeArguments(request("one", "0")), {}).blocks.has_value());
}

TEST_F(SessionSizeTest, OfATooLargeFileIsToldBeforeAnythingIsWritten) {
  writeFile(folder_.file("one/large"), 0);
  fs::resize_file(folder_.file("one/large"), uintmax_t{5} << 30);
  const SessionSize size = measureSession(sessionSizeArguments(request("one", "0")), {});
  EXPECT_EQ(size.blocks, std::nullopt);
  EXPECT_THAT(size.said, HasSubstr("is larger than 4GiB-1"));
}

TEST_F(SessionSizeTest, ThatNobodyWantsAnyMoreEndsItsProgram) {
  bundle_.addProgram("mkisofs", "echo $$ > \"$NOTES\"; exec sleep 1000");
  std::stop_source source;
  SessionSize size{1, "untouched"};
  std::thread measuring([&] { size = measureSession({"source"}, source.get_token()); });
  while (!bundle_.notes().ends_with('\n')) std::this_thread::yield();
  const pid_t child = std::stoi(bundle_.notes());
  EXPECT_EQ(kill(child, 0), 0);
  source.request_stop();
  measuring.join();
  EXPECT_EQ(size.blocks, std::nullopt);
  EXPECT_EQ(kill(child, 0), -1);
  EXPECT_EQ(errno, ESRCH);
}

TEST_F(SessionSizeTest, OfAProgramThatSaysNoNumberIsNotThere) {
  for (const std::string said : {"", "many", "12 blocks", "-3", "99999999999999999999999"}) {
    bundle_.addProgram("mkisofs", "echo '" + said + "'");
    EXPECT_EQ(measureSession({"source"}, {}).blocks, std::nullopt) << said;
  }
  bundle_.addProgram("mkisofs", "echo 12; exit 1");
  EXPECT_EQ(measureSession({"source"}, {}).blocks, std::nullopt);
  bundle_.addProgram("mkisofs", "echo 12");
  EXPECT_EQ(measureSession({"source"}, {}).blocks, 12U);
}

}  // namespace
}  // namespace kelvane
