// SPDX-License-Identifier: Apache-2.0
// Configured things as a table: the columns that tavctl lists too, each row with a link to its thing.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <gateway/form/columns.h>
#include <gateway/form/config_columns.h>
#include <gateway/web/pages/config/field_form.h>
#include <tav/config/meter_config.h>

namespace tav::pages {

struct cThingRow {
  vorn::cRecord texts;  // of its fields, by their names
  std::string url;      // empty: it has no page of its own
};

// empty: what is said when there are no rows.
cHtml ThingTable(form::Columns columns, const std::vector<cThingRow>& rows, std::string_view empty);

template <typename Record, std::size_t N>
cThingRow MakeRow(const Record& thing, const form::cField<Record> (&fields)[N], const std::string& url) {
  cThingRow row{{}, url};
  for (const form::cField<Record>& field : fields) {
    if (field.secret) continue;
    const std::string text = FieldText(thing, field);
    row.texts.AppendTextPar(field.name, IsSwitch(field) ? YesOrNo(text == "true") : text);
  }
  return row;
}

cHtml MeterTable(const std::vector<cMeterConfig>& meters, std::string_view empty);
enum class eLinks { With, Without };
cHtml CollectorTable(const cMeterConfig& meter, eLinks links);

}  // namespace tav::pages
