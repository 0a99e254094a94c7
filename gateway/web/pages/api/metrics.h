// SPDX-License-Identifier: Apache-2.0
// cMetrics: numbers as the OpenMetrics text format has them (OpenMetrics 1.0.0): families of gauges, each sample with
// its labels and its exact number.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace tav::pages {

class cMetrics {
 public:
  static constexpr const char* kContentType = "application/openmetrics-text; version=1.0.0; charset=utf-8";

  // Samples of one family follow each other. unit: the name's last word, or none.
  void BeginGauge(std::string_view name, std::string_view help, std::string_view unit = {});
  using Labels = std::initializer_list<std::pair<std::string_view, std::string_view>>;
  // Of the family begun last. number: a decimal number; a sample of anything else is left out.
  void Add(Labels labels, const std::string& number);
  // With the line that ends it.
  std::string ToText() const { return m_text + "# EOF\n"; }

 private:
  std::string m_family;
  std::string m_text;
};

}  // namespace tav::pages
