// SPDX-License-Identifier: Apache-2.0
// cMessageFilter: which messages of a service are wanted, by a text in their names.
#pragma once

#include <string>

#include <tav/framework/record.h>

namespace tav::ctl {

class cMessageFilter {
 public:
  // Empty: all. Else those whose name, or a parameter's name at any depth, holds the text.
  explicit cMessageFilter(const std::string& text) : m_text(text) {}

  bool Wants(const std::string& messageName, const vorn::cRecord& record) const;

 private:
  bool IsIn(const vorn::cRecord& record) const;

  std::string m_text;
};

}  // namespace tav::ctl
