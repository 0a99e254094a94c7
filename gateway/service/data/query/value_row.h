// SPDX-License-Identifier: Apache-2.0
// The row of an answer that tells one value.
#pragma once

#include <gateway/service/data/storage/reading_query.h>
#include <tav/framework/record.h>

namespace tav::data {

// withMeter: "meterID" first. Then "timestamp", "time-source", "obis-id", "value", "unit", and "signature" where there
// is one.
vorn::cRecord ValueRow(const cValueRow& value, bool withMeter);

}  // namespace tav::data
