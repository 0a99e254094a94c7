// SPDX-License-Identifier: Apache-2.0
#include <tavctl/command.h>
#include <tavctl/completion_command.h>
#include <tavctl/config/config_command.h>
#include <tavctl/config/things.h>
#include <tavctl/device_command.h>
#include <tavctl/events_command.h>
#include <tavctl/explain_command.h>
#include <tavctl/last_command.h>
#include <tavctl/manifest_command.h>
#include <tavctl/mbus_command.h>
#include <tavctl/meter_status_command.h>
#include <tavctl/meters_command.h>
#include <tavctl/monitor_command.h>
#include <tavctl/obis/obis_command.h>
#include <tavctl/protocol_command.h>
#include <tavctl/services_command.h>
#include <tavctl/sql_command.h>
#include <tavctl/stats_command.h>
#include <tavctl/status_command.h>
#include <tavctl/store_command.h>
#include <tavctl/values_command.h>
#include <tavctl/watch_command.h>

namespace tav::ctl {

namespace {

template <typename... Commands>
std::vector<std::unique_ptr<cCommand>> Make() {
  std::vector<std::unique_ptr<cCommand>> all;
  (all.push_back(std::make_unique<Commands>()), ...);
  return all;
}

}  // namespace

std::vector<std::unique_ptr<cCommand>> MakeCommands() {
  return Make<cServicesCommand, cMetersCommand, cMeterStatusCommand, cStatusCommand, cLastCommand, cValuesCommand,
              cEventsCommand, cStoreCommand, cStatsCommand, cSqlCommand, cWatchCommand, cMonitorCommand,
              cInterfaceCommand, cMeterCommand, cCollectorCommand, cPushTargetCommand, cTemplateCommand, cConfigCommand,
              cObisCommand, cDeviceCommand, cMBusCommand, cManifestCommand, cExplainCommand, cProtocolCommand,
              cCompletionCommand>();
}

}  // namespace tav::ctl
