// SPDX-License-Identifier: Apache-2.0
// cRecordText: a record of any form as text for a terminal; gateway/form/record_json.h is the same for programs.
#pragma once

#include <string>

#include <gateway/form/record_json.h>
#include <tav/framework/record.h>

namespace tav::ctl {

class cRecordText {
 public:
  // Bytes of one binary value that are shown to people; the rest is counted.
  static constexpr std::size_t kMaxData = 64;

  explicit cRecordText(form::eMask mask = form::eMask::Nothing) : m_mask(mask) {}

  // name="text" number=1 nested={name="text"}
  std::string AsLine(const vorn::cRecord& record) const;
  // One parameter a line, nested ones two blanks deeper.
  std::string AsLines(const vorn::cRecord& record, std::size_t indent) const;

 private:
  bool IsMasked(const vorn::cRecordPar& parameter) const;
  std::string Value(const vorn::cRecordPar& parameter) const;

  form::eMask m_mask;
};

}  // namespace tav::ctl
