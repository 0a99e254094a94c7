// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/value_row.h>

#include <tav/record/meter_tav.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::data {

vorn::cRecord ValueRow(const cValueRow& value, bool withMeter) {
  vorn::cRecord row;
  if (withMeter) row.AppendTextPar(db_ctrl::kMeterId, value.meterId);
  row.AppendUIntPar(db_ctrl::kTimestamp, value.time);
  row.AppendTextPar("time-source", cMeterTav::GetTimeSourceText(static_cast<cMeterTav::eTimeSource>(value.timeSource)));
  row.AppendTextPar(db_ctrl::kObisId, value.obis);
  row.AppendTextPar(db_ctrl::kValue, value.value);
  row.AppendTextPar("unit", value.unit);
  if (!value.signature.empty()) row.AppendDataPar("signature", vorn::cData(value.signature));
  return row;
}

}  // namespace tav::data
