// SPDX-License-Identifier: Apache-2.0
// The record forms of the configuration as the service takes and gives them. Each is read by its own class
// (cInterfaceRecord, cMeterConfig, ...), after a look at what that class lets pass: types, lengths, names, what has to
// be there.
//
// A collector's distance comes as "distanecRP" and goes as "distanceRP": so its class writes and reads it, and nothing
// is lost on the road through the service. What comes as "distanceRP" is taken too.
#pragma once

#include <string>

#include <gateway/service/data/config/config_faults.h>
#include <tav/config/interface_record.h>
#include <tav/config/meter_config.h>
#include <tav/config/push_target.h>

namespace tav::data {

// Whether a meter's collectors are nested in it.
enum class eCollectors { Without, With };

// Each is false when something is wrong; place then has all of it. at: where the record stands.
bool ReadInterface(const vorn::cRecord& record, const cPlace& at, cInterfaceRecord& interface);
// Of a collector that is to be removed only the address counts.
bool ReadMeter(const vorn::cRecord& record, const cPlace& at, cMeterConfig& meter);
bool ReadPushTarget(const vorn::cRecord& record, const cPlace& at, cPushTarget& target);
// A template may leave open what a meter and a push target need; it stays a record, in the form that the service gives.
bool ReadTemplate(const vorn::cRecord& record, const cPlace& at, std::string& name, vorn::cRecord& form);

vorn::cRecord MeterForm(const cMeterConfig& meter, eCollectors collectors);

// "interface 'RS485'", "meter '123' medium 'E' manufactor 'EMH'", "push target 'x'": for reasons and answers.
std::string Describe(const cInterfaceRecord& interface);
std::string Describe(const cMeterConfig& meter);
std::string Describe(const cPushTarget& target);
std::string DescribeCollector(const std::string& addr);
std::string DescribeTemplate(const std::string& name);

}  // namespace tav::data
