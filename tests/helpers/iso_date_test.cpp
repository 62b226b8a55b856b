// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isovolume/iso_date.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

namespace kelvane::isovolume {
namespace {

std::int64_t longDate(std::string_view digits, std::uint8_t zone) {
  std::vector<std::uint8_t> bytes(digits.begin(), digits.end());
  bytes.push_back(zone);
  return secondsOfLongDate(bytes);
}

TEST(IsoDate, ShortDateCountsSecondsSince1970) {
  EXPECT_EQ(secondsOfShortDate(std::vector<std::uint8_t>{70, 1, 1, 0, 0, 0, 0}), 0);
  EXPECT_EQ(secondsOfShortDate(std::vector<std::uint8_t>{124, 2, 29, 12, 34, 56, 0}), 1709210096);
}

TEST(IsoDate, DatesBefore1970AndFarAheadAreKept) {
  EXPECT_EQ(secondsOfShortDate(std::vector<std::uint8_t>{69, 12, 31, 23, 59, 59, 0}), -1);
  EXPECT_EQ(secondsOfShortDate(std::vector<std::uint8_t>{255, 1, 1, 0, 0, 0, 0}), 5838048000);
}

TEST(IsoDate, ZoneEastOfGreenwichIsTakenOff) {
  EXPECT_EQ(secondsOfShortDate(std::vector<std::uint8_t>{70, 1, 1, 1, 0, 0, 4}), 0);
  EXPECT_EQ(secondsOfShortDate(std::vector<std::uint8_t>{70, 1, 1, 0, 0, 0, 256 - 4}), 3600);
}

TEST(IsoDate, ZoneThatNoPlaceHasIsIgnored) {
  EXPECT_EQ(secondsOfShortDate(std::vector<std::uint8_t>{70, 1, 1, 0, 0, 1, 100}), 1);
}

TEST(IsoDate, WhatIsNoDateIsTheEpoch) {
  EXPECT_EQ(secondsOfShortDate(std::vector<std::uint8_t>{0, 0, 0, 0, 0, 0, 0}), 0);
  EXPECT_EQ(secondsOfShortDate(std::vector<std::uint8_t>{124, 2, 30, 0, 0, 0, 0}), 0);
  EXPECT_EQ(secondsOfShortDate(std::vector<std::uint8_t>{124, 1, 1, 24, 0, 0, 0}), 0);
  EXPECT_EQ(longDate("2024022x12345600", 0), 0);
}

TEST(IsoDate, LongDateIsReadFromItsDigits) {
  EXPECT_EQ(longDate("2024022912345699", 0), 1709210096);
  EXPECT_EQ(longDate("2024022912345699", 4), 1709210096 - 3600);
}

}  // namespace
}  // namespace kelvane::isovolume
