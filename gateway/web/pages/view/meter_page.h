// SPDX-License-Identifier: Apache-2.0
// cMeterPage: one meter: how it is, its last values, a curve of one of them over a chosen range, and the values to take
// away as CSV or JSON.
#pragma once

#include <string>
#include <vector>

#include <gateway/web/pages/core/data_page.h>
#include <gateway/web/pages/core/show.h>
#include <tav/config/meter_config.h>
#include <tav/record/meter_status.h>

namespace tav::pages {

class cMeterPage final : public cDataPage {
 public:
  using cDataPage::cDataPage;

 private:
  // What the visitor wants to see of it.
  struct cChoice {
    std::string obisId;
    std::string profile;
    std::string from;  // as the visitor wrote it
    std::string to;
  };

  void Start() override;
  void ReadConfig();
  void Show();
  void Choose();
  cHtml Facts() const;
  cHtml Values();
  cHtml Curve();
  cHtml ChoiceForm();
  cHtml Downloads();
  bool IsNumber(const std::string& obisId) const;

  cMeterStatus m_meter;
  cMeterConfig m_config;
  std::vector<cShownValue> m_values;
  cChoice m_choice;
};

}  // namespace tav::pages
