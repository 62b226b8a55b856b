// SPDX-License-Identifier: GPL-2.0-or-later
#include "virtualdrive/shim_environment.h"

#include "tool_fixture.h"

namespace kelvane::virtualdrive {
namespace {

using testing::HasSubstr;

class Shim : public ToolTest {};

TEST_F(Shim, ProgramsFindADriveWhicheverWayTheyAsk) {
  create({"--media", "cd-r", "--from", makeSource("one", 1)});
  const auto before = sectors();
  const auto finished = run({KELVANE_SHIM_PROBE});
  EXPECT_EQ(finished.status, 0) << finished.out << finished.err;
  EXPECT_EQ(sectors(), before);
}

TEST_F(Shim, OtherFilesAndProgramsAreLeftAlone) {
  create({"--media", "cd-r"});
  writeFile(path("file"), "as ever");
  const auto finished = run({"sh", "-c",
                             "cat file; stat -c ' %F' file; echo more >> file; cat file; "
                             "test ! -e /dev/sr1; ls -d /dev/null"});
  EXPECT_EQ(finished.status, 0) << finished.err;
  EXPECT_EQ(finished.out, "as ever regular file\nas evermore\n/dev/null\n");
}

TEST_F(Shim, WithoutADiscNothingIsShown) {
  setenv("LD_PRELOAD", KELVANE_LIBEXEC_DIR "/kelvane-drive-shim.so", 1);
  setenv("KELVANE_SHIM_DISC", path("nothing").c_str(), 1);
  setenv("KELVANE_SHIM_DEVICE", "/dev/sr29", 1);
  const auto finished = runProgram({"test", "-e", "/dev/sr29"});
  unsetenv("LD_PRELOAD");
  unsetenv("KELVANE_SHIM_DISC");
  unsetenv("KELVANE_SHIM_DEVICE");
  EXPECT_EQ(finished.status, 1);
}

TEST_F(Shim, EnvironmentNamesLibraryDiscAndDevice) {
  std::string error;
  const auto variables =
      shimEnvironment(KELVANE_LIBEXEC_DIR, path("disc.kvdisc"), "/dev/sr3", &error);
  ASSERT_TRUE(variables) << error;
  std::map<std::string, std::string> values;
  for (const auto& variable : *variables) values[variable.name] = variable.value;
  EXPECT_EQ(values["LD_PRELOAD"], KELVANE_LIBEXEC_DIR "/kelvane-drive-shim.so");
  EXPECT_EQ(values["KELVANE_SHIM_DISC"], path("disc.kvdisc"));
  EXPECT_EQ(values["KELVANE_SHIM_DEVICE"], "/dev/sr3");
}

TEST_F(Shim, EnvironmentKeepsWhatIsPreloadedAlready) {
  setenv("LD_PRELOAD", "", 1);
  std::string error;
  auto variables = shimEnvironment(KELVANE_LIBEXEC_DIR, disc(), "/dev/sr0", &error);
  ASSERT_TRUE(variables);
  EXPECT_THAT((*variables)[0].value, testing::EndsWith("shim.so"));
  setenv("LD_PRELOAD", "/lib/other.so", 1);
  variables = shimEnvironment(KELVANE_LIBEXEC_DIR, disc(), "/dev/sr0", &error);
  unsetenv("LD_PRELOAD");
  ASSERT_TRUE(variables);
  EXPECT_THAT((*variables)[0].value, testing::EndsWith("shim.so:/lib/other.so"));
}

TEST_F(Shim, EnvironmentThatCannotWorkIsRefused) {
  std::string error;
  EXPECT_FALSE(shimEnvironment(folder_.path(), disc(), "/dev/sr0", &error));
  EXPECT_THAT(error, HasSubstr("missing"));
  for (const char* device :
       {"/dev/sr32", "/dev/sr", "/dev/sr1x", "sr0", "/dev/cdrom", "/dev/sr-1"}) {
    EXPECT_FALSE(shimEnvironment(KELVANE_LIBEXEC_DIR, disc(), device, &error)) << device;
  }
  const auto spaced = folder_ / "with space";
  std::filesystem::create_directory(spaced);
  writeFile(spaced / "kelvane-drive-shim.so", "");
  EXPECT_FALSE(shimEnvironment(spaced, disc(), "/dev/sr0", &error));
  EXPECT_THAT(error, HasSubstr("a space or a colon"));
}

}  // namespace
}  // namespace kelvane::virtualdrive
