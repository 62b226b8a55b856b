// SPDX-License-Identifier: GPL-2.0-or-later
// libburn, in cdrskin and xorriso, at the emulated drive with DVDs.
#include <map>

#include "libburn_fixture.h"

namespace kelvane::virtualdrive {
namespace {

using testing::HasSubstr;

class DvdPrograms : public LibburnTest {
 protected:
  void expectVolume(const std::string& expected) {
    const auto out = path("out " + std::to_string(counter_++));
    const auto finished = kelvanedisc({"extract", disc(), out});
    ASSERT_EQ(finished.status, 0) << finished.err;
    EXPECT_EQ(differences(expected, out), "");
  }

  int counter_ = 0;
};

class DvdProgramsOnEveryMedium : public DvdPrograms,
                                 public testing::WithParamInterface<std::string> {};

TEST_P(DvdProgramsOnEveryMedium, XorrisoBurnsAppendsAndReads) {
  create({"--media", GetParam(), "--capacity", "100"});
  const auto all = makeSource("all", 1);
  const auto first = xorriso({"-outdev", "/dev/sr0", "-joliet", "on", "-map", all, "/", "-commit"});
  ASSERT_EQ(first.status, 0) << first.err;
  expectVolume(all);
  const auto two = makeSource("two", 2);
  makeSource("all", 2);
  const auto second = xorriso({"-dev", "/dev/sr0", "-map", two, "/", "-commit", "-toc"});
  ASSERT_EQ(second.status, 0) << second.err;
  EXPECT_THAT(second.out, HasSubstr("ISO session  :   2 ,"));
  expectVolume(all);
}

TEST_P(DvdProgramsOnEveryMedium, XorrisoAppendsToWhatGrowisofsHasBurned) {
  create({"--media", GetParam(), "--capacity", "100"});
  const auto all = makeSource("all", 1);
  const auto burned = runImpatiently({"growisofs", "-Z", "/dev/sr0", "-quiet", "-r", "-J", all});
  ASSERT_EQ(burned.status, 0) << burned.err;
  const auto two = makeSource("two", 2);
  makeSource("all", 2);
  const auto second = xorriso({"-dev", "/dev/sr0", "-map", two, "/", "-commit"});
  ASSERT_EQ(second.status, 0) << second.err;
  expectVolume(all);
}

TEST_P(DvdProgramsOnEveryMedium, CdrskinTellsTheMediumAndItsState) {
  create({"--media", GetParam(), "--capacity", "100", "--from", makeSource("one", 1)});
  const auto finished = cdrskin({"-minfo"});
  EXPECT_EQ(finished.status, 0) << finished.err;
  const std::map<std::string, std::string> names{{"dvd-r", "DVD-R sequential recording"},
                                                 {"dvd-rw", "DVD-RW sequential recording"},
                                                 {"dvd-rw-ro", "DVD-RW restricted overwrite"},
                                                 {"dvd+rw", "DVD+RW"},
                                                 {"dvd+r", "DVD+R"}};
  EXPECT_THAT(finished.out, HasSubstr("Current: " + names.at(GetParam()) + "\n"));
  const bool writeOnce = GetParam() == "dvd-r" || GetParam() == "dvd+r";
  EXPECT_THAT(finished.out, HasSubstr(writeOnce ? "Is not erasable" : "Is erasable"));
}

INSTANTIATE_TEST_SUITE_P(Media, DvdProgramsOnEveryMedium,
                         testing::Values("dvd-r", "dvd-rw", "dvd-rw-ro", "dvd+rw", "dvd+r"),
                         [](const auto& instance) { return testNameOf(instance.param); });

TEST_F(DvdPrograms, CdrskinBlanksAndFormatsADvdRw) {
  // libburn formats 128 MB at the least.
  create({"--media", "dvd-rw", "--capacity", "200", "--from", makeSource("one", 1)});
  ASSERT_EQ(cdrskin({"blank=fast"}).status, 0);
  EXPECT_EQ(info()["state"], "blank");
  EXPECT_EQ(info()["mode"], "sequential");
  const auto two = makeSource("two", 2);
  const auto image = imageOf(two, "two.iso");
  ASSERT_EQ(cdrskin({image}).status, 0) << "disc at once";
  EXPECT_EQ(info()["state"], "closed");
  expectVolume(two);
  ASSERT_EQ(cdrskin({"blank=all"}).status, 0);
  EXPECT_EQ(info()["state"], "blank");
  ASSERT_EQ(cdrskin({"-multi", image}).status, 0) << "incrementally";
  EXPECT_EQ(info()["state"], "appendable");
  ASSERT_EQ(cdrskin({"blank=format_overwrite"}).status, 0);
  EXPECT_EQ(info()["mode"], "restricted overwrite");
  ASSERT_EQ(cdrskin({image}).status, 0);
  expectVolume(two);
  ASSERT_EQ(cdrskin({"blank=deformat_sequential"}).status, 0);
  EXPECT_EQ(info()["mode"], "sequential");
}

TEST_F(DvdPrograms, CdrskinFormatsADvdPlusRw) {
  create({"--media", "dvd+rw", "--capacity", "100"});
  ASSERT_EQ(cdrskin({"blank=format_overwrite_full"}).status, 0);
  EXPECT_EQ(info()["state"], "overwritable");
  const auto one = makeSource("one", 1);
  ASSERT_EQ(cdrskin({imageOf(one, "one.iso")}).status, 0);
  expectVolume(one);
}

TEST_F(DvdPrograms, WriteOnceDiscsAreNotBlanked) {
  for (const char* medium : {"dvd-r", "dvd+r"}) {
    create({"--media", medium, "--capacity", "100", "--from", makeSource(medium, 1)});
    const auto before = sectors();
    EXPECT_NE(cdrskin({"blank=fast"}).status, 0);
    EXPECT_NE(cdrskin({"blank=format_overwrite"}).status, 0);
    EXPECT_EQ(sectors(), before);
    std::filesystem::remove_all(disc());
  }
}

TEST_F(DvdPrograms, MediaInformationReadsEveryPageItAsksFor) {
  for (const char* medium : {"dvd-r", "dvd-rw", "dvd-rw-ro", "dvd+rw", "dvd+r"}) {
    create({"--media", medium, "--capacity", "100", "--from", makeSource(medium, 1)});
    const auto finished = run({"dvd+rw-mediainfo", "/dev/sr0"});
    EXPECT_EQ(finished.status, 0) << medium << finished.err;
    EXPECT_THAT(finished.err, testing::Not(HasSubstr(":-"))) << medium;
    EXPECT_THAT(finished.out, HasSubstr("Media ID:              KELVAN")) << medium;
    EXPECT_THAT(finished.out, HasSubstr("Multi-session Info:    #1@0")) << medium;
    std::filesystem::remove_all(disc());
  }
}

}  // namespace
}  // namespace kelvane::virtualdrive
