// SPDX-License-Identifier: Apache-2.0
// cSeriesPage: the points of a value's curve over a range, as JSON: what the meter's page draws.
#pragma once

#include <string>

#include <gateway/web/pages/core/data_page.h>
#include <gateway/web/pages/view/curve.h>

namespace tav::pages {

class cSeriesPage final : public cDataPage {
 public:
  using cDataPage::cDataPage;

 private:
  void Start() override;
  void Show();

  std::string m_obisId;
  std::string m_unit;
  cCurve m_curve;
};

}  // namespace tav::pages
