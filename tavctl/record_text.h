// SPDX-License-Identifier: Apache-2.0
// cRecordText: a record of any form as text for people and as JSON for programs.
//
// In JSON a record is an object; of a name that repeats the value is an array of its values. Numbers and booleans are
// such, times ISO 8601, uuids canonical, data hexadecimal digits, a text without text null.
#pragma once

#include <string>

#include <nlohmann/json_fwd.hpp>

#include <tav/framework/record.h>

namespace tav::ctl {

class cRecordText {
 public:
  // Bytes of one binary value that are shown to people; the rest is counted.
  static constexpr std::size_t kMaxData = 64;

  enum class eSecrets { Show, Mask };

  // Mask: the values of parameters that hold secrets ("key", "password", "MobilePin", ...) are shown as "***".
  explicit cRecordText(eSecrets secrets = eSecrets::Show) : m_secrets(secrets) {}

  // name="text" number=1 nested={name="text"}
  std::string AsLine(const vorn::cRecord& record) const;
  // One parameter a line, nested ones two blanks deeper.
  std::string AsLines(const vorn::cRecord& record, std::size_t indent) const;
  nlohmann::ordered_json AsJson(const vorn::cRecord& record) const;
  // Of one value; null for an invalid parameter.
  nlohmann::ordered_json AsJson(const vorn::cRecordPar& parameter) const;

 private:
  bool IsMasked(const vorn::cRecordPar& parameter) const;
  std::string Value(const vorn::cRecordPar& parameter) const;

  eSecrets m_secrets;
};

}  // namespace tav::ctl
