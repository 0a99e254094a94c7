// SPDX-License-Identifier: Apache-2.0
// cDbCtrlIODriverNotify: what the database control service tells a registered driver: which interface, what to do, and
// the data for it. docs/protocol/notifications.md lists the commands.
#pragma once

#include <string>

#include <tav/export.h>
#include <tav/framework/record.h>

namespace tav {

class TAV_API cDbCtrlIODriverNotify {
 public:
  // Of a notification's record. Nothing is refused: what is missing or of another type is empty.
  explicit cDbCtrlIODriverNotify(const vorn::cRecord& rec);

  std::string m_interfaceName;
  std::string m_command;
  vorn::cRecord m_content;
};

}  // namespace tav
