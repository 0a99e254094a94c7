// SPDX-License-Identifier: Apache-2.0
// The configured things in an answer of the database control service.
#pragma once

#include <string_view>
#include <vector>

#include <tav/config/meter_template.h>
#include <tav/framework/record.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::pages {

template <typename Thing>
std::vector<Thing> ThingsOf(const vorn::cRecord& answer, std::string_view key) {
  std::vector<Thing> things;
  for (vorn::cRecordPar par = answer.GetPar(key); par.IsValid(); par = par.NextSame()) {
    vorn::cRecord record;
    Thing thing;
    if (par.GetRecord(record) && thing.FromRecord(record)) things.push_back(thing);
  }
  return things;
}

// A template's record does not tell its number, which comes beside it.
inline std::vector<cMeterTemplate> TemplatesOf(const vorn::cRecord& answer) {
  std::vector<cMeterTemplate> templates;
  vorn::cRecordPar idx = answer.GetPar(db_ctrl::kIdx);
  for (vorn::cRecordPar par = answer.GetPar(db_ctrl::kMeterTemplateRecord); par.IsValid(); par = par.NextSame()) {
    vorn::cRecord record;
    cMeterTemplate read;
    if (par.GetRecord(record) && read.FromRecord(record)) {
      read.id = idx.GetUInt64();
      templates.push_back(read);
    }
    idx = idx.NextSame();
  }
  return templates;
}

}  // namespace tav::pages
