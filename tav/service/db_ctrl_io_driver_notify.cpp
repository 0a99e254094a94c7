// SPDX-License-Identifier: Apache-2.0
#include <tav/service/db_ctrl_io_driver_notify.h>

#include <tav/service/db_ctrl_protocol.h>

namespace tav {

cDbCtrlIODriverNotify::cDbCtrlIODriverNotify(const vorn::cRecord& rec)
    : m_interfaceName(rec.GetTextPar(db_ctrl::kInterfaceName)),
      m_command(rec.GetTextPar(db_ctrl::kCommand)),
      m_content(rec.GetRecordPar(db_ctrl::kContent)) {}

}  // namespace tav
