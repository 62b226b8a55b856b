// SPDX-License-Identifier: GPL-2.0-or-later
#include "helpers/isovolume/iso_date.h"

#include <chrono>

namespace kelvane::isovolume {
namespace {

struct Moment {
  int year = 0;
  unsigned month = 0;
  unsigned day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int quarterHoursEast = 0;
};

std::int64_t secondsOf(const Moment& moment) {
  const std::chrono::year_month_day date{std::chrono::year(moment.year),
                                         std::chrono::month(moment.month),
                                         std::chrono::day(moment.day)};
  if (!date.ok() || moment.hour > 23 || moment.minute > 59 || moment.second > 60) return 0;
  const std::int64_t days = std::chrono::sys_days(date).time_since_epoch().count();
  std::int64_t seconds =
      ((days * 24 + moment.hour) * 60 + moment.minute) * std::int64_t{60} + moment.second;
  // The standard allows -48 to +52; a number outside is damage, and the local time is then the best
  // guess.
  if (moment.quarterHoursEast >= -52 && moment.quarterHoursEast <= 52) {
    seconds -= std::int64_t{moment.quarterHoursEast} * 15 * 60;
  }
  return seconds;
}

int signedByte(std::uint8_t byte) {
  return byte < 128 ? byte : byte - 256;
}

/// The number that `count` digits at `offset` make, or -1.
int digits(Bytes text, std::size_t offset, std::size_t count) {
  int number = 0;
  for (const std::uint8_t character : text.subspan(offset, count)) {
    if (character < '0' || character > '9') return -1;
    number = number * 10 + (character - '0');
  }
  return number;
}

}  // namespace

std::int64_t secondsOfShortDate(Bytes date) {
  return secondsOf({.year = 1900 + date[0],
                    .month = date[1],
                    .day = date[2],
                    .hour = date[3],
                    .minute = date[4],
                    .second = date[5],
                    .quarterHoursEast = signedByte(date[6])});
}

std::int64_t secondsOfLongDate(Bytes date) {
  const int year = digits(date, 0, 4);
  const int month = digits(date, 4, 2);
  const int day = digits(date, 6, 2);
  const int hour = digits(date, 8, 2);
  const int minute = digits(date, 10, 2);
  const int second = digits(date, 12, 2);
  if (year < 0 || month < 0 || day < 0 || hour < 0 || minute < 0 || second < 0) return 0;
  return secondsOf({.year = year,
                    .month = static_cast<unsigned>(month),
                    .day = static_cast<unsigned>(day),
                    .hour = hour,
                    .minute = minute,
                    .second = second,
                    .quarterHoursEast = signedByte(date[16])});
}

}  // namespace kelvane::isovolume
