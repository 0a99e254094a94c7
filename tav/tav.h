// SPDX-License-Identifier: Apache-2.0
// All of libtav: the vocabulary and records of metering, configuration, the OBIS map, the clients of the gateway's
// services, requests and pages of its web front end.
#pragma once

#include <tav/config/collector_config.h>
#include <tav/config/config_interface.h>
#include <tav/config/firmware_manifest.h>
#include <tav/config/hardware_id.h>
#include <tav/config/interface_record.h>
#include <tav/config/meter_config.h>
#include <tav/config/meter_template.h>
#include <tav/config/push_target.h>
#include <tav/http/http_dispatch.h>
#include <tav/http/http_io.h>
#include <tav/http/http_page.h>
#include <tav/http/http_protocol.h>
#include <tav/http/http_request.h>
#include <tav/http/http_session.h>
#include <tav/obis/mbus_unit.h>
#include <tav/obis/mbus_vib_helper.h>
#include <tav/obis/obis_map.h>
#include <tav/obis/obis_map_entry.h>
#include <tav/obis/obis_protocol.h>
#include <tav/obis/obis_proxy.h>
#include <tav/protocol.h>
#include <tav/record/measurement_entry.h>
#include <tav/record/meter_record.h>
#include <tav/record/meter_status.h>
#include <tav/record/meter_tav.h>
#include <tav/service/db_ctrl_io.h>
#include <tav/service/db_ctrl_io_driver_notify.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tav/service/db_ctrl_request.h>
#include <tav/service/device_protocol.h>
#include <tav/service/gsm_io.h>
#include <tav/service/status_protocol.h>
#include <tav/service/status_proxy.h>
#include <tav/service/tcm_io.h>
#include <tav/service/ui_ctrl_io.h>
