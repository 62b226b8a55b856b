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

TEST_F(Shim, MountsOfARealDriveOfTheSameNameAreNotShown) {
  create({"--media", "cd-r", "--from", makeSource("one", 1)});
  writeFile(path("mounts"),
            "/dev/sr0 /media/disc iso9660 ro 0 0\n/dev/sr1 /other iso9660 ro 0 0\n"
            "/dev/sr0 /media/again iso9660 ro 0 0\n");
  const auto finished = run({"env", "KELVANE_PROBE_MOUNTS=" + path("mounts"), KELVANE_SHIM_PROBE});
  EXPECT_EQ(finished.status, 0) << finished.out << finished.err;
}

TEST_F(Shim, DvdIsABlockDeviceLikeACd) {
  for (const char* medium : {"dvd-r", "dvd-rw", "dvd-rw-ro", "dvd+rw", "dvd+r"}) {
    create({"--media", medium, "--from", makeSource(medium, 1)});
    const auto finished = run({KELVANE_SHIM_PROBE});
    EXPECT_EQ(finished.status, 0) << medium << "\n" << finished.out << finished.err;
    std::filesystem::remove_all(disc());
  }
}

TEST_F(Shim, ProgramThatOpensTheDriveHearsNothingOfAChangedMedium) {
  create({"--media", "dvd-r"});
  EXPECT_EQ(kelvanedisc({"eject", disc()}).status, 0);
  EXPECT_EQ(kelvanedisc({"insert", disc()}).status, 0);
  const auto finished = run({"dvd+rw-mediainfo", "/dev/sr0"});
  EXPECT_EQ(finished.status, 0) << finished.err;
  EXPECT_THAT(finished.out, HasSubstr("11h, DVD-R Sequential"));
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
