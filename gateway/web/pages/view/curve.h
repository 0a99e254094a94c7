// SPDX-License-Identifier: Apache-2.0
// cCurve: points of a curve, as many as a screen can show: when there are too many, the lowest and the highest of each
// few stay, so that peaks do.
#pragma once

#include <string>
#include <vector>

namespace tav::pages {

class cCurve {
 public:
  static constexpr std::size_t kMaxPoints = 4000;

  // value: a decimal number as it is stored; anything else leaves a gap. In ascending order of time.
  void Add(unsigned int utc, const std::string& value);
  // [[seconds UTC, number or null], ...]
  std::string ToJson() const;
  std::size_t Count() const { return m_points.size(); }

 private:
  struct cPoint {
    unsigned int utc;
    std::string text;  // JSON, exact
    double height;     // to compare with
    bool isGap;
  };

  void Thin();

  std::vector<cPoint> m_points;
};

}  // namespace tav::pages
