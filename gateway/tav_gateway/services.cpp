// SPDX-License-Identifier: Apache-2.0
#include <gateway/tav_gateway/services.h>

#include <cstdio>
#include <filesystem>

#include <gateway/rules/default_rules.h>
#include <gateway/service/data/data_server.h>
#include <gateway/service/device/gsm_server.h>
#include <gateway/service/device/time_server.h>
#include <gateway/service/device/ui_server.h>
#include <gateway/service/obis/obis_server.h>
#include <gateway/service/status/status_server.h>
#include <gateway/web/front/web_front.h>

namespace tav::gateway {

namespace {

data::cDataOptions DataOptions(const cOptions& options) {
  data::cDataOptions made;
  made.file = options.GetDataFile();
  made.durability = options.durability;
  made.maxBytes = options.maxMegabytes << 20;
  return made;
}

// Status values come again with their clients: nobody waits for the disk on their account.
data::cDataOptions StatusOptions(const cOptions& options) {
  data::cDataOptions made = DataOptions(options);
  made.durability = data::eDurability::Normal;
  return made;
}

eExitCode Listen(const vorn::cScmServer& server, std::string& error) {
  if (server.IsListening()) return eExitDone;
  error = server.GetError();
  return eExitSocket;
}

eExitCode Open(data::cDatabase& store, std::string& error) {
  const data::cFault fault = store.Open();
  if (!fault) return eExitDone;
  error = fault.text;
  return eExitStorage;
}

void Count(cStatusValues& values, const char* name, std::uint64_t count) { values.Set(name, std::to_string(count)); }

class cHostedData final : public cHostedService {
 public:
  cHostedData(cServiceHost* host, const cOptions& options) : m_host(host), m_store(DataOptions(options)) {}

  eExitCode Start(std::string& error) override {
    if (const eExitCode code = Open(m_store, error); code != eExitDone) return code;
    m_server.emplace(m_host, &m_store);
    return Listen(*m_server, error);
  }
  void Collect(cStatusValues& values) const override {
    const auto& counters = m_server->GetCounters();
    Count(values, "clients", m_server->GetChannels().size());
    Count(values, "drivers", m_server->CountDrivers());
    Count(values, "waiting", m_server->CountWaiting());
    Count(values, "readings", counters.readings);
    Count(values, "duplicates", counters.duplicates);
    Count(values, "rejected", counters.rejected);
    Count(values, "refused", counters.refused);
    Count(values, "events", counters.events);
    Count(values, "file-bytes", m_store.GetFileBytes());
  }

 private:
  cServiceHost* m_host;
  data::cDataStore m_store;
  std::optional<data::cDataServer> m_server;
};

class cHostedObis final : public cHostedService {
 public:
  cHostedObis(cServiceHost* host, const cOptions& options) : m_host(host), m_store(DataOptions(options)) {}

  eExitCode Start(std::string& error) override {
    if (const eExitCode code = Open(m_store, error); code != eExitDone) return code;
    m_server.emplace(m_host, &m_store, rules::MakeDefaultRules());
    error = m_server->GetFault();
    return error.empty() ? Listen(*m_server, error) : eExitStorage;
  }
  void Collect(cStatusValues& values) const override {
    const cObisCounters& counters = m_server->GetCounters();
    Count(values, "clients", m_server->GetChannels().size());
    Count(values, "rules", m_server->GetMap().GetEntries().size());
    Count(values, "refused", counters.refused);
    Count(values, "changes-told", counters.told);
    Count(values, "changes-applied", counters.applied);
    Count(values, "changes-not-applied", counters.notApplied);
    Count(values, "changes-unanswered", m_server->CountUnanswered());
  }

 private:
  cServiceHost* m_host;
  cObisStore m_store;
  std::optional<cObisServer> m_server;
};

class cHostedStatus final : public cHostedService {
 public:
  cHostedStatus(cServiceHost* host, const cOptions& options) : m_host(host), m_store(StatusOptions(options)) {}

  eExitCode Start(std::string& error) override {
    if (const eExitCode code = Open(m_store, error); code != eExitDone) return code;
    m_server.emplace(m_host, &m_store);
    return Listen(*m_server, error);
  }
  // Not how many messages it has sent: telling that would send one more.
  void Collect(cStatusValues& values) const override {
    Count(values, "clients", m_server->GetChannels().size());
    Count(values, "values", m_server->GetSet().GetValues().size());
    Count(values, "values-of-gone", m_server->GetSet().CountGone());
    Count(values, "refused", m_server->GetCounters().refused);
  }

 private:
  cServiceHost* m_host;
  cStatusStore m_store;
  std::optional<cStatusServer> m_server;
};

// Whether a light that blinks is lit just now passes, as a flash does.
std::string Lasting(const std::string& state) {
  for (const std::string_view passing : {", lit", ", dark"})
    if (state.ends_with(passing)) return state.substr(0, state.size() - passing.size());
  return state;
}

// A device service. What passes by itself is no news, and left out: the time of day, and what is left of a time.
template <typename Server, auto Options>
class cHostedDevice final : public cHostedService {
 public:
  cHostedDevice(cServiceHost* host, const cOptions& options) : m_server(host, options.*Options) {}

  eExitCode Start(std::string& error) override { return Listen(m_server, error); }
  void Collect(cStatusValues& values) const override {
    for (const auto& [name, value] : m_server.GetState())
      if (name != "utc" && name != "relay.back-in") values.Set(name, name.starts_with("led.") ? Lasting(value) : value);
  }

 private:
  Server m_server;
};

// What clients send lies beside the database: the sockets' directory is often in memory.
web::cWebOptions WebOptions(const cOptions& options) {
  web::cWebOptions made = options.web;
  made.tempDirectory = (std::filesystem::path(options.GetDataFile()).parent_path() / "web-tmp").string();
  if (made.staticDirectory.empty()) made.staticDirectory = web::FindStaticDirectory();
  if (made.chart.empty()) made.chart = web::FindChart();
  return made;
}

class cHostedWeb final : public cHostedService {
 public:
  cHostedWeb(cServiceHost* host, const cOptions& options) : m_front(host, WebOptions(options)) {}

  eExitCode Start(std::string& error) override {
    switch (m_front.Start(error)) {
      case web::cWebFront::eOutcome::Serving:
        std::fprintf(stderr, "web pages at %s\n", m_front.GetUrl().c_str());
        return eExitDone;
      case web::cWebFront::eOutcome::BadOption:
        return eExitUsage;
      case web::cWebFront::eOutcome::NoStorage:
        return eExitStorage;
      case web::cWebFront::eOutcome::NoSocket:
        break;
    }
    return eExitSocket;
  }
  void Collect(cStatusValues& values) const override { m_front.Collect(values); }

 private:
  web::cWebFront m_front;
};

template <typename Service>
std::unique_ptr<cHostedService> Make(cServiceHost* host, const cOptions& options) {
  return std::make_unique<Service>(host, options);
}

constexpr cServiceKind kKinds[] = {
    {"data", "the database control service", Make<cHostedData>},
    {"obis", "the OBIS map service", Make<cHostedObis>},
    {"status", "the status service", Make<cHostedStatus>},
    {"ui", "the service of lights and relay", Make<cHostedDevice<cUiServer, &cOptions::ui>>},
    {"time-service", "the time service", Make<cHostedDevice<cTimeServer, &cOptions::time>>},
    {"gsm", "the service of the mobile modem", Make<cHostedDevice<cGsmServer, &cOptions::gsm>>},
    {kWebService, "the web front end", Make<cHostedWeb>},
};

}  // namespace

std::span<const cServiceKind> GetServiceKinds() { return kKinds; }

}  // namespace tav::gateway
