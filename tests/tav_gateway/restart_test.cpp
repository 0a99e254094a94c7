// SPDX-License-Identifier: Apache-2.0
// Every service in a process of its own, started and killed in any order while clients go on: in the end all that
// they have done is there.
#include <algorithm>
#include <map>
#include <random>

#include <gateway/tav_gateway/services.h>
#include <tav/obis/obis_protocol.h>
#include <tav/obis/obis_proxy.h>
#include <tav/service/gsm_io.h>
#include <tav/service/status_proxy.h>
#include <tav/service/tcm_io.h>
#include <tav/service/ui_ctrl_io.h>
#include <tests/tav_gateway/process_fixture.h>

namespace tav::gateway {
namespace {

// A client of all services. What is not acknowledged is asked for again, however often a service goes.
class cEverybodysClient : public vorn::cScmService {
 public:
  explicit cEverybodysClient(const std::string& directory)
      : cScmService("everybody", directory), driver(this), obis(this), status(this), ui(this), time(this), gsm(this) {}

  bool DispatchMessage(const vorn::cMsg& msg) override {
    if (msg.GetType() == obis::eRuleSet) m_rulesSet.insert(msg.GetId());
    return true;
  }

  void Store(unsigned int number, const cMeterRecord& reading) {
    m_readings[number] = {reading, driver.StoreOne(reading)};
  }
  void SetRule(unsigned int number) {
    cRule& rule = m_rules[number];
    rule.entry.Set(number, "rule " + std::to_string(number), "1-0:1.8.0", "protocol=dlms");
    rule.request.Clear();
    obis.SetEntry(rule.request, rule.entry);
  }
  // What was lost with a process is done again, once for each new connection.
  void Repeat() {
    if (driver.m_registered && driver.m_queue.empty() && IsNew(driver, m_storedOver))
      for (auto& [number, reading] : m_readings)
        if (driver.m_acknowledged.count(reading.second) == 0) reading.second = driver.StoreOne(reading.first);
    if (IsNew(obis, m_askedOver))
      for (auto& [number, rule] : m_rules)
        if (m_rulesSet.count(rule.request) == 0) obis.SetEntry(rule.request, rule.entry);
  }
  bool IsDone() const {
    return std::all_of(m_readings.begin(), m_readings.end(),
                       [&](const auto& each) { return driver.m_acknowledged.count(each.second.second) != 0; }) &&
           std::all_of(m_rules.begin(), m_rules.end(),
                       [&](const auto& each) { return m_rulesSet.count(each.second.request) != 0; });
  }
  void Hurry() {
    for (vorn::cScmServiceIO* client :
         std::initializer_list<vorn::cScmServiceIO*>{&driver, &obis, &status, &ui, &time, &gsm})
      if (!client->IsConnected()) client->HealthRequest();
  }
  bool IsEverywhere() const {
    return driver.m_registered && obis.loaded && status.m_synced && ui.IsConnected() && time.IsConnected() &&
           gsm.IsConnected();
  }

  cTestDriver driver;
  cObisProxy obis;
  cStatusProxy status;
  cUiCtrlIO ui;
  cTcmIO time;
  cGsmIO gsm;

 private:
  struct cRule {
    cObisMapEntry entry;
    vorn::cUuid request;
  };

  static bool IsNew(const vorn::cScmServiceIO& client, std::shared_ptr<vorn::cScmChannel>& known) {
    const auto channel = client.GetChannel();
    return channel != nullptr && std::exchange(known, channel) != channel;
  }

  std::shared_ptr<vorn::cScmChannel> m_storedOver;
  std::shared_ptr<vorn::cScmChannel> m_askedOver;
  std::map<unsigned int, std::pair<cMeterRecord, vorn::cUuid>> m_readings;
  std::map<unsigned int, cRule> m_rules;
  std::set<vorn::cUuid> m_rulesSet;
};

class Restarts : public GatewayProcess {
 protected:
  void StartService(const std::string& name) {
    if (m_processes.count(name) != 0) return;
    m_processes[name] = std::make_unique<cChildProcess>(
        std::vector<std::string>{TAV_GATEWAY, name, "--dir", Directory(), "--trace", "2"}, std::vector<std::string>{},
        m_folder.File("said-" + name));
  }
  void EndService(const std::string& name, int signal) {
    const auto process = m_processes.find(name);
    if (process == m_processes.end()) return;
    process->second->Signal(signal);
    ASSERT_TRUE(process->second->Wait()) << name;
    m_processes.erase(process);
  }
  std::string AllSaid() const {
    std::string all;
    for (const auto& [name, process] : m_processes) {
      std::ifstream file(m_folder.File("said-" + name));
      all += "\n" + name + ": " + std::string(std::istreambuf_iterator<char>(file), {});
    }
    return all;
  }
  static std::vector<std::string> Names() {
    std::vector<std::string> names;
    for (const cServiceKind& kind : GetServiceKinds()) names.push_back(kind.name);
    return names;
  }
  template <typename Holds>
  bool AwaitClient(cEverybodysClient& client, const Holds& holds) {
    const auto clock = vorn::cClock::Steady();
    for (const std::int64_t end = clock->Now() + kPatienceMs; !holds();) {
      if (clock->Now() > end) return false;
      client.Hurry();
      client.Repeat();
      client.Poll(10);
    }
    return true;
  }
  // Everything that there is in the end, but for what tells of the processes themselves.
  std::string StateOf(const cEverybodysClient& client) {
    std::string state;
    for (const auto& [name, value] : client.status.m_values)
      if (name.rfind("test.", 0) == 0) state += name + "=" + value + "\n";
    for (const auto& [id, rule] : client.obis.map.GetEntries())
      if (id < 100) state += rule.ToString() + "\n";
    return state + Ask("SELECT group_concat(osc) FROM (SELECT osc FROM readings ORDER BY osc)") +
           Ask("SELECT count(*) FROM obis_rule WHERE id<100");
  }

  std::map<std::string, std::unique_ptr<cChildProcess>> m_processes;
};

TEST_F(Restarts, InAnyOrderEndInTheSameState) {
  std::string first;
  for (unsigned int seed = 1; seed <= 4; ++seed) {
    std::filesystem::remove_all(Directory());
    std::filesystem::create_directory(Directory());
    std::mt19937 random(seed);
    std::vector<std::string> names = Names();
    cEverybodysClient client(Directory());
    for (unsigned int step = 1; step <= 25; ++step) {
      std::shuffle(names.begin(), names.end(), random);
      StartService(names[0]);
      StartService(names[1]);
      client.Store(step, Reading(step));
      client.SetRule(step);
      client.status.SingleSet("test." + std::to_string(step % 5), std::to_string(step));
      for (int turn = 0; turn < 5; ++turn) {
        client.Hurry();
        client.Repeat();
        client.Poll(5);
      }
      if (step % 3 == 0) EndService(names[2], step % 2 == 0 ? SIGKILL : SIGTERM);
    }
    for (const std::string& name : names) StartService(name);
    ASSERT_TRUE(AwaitClient(client, [&] { return client.IsEverywhere() && client.IsDone(); }))
        << "seed " << seed << AllSaid();
    ASSERT_TRUE(AwaitClient(client, [&] { return client.obis.map.GetEntries().count(25) != 0; }));
    const std::string state = StateOf(client);
    if (first.empty()) first = state;
    EXPECT_EQ(state, first) << "seed " << seed;
    m_processes.clear();
  }
  EXPECT_THAT(first, testing::HasSubstr("test.4=24\n"));
  EXPECT_THAT(first, testing::HasSubstr("rule 25"));
}

}  // namespace
}  // namespace tav::gateway
