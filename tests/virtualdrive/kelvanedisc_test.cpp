// SPDX-License-Identifier: GPL-2.0-or-later
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "tool_fixture.h"

namespace kelvane::virtualdrive {
namespace {

using testing::HasSubstr;

class Kelvanedisc : public ToolTest {
 protected:
  /// What lies in the test's folder.
  std::vector<std::string> content() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }
};

TEST_F(Kelvanedisc, BlankDiscIsMadeAndDescribed) {
  create({"--media", "cd-rw", "--capacity", "650"});
  const auto text = kelvanedisc({"info", disc()});
  EXPECT_EQ(text.status, 0);
  EXPECT_THAT(text.out, HasSubstr("cd-rw"));
  EXPECT_THAT(text.out, HasSubstr("blank"));
  const auto object = info();
  EXPECT_EQ(object["medium"], "cd-rw");
  EXPECT_EQ(object["state"], "blank");
  EXPECT_EQ(object["tray"], "closed");
  EXPECT_EQ(object["capacity_sectors"], 650 * 512);
  EXPECT_EQ(object["next_writable_address"], 0);
  EXPECT_EQ(object["free_sectors"], 650 * 512);
  EXPECT_TRUE(object["sessions"].empty());
}

TEST_F(Kelvanedisc, FirstSessionHoldsTheFolderWithAllItsOddNames) {
  const auto source = folder_ / "source";
  std::filesystem::create_directories(source / "ein Ordner [1]" / "tief" / "tiefer");
  std::filesystem::create_directories(source / "leer");
  const std::string longName(100, 'n');
  for (const auto& name :
       {std::string("Übergröße.txt"), std::string("a=b"), std::string("back\\slash"),
        std::string("q\"uote'"), std::string("dollar $HOME `x` #;&|"), std::string("-rf"),
        std::string("日本語"), longName, std::string("ein Ordner [1]/tief/tiefer/x")}) {
    writeFile(source / name, "in " + name);
  }
  writeFile(source / "none", "");
  std::filesystem::create_symlink("../außerhalb", source / "leer" / "link");
  writeFile(source / "big", patternBytes(5000001, 1));

  create({"--media", "cd-r", "--from", source.string(), "--label", "Ausflug"});
  EXPECT_EQ(info()["state"], "appendable");
  ASSERT_EQ(info()["sessions"].size(), 1U);
  const auto extracted = kelvanedisc({"extract", disc(), path("out")});
  EXPECT_EQ(extracted.status, 0) << extracted.err;
  EXPECT_EQ(differences(source, path("out")), "");
  // Tools not written here see the same.
  const auto listed = runProgram({"xorriso", "-indev", disc() + "/sectors", "-osirrox", "on",
                                  "-extract", "/", path("oracle")});
  EXPECT_EQ(listed.status, 0) << listed.err;
  EXPECT_EQ(differences(source, path("oracle")), "");
  EXPECT_THAT(listed.err, HasSubstr("Ausflug"));
}

TEST_F(Kelvanedisc, ExtractKeepsTimesAndPermissions) {
  makeSource("source", 1);
  chmod(path("source/text 1").c_str(), 0755);
  const timespec times[2] = {{1000000000, 0}, {1234567890, 0}};
  utimensat(AT_FDCWD, path("source/text 1").c_str(), times, 0);
  create({"--media", "cd-r", "--from", path("source")});
  EXPECT_EQ(kelvanedisc({"extract", disc(), path("out")}).status, 0);
  struct stat status {};
  ASSERT_EQ(stat(path("out/text 1").c_str(), &status), 0);
  EXPECT_EQ(status.st_mtime, 1234567890);
  EXPECT_EQ(status.st_mode & 0777U, 0555U) << "as a disc has it: readable, executable";
}

TEST_F(Kelvanedisc, ExtractOverwritesNothing) {
  create({"--media", "cd-r", "--from", makeSource("source", 1)});
  std::filesystem::create_directory(path("out"));
  writeFile(path("out/text 1"), "mine");
  const auto finished = kelvanedisc({"extract", disc(), path("out")});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.err, HasSubstr("/text 1: File exists"));
  EXPECT_EQ(contentOf(path("out/text 1")), "mine");
  EXPECT_TRUE(std::filesystem::exists(path("out/folder 1/data"))) << "the rest is there";
}

TEST_F(Kelvanedisc, ListShowsTypesSizesPathsAndTargets) {
  create({"--media", "cd-r", "--from", makeSource("source", 1)});
  const auto listed = kelvanedisc({"ls", disc()});
  EXPECT_EQ(listed.status, 0) << listed.err;
  EXPECT_THAT(listed.out, testing::ContainsRegex("-r--r--r-- +1000000 /folder 1/data\n"));
  EXPECT_THAT(listed.out, testing::ContainsRegex("dr-xr-xr-x +[0-9]+ /folder 1\n"));
  EXPECT_THAT(listed.out, HasSubstr("/link 1 -> text 1\n"));
}

TEST_F(Kelvanedisc, ExistingPathIsRefusedAndLeftAsItIs) {
  makeSource("source", 1);
  writeFile(disc(), "precious");
  for (const std::vector<std::string>& options :
       {std::vector<std::string>{}, std::vector<std::string>{"--from", path("source")}}) {
    std::vector<std::string> arguments{"create", disc(), "--media", "cd-r"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const auto finished = kelvanedisc(arguments);
    EXPECT_EQ(finished.status, 1);
    EXPECT_THAT(finished.err, HasSubstr("exists already"));
  }
  EXPECT_EQ(contentOf(disc()), "precious");
  std::filesystem::remove(disc());
  std::filesystem::create_symlink("nowhere", disc());
  EXPECT_EQ(kelvanedisc({"create", disc(), "--media", "cd-r"}).status, 1) << "a dangling link";
}

TEST_F(Kelvanedisc, FailedCreateLeavesNothingBehind) {
  makeSource("source", 1);
  const auto fails = [&](const std::vector<std::string>& options, const std::string& why) {
    std::vector<std::string> arguments{"create", disc(), "--media", "cd-r"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const auto finished = kelvanedisc(arguments);
    EXPECT_NE(finished.status, 0);
    EXPECT_THAT(finished.err, HasSubstr(why));
    EXPECT_THAT(content(), testing::UnorderedElementsAre("source"));
  };
  fails({"--from", path("missing")}, "is no folder");
  writeFile(path("source/full"), patternBytes(3000000, 1));
  fails({"--from", path("source"), "--capacity", "2"}, "The disc is full");
  writeFile(path("source/\xFF\xFE"), "invalid UTF-8");
  fails({"--from", path("source")}, "genisoimage could not build");
  fails({"--from", path("source"), "--label", std::string(33, 'x')}, "1 to 32 bytes");
  fails({"--label", "x"}, "--from");
  fails({"--capacity", "100000"}, "MB");
  fails({"--capacity", "0"}, "MB");
}

TEST_F(Kelvanedisc, InterruptedCreateLeavesNothingBehind) {
  makeSource("source", 1);
  // A pipe in the place of a file would not be read; a file large enough takes its time.
  writeFile(path("source/large"), patternBytes(200000000, 1));
  const auto child = fork();
  if (child == 0) {
    execl(KELVANE_BIN_DIR "/kelvanedisc", "kelvanedisc", "create", disc().c_str(), "--media",
          "cd-r", "--from", path("source").c_str(), nullptr);
    _exit(127);
  }
  while (content().size() < 2) std::this_thread::yield();
  kill(child, SIGTERM);
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) GTEST_SKIP() << "it was done already";
  EXPECT_THAT(content(), testing::UnorderedElementsAre("source"));
}

TEST_F(Kelvanedisc, EveryMediumIsMadeBlankOrWithAFirstSession) {
  const auto source = makeSource("source", 1);
  for (const std::string medium : {"cd-r", "cd-rw", "dvd-r", "dvd-rw", "dvd+rw", "dvd+r"}) {
    create({"--media", medium});
    EXPECT_EQ(info()["state"], "blank") << medium;
    EXPECT_EQ(info()["medium"], medium);
    std::filesystem::remove_all(disc());
    create({"--media", medium, "--from", source});
    EXPECT_EQ(info()["state"], medium == "dvd+rw" ? "overwritable" : "appendable") << medium;
    EXPECT_EQ(info()["sessions"].size(), 1U);
    EXPECT_EQ(kelvanedisc({"extract", disc(), path("out " + medium)}).status, 0) << medium;
    EXPECT_EQ(differences(source, path("out " + medium)), "");
    std::filesystem::remove_all(disc());
  }
  EXPECT_EQ(kelvanedisc({"create", disc(), "--media", "blu-ray"}).status, 2);
}

TEST_F(Kelvanedisc, DvdRwIsMadeForRestrictedOverwriteToo) {
  const auto source = makeSource("source", 1);
  create({"--media", "dvd-rw-ro"});
  EXPECT_EQ(info()["medium"], "dvd-rw");
  EXPECT_EQ(info()["mode"], "restricted overwrite");
  EXPECT_EQ(info()["state"], "overwritable");
  EXPECT_EQ(info()["free_sectors"], 2298496);
  std::filesystem::remove_all(disc());
  create({"--media", "dvd-rw-ro", "--from", source, "--capacity", "10"});
  EXPECT_EQ(info()["mode"], "restricted overwrite");
  EXPECT_EQ(kelvanedisc({"extract", disc(), path("out")}).status, 0);
  EXPECT_EQ(differences(source, path("out")), "");
  const auto text = kelvanedisc({"info", disc()});
  EXPECT_THAT(text.out, HasSubstr("Mode:     restricted overwrite"));
  EXPECT_THAT(text.out, HasSubstr("Free:     5120 sectors"));
}

TEST_F(Kelvanedisc, FirstSessionThatDoesNotFitOnADvdIsToldAndLeavesNothingBehind) {
  makeSource("source", 1);
  writeFile(path("source/full"), patternBytes(3000000, 1));
  for (const char* medium : {"dvd-r", "dvd-rw", "dvd-rw-ro", "dvd+rw", "dvd+r"}) {
    const auto finished = kelvanedisc(
        {"create", disc(), "--media", medium, "--capacity", "2", "--from", path("source")});
    EXPECT_EQ(finished.status, 1) << medium;
    EXPECT_THAT(finished.err, HasSubstr("The disc is full")) << medium;
    EXPECT_THAT(content(), testing::UnorderedElementsAre("source"));
  }
}

TEST_F(Kelvanedisc, DiscsThatCannotBeUsedAreNamed) {
  const auto complains = [&](const std::string& what, const std::string& why) {
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"info", what},
                                                      {"ls", what},
                                                      {"extract", what, path("out")},
                                                      {"insert", what},
                                                      {"eject", what},
                                                      {"run", what, "--", "true"}}) {
      const auto finished = kelvanedisc(arguments);
      EXPECT_EQ(finished.status, 3) << arguments.front();
      EXPECT_THAT(finished.err, HasSubstr(why));
      EXPECT_EQ(finished.out, "");
    }
    EXPECT_FALSE(std::filesystem::exists(path("out")));
  };
  complains(path("nothing"), "There is no disc");
  complains(folder_.path().string(), "is not the folder of a disc");
  create({"--media", "cd-r"});
  writeFile(disc() + "/disc.json", "{");
  complains(disc(), "disc.json: it is not JSON");
}

TEST_F(Kelvanedisc, SessionsAreChosenByNumber) {
  create({"--media", "cd-r", "--from", makeSource("one", 1)});
  EXPECT_EQ(kelvanedisc({"ls", disc(), "--session", "1"}).status, 0);
  const auto finished = kelvanedisc({"ls", disc(), "--session", "2"});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.err, HasSubstr("no session 2"));
  EXPECT_EQ(kelvanedisc({"ls", disc(), "--session", "0"}).status, 2);
}

TEST_F(Kelvanedisc, BlankDiscHasNoFiles) {
  create({"--media", "cd-r"});
  const auto finished = kelvanedisc({"ls", disc()});
  EXPECT_EQ(finished.status, 1);
  EXPECT_THAT(finished.err, HasSubstr("no closed session"));
}

TEST_F(Kelvanedisc, DamagedVolumeIsTold) {
  create({"--media", "cd-r", "--from", makeSource("one", 1)});
  auto bytes = sectors();
  bytes.replace(16UL * 2048, 4096, std::string(4096, '\0'));
  writeFile(disc() + "/sectors", bytes);
  const auto finished = kelvanedisc({"ls", disc()});
  EXPECT_EQ(finished.status, 1);
  EXPECT_NE(finished.err, "");
}

TEST_F(Kelvanedisc, TrayIsOpenedAndClosed) {
  create({"--media", "cd-r"});
  EXPECT_EQ(kelvanedisc({"eject", disc()}).status, 0);
  EXPECT_EQ(info()["tray"], "open");
  EXPECT_EQ(kelvanedisc({"insert", disc()}).status, 0);
  EXPECT_EQ(info()["tray"], "closed");
  EXPECT_EQ(kelvanedisc({"eject", disc()}).status, 0);
  EXPECT_EQ(run({"true"}).status, 0) << "run inserts it";
  EXPECT_EQ(info()["tray"], "closed");
}

TEST_F(Kelvanedisc, RunGivesTheCommandItsArgumentsAndItsStatusBack) {
  create({"--media", "cd-r"});
  const auto finished = run({"sh", "-c", "printf '%s|' \"$KELVANEDISC_DEVICE\" \"$@\"; exit 42",
                             "sh", "--", "-x", "a b"});
  EXPECT_EQ(finished.status, 42);
  EXPECT_EQ(finished.out, "/dev/sr0|--|-x|a b|");
  EXPECT_EQ(run({"no-such-program"}).status, 127);
  EXPECT_EQ(run({disc()}).status, 126);
  EXPECT_EQ(kelvanedisc({"run", disc()}).status, 2);
  const auto device = kelvanedisc({"run", disc(), "--device", "/dev/sr7", "--", "sh", "-c",
                                   "echo $KELVANEDISC_DEVICE; test -b /dev/sr7"});
  EXPECT_EQ(device.status, 0);
  EXPECT_EQ(device.out, "/dev/sr7\n");
  EXPECT_EQ(kelvanedisc({"run", disc(), "--device", "/dev/sda", "--", "true"}).status, 1);
}

TEST_F(Kelvanedisc, HelpTellsTheExitStatuses) {
  const auto finished = kelvanedisc({"--help"});
  EXPECT_EQ(finished.status, 0);
  EXPECT_THAT(finished.out, HasSubstr("Exit status:"));
  EXPECT_EQ(kelvanedisc({}).status, 2);
  EXPECT_EQ(kelvanedisc({"frobnicate"}).status, 2);
  EXPECT_EQ(kelvanedisc({"info"}).status, 2);
}

}  // namespace
}  // namespace kelvane::virtualdrive
