// SPDX-License-Identifier: Apache-2.0
#include <gateway/tav_gateway/services.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include <tav/service/status_protocol.h>
#include <tests/support/test_client.h>
#include <tests/tav_gateway/process_fixture.h>

namespace tav::gateway {
namespace {

using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::MatchesRegex;

class Services : public GatewayProcess {
 protected:
  bool Reaches(const std::string& service) {
    if (!m_service) m_service = std::make_unique<vorn::cScmService>("services-test", Directory());
    cTestClient client(m_service.get(), service);
    return client.AwaitConnection();
  }
  std::vector<std::string> Sockets() const {
    std::vector<std::string> names;
    for (const cServiceKind& kind : GetServiceKinds())
      if (std::filesystem::exists(m_service->GetSocketPath(kind.name))) names.push_back(kind.name);
    return names;
  }
  // The status values, once one is there.
  std::map<std::string, std::string> AwaitValues(const std::string& name) {
    cTestClient client(m_service.get(), "status");
    EXPECT_TRUE(client.AwaitConnection());
    std::map<std::string, std::string> values;
    for (int tries = 0; tries < 2'000 && values.count(name) == 0; ++tries) {
      const vorn::cMsg answer = client.Ask(status::eList);
      vorn::cRecord row;
      for (vorn::cRecordPar at = answer.Record().GetPar("row"); at.GetRecord(row); at = at.NextSame())
        values[row.GetTextPar("name")] = row.GetTextPar("value");
      m_service->Poll(5);
    }
    return values;
  }
  void ExpectPublished(const std::string& service) {
    const auto values = AwaitValues(service + ".version");
    ASSERT_EQ(values.count(service + ".version"), 1u) << service << Said();
    EXPECT_THAT(values.at(service + ".version"), MatchesRegex("[0-9]+\\.[0-9]+\\.[0-9]+"));
    EXPECT_THAT(values.at(service + ".started"), MatchesRegex("20..-..-..T..:..:..Z"));
  }
};

TEST_F(Services, HaveNamesAndExplanationsOfTheirOwn) {
  std::vector<std::string> names;
  for (const cServiceKind& kind : GetServiceKinds()) names.push_back(kind.name);
  EXPECT_THAT(names, testing::ElementsAre("data", "obis", "status", "ui", "time-service", "gsm", "web"));
}

TEST_F(Services, AreReachedAloneAndNobodyElseIs) {
  for (const cServiceKind& kind : GetServiceKinds()) {
    Start({kind.name});
    EXPECT_TRUE(Reaches(kind.name)) << kind.name << Said();
    EXPECT_THAT(Sockets(), testing::ElementsAre(kind.name));
    m_process->Signal(SIGTERM);
    EXPECT_EQ(m_process->Wait(), eExitDone) << kind.name << Said();
    EXPECT_EQ(Said(), "") << kind.name;
    m_service.reset();
  }
}

TEST_F(Services, AreAllReachedInOneProcess) {
  Start();
  for (const cServiceKind& kind : GetServiceKinds()) {
    EXPECT_TRUE(Reaches(kind.name)) << kind.name << Said();
    ExpectPublished(kind.name);
  }
  m_process->Signal(SIGTERM);
  EXPECT_EQ(m_process->Wait(), eExitDone) << Said();
  EXPECT_EQ(Said(), "");
}

TEST_F(Services, PublishTheirValuesEachInAProcessOfItsOwn) {
  std::vector<std::unique_ptr<cChildProcess>> processes;
  for (const cServiceKind& kind : GetServiceKinds()) {
    Start({kind.name});
    ASSERT_TRUE(Reaches(kind.name)) << kind.name << Said();
    processes.push_back(std::move(m_process));
  }
  for (const cServiceKind& kind : GetServiceKinds()) ExpectPublished(kind.name);
  for (const auto& process : processes) {
    process->Signal(SIGTERM);
    EXPECT_EQ(process->Wait(), eExitDone);
  }
}

TEST_F(Services, TellHowTheyAre) {
  Start();
  Connect();
  ASSERT_TRUE(AwaitAcknowledgement(m_driver->StoreOne(Reading(1))));
  const auto values = AwaitValues("data.version");
  std::vector<std::string> names;
  for (const auto& [name, value] : values) names.push_back(name);
  for (const auto& [service, own] : std::map<std::string, std::vector<std::string>>{
           {"data",
            {"clients", "drivers", "waiting", "readings", "duplicates", "rejected", "refused", "events", "file-bytes"}},
           {"obis",
            {"clients", "rules", "refused", "changes-told", "changes-applied", "changes-not-applied",
             "changes-unanswered"}},
           {"status", {"clients", "values", "values-of-gone", "refused"}},
           {"ui", {"led.wan", "led.meter-1", "led.meter-2", "relay", "hardware"}},
           {"time-service", {"clock", "synchronized", "last-set", "wan", "wan-since"}},
           {"gsm", {"modem", "state", "since", "apn", "reason"}},
           {"web",
            {"address", "connections", "connections-evicted", "connections-timed-out", "page-processes", "requests",
             "refused", "failures", "bytes-received", "bytes-sent", "bytes-stored", "bytes-waiting"}}}) {
    std::vector<std::string> expected = {service + ".started", service + ".version"}, found;
    for (const std::string& name : own) expected.push_back(service + "." + name);
    std::copy_if(names.begin(), names.end(), std::back_inserter(found),
                 [&, prefix = service + "."](const std::string& name) { return name.rfind(prefix, 0) == 0; });
    EXPECT_THAT(found, testing::UnorderedElementsAreArray(expected)) << service;
  }
  EXPECT_NE(values.at("obis.rules"), "0") << "the shipped ones";
  EXPECT_EQ(values.at("ui.hardware"), "simulated");
  EXPECT_EQ(values.at("ui.led.wan"), "off") << "whether it is lit just now is no news";
}

TEST_F(Services, OfASecondGatewayAreRefusedWithTheNameThatIsTaken) {
  Start();
  Connect();
  for (const cServiceKind& kind : GetServiceKinds()) {
    cChildProcess second({TAV_GATEWAY, kind.name, "--dir", Directory(), "--web-listen", kFreePort}, {},
                         m_folder.File("second"));
    EXPECT_EQ(second.Wait(), eExitSocket) << kind.name;
    std::ifstream file(m_folder.File("second"));
    EXPECT_THAT(std::string(std::istreambuf_iterator<char>(file), {}),
                HasSubstr("tav-gateway: service '" + std::string(kind.name) +
                          "': another server of this name is running (tav-gateway[" +
                          std::to_string(m_process->GetPid()) + "])"));
  }
  EXPECT_TRUE(AwaitAcknowledgement(m_driver->StoreOne(Reading(1)))) << "the first goes on";
}

}  // namespace
}  // namespace tav::gateway
