// SPDX-License-Identifier: Apache-2.0
// cOverviewPage: all meters with their state and their most telling last values, which go on changing while one looks.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <gateway/web/pages/core/data_page.h>
#include <gateway/web/pages/core/show.h>
#include <tav/record/meter_status.h>

namespace tav::pages {

class cOverviewPage final : public cDataPage {
 public:
  static constexpr std::size_t kValuesOfMeter = 4;

  using cDataPage::cDataPage;

 private:
  void Start() override;
  void Show();
  cHtml Card(const cMeterStatus& meter);
  cHtml Reading(const cShownValue& value);

  std::vector<cMeterStatus> m_meters;
  std::map<std::string, std::vector<cShownValue>> m_values;  // by meter
};

// How a meter is, for people: its state's word, and the class of the mark it gets ("ok", "warn", "bad").
struct cMeterState {
  std::string word;
  std::string mark;
};
cMeterState StateOf(const cMeterStatus& meter, unsigned int now);
cHtml StateMark(const cMeterState& state);

}  // namespace tav::pages
