// SPDX-License-Identifier: Apache-2.0
// What tav-gateway can be told: by the command line, else by the configuration file, else by default.
// docs/operating.md is the list for people.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <gateway/database/database.h>
#include <gateway/service/device/gsm_server.h>
#include <gateway/service/device/time_server.h>
#include <gateway/service/device/ui_server.h>
#include <gateway/web/front/web_options.h>

namespace tav::gateway {

constexpr int kMaxTrace = 32;

struct cOptions {
  std::string service;              // the one to run; empty: all
  std::string dir;                  // of sockets and database; empty: each at its usual place
  std::string configFile;           // empty: none was there
  std::string dataFile = "tav.db";  // relative to the directory of the database
  data::eDurability durability = data::eDurability::Full;
  std::uint64_t maxMegabytes = 0;  // of the database; 0: no limit
  cUiOptions ui;
  cTimeOptions time;
  cGsmOptions gsm;
  bool isWebLeft = false;  // out of all services
  web::cWebOptions web;    // what is empty there is found when the service is made
  int trace = 4;           // level of all trace units

  // Where sockets and database stand.
  std::string GetSocketDirectory() const;  // empty: the framework's default
  std::string GetDataFile() const;
};

struct cParsedOptions {
  std::optional<cOptions> options;  // none: end with this exit code
  int exitCode = 0;
  std::string text;  // help or the error, for people
};

cParsedOptions ParseOptions(int argc, const char* const* argv);

// "full" or "normal".
std::optional<data::eDurability> ReadDurability(const std::string& text);

}  // namespace tav::gateway
