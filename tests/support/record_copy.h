// SPDX-License-Identifier: Apache-2.0
// Writes a record anew, parameter by parameter, from what its views give: equal to the original when reading and
// writing agree.
#pragma once

#include <tav/framework/record.h>

inline void AppendCopy(vorn::cRecord& to, const vorn::cRecordPar& par);

inline vorn::cRecord CopyByParameter(const vorn::cRecord& record) {
  vorn::cRecord copy;
  for (vorn::cRecordPar par = record.First(); par.IsValid(); par = par.Next()) AppendCopy(copy, par);
  return copy;
}

inline void AppendCopy(vorn::cRecord& to, const vorn::cRecordPar& par) {
  const std::string_view name = par.GetNameView();
  vorn::cRecord nested;
  switch (par.GetType()) {
    case vorn::eParText:
      if (par.HasText())
        to.AppendTextPar(name, par.GetBytesView());
      else
        to.AppendTextPar(name, nullptr);
      break;
    case vorn::eParInt:
      to.AppendIntPar(name, par.GetInt());
      break;
    case vorn::eParUInt:
      to.AppendUIntPar(name, par.GetUInt());
      break;
    case vorn::eParUInt64:
      to.AppendUInt64Par(name, par.GetUInt64());
      break;
    case vorn::eParBool:
      to.AppendBoolPar(name, par.GetBool());
      break;
    case vorn::eParRecord:
      par.GetRecord(nested);
      to.AppendRecordPar(name, CopyByParameter(nested));
      break;
    case vorn::eParTime:
      to.AppendTimePar(name, par.GetTime());
      break;
    case vorn::eParUuid:
      to.AppendUuidPar(name, par.GetUuid());
      break;
    case vorn::eParData:
      to.AppendDataPar(name, par.GetData());
      break;
    default:
      break;
  }
}
