// SPDX-License-Identifier: GPL-2.0-or-later
// Discs with audio tracks: made by kelvanedisc and by other people's programs, and read by these.
#include "libburn_fixture.h"

namespace kelvane::virtualdrive {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

constexpr unsigned kAudioSector = 2352;

class AudioPrograms : public LibburnTest {
 protected:
  /// A file of sound; the file's path.
  std::string sound(const std::string& name, unsigned sectors, unsigned seed) {
    writeFile(folder_ / name, patternBytes(sectors * kAudioSector, seed));
    return path(name);
  }
  /// "data" or "audio" of each track of each session.
  std::vector<std::vector<std::string>> kinds() {
    std::vector<std::vector<std::string>> sessions;
    const auto disc = info();
    for (const auto& session : disc["sessions"]) {
      auto& tracks = sessions.emplace_back();
      for (const auto& track : session["tracks"]) {
        tracks.emplace_back(track["audio"].get<bool>() ? "audio" : "data");
      }
    }
    return sessions;
  }
  std::string samples(int session, int track, unsigned sectors) {
    const auto start = info()["sessions"][static_cast<unsigned>(session)]["tracks"]
                             [static_cast<unsigned>(track)]["start"]
                                 .get<std::size_t>();
    return contentOf(disc() + "/audio").substr(start * kAudioSector, sectors * kAudioSector);
  }
};

using Kinds = std::vector<std::vector<std::string>>;

TEST_F(AudioPrograms, MusicDiscIsReadByLibburn) {
  create({"--media", "cd-r", "--audio", sound("one", 400, 1), "--audio", sound("two", 300, 2),
          "--closed"});
  EXPECT_EQ(kinds(), (Kinds{{"audio", "audio"}}));
  EXPECT_EQ(info()["state"], "closed");
  const auto toc = cdrskin({"-toc"});
  EXPECT_EQ(toc.status, 0) << toc.err;
  EXPECT_THAT(toc.out, ContainsRegex("track: +1 lba: +0 .*control: 0 mode: 0"));
  EXPECT_THAT(toc.out, ContainsRegex("track: +2 lba: +552 .*control: 0 mode: 0"));
  EXPECT_TRUE(samples(0, 1, 300) == patternBytes(300 * kAudioSector, 2));
}

TEST_F(AudioPrograms, MixedDiscHasDataBeforeTheMusic) {
  const auto source = makeSource("one", 1);
  create({"--media", "cd-r", "--from", source, "--audio", sound("one.raw", 400, 1)});
  EXPECT_EQ(kinds(), (Kinds{{"data", "audio"}}));
  EXPECT_EQ(info()["state"], "appendable");
  const auto toc = cdrskin({"-toc"});
  EXPECT_THAT(toc.out, ContainsRegex("track: +1 lba: +0 .*control: 4"));
  EXPECT_THAT(toc.out, ContainsRegex("track: +2 lba: +[0-9]+ .*control: 0"));
  const auto out = path("out");
  ASSERT_EQ(kelvanedisc({"extract", disc(), out}).status, 0);
  EXPECT_EQ(differences(source, out), "");
}

TEST_F(AudioPrograms, EnhancedMusicDiscHasItsDataInASecondSessionWhichCanBeContinued) {
  create({"--media", "cd-r", "--from", makeSource("one", 1), "--audio", sound("one.raw", 400, 1),
          "--audio", sound("two.raw", 350, 2), "--audio-session"});
  EXPECT_EQ(kinds(), (Kinds{{"audio", "audio"}, {"data"}}));
  const auto toc = cdrskin({"-toc"});
  EXPECT_THAT(toc.out, ContainsRegex("track: +2 lba: +552 .*control: 0"));
  EXPECT_THAT(toc.out, ContainsRegex("track: +3 lba: +[0-9]+ .*control: 4"));
  const auto places = run({"sh", "-c", "cdrskin dev=/dev/sr0 -msinfo 2> /dev/null"}).out;
  const auto built =
      run({"genisoimage", "-quiet", "-r", "-J", "-M", "/dev/sr0", "-C",
           places.substr(0, places.find('\n')), "-o", path("grown.iso"), makeSource("two", 2)});
  ASSERT_EQ(built.status, 0) << built.err;
  const auto burned = cdrskin({"-multi", "-tao", path("grown.iso")});
  ASSERT_EQ(burned.status, 0) << burned.err;
  EXPECT_EQ(kinds(), (Kinds{{"audio", "audio"}, {"data"}, {"data"}}));
  EXPECT_TRUE(samples(0, 0, 400) == patternBytes(400 * kAudioSector, 1));
  const auto out = path("out");
  ASSERT_EQ(kelvanedisc({"extract", disc(), out}).status, 0);
  makeSource("both", 1);
  EXPECT_EQ(differences(makeSource("both", 2), out), "");
}

TEST_F(AudioPrograms, CdrskinWritesMusicTrackAtOnce) {
  create({"--media", "cd-r"});
  const auto burned = cdrskin({"-tao", "-multi", "-swab", "-audio", sound("one.raw", 400, 1),
                               "-audio", sound("two.raw", 300, 2)});
  ASSERT_EQ(burned.status, 0) << burned.err;
  EXPECT_EQ(kinds(), (Kinds{{"audio", "audio"}}));
  EXPECT_EQ(info()["state"], "appendable");
  EXPECT_TRUE(samples(0, 1, 300) == patternBytes(300 * kAudioSector, 2));
}

TEST_F(AudioPrograms, CdrskinWritesMusicSessionAtOnce) {
  create({"--media", "cd-r"});
  const auto burned = cdrskin(
      {"-sao", "-swab", "-audio", sound("one.raw", 400, 1), "-audio", sound("two.raw", 300, 2)});
  ASSERT_EQ(burned.status, 0) << burned.err;
  EXPECT_EQ(kinds(), (Kinds{{"audio", "audio"}}));
  EXPECT_EQ(info()["state"], "closed");
  EXPECT_TRUE(samples(0, 0, 400) == patternBytes(400 * kAudioSector, 1));
  EXPECT_TRUE(samples(0, 1, 300) == patternBytes(300 * kAudioSector, 2));
}

TEST_F(AudioPrograms, SoundThatEndsWithinASectorIsFilledUp) {
  writeFile(folder_ / "odd", std::string(300 * kAudioSector + 10, 'x'));
  create({"--media", "cd-rw", "--audio", path("odd")});
  EXPECT_EQ(info()["sessions"][0]["tracks"][0]["sectors"], 301);
  EXPECT_EQ(samples(0, 0, 301).substr(300 * kAudioSector),
            std::string(10, 'x') + std::string(kAudioSector - 10, '\0'));
}

TEST_F(AudioPrograms, DiscsThatCannotBeAreRefused) {
  const auto file = sound("one", 300, 1);
  const auto source = makeSource("source", 1);
  const auto made = [&](std::vector<std::string> options) {
    options.insert(options.begin(), {"create", disc()});
    return kelvanedisc(options);
  };
  EXPECT_EQ(made({"--media", "dvd-r", "--audio", file}).status, 2);
  EXPECT_EQ(made({"--media", "cd-r", "--audio", file, "--audio-session"}).status, 2) << "no data";
  EXPECT_EQ(made({"--media", "cd-r", "--from", source, "--audio-session"}).status, 2) << "no audio";
  EXPECT_EQ(made({"--media", "cd-r", "--closed"}).status, 2) << "no content";
  EXPECT_EQ(made({"--media", "dvd-r", "--from", source, "--closed"}).status, 2);
  const auto missing = made({"--media", "cd-r", "--audio", path("missing")});
  EXPECT_EQ(missing.status, 1);
  EXPECT_THAT(missing.err, HasSubstr("is no file with sound"));
  const auto full = made({"--media", "cd-r", "--capacity", "1", "--audio", sound("long", 700, 1)});
  EXPECT_EQ(full.status, 1);
  EXPECT_THAT(full.err, HasSubstr("The disc is full."));
  EXPECT_FALSE(std::filesystem::exists(disc()));
}

}  // namespace
}  // namespace kelvane::virtualdrive
