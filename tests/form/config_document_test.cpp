// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/config_document.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tav::form {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

cConfigDocument Sample() {
  cConfigDocument config;
  config.interfaces.emplace_back("SIM", "meters=2,seed=3", true);
  cMeterConfig meter;
  meter.SetIdentification("123 \"x\"", "5", "E", "ABC");
  meter.SetInterfaceOptions("SIM", "SML", "interval=900");
  meter.SetKey("0011223344");
  meter.vendor = "m\xC3\xBCller";
  meter.pushEnabled = true;
  meter.storeRawEnabled = false;
  cCollectorConfig collector;
  collector.SetAddr("lp");
  collector.SetActivation(true);
  collector.SetLogger(96, 2, "15min");
  collector.SetLoggedObisID("1-0:1.8.0,1-0:2.8.0");
  collector.SetPushTarget(18446744073709551615ull, "1h", true, true, 65535);
  collector.SetPushTargetName("server");
  meter.AddCollector(collector);
  config.meters.push_back(meter);
  config.meters.emplace_back().SetIdentification("456", "", "", "");
  config.pushTargets.emplace_back().configure(3, "server", "https", "host:1", "user", "pass\nword", "a/b", 5, 60, true,
                                              false, true);
  cMeterTemplate& preset = config.templates.emplace_back();
  preset.id = 42;
  preset.name = "preset";
  preset.enable = true;
  preset.meterConfig = meter;
  preset.pushConfig = config.pushTargets.front();
  return config;
}

cConfigDocument Read(const std::string& text, const cConfigDocument& present = {}) {
  Faults faults;
  const cConfigDocument config = cConfigDocument::FromText(text, present, faults);
  for (const cFault& fault : faults) ADD_FAILURE() << fault.place << ": " << fault.what;
  return config;
}

std::vector<std::string> FaultsOf(const std::string& text) {
  Faults faults;
  const cConfigDocument config = cConfigDocument::FromText(text, {}, faults);
  EXPECT_TRUE(config.interfaces.empty() && config.meters.empty()) << "nothing of a wrong document is there";
  std::vector<std::string> lines;
  for (const cFault& fault : faults) lines.push_back(fault.place + ": " + fault.what);
  return lines;
}

}  // namespace

TEST(ConfigDocument, ComesBackAsItWasInBothForms) {
  const cConfigDocument config = Sample();
  for (const eDocument form : {eDocument::Toml, eDocument::Json}) {
    const std::string text = config.ToText(form, eSecrets::Show);
    const cConfigDocument read = Read(text);
    EXPECT_EQ(read.ToText(form, eSecrets::Show), text);
    ASSERT_EQ(read.meters.size(), 2u);
    EXPECT_EQ(read.meters[0].key, "0011223344");
    EXPECT_EQ(read.meters[0].collectors.front().pushTargetIdx, 18446744073709551615ull);
    EXPECT_EQ(read.meters[0].collectors.front().distanceRP, 2u);
    EXPECT_EQ(read.pushTargets[0].password, "pass\nword");
    EXPECT_EQ(read.templates[0].id, 42u);
    EXPECT_EQ(read.templates[0].meterConfig.collectors.size(), 1u);
  }
}

TEST(ConfigDocument, IsWrittenForPeople) {
  cConfigDocument config;
  config.interfaces.emplace_back("SIM", "meters=2", true);
  EXPECT_EQ(config.ToText(eDocument::Toml, eSecrets::Leave),
            "[[interfaces]]\nname = \"SIM\"\nenabled = true\noptions = \"meters=2\"\n");
  EXPECT_EQ(cConfigDocument().ToText(eDocument::Toml, eSecrets::Leave), "");
  EXPECT_EQ(cConfigDocument().ToText(eDocument::Json, eSecrets::Leave),
            "{\n  \"interfaces\": [],\n  \"meters\": [],\n  \"push-targets\": [],\n  \"templates\": []\n}\n");
}

TEST(ConfigDocument, HoldsNoSecretsUnlessTheyAreAskedFor) {
  for (const eDocument form : {eDocument::Toml, eDocument::Json}) {
    const std::string text = Sample().ToText(form, eSecrets::Leave);
    EXPECT_THAT(text, Not(HasSubstr("0011223344")));
    EXPECT_THAT(text, Not(HasSubstr("pass")));
    EXPECT_THAT(text, Not(HasSubstr("key")));
  }
}

TEST(ConfigDocument, KeepsThePresentSecretsOfWhatItLeavesOut) {
  const cConfigDocument present = Sample();
  const cConfigDocument read = Read(present.ToText(eDocument::Toml, eSecrets::Leave), present);
  EXPECT_EQ(read.ToText(eDocument::Json, eSecrets::Show), present.ToText(eDocument::Json, eSecrets::Show));
  const cConfigDocument emptied = Read("[[push-targets]]\nname = 'server'\npassword = ''\n", present);
  EXPECT_EQ(emptied.pushTargets[0].password, "") << "an empty one is one";
  EXPECT_EQ(Read("[[push-targets]]\nname = 'other'\n", present).pushTargets[0].password, "");
}

TEST(ConfigDocument, TakesTheDefaultOfWhatIsNotSaid) {
  const cConfigDocument read = Read("[[meters]]\nmeterID = '1'\n[[meters.collectors]]\naddr = 'a'\n[[push-targets]]\n");
  EXPECT_TRUE(read.meters[0].storeRawEnabled);
  EXPECT_EQ(read.meters[0].collectors.size(), 1u);
  EXPECT_EQ(read.pushTargets[0].collect, 20u);
}

TEST(ConfigDocument, NamesEveryFaultWithItsPlace) {
  EXPECT_THAT(
      FaultsOf("[[interfaces]]\nname = 5\n\n[[meters]]\nmeterID = '1'\nmedum = 'E'\n[[meters.collectors]]\n"
               "countRP = -1\npush-random-offset = 65536\n\n[other]\n"),
      testing::UnorderedElementsAre(
          "line 2: interfaces[0].name: expected a text, found 5",
          "line 6: meters[0].medum: there is no such field; there are meterID, addr, medium, mfct, key, vendor, "
          "interface-name, interface-protocol, interface-options, push-enabled, store-raw-enabled",
          "line 8: meters[0].collectors[0].countRP: expected a whole number from 0 to 4294967295, found -1",
          "line 9: meters[0].collectors[0].push-random-offset: expected a whole number from 0 to 65535, found "
          "65536",
          "line 11: other: there is no such part; there are interfaces, meters, push-targets, templates"));
  EXPECT_THAT(
      FaultsOf("{\"interfaces\": {}, \"meters\": [5, {\"collectors\": 1}], \"templates\": [{\"meter-config\": "
               "{\"collectors\": [{\"addr\": true}]}}]}"),
      testing::UnorderedElementsAre("interfaces: expected a list", "meters[0]: expected fields, found 5",
                                    "meters[1].collectors: expected a list",
                                    "templates[0].meter-config.collectors[0].addr: expected a text, found true"));
}

TEST(ConfigDocument, SaysWhereATextIsNoDocument) {
  EXPECT_THAT(FaultsOf("[[interfaces]\nname = 1"), ElementsAre(HasSubstr("document: line 1, column ")));
  EXPECT_THAT(FaultsOf("{\"meters\": [}"), ElementsAre(HasSubstr("document: parse error at line 1, column 13")));
  EXPECT_THAT(FaultsOf("{\"a\": 1} x"), ElementsAre(HasSubstr("document: ")));
  EXPECT_THAT(FaultsOf("{\"meters\": " + std::string(100, '[') + std::string(100, ']') + "}"),
              ElementsAre("document: nested deeper than 32"));
  EXPECT_THAT(FaultsOf("a = " + std::string(100'000, '[')), ElementsAre(HasSubstr("document: line 1, column ")));
  EXPECT_THAT(FaultsOf("a = 1.5\nb = 1979-05-27T07:32:00Z\nc = [1, {}]\n"), testing::SizeIs(3));
}

TEST(ConfigDocument, TakesAnEmptyOneForAnEmptyConfiguration) {
  EXPECT_TRUE(Read("").interfaces.empty());
  EXPECT_TRUE(Read("{}").meters.empty());
  EXPECT_TRUE(Read("# nothing\n").templates.empty());
}

}  // namespace tav::form
