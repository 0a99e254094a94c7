// SPDX-License-Identifier: Apache-2.0
// Times as people write them, and as they are shown.
#pragma once

#include <string>
#include <string_view>

namespace tav::form {

// Every form that ParseTime takes, for help and errors.
inline constexpr std::string_view kTimeForms =
    "a time such as 2024-03-01, 2024-03-01T12:00:00+01:00, 1709294400, -2h, -7d, now, today or yesterday";

// Seconds since 1970 UTC. Taken are
//   ISO 8601   a day, with "T" or a blank and hh:mm or hh:mm:ss behind it, with "Z" or an offset behind that; without a
//              time the day's beginning, without an offset local time
//   digits     seconds since 1970
//   relative   to now: a sign, then numbers with s, m, h, d or w ("-1d12h"); a day has 24 hours
//   words      now; today and yesterday: the day's beginning, local time
// False, and in error what was expected and found, for everything else and for what lies before 1970 or behind 2106.
bool ParseTime(std::string_view text, unsigned int now, unsigned int& seconds, std::string& error);

// Local time with its offset, "2024-03-01T13:00:00+01:00".
std::string FormatTime(unsigned int seconds);

}  // namespace tav::form
