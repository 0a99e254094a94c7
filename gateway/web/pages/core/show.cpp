// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/core/show.h>

#include <ctime>
#include <string_view>

#include <gateway/form/utf8.h>
#include <tav/framework/time.h>
#include <tav/record/meter_tav.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::pages {

namespace {

// What the library says of an identifier that no rule names.
constexpr std::string_view kNoName = "unknown";

}  // namespace

cShownValue::cShownValue(const vorn::cRecord& row)
    : meterId(row.GetTextPar(db_ctrl::kMeterId)),
      obisId(row.GetTextPar(db_ctrl::kObisId)),
      value(form::ToUtf8(row.GetTextPar(db_ctrl::kValue))),
      unit(form::ToUtf8(row.GetTextPar("unit"))),
      utc(row.GetUIntPar(db_ctrl::kTimestamp)),
      when(ShowTime(utc)),
      timeSource(row.GetTextPar("time-source")) {}

std::string ShowTime(unsigned int utc) {
  if (utc == 0) return {};
  const std::time_t seconds = utc;
  std::tm local{};
  localtime_r(&seconds, &local);
  char text[32];
  return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local));
}

cHtml TimeElement(unsigned int utc) {
  if (utc == 0) return {};
  return cHtml().Put("<time datetime=\"{}\">{}</time>", vorn::cTime::FromSeconds(utc, true).ToISO8601String(),
                     ShowTime(utc));
}

std::string ObisText(const std::string& obisId, const cObisMap& map) {
  const std::string name = cMeterTav::ObisName(obisId, map);
  return name == kNoName ? obisId : name;
}

}  // namespace tav::pages
