// SPDX-License-Identifier: Apache-2.0
// cTraceLevel: a trace unit at another level while the object lives.
#pragma once

#include <string>

#include <tav/framework/trace.h>

class cTraceLevel {
 public:
  cTraceLevel(const std::string& unit, int level) : m_unit(vorn::cUnit::Find(unit)), m_before(m_unit->GetLevel()) {
    m_unit->SetLevel(level);
  }
  ~cTraceLevel() { m_unit->SetLevel(m_before); }
  cTraceLevel(const cTraceLevel&) = delete;
  cTraceLevel& operator=(const cTraceLevel&) = delete;

 private:
  vorn::cUnit* const m_unit;
  const int m_before;
};
