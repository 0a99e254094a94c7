// SPDX-License-Identifier: Apache-2.0
// Real processes all the way: a gateway is configured with tavctl, the driver obeys, and what is exported makes another
// gateway behave the same.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <iterator>
#include <memory>

#include <tav/service/db_ctrl_protocol.h>
#include <tests/support/child_process.h>
#include <tests/support/temp_folder.h>
#include <tests/support/test_client.h>

namespace tav::sml {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const std::string kFirst = "0A015441560000000001";  // the simulation's meters
const std::string kSecond = "0A015441560000000002";

// A gateway with its driver, in a folder of its own.
class cSite {
 public:
  explicit cSite(const std::string& directory)
      : m_directory(directory),
        m_gateway({TAV_GATEWAY, "data", "--dir", directory}, {}, directory + ".said"),
        m_service("site-test", directory),
        m_client(&m_service, "data") {
    EXPECT_TRUE(m_client.AwaitConnection());
  }
  void StartDriver() {
    m_driver = std::make_unique<cChildProcess>(std::vector<std::string>{EHZIF, "--dir", m_directory});
  }
  int EndDriver() {
    m_driver->Signal(SIGTERM);
    return m_driver->Wait().value_or(-1);
  }
  // What tavctl says goes to a file beside the folder.
  int Ctl(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {TAVCTL, "--dir", m_directory});
    return cChildProcess(arguments, {}, m_directory + ".ctl").Wait().value_or(-1);
  }
  std::string Said() const { return Load(m_directory + ".ctl"); }
  static std::string Load(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  std::vector<std::string> Meters() {
    std::vector<std::string> meters;
    const vorn::cMsg answer = m_client.Ask(db_ctrl::eListMeters, {});
    vorn::cRecord row;
    for (vorn::cRecordPar at = answer.Record().GetPar("row"); at.GetRecord(row); at = at.NextSame())
      meters.push_back(row.GetTextPar("meterID"));
    return meters;
  }
  bool AwaitMeters(std::size_t count) {
    for (int tries = 0; tries < 3000; ++tries) {
      if (Meters().size() >= count) return true;
      if (m_driver->Wait(10)) return false;
    }
    return false;
  }
  vorn::cMsg Ask(unsigned int type, const vorn::cRecord& request) { return m_client.Ask(type, request); }

 private:
  std::string m_directory;
  cChildProcess m_gateway;
  vorn::cScmService m_service;
  cTestClient m_client;
  std::unique_ptr<cChildProcess> m_driver;
};

vorn::cRecord OfMeter(const std::string& meter) {
  vorn::cRecord request;
  request.AppendTextPar("meterID", meter);
  request.AppendTextPar("manufactor", "");
  request.AppendTextPar("medium", "E");
  return request;
}

}  // namespace

TEST(ConfiguredGateway, IsObeyedByItsDriverAndBehavesTheSameWhereItsConfigurationIsImported) {
  cTempFolder folder;
  const std::string file = folder.File("all.toml");
  {
    cSite site(folder.File("one"));
    site.StartDriver();
    ASSERT_EQ(site.Ctl({"interface", "set", "SIM", "enabled=true", "options=meters=3,period=1"}), 0) << site.Said();
    for (const std::string& meter : {kFirst, kSecond})
      ASSERT_EQ(site.Ctl({"meter", "set", meter, "medium=E", "interface-name=SIM", "interface-protocol=SML", "key=K"}),
                0)
          << site.Said();
    ASSERT_EQ(site.Ctl({"collector", "set", kFirst + "/lp", "activation=true", "event-type=1", "obis-ids=1-0:1.8.0"}),
              0)
        << site.Said();
    ASSERT_TRUE(site.AwaitMeters(2)) << "the driver followed, without a restart";
    ASSERT_EQ(site.Ctl({"config", "export", "--secrets", file}), 0) << site.Said();
    EXPECT_EQ(site.EndDriver(), 0);
    EXPECT_THAT(site.Meters(), ElementsAre(kFirst, kSecond)) << "the third is not configured";
  }
  cSite other(folder.File("other"));
  ASSERT_EQ(other.Ctl({"config", "import", file}), 0) << other.Said();
  ASSERT_EQ(other.Ctl({"config", "export", "--secrets", folder.File("again.toml")}), 0) << other.Said();
  EXPECT_EQ(cSite::Load(folder.File("again.toml")), cSite::Load(file));
  other.StartDriver();
  EXPECT_TRUE(other.AwaitMeters(2));
  EXPECT_EQ(other.EndDriver(), 0);
  EXPECT_THAT(other.Meters(), ElementsAre(kFirst, kSecond));
}

TEST(ConfiguredGateway, HandsOnWhatADriverAnswersAndRefusesWhenItIsAway) {
  cTempFolder folder;
  cSite site(folder.File("one"));
  ASSERT_EQ(site.Ctl({"interface", "set", "SIM", "enabled=true", "options=period=1"}), 0) << site.Said();
  ASSERT_EQ(site.Ctl({"meter", "set", kFirst, "medium=E", "interface-name=SIM", "interface-protocol=SML"}), 0);
  vorn::cMsg answer = site.Ask(db_ctrl::eActivateMeter, OfMeter(kFirst));
  EXPECT_EQ(answer.GetType(), db_ctrl::eActivateMeter + 2);
  EXPECT_THAT(answer.Record().GetTextPar("reason"), HasSubstr("driver 'ehzif' is not registered"));
  site.StartDriver();
  ASSERT_TRUE(site.AwaitMeters(1));
  answer = site.Ask(db_ctrl::eActivateMeter, OfMeter(kFirst));
  EXPECT_EQ(answer.GetType(), db_ctrl::eMeterActivated) << answer.ToString();
  vorn::cRecord valve = OfMeter(kFirst);
  valve.AppendTextPar("valve", "open");
  answer = site.Ask(db_ctrl::eSetValve, valve);
  EXPECT_EQ(answer.GetType(), db_ctrl::eSetValve + 2);
  EXPECT_THAT(answer.Record().GetTextPar("reason"), HasSubstr("only sends: ehzif cannot do 'set-valve'"));
  EXPECT_EQ(site.EndDriver(), 0);
}

}  // namespace tav::sml
