// SPDX-License-Identifier: Apache-2.0
// cMetricsPage: last values of all meters, and whatever the processes tell of themselves as numbers, for programs that
// gather such from many machines.
#pragma once

#include <vector>

#include <gateway/web/pages/api/metrics.h>
#include <gateway/web/pages/core/data_page.h>
#include <gateway/web/pages/core/show.h>

namespace tav::pages {

class cMetricsPage final : public cDataPage {
 public:
  using cDataPage::cDataPage;

 private:
  void Start() override;
  void Show();

  std::vector<cShownValue> m_values;
};

}  // namespace tav::pages
