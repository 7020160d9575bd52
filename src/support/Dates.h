// Moments and the calendar of the process's time zone.
//
// Provides: Date, distantPast, parseLocalTimestamp(), formatLocalTimestamp(),
// parseInternetDateTime(), startOfDay(), endOfDay(), dayText(), dateOnDay(),
// mediumDateText().
// A Date is seconds since 1970-01-01 00:00:00 UTC. "Local" means the zone
// the process runs in (TZ), read at each call. Pure otherwise; any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velmora::support {

using Date = double;

// 0001-01-01 00:00:00 UTC: before every date a file holds.
inline constexpr Date distantPast = -62135596800.0;

// "yyyy-MM-dd'T'HH:mm:ss" read as local wall-clock time: exactly those 19
// characters, every field in range; a zone or a fraction fails it.
std::optional<Date> parseLocalTimestamp(std::string_view text);
// The same form, written in local time; fractions of a second are dropped.
std::string formatLocalTimestamp(Date date);

// Internet date-time with a fraction of a second and a zone, both required:
// "2026-11-23T10:15:00.250Z", "2026-11-23T11:15:00.25+01:00".
std::optional<Date> parseInternetDateTime(std::string_view text);

// 00:00:00 of the local day that holds `date`.
Date startOfDay(Date date);
// 23:59:59 of the local day that holds `date`.
Date endOfDay(Date date);

// The local day as "yyyy-MM-dd".
std::string dayText(Date date);
// `day` ("yyyy-MM-dd") at the local time of day that `timeOf` has, as a
// calendar control keeps the time when another day is chosen.
std::optional<Date> dateOnDay(std::string_view day, Date timeOf);

// The local day in the medium style of the process's default locale:
// "Nov 23, 2026".
std::string mediumDateText(Date date);

}  // namespace velmora::support
