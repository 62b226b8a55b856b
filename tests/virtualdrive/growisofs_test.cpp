// SPDX-License-Identifier: GPL-2.0-or-later
// growisofs at the emulated drive, unchanged, with every DVD it can write.
#include <algorithm>
#include <fstream>

#include "tool_fixture.h"

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
    return run(command);
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
  /// Reads the volume by kelvanedisc, by xorriso through the drive, and its names by isoinfo.
  void expectVolume(const std::string& expected) {
    const auto number = std::to_string(counter_++);
    const auto own = kelvanedisc({"extract", disc(), path("own " + number)});
    ASSERT_EQ(own.status, 0) << own.err;
    EXPECT_EQ(differences(expected, path("own " + number)), "");
    const auto other = run({"xorriso", "-indev", "/dev/sr0", "-osirrox", "on", "-extract", "/",
                            path("other " + number)});
    ASSERT_EQ(other.status, 0) << other.err;
    EXPECT_EQ(differences(expected, path("other " + number)), "");
    const auto start = info()["sessions"].back()["tracks"].at(0)["start"].get<int>();
    const auto names = run({"isoinfo", "-i", "/dev/sr0", "-T", std::to_string(start), "-R", "-f"});
    EXPECT_EQ(names.status, 0) << names.err;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(expected)) {
      const auto name = entry.path().string().substr(expected.size());
      EXPECT_THAT(names.out, HasSubstr(name + "\n"));
    }
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

INSTANTIATE_TEST_SUITE_P(Media, GrowisofsOnEveryMedium,
                         testing::Values(kDvdR, kDvdRw, kRestrictedOverwrite, kDvdPlusRw,
                                         kDvdPlusR),
                         [](const auto& instance) {
                           std::string name = instance.param.name;
                           std::erase(name, '-');
                           std::ranges::replace(name, '+', 'P');
                           return name;
                         });

}  // namespace
}  // namespace kelvane::virtualdrive
