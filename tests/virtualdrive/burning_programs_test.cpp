// SPDX-License-Identifier: GPL-2.0-or-later
// The programs that people burn with, at the emulated drive, unchanged.
#include "libburn_fixture.h"

namespace kelvane::virtualdrive {
namespace {

using testing::HasSubstr;

class BurningPrograms : public LibburnTest {
 protected:
  /// "first,next" as cdrskin tells it for the next image.
  std::string multiSessionInformation() {
    const auto finished = runImpatiently({"cdrskin", "dev=/dev/sr0", "-msinfo"});
    EXPECT_EQ(finished.status, 0) << finished.err;
    return finished.out.substr(0, finished.out.find('\n'));
  }
  /// Burns the folder as a further session that continues the last.
  void appendWithGenisoimage(const std::string& source) {
    const auto image = path("append.iso");
    const auto built = run({"genisoimage", "-quiet", "-r", "-J", "-M", "/dev/sr0", "-C",
                            multiSessionInformation(), "-o", image, source});
    ASSERT_EQ(built.status, 0) << built.err;
    const auto burned = cdrskin({"-multi", "-tao", image});
    ASSERT_EQ(burned.status, 0) << burned.err;
  }
  void expectContent(const std::string& session, const std::string& expected) {
    const auto out = path("out " + session + std::to_string(counter_++));
    const auto finished = kelvanedisc({"extract", disc(), out, "--session", session});
    ASSERT_EQ(finished.status, 0) << finished.err;
    EXPECT_EQ(differences(expected, out), "");
  }

  int counter_ = 0;
};

TEST_F(BurningPrograms, CdrskinRecognisesABlankDisc) {
  create({"--media", "cd-r"});
  const auto finished = cdrskin({"-minfo"});
  EXPECT_EQ(finished.status, 0) << finished.err;
  EXPECT_THAT(finished.out, HasSubstr("Current: CD-R"));
  EXPECT_THAT(finished.out, HasSubstr("disk status:              empty"));
  EXPECT_THAT(finished.out, HasSubstr("Is not erasable"));
  EXPECT_THAT(finished.out, testing::ContainsRegex("Remaining writable size: +359847"));
}

TEST_F(BurningPrograms, CdrskinBurnsTrackAtOnceAndAppends) {
  create({"--media", "cd-r"});
  const auto one = makeSource("one", 1);
  const auto image = imageOf(one, "one.iso");
  const auto first = cdrskin({"-multi", "-tao", image});
  ASSERT_EQ(first.status, 0) << first.err;
  const auto bytes = contentOf(image);
  EXPECT_EQ(sectors().substr(0, bytes.size()), bytes);
  EXPECT_EQ(info()["state"], "appendable");
  const auto before = sectors();

  makeSource("two", 2);
  appendWithGenisoimage(path("two"));
  EXPECT_EQ(sectors().substr(0, before.size()), before) << "the first session is untouched";
  const auto leadOut = info()["sessions"][0]["lead_out"].get<int>();
  EXPECT_EQ(info()["sessions"][1]["tracks"][0]["start"], leadOut + 11400);
  expectContent("1", one);
  makeSource("both", 1);
  makeSource("both", 2);
  expectContent("2", path("both"));
}

TEST_F(BurningPrograms, CdrskinReadsTheTableOfContents) {
  create({"--media", "cd-r", "--from", makeSource("one", 1)});
  makeSource("two", 2);
  appendWithGenisoimage(path("two"));
  const auto finished = cdrskin({"-toc"});
  EXPECT_EQ(finished.status, 0) << finished.err;
  EXPECT_THAT(finished.out, HasSubstr("first: 1 last 2"));
  EXPECT_THAT(finished.out, HasSubstr("2 sessions, 2 tracks, appendable CD-R"));
  const auto start = info()["sessions"][1]["tracks"][0]["start"].get<int>();
  EXPECT_THAT(finished.out, HasSubstr(std::to_string(start)));
}

TEST_F(BurningPrograms, CdrskinBurnsABlankDiscInItsDefaultWay) {
  create({"--media", "cd-r"});
  const auto image = imageOf(makeSource("one", 1), "one.iso");
  const auto finished = cdrskin({"-multi", image});
  ASSERT_EQ(finished.status, 0) << finished.err;
  EXPECT_THAT(finished.out, HasSubstr("SAO mode")) << "a session at once";
  EXPECT_EQ(info()["state"], "appendable");
  makeSource("two", 2);
  appendWithGenisoimage(path("two"));
  makeSource("both", 1);
  makeSource("both", 2);
  expectContent("2", path("both"));
}

TEST_F(BurningPrograms, DiscBurnedWithoutMultiTakesNothingMore) {
  create({"--media", "cd-r"});
  const auto image = imageOf(makeSource("one", 1), "one.iso");
  ASSERT_EQ(cdrskin({"-tao", image}).status, 0);
  EXPECT_EQ(info()["state"], "closed");
  const auto before = sectors();
  EXPECT_NE(cdrskin({"-multi", "-tao", image}).status, 0);
  EXPECT_EQ(sectors(), before);
}

TEST_F(BurningPrograms, ImageThatDoesNotFitIsRefused) {
  create({"--media", "cd-r", "--capacity", "1"});
  const auto image = imageOf(makeSource("one", 1), "one.iso");
  EXPECT_NE(cdrskin({"-multi", "-tao", image}).status, 0);
  EXPECT_EQ(info()["state"], "blank");
}

TEST_F(BurningPrograms, CdrskinBlanksARewritableDiscForTheNextBurn) {
  create({"--media", "cd-rw", "--from", makeSource("one", 1)});
  const auto finished = cdrskin({"blank=fast"});
  ASSERT_EQ(finished.status, 0) << finished.err;
  EXPECT_EQ(info()["state"], "blank");
  const auto two = makeSource("two", 2);
  ASSERT_EQ(cdrskin({"-multi", "-tao", imageOf(two, "two.iso")}).status, 0);
  expectContent("1", two);
  ASSERT_EQ(cdrskin({"blank=all"}).status, 0);
  EXPECT_EQ(info()["state"], "blank");
}

TEST_F(BurningPrograms, WriteOnceDiscIsNotBlanked) {
  create({"--media", "cd-r", "--from", makeSource("one", 1)});
  const auto before = sectors();
  EXPECT_NE(cdrskin({"blank=fast"}).status, 0);
  EXPECT_EQ(sectors(), before);
}

TEST_F(BurningPrograms, XorrisoBurnsAppendsAndReads) {
  create({"--media", "cd-r"});
  const auto one = makeSource("one", 1);
  const auto first = xorriso({"-outdev", "/dev/sr0", "-joliet", "on", "-map", one, "/", "-commit"});
  ASSERT_EQ(first.status, 0) << first.err;
  expectContent("1", one);
  const auto before = sectors();

  const auto second = xorriso({"-dev", "/dev/sr0", "-map", makeSource("two", 2) + "/text 2",
                               "/text 2", "-rm", "/text 1", "--", "-commit", "-toc"});
  ASSERT_EQ(second.status, 0) << second.err;
  EXPECT_THAT(second.out, HasSubstr("ISO session  :   2 ,"));
  EXPECT_EQ(sectors().substr(0, before.size()), before);
  std::filesystem::rename(path("one/text 1"), path("moved"));
  std::filesystem::copy_file(path("two/text 2"), path("one/text 2"));
  expectContent("2", one);

  const auto third = xorriso({"-indev", "/dev/sr0", "-osirrox", "on", "-extract", "/", path("x")});
  ASSERT_EQ(third.status, 0) << third.err;
  EXPECT_EQ(differences(one, path("x")), "");
}

TEST_F(BurningPrograms, XorrisoAppendsToWhatOthersHaveBurned) {
  create({"--media", "cd-r", "--from", makeSource("both", 1)});
  makeSource("two", 2);
  appendWithGenisoimage(path("two"));
  const auto third = makeSource("three", 3);
  const auto finished = xorriso({"-dev", "/dev/sr0", "-map", third, "/", "-commit"});
  ASSERT_EQ(finished.status, 0) << finished.err;
  EXPECT_EQ(info()["sessions"].size(), 3U);
  makeSource("both", 2);
  makeSource("both", 3);
  expectContent("3", path("both"));
}

TEST_F(BurningPrograms, XorrisoBlanksARewritableDisc) {
  create({"--media", "cd-rw", "--from", makeSource("one", 1)});
  const auto finished = xorriso({"-outdev", "/dev/sr0", "-blank", "as_needed"});
  EXPECT_EQ(finished.status, 0) << finished.err;
  EXPECT_EQ(info()["state"], "blank");
}

TEST_F(BurningPrograms, ReadersSeeABlockDeviceWithTheDisc) {
  create({"--media", "cd-r", "--from", makeSource("one", 1)});
  const auto listed = run({"isoinfo", "-i", "/dev/sr0", "-J", "-f"});
  EXPECT_EQ(listed.status, 0) << listed.err;
  EXPECT_THAT(listed.out, HasSubstr("/folder 1/data\n"));
  const auto copied = run({"dd", "if=/dev/sr0", "of=" + path("copy"), "bs=2048", "status=none"});
  EXPECT_EQ(copied.status, 0) << copied.err;
  EXPECT_EQ(contentOf(path("copy")), sectors());
}

TEST_F(BurningPrograms, EjectedDiscStaysOutOfReachUntilItIsLoaded) {
  create({"--media", "cd-r", "--from", makeSource("one", 1)});
  const auto finished = cdrskin({"-eject"});
  EXPECT_EQ(finished.status, 0) << finished.err;
  EXPECT_EQ(info()["tray"], "open");
  const auto read = run({"sh", "-c",
                         KELVANE_BIN_DIR "/kelvanedisc eject '" + disc() +
                             "' && dd if=/dev/sr0 count=1 of=/dev/null"});
  EXPECT_EQ(read.status, 1);
  EXPECT_THAT(read.err, HasSubstr("No medium found"));
  EXPECT_EQ(cdrskin({"-load"}).status, 0);
  EXPECT_EQ(info()["tray"], "closed");
}

TEST_F(BurningPrograms, ManySessionsStayReadableEachByItself) {
  create({"--media", "cd-r", "--from", makeSource("all", 1)});
  std::vector<std::string> expected;
  for (unsigned number = 2; number <= 4; ++number) {
    const auto before = sectors();
    appendWithGenisoimage(makeSource("part " + std::to_string(number), number));
    EXPECT_EQ(sectors().substr(0, before.size()), before) << number;
    makeSource("all", number);
    expectContent(std::to_string(number), path("all"));
  }
  const auto toc = xorriso({"-indev", "/dev/sr0", "-toc"});
  EXPECT_THAT(toc.out, HasSubstr("4 sessions"));
}

}  // namespace
}  // namespace kelvane::virtualdrive
