// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/curve.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>

#include <gateway/web/pages/view/value_export.h>

namespace tav::pages {

namespace {

constexpr std::size_t kLot = 4;  // of which two stay

}  // namespace

void cCurve::Add(unsigned int utc, const std::string& value) {
  if (m_points.size() >= kMaxPoints) Thin();
  const std::string json = JsonValue(value);
  const bool isNumber = !json.empty() && json[0] != '"';
  m_points.push_back({utc, isNumber ? json : "null", isNumber ? std::strtod(json.c_str(), nullptr) : 0, !isNumber});
}

void cCurve::Thin() {
  std::vector<cPoint> kept;
  for (std::size_t at = 0; at < m_points.size(); at += kLot) {
    const auto first = m_points.begin() + static_cast<std::ptrdiff_t>(at);
    const auto last = m_points.begin() + static_cast<std::ptrdiff_t>(std::min(at + kLot, m_points.size()));
    // A gap has no height: it stays where there is nothing else, and never in the place of a peak.
    const auto numbers = std::stable_partition(first, last, [](const cPoint& point) { return !point.isGap; });
    const auto begin = first;
    const auto end = numbers != first ? numbers : std::next(first);
    auto [low, high] =
        std::minmax_element(begin, end, [](const cPoint& a, const cPoint& b) { return a.height < b.height; });
    if (high < low) std::swap(low, high);
    kept.push_back(*low);
    if (high != low) kept.push_back(*high);
  }
  m_points = std::move(kept);
}

std::string cCurve::ToJson() const {
  std::string json = "[";
  for (const cPoint& point : m_points) {
    if (json.size() > 1) json += ',';
    json += '[' + std::to_string(point.utc) + ',' + point.text + ']';
  }
  return json + ']';
}

}  // namespace tav::pages
