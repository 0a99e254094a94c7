// SPDX-License-Identifier: Apache-2.0
// cCapturedTrace: collects the lines of trace while it lives, instead of standard error.
#pragma once

#include <string>
#include <vector>

#include <tav/framework/trace.h>

class cCapturedTrace {
 public:
  cCapturedTrace() {
    vorn::SetTraceSink([this](const vorn::cUnit& unit, int level, const std::string& text) {
      m_lines.push_back(unit.GetName() + " " + std::to_string(level) + " " + text);
    });
  }
  ~cCapturedTrace() { vorn::SetTraceSink({}); }
  cCapturedTrace(const cCapturedTrace&) = delete;
  cCapturedTrace& operator=(const cCapturedTrace&) = delete;

  // Each as "unit level text".
  const std::vector<std::string>& GetLines() const { return m_lines; }

 private:
  std::vector<std::string> m_lines;
};
