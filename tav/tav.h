// SPDX-License-Identifier: Apache-2.0
// All of libtav: the vocabulary and records of metering, the OBIS map, the clients of the gateway's services.
#pragma once

#include <tav/obis/obis_map.h>
#include <tav/obis/obis_map_entry.h>
#include <tav/record/measurement_entry.h>
#include <tav/record/meter_record.h>
#include <tav/record/meter_status.h>
#include <tav/record/meter_tav.h>
#include <tav/service/db_ctrl_io.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tav/service/protocol.h>
