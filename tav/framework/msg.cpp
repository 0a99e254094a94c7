// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/msg.h>

#include <tav/framework/helper.h>

namespace vorn {

std::string cMsg::ToString() const {
  std::string text = FormatString("type=0x%05x", m_type);
  text += " id=" + m_id.ToString() + "\n";
  return text + m_record.ToString(0, 1);
}

}  // namespace vorn
