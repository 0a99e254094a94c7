// SPDX-License-Identifier: Apache-2.0
#include <tavctl/message_filter.h>

namespace tav::ctl {

bool cMessageFilter::Wants(const std::string& messageName, const vorn::cRecord& record) const {
  return messageName.find(m_text) != std::string::npos || IsIn(record);
}

bool cMessageFilter::IsIn(const vorn::cRecord& record) const {
  for (vorn::cRecordPar at = record.First(); at.IsValid(); at = at.Next()) {
    if (at.GetNameView().find(m_text) != std::string_view::npos) return true;
    vorn::cRecord nested;
    if (at.GetRecord(nested) && IsIn(nested)) return true;
  }
  return false;
}

}  // namespace tav::ctl
