// SPDX-License-Identifier: GPL-2.0-or-later
#include <gtest/gtest.h>

#include "platform/volumes/visible_mount.h"
#include "platform/volumes/visible_mounts.h"

namespace kelvane {
namespace {

TEST(VisibleFolderTest, AVolumesNameIsItsFoldersName) {
  EXPECT_EQ(visibleFolderName("MY DISC"), "MY DISC");
  EXPECT_EQ(visibleFolderName("Äpfel [1]"), "Äpfel [1]");
  EXPECT_EQ(visibleFolderName(".hidden"), ".hidden");
}

TEST(VisibleFolderTest, CharactersThatNoFolderCanHaveBecomeUnderscores) {
  EXPECT_EQ(visibleFolderName("a/b"), "a_b");
  EXPECT_EQ(visibleFolderName("a\nb\x01\x7f"), "a_b__");
  EXPECT_EQ(visibleFolderName(std::string("a\0b", 3)), "a_b");
}

TEST(VisibleFolderTest, ANameInAnotherCharacterSetBecomesOneThatProgramsCanPassOn) {
  EXPECT_EQ(visibleFolderName("Gr\xFC\xDF"
                              "e"),
            "Gr\xEF\xBF\xBD\xEF\xBF\xBD"
            "e");
}

TEST(VisibleFolderTest, AVolumeWithoutAUsableNameIsCalledCdrom) {
  for (const char* name : {"", " ", "   ", ".", ".."}) {
    EXPECT_EQ(visibleFolderName(name), "CDROM") << name;
  }
}

DRDeviceStatus statusWithTracks(std::vector<std::pair<uint32_t, std::optional<int64_t>>> tracks,
                                uint32_t sessions) {
  DRDeviceMediaInfo media;
  media.DRDeviceMediaSessionCountKey = sessions;
  DRTrackReference reference = 1;
  for (const auto& [session, start] : tracks) {
    media.DRDeviceTrackRefsKey.push_back(reference);
    media.DRDeviceTrackInfoKey[reference++] = {start, std::nullopt, session};
  }
  return {media};
}

TEST(LastSessionStartTest, TheLastCompleteSessionBeginsWithItsFirstTrack) {
  EXPECT_EQ(lastSessionStart(statusWithTracks({{1, 0}, {2, 11702}}, 1)), 0);
  EXPECT_EQ(lastSessionStart(statusWithTracks({{1, 0}, {2, 11702}, {3, 25000}}, 2)), 11702);
  EXPECT_EQ(lastSessionStart(statusWithTracks({{1, 0}, {2, 11702}, {2, 14000}, {3, 25000}}, 2)),
            11702);
}

TEST(LastSessionStartTest, AClosedDiscsLastSessionIsThatOfItsLastTracks) {
  EXPECT_EQ(lastSessionStart(statusWithTracks({{1, 0}, {2, 11702}}, 2)), 11702);
}

TEST(LastSessionStartTest, WithoutACompleteSessionOrADiscThereIsNone) {
  EXPECT_EQ(lastSessionStart(statusWithTracks({{1, 0}}, 0)), std::nullopt);
  EXPECT_EQ(lastSessionStart(statusWithTracks({{1, std::nullopt}}, 1)), std::nullopt);
  EXPECT_EQ(lastSessionStart({}), std::nullopt);
}

}  // namespace
}  // namespace kelvane
