// SPDX-License-Identifier: GPL-2.0-or-later
// The launchers of the programs that write to DVDs, with scripts in the place of these.
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "platform/foundation/child_task.h"
#include "platform/recording/file_lock.h"
#include "volumes/disc_fixture.h"

namespace kelvane {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class DvdLaunchersTest : public test::DiscFixture {
 protected:
  void SetUp() override {  // Nothing is mounted.
    std::filesystem::create_directories(path("programs"));
    std::filesystem::create_directories(path("empty"));
    makeDisc("kv0", "FIRST");
  }

  struct Result {
    int status;
    std::string standardError;
  };

  static Result run(const std::string& launcher, const std::vector<std::string>& arguments,
                    const std::string& searchPath) {
    ChildTask task;
    task.setLaunchPath(KELVANE_LIBEXEC_DIR "/" + launcher);
    task.setArguments(arguments);
    task.setEnvironmentVariable("PATH", searchPath);
    task.setEnvironmentVariable("MKISOFS", "/some/where/mkisofs");
    EXPECT_TRUE(task.launch()) << task.launchError();
    task.waitBlocking(-1);
    return {task.terminationStatus(), task.readStandardErrorToEnd()};
  }

  /// Runs a launcher with this script in the place of the distribution's program `name`.
  Result runWithScript(const std::string& launcher, const std::vector<std::string>& arguments,
                       const std::string& name, const std::string& script) {
    const std::string program = path("programs") + "/" + name;
    std::ofstream(program) << "#!/bin/sh\nNOTES='" << path("notes") << "'\n" << script << "\n";
    chmod(program.c_str(), 0755);
    return run(launcher, arguments, path("programs") + ":/usr/bin:/bin");
  }

  std::string notes() const {
    std::ifstream file(path("notes"));
    return {std::istreambuf_iterator<char>(file), {}};
  }

  std::string path(const std::string& name) const { return prefix_.path() + "/" + name; }
};

constexpr char kNoteArguments[] = "for word in \"$@\"; do echo \"$word\"; done > \"$NOTES\"";
constexpr char kNoteEnvironment[] =
    "printf '%s\\n' \"$KELVANE_SHIM_DISC\" \"$KELVANE_SHIM_DEVICE\" \"$GENISOIMAGE\" "
    "\"$LD_PRELOAD\" > \"$NOTES\"";

TEST_F(DvdLaunchersTest, GrowisofsGetsTheDriveAsItCanBeOpenedAndAllElseUnchanged) {
  for (const std::string option : {"-Z", "-M"}) {
    const Result result = runWithScript(
        "growisofs", {"-speed=4", "-overburn", option, "/dev/rkv0", "-V", "/dev/rkv0", "a b", ""},
        "growisofs", kNoteArguments);
    EXPECT_EQ(result.status, 0) << result.standardError;
    EXPECT_EQ(notes(), "-speed=4\n-overburn\n" + option + "\n/dev/sr0\n-V\n/dev/rkv0\na b\n\n");
  }
}

TEST_F(DvdLaunchersTest, GrowisofsSeesTheEmulatedDriveAndFindsOurImageBuilder) {
  const Result result =
      runWithScript("growisofs", {"-M", "/dev/rkv0", "dir"}, "growisofs", kNoteEnvironment);
  EXPECT_EQ(result.status, 0) << result.standardError;
  EXPECT_THAT(notes(), StartsWith(discFolder("kv0") + "\n/dev/sr0\n/some/where/mkisofs\n" +
                                  KELVANE_LIBEXEC_DIR "/kelvane-drive-shim.so"));
}

TEST_F(DvdLaunchersTest, ADriveOfThisMachineIsGivenWithoutTheLibrary) {
  const Result result =
      runWithScript("growisofs", {"-M", "/dev/rsr1", "dir"}, "growisofs",
                    "printf '%s\\n' \"$2\" \"[$KELVANE_SHIM_DISC$LD_PRELOAD]\" > \"$NOTES\"");
  EXPECT_EQ(result.status, 0) << result.standardError;
  EXPECT_EQ(notes(), "/dev/sr1\n[]\n");
}

TEST_F(DvdLaunchersTest, TheProgramTakesTheLaunchersPlace) {
  const Result result = runWithScript("growisofs", {"-M", "/dev/rkv0", "dir"}, "growisofs",
                                      "echo words >&2; echo $PPID > \"$NOTES\"; exit 7");
  EXPECT_EQ(result.status, 7);
  EXPECT_EQ(result.standardError, "words\n");
  EXPECT_EQ(std::stoi(notes()), getpid()) << "no process of the launcher's stands between";
}

TEST_F(DvdLaunchersTest, TheProgramIgnoresWhatEndsTheApplication) {
  const Result result =
      runWithScript("growisofs", {"-M", "/dev/rkv0", "dir"}, "growisofs",
                    "kill -INT $$; kill -TERM $$; kill -HUP $$; kill -PIPE $$\n"
                    "echo alive > \"$NOTES\"; cut -d' ' -f6 /proc/$$/stat >> \"$NOTES\"");
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(notes(), StartsWith("alive\n"));
  EXPECT_NE(std::stoi(notes().substr(6)), getsid(0)) << "a session of its own";
}

// growisofs ends where it cannot write to standard error.
TEST_F(DvdLaunchersTest, TheProgramGoesOnWhereNobodyReadsItsOutputAnyMore) {
  const std::string script = path("programs") + "/growisofs";
  std::ofstream(script) << "#!/bin/sh\necho first >&2\n"
                        << "while [ ! -e '" << path("gone") << "' ]; do sleep 0.01; done\n"
                        << "echo second >&2 && head -c 200000 /dev/zero >&2 && echo whole > '"
                        << path("notes") << "'\n";
  chmod(script.c_str(), 0755);
  const std::string launcher = KELVANE_LIBEXEC_DIR "/growisofs";
  ASSERT_TRUE(test::runProgram({"sh", "-c",
                                "mkfifo '" + path("fifo") + "'; PATH='" + path("programs") +
                                    ":/usr/bin:/bin' '" + launcher + "' -M /dev/rkv0 dir 2> '" +
                                    path("fifo") + "' & head -n 1 '" + path("fifo") + "'; touch '" +
                                    path("gone") + "'; wait $!"}));
  EXPECT_EQ(notes(), "whole\n");
}

TEST_F(DvdLaunchersTest, TheDiscIsLockedForAsLongAsTheProgramRuns) {
  const std::string sectors = discFolder("kv0") + "/sectors";
  const Result result = runWithScript("growisofs", {"-M", "/dev/rkv0", "dir"}, "growisofs",
                                      "flock -n '" + sectors + "' true; echo $? > \"$NOTES\"");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(notes(), "1\n");
  EXPECT_FALSE(FileLock::isHeld(sectors));
}

TEST_F(DvdLaunchersTest, ADiscThatSomebodyWritesToIsAnErrorOfGrowisofs) {
  const auto lock =
      FileLock::acquire(discFolder("kv0") + "/sectors", std::chrono::milliseconds(1000));
  ASSERT_TRUE(lock);
  const Result result =
      runWithScript("growisofs", {"-M", "/dev/rkv0", "dir"}, "growisofs", kNoteArguments);
  EXPECT_NE(result.status, 0);
  EXPECT_THAT(result.standardError, StartsWith(":-( "));
  EXPECT_EQ(notes(), "");
}

TEST_F(DvdLaunchersTest, WhatIsNoDriveIsAnErrorOfGrowisofs) {
  const std::vector<std::string> argumentLists[] = {
      {"-M", "/dev/rkv7", "dir"}, {"-M", discFolder("kv0") + "/sectors"}, {"-overburn", "dir"}};
  for (const auto& arguments : argumentLists) {
    const Result result = runWithScript("growisofs", arguments, "growisofs", kNoteArguments);
    EXPECT_EQ(result.status, 127);
    EXPECT_THAT(result.standardError, StartsWith(":-( "));
    EXPECT_EQ(notes(), "");
  }
}

TEST_F(DvdLaunchersTest, DfLeadsToTheFormatterWithTheDriveAsItCanBeOpened) {
  const Result result =
      runWithScript("df", {"-force", "/dev/kv0"}, "dvd+rw-format",
                    std::string(kNoteArguments) + "; echo $KELVANE_SHIM_DISC >> \"$NOTES\"");
  EXPECT_EQ(result.status, 0) << result.standardError;
  EXPECT_EQ(notes(), "-force\n/dev/sr0\n" + discFolder("kv0") + "\n");
}

TEST_F(DvdLaunchersTest, DfNeverLeadsToAProgramOfThatName) {
  for (const std::string argument : {"/dev/kv7", "/", ""}) {
    const Result result = runWithScript("df", {argument}, "df", "echo ran > \"$NOTES\"");
    EXPECT_EQ(result.status, 127) << argument;
    EXPECT_THAT(result.standardError, StartsWith("df: "));
    EXPECT_EQ(notes(), "");
  }
  EXPECT_THAT(run("df", {}, "/usr/bin").standardError, HasSubstr("no drive"));
}

}  // namespace
}  // namespace kelvane
