// SPDX-License-Identifier: Apache-2.0
#include <tavctl/device_services.h>

#include <tavctl/failure.h>
#include <tavctl/service_link.h>

namespace tav::ctl {

namespace {

constexpr const char* kService = "service";

constexpr cColumn kColumns[] = {{kService, "SERVICE"}, {device::kName, "NAME"}, {device::kValue, "VALUE"}};

vorn::cRecord Row(const cDeviceService& service) {
  vorn::cRecord row;
  row.AppendTextPar(kService, std::string(service.protocol.GetService()));
  return row;
}

void WriteState(cContext& context, const cDeviceService& service, cRowWriter& rows) {
  cServiceLink link(context, service.protocol);
  const vorn::cRecord state = link.Ask(service.getState, {});
  for (vorn::cRecordPar par = state.GetPar(device::kRow); par.IsValid(); par = par.NextSame()) {
    vorn::cRecord value;
    par.GetRecord(value);
    vorn::cRecord row = Row(service);
    row.AppendTextPar(device::kName, value.GetTextPar(device::kName));
    row.AppendTextPar(device::kValue, value.GetTextPar(device::kValue));
    rows.Write(row);
  }
}

// Whether somebody was there.
bool TryToWriteState(cContext& context, const cDeviceService& service, cRowWriter& rows) {
  try {
    WriteState(context, service, rows);
    return true;
  } catch (const cFailure& failure) {
    if (failure.GetExit() == eExitDone) throw;  // interrupted
    vorn::cRecord row = Row(service);
    row.AppendTextPar(device::kValue, failure.what());
    rows.Write(row);
    return failure.GetExit() != eExitUnreachable;
  }
}

}  // namespace

eExit ShowDevices(cContext& context) {
  const auto rows = context.Rows(kColumns);
  bool isAnyThere = false;
  for (const cDeviceService& service : {kUiService, kTimeService, kGsmService})
    if (TryToWriteState(context, service, *rows)) isAnyThere = true;
  rows->End();
  return isAnyThere ? eExitDone : eExitUnreachable;
}

void ShowDevice(cContext& context, const cDeviceService& service) {
  const auto rows = context.Rows(kColumns);
  WriteState(context, service, *rows);
  rows->End();
}

void ShowDeviceValue(cContext& context, const cDeviceService& service, const std::string& name,
                     const std::string& value) {
  vorn::cRecord row = Row(service);
  row.AppendTextPar(device::kName, name);
  row.AppendTextPar(device::kValue, value);
  const auto rows = context.Rows(kColumns);
  rows->Write(row);
  rows->End();
}

}  // namespace tav::ctl
