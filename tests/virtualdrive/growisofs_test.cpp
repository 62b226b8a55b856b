// SPDX-License-Identifier: GPL-2.0-or-later
// growisofs at the emulated drive, unchanged, with every DVD it can write.
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <thread>

#include "tool_fixture.h"
#include "virtualdrive/big_endian.h"
#include "virtualdrive/virtual_drive.h"

namespace kelvane::virtualdrive {
namespace {

using testing::HasSubstr;
using testing::Not;

/// Media by the name that kelvanedisc has for them.
enum class Keeps { EarlierSessions, OnlyTheLastVolume };
struct Medium {
  const char* name;
  Keeps keeps;
};

void PrintTo(const Medium& medium, std::ostream* out) {
  *out << medium.name;
}

const Medium kDvdR{"dvd-r", Keeps::EarlierSessions};
const Medium kDvdRw{"dvd-rw", Keeps::EarlierSessions};
const Medium kRestrictedOverwrite{"dvd-rw-ro", Keeps::OnlyTheLastVolume};
const Medium kDvdPlusRw{"dvd+rw", Keeps::OnlyTheLastVolume};
const Medium kDvdPlusR{"dvd+r", Keeps::EarlierSessions};

class Growisofs : public ToolTest {
 protected:
  Finished growisofs(const std::vector<std::string>& arguments) {
    std::vector<std::string> command{"growisofs", "-use-the-force-luke=tty"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runImpatiently(command);
  }
  Finished dvdFormatter(const std::vector<std::string>& arguments) {
    std::vector<std::string> command{"dvd+rw-format"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    command.emplace_back("/dev/sr0");
    return runImpatiently(command);
  }
  /// Burns a session of the folder, which becomes part of the volume.
  Finished burn(const char* how, const std::string& source,
                const std::vector<std::string>& options = {}) {
    std::vector<std::string> arguments(options);
    for (const char* word : {how, "/dev/sr0", "-quiet", "-r", "-J"}) arguments.emplace_back(word);
    arguments.push_back(source);
    return growisofs(arguments);
  }
  void expectBurned(const char* how, const std::string& source,
                    const std::vector<std::string>& options = {}) {
    const auto finished = burn(how, source, options);
    ASSERT_EQ(finished.status, 0) << finished.err;
    EXPECT_THAT(finished.err, Not(HasSubstr(":-"))) << "no complaint of any kind";
    EXPECT_EQ(info()["tray"], "closed");
  }
  /// The bytes of the disc's first closed sessions.
  std::string bytesOfSessions(std::size_t count) {
    std::string bytes;
    std::ifstream stream(disc() + "/sectors", std::ios::binary);
    const auto sessions = info()["sessions"];
    for (std::size_t i = 0; i < count; ++i) {
      const auto track = sessions.at(i)["tracks"].at(0);
      std::string part(track["sectors"].get<std::size_t>() * 2048, '\0');
      stream.seekg(track["start"].get<std::int64_t>() * 2048);
      stream.read(part.data(), static_cast<std::streamsize>(part.size()));
      EXPECT_EQ(stream.gcount(), static_cast<std::streamsize>(part.size()));
      bytes += part;
    }
    return bytes;
  }
  /// Reads the volume by kelvanedisc, by xorriso, and its names by isoinfo.
  void expectVolume(const std::string& expected) {
    const auto number = std::to_string(counter_++);
    const auto own = kelvanedisc({"extract", disc(), path("own " + number)});
    ASSERT_EQ(own.status, 0) << own.err;
    EXPECT_EQ(differences(expected, path("own " + number)), "");
    const auto start =
        std::to_string(info()["sessions"].back()["tracks"].at(0)["start"].get<int>());
    const auto other = runImpatiently({"xorriso", "-indev", "/dev/sr0", "-osirrox", "on",
                                       "-extract", "/", path("other " + number)});
    ASSERT_EQ(other.status, 0) << other.err;
    EXPECT_EQ(differences(expected, path("other " + number)), "");
    const auto names = run({"isoinfo", "-i", "/dev/sr0", "-T", start, "-R", "-f"});
    EXPECT_EQ(names.status, 0) << names.err;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(expected)) {
      const auto name = entry.path().string().substr(expected.size());
      EXPECT_THAT(names.out, HasSubstr(name + "\n"));
    }
  }

  /// Begins a further session of the folder, and kills growisofs as soon as some of it has arrived.
  void killWhileBurning(const std::string& source, std::uintmax_t endBefore) {
    const auto child = fork();
    if (child == 0) {
      const int silence = open("/dev/null", O_WRONLY);
      dup2(silence, STDOUT_FILENO);
      dup2(silence, STDERR_FILENO);
      execl(KELVANE_BIN_DIR "/kelvanedisc", "kelvanedisc", "run", disc().c_str(), "--", "growisofs",
            "-use-the-force-luke=tty", "-M", "/dev/sr0", "-quiet", "-r", "-J", source.c_str(),
            nullptr);
      _exit(127);
    }
    const auto arrived = [&] {
      return std::filesystem::file_size(disc() + "/sectors") > endBefore + 100000;
    };
    while (!arrived() && waitpid(child, nullptr, WNOHANG) == 0) std::this_thread::yield();
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
  }
  /// What the drive answers to a command block, without a shim between.
  std::vector<std::uint8_t> ask(const std::vector<std::uint8_t>& block, std::size_t room) {
    std::string error;
    const auto drive = VirtualDrive::open(disc(), &error);
    std::vector<std::uint8_t> data(room);
    EXPECT_TRUE(drive && drive->execute(block, data, {}).good()) << error;
    return data;
  }

  int counter_ = 0;
};

class GrowisofsOnEveryMedium : public Growisofs, public testing::WithParamInterface<Medium> {};

TEST_P(GrowisofsOnEveryMedium, FirstSessionAndFourMoreAreReadBackByOthers) {
  create({"--media", GetParam().name, "--capacity", "100"});
  const auto all = makeSource("all", 1);
  expectBurned("-Z", all);
  expectVolume(all);
  for (unsigned number = 2; number <= 5; ++number) {
    const auto before =
        bytesOfSessions(GetParam().keeps == Keeps::EarlierSessions ? number - 1 : 0);
    makeSource("all", number);
    expectBurned("-M", makeSource("part " + std::to_string(number), number));
    if (GetParam().keeps == Keeps::EarlierSessions) {
      EXPECT_EQ(info()["sessions"].size(), number);
      EXPECT_TRUE(bytesOfSessions(GetParam().keeps == Keeps::EarlierSessions ? number - 1 : 0) ==
                  before)
          << "earlier sessions are as they were";
    }
    expectVolume(all);
  }
}

TEST_F(Growisofs, DvdRwIsFormattedBlankedAndFormattedAgain) {
  create({"--media", "dvd-rw", "--capacity", "100", "--from", makeSource("one", 1)});
  const auto refused = dvdFormatter({});
  EXPECT_THAT(refused.err, HasSubstr("media is not blank"));
  EXPECT_EQ(info()["sessions"].size(), 1U);

  ASSERT_EQ(dvdFormatter({"-force"}).status, 0);
  EXPECT_EQ(info()["mode"], "restricted overwrite");
  EXPECT_EQ(kelvanedisc({"ls", disc()}).status, 1) << "nothing is left";
  const auto two = makeSource("two", 2);
  expectBurned("-Z", two);
  expectVolume(two);

  ASSERT_EQ(dvdFormatter({"-blank=full"}).status, 0);
  EXPECT_EQ(info()["mode"], "sequential");
  EXPECT_EQ(info()["state"], "blank");
  expectBurned("-Z", two);
  EXPECT_EQ(info()["state"], "appendable");

  ASSERT_EQ(dvdFormatter({"-force=full"}).status, 0);
  EXPECT_EQ(info()["sessions"].at(0)["lead_out"], 51200) << "all of it";
  expectBurned("-Z", two);
  makeSource("two", 3);
  expectBurned("-M", makeSource("three", 3));
  expectVolume(two);
}

TEST_F(Growisofs, MinimallyBlankedDvdRwIsWrittenAtOnceAndClosed) {
  create({"--media", "dvd-rw", "--capacity", "100", "--from", makeSource("one", 1)});
  ASSERT_EQ(dvdFormatter({"-blank"}).status, 0);
  EXPECT_EQ(info()["state"], "blank");
  const auto two = makeSource("two", 2);
  const auto finished = burn("-Z", two);
  EXPECT_EQ(finished.status, 0);
  EXPECT_THAT(finished.err, HasSubstr("FEATURE 21h is not on, engaging DAO"));
  EXPECT_EQ(info()["state"], "closed");
  expectVolume(two);
  EXPECT_THAT(burn("-M", two).err, HasSubstr(":-( media is not appendable"));
}

TEST_F(Growisofs, DvdPlusRwIsFormattedAnewOrGivenALeadOut) {
  create({"--media", "dvd+rw", "--capacity", "100"});
  ASSERT_EQ(dvdFormatter({}).status, 0);
  EXPECT_EQ(info()["state"], "overwritable");
  const auto one = makeSource("one", 1);
  expectBurned("-Z", one);
  const auto leadOut = info()["sessions"].at(0)["lead_out"];
  EXPECT_THAT(dvdFormatter({}).err, HasSubstr("media is already formatted"));
  ASSERT_EQ(dvdFormatter({"-lead-out"}).status, 0);
  expectVolume(one);
  EXPECT_EQ(info()["sessions"].at(0)["lead_out"], leadOut);
  ASSERT_EQ(dvdFormatter({"-force"}).status, 0);
  EXPECT_TRUE(info()["sessions"].empty());
  EXPECT_THAT(dvdFormatter({"-blank"}).err, HasSubstr("illegal command-line option"));
}

TEST_F(Growisofs, WriteOnceDiscsAreNeitherOverwrittenNorFormattedNorContinuedOnceClosed) {
  const auto one = makeSource("one", 1);
  const auto two = makeSource("two", 2);
  for (const auto& medium : {kDvdR, kDvdPlusR}) {
    create({"--media", medium.name, "--capacity", "100", "--from", one});
    const auto before = sectors();
    EXPECT_THAT(burn("-Z", two).err, HasSubstr("already carries isofs"));
    EXPECT_THAT(dvdFormatter({"-force"}).err, HasSubstr("doesn't appear to be"));
    EXPECT_THAT(dvdFormatter({"-blank"}).err, HasSubstr("doesn't appear to be"));
    EXPECT_EQ(sectors(), before) << medium.name;
    std::filesystem::remove_all(disc());

    create({"--media", medium.name, "--capacity", "100"});
    expectBurned("-Z", one, {"-dvd-compat"});
    EXPECT_EQ(info()["state"], "closed");
    EXPECT_THAT(burn("-M", two).err, HasSubstr(":-( media is not appendable"));
    std::filesystem::remove_all(disc());
  }
}

TEST_P(GrowisofsOnEveryMedium, OverburnedSessionFillsTheDiscAndFailsWithoutAnExitStatus) {
  create({"--media", GetParam().name, "--capacity", "40", "--from", makeSource("one", 1)});
  const auto before = contentOf(disc() + "/sectors").substr(0, 500UL * 2048);
  std::filesystem::create_directory(folder_ / "large");
  writeFile(folder_ / "large" / "file", patternBytes(41000000, 1));
  const auto finished = burn("-M", path("large"), {"-overburn"});
  EXPECT_EQ(finished.status, 0) << "it ends by executing itself";
  EXPECT_THAT(finished.err, HasSubstr(":-! ignoring..."));
  EXPECT_THAT(finished.err, HasSubstr(":-[ WRITE@LBA="));
  if (GetParam().keeps == Keeps::OnlyTheLastVolume) return;
  EXPECT_TRUE(sectors().starts_with(before));
  EXPECT_EQ(info()["state"], "closed") << "no further session has room";
}

TEST_P(GrowisofsOnEveryMedium, SessionThatDoesNotFitIsRefusedAndNothingIsWritten) {
  create({"--media", GetParam().name, "--capacity", "40", "--from", makeSource("one", 1)});
  const auto before = bytesOfSessions(1);
  std::filesystem::create_directory(folder_ / "large");
  writeFile(folder_ / "large" / "file", patternBytes(41000000, 1));
  const auto finished = burn("-M", path("large"));
  EXPECT_THAT(finished.err, HasSubstr(":-("));
  EXPECT_TRUE(bytesOfSessions(1).substr(0, before.size()) == before);
  expectVolume(path("one"));
}

TEST_P(GrowisofsOnEveryMedium, KilledInTheMiddleItLeavesWhatADriveWouldTellOf) {
  create({"--media", GetParam().name, "--from", makeSource("one", 1)});
  const auto first = bytesOfSessions(1);
  const auto end = std::filesystem::file_size(disc() + "/sectors");
  std::filesystem::create_directory(folder_ / "large");
  writeFile(folder_ / "large" / "file", "");
  std::filesystem::resize_file(folder_ / "large" / "file", 2000000000);
  killWhileBurning(path("large"), end);

  const auto information = ask({0x51, 0, 0, 0, 0, 0, 0, 0, 34, 0}, 34);
  const auto track = ask({0x52, 1, 0, 0, 0, information.at(6), 0, 0, 36, 0}, 36);
  if (GetParam().keeps == Keeps::EarlierSessions) {
    EXPECT_EQ(information.at(2) & 0x0F, 0x05) << "appendable, the last session incomplete";
    EXPECT_EQ(information.at(4), 2) << "the second session";
    EXPECT_EQ(information.at(6), 2) << "the second track";
    EXPECT_EQ(track.at(7) & 0x03, 0x03) << "goes on where its data ends";
    EXPECT_EQ(read32(track, 12), read32(track, 28) + 1);
    EXPECT_EQ(info()["sessions"].size(), 2U);
    EXPECT_EQ(info()["sessions"].at(1)["closed"], false);
    EXPECT_TRUE(bytesOfSessions(1) == first);
    EXPECT_THAT(burn("-M", path("one")).err, HasSubstr(":-? resuming track"));
  } else if (std::string(GetParam().name) == kDvdPlusRw.name) {
    EXPECT_EQ(information.at(2) & 0x0F, 0x0E);
    EXPECT_EQ(information.at(7) & 0x03, 0x02) << "background formatting runs";
    expectVolume(path("one"));
  } else {
    EXPECT_EQ(information.at(2) & 0x0F, 0x05) << "the intermediate state";
    EXPECT_EQ(read32(track, 12), read32(track, 24)) << "grows at its end";
    expectVolume(path("one"));
  }
}

INSTANTIATE_TEST_SUITE_P(Media, GrowisofsOnEveryMedium,
                         testing::Values(kDvdR, kDvdRw, kRestrictedOverwrite, kDvdPlusRw,
                                         kDvdPlusR),
                         [](const auto& instance) { return testNameOf(instance.param.name); });

}  // namespace
}  // namespace kelvane::virtualdrive
