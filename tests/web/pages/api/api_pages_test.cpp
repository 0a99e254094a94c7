// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/api/api_pages.h>

#include <nlohmann/json.hpp>

#include <gateway/form/json.h>
#include <gateway/web/pages/core/routes.h>
#include <tests/support/time_zone.h>
#include <tests/web/pages/pages_world.h>

namespace tav::pages {
namespace {

using form::cJson;
using testing::HasSubstr;

constexpr unsigned int kNoon = 1709294400;  // 2024-03-01T12:00:00Z

class Api : public cPagesWorld {
 protected:
  void SetUp() override {
    cPagesWorld::SetUp();
    Enter(eRole::Viewer);
  }
  cJson Read(const std::string& path, const cFields& query = {}) {
    const cAnswer answer = Get(path, query);
    EXPECT_EQ(answer.Status(), 200u) << answer.body;
    EXPECT_EQ(answer.Header("Content-Type"), "application/json");
    cJson json;
    std::string error;
    EXPECT_TRUE(form::ParseJson(answer.body, json, error)) << error << "\n" << answer.body;
    return json;
  }
  void StoreTwoMeters() {
    Store("METER1", kNoon, {{"1-0:1.8.0", "1234.5678901234567", "Wh"}, {"1-0:16.7.0", "151", "W"}});
    Store("METER1", kNoon + 60, {{"1-0:1.8.0", "1235", "Wh"}});
    Store("METER2", kNoon, {{"8-0:1.0.0", "12.5", "m\xB3"}}, "W");
  }

  const cTimeZone m_zone{"UTC0"};
};

// Whether a value is what its schema says; the parts of JSON Schema that the document uses.
::testing::AssertionResult Fits(const cJson& value, const cJson& schema) {
  const std::string type = schema.at("type");
  if (value.is_null()) {
    if (schema.value("nullable", false)) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "null, and the schema is " << schema;
  }
  const bool fits = type == "string"    ? value.is_string()
                    : type == "integer" ? value.is_number_integer() || value.is_number_unsigned()
                    : type == "boolean" ? value.is_boolean()
                    : type == "array"   ? value.is_array()
                                        : value.is_object();
  if (!fits) return ::testing::AssertionFailure() << value << " is no " << type;
  if (type == "array")
    for (const cJson& item : value)
      if (const auto result = Fits(item, schema.at("items")); !result) return result;
  if (type != "object") return ::testing::AssertionSuccess();
  for (const auto& name : schema.at("required"))
    if (!value.contains(name.get<std::string>())) return ::testing::AssertionFailure() << name << " is missing";
  for (auto item = value.begin(); item != value.end(); ++item) {
    if (!schema.at("properties").contains(item.key()))
      return ::testing::AssertionFailure() << item.key() << " is not told";
    if (const auto result = Fits(*item, schema.at("properties").at(item.key())); !result) return result;
  }
  return ::testing::AssertionSuccess();
}

TEST_F(Api, ListsMeters) {
  StoreTwoMeters();
  const cJson meters = Read("/api/meters");
  ASSERT_EQ(meters.size(), 2u);
  EXPECT_EQ(meters[0]["meterID"], "METER1");
  EXPECT_EQ(meters[0]["interface-name"], "SIM");
  EXPECT_EQ(meters[0]["timestamp"], "2024-03-01T12:01:00+00:00");
  EXPECT_EQ(meters[1]["medium"], "W");
}

TEST_F(Api, ListsMoreMetersThanOneAnswerOfTheServiceHolds) {
  for (unsigned int i = 0; i < 120; ++i) Store("METER" + std::to_string(i), kNoon, {{"1-0:1.8.0", "1", "Wh"}});
  EXPECT_EQ(Read("/api/meters").size(), 120u);
}

TEST_F(Api, TellsLastValuesToTheLastDigit) {
  StoreTwoMeters();
  const cJson all = Read("/api/last-values");
  ASSERT_EQ(all.size(), 3u);
  const cJson one = Read("/api/last-values", {{"meter", "METER2"}});
  ASSERT_EQ(one.size(), 1u);
  EXPECT_EQ(one[0]["value"], "12.5");
  EXPECT_EQ(one[0]["unit"], "m\xC2\xB3") << "an ISO 8859-1 text, converted";
  EXPECT_EQ(one[0]["time-source"], "RTC");
}

TEST_F(Api, TellsStoredValuesOfARange) {
  StoreTwoMeters();
  const cJson values = Read("/api/values", {{"meter", "METER1"}, {"obis", "1-0:1.8.0"}});
  ASSERT_EQ(values.size(), 2u);
  EXPECT_EQ(values[0]["value"], "1234.5678901234567");
  EXPECT_EQ(values[1]["value"], "1235");
  EXPECT_EQ(Read("/api/values", {{"meter", "METER1"}, {"from", "2024-03-01T12:00:30Z"}}).size(), 1u);
  EXPECT_EQ(Read("/api/values", {{"meter", "METER1"}, {"to", std::to_string(kNoon)}}).size(), 2u);
  EXPECT_EQ(Read("/api/values", {{"meter", "NOBODY"}}).size(), 0u);
}

TEST_F(Api, TellsValuesOfAMeterOnly) {
  const cAnswer answer = Get("/api/values");
  EXPECT_EQ(answer.Status(), 400u);
  EXPECT_EQ(answer.body, "meter: expected the identifier of a meter\n");
}

TEST_F(Api, SaysWhatIsWrongWithAParameter) {
  EXPECT_THAT(Get("/api/values", {{"meter", "M"}, {"from", "soon"}}).body, HasSubstr("from: "));
  EXPECT_EQ(Get("/api/values", {{"meter", "M"}, {"from", "now"}, {"to", "-1h"}}).body,
            "from: the range begins behind its end\n");
  const cAnswer refused = Get("/api/values", {{"meter", "M"}, {"profile", "yearly"}});
  EXPECT_EQ(refused.Status(), 502u);
  EXPECT_THAT(refused.body, HasSubstr("yearly"));
}

TEST_F(Api, TellsStatusValuesByPrefix) {
  m_pages->GetGateway().status.SingleSet("test.one", "1");
  m_pages->GetGateway().status.SingleSet("other", "2");
  ASSERT_TRUE(Await([&] { return Read("/api/status", {{"prefix", "other"}}).size() == 1; }));
  const cJson values = Read("/api/status", {{"prefix", "test."}});
  ASSERT_EQ(values.size(), 1u);
  EXPECT_EQ(values[0]["name"], "test.one");
  EXPECT_EQ(values[0]["process"], "web_pages_test");
  EXPECT_EQ(values[0]["connected"], true);
}

TEST_F(Api, TellsHowThePagesThemselvesAre) {
  ASSERT_TRUE(Await([&] { return !Read("/api/status", {{"prefix", "pages."}}).empty(); }));
  std::vector<std::string> names;
  for (const cJson& value : Read("/api/status", {{"prefix", "pages."}})) names.push_back(value["name"]);
  EXPECT_THAT(names, testing::ElementsAre("pages.logins", "pages.requests", "pages.requests-refused", "pages.started",
                                          "pages.version"));
}

TEST_F(Api, TellsTheRulesAsTheyAreNow) {
  const std::size_t before = Read("/api/rules").size();
  EXPECT_EQ(before, m_pages->GetGateway().obis.map.GetEntries().size());
  cObisMapEntry rule;
  ASSERT_TRUE(rule.Set(900001, "Test", "1-0:99.9.9", "protocol=dlms"));
  ASSERT_TRUE(m_pages->GetGateway().obis.SetEntry(rule));
  ASSERT_TRUE(Await([&] { return m_pages->GetGateway().obis.map.GetEntries().size() == before + 1; }));
  EXPECT_EQ(Read("/api/rules").back()["name"], "Test");
}

TEST_F(Api, GivesPointsOfACurve) {
  StoreTwoMeters();
  const cJson series = Read("/api/series", {{"meter", "METER1"}, {"obis", "1-0:1.8.0"}});
  EXPECT_EQ(series["unit"], "Wh");
  EXPECT_EQ(series["obis"], "1-0:1.8.0");
  EXPECT_EQ(series["points"].dump(), "[[1709294400,1234.5678901234567],[1709294460,1235]]");
  EXPECT_EQ(Get("/api/series", {{"meter", "METER1"}}).body, "obis: expected an OBIS identifier\n");
}

TEST_F(Api, TheDocumentTellsEveryAnswerAsItIs) {
  StoreTwoMeters();
  m_pages->GetGateway().status.SingleSet("test.one", "1");
  ASSERT_TRUE(Await([&] { return !Read("/api/status").empty(); }));
  const cJson document = Read("/api/openapi.json");
  EXPECT_EQ(document["openapi"], "3.0.3");
  unsigned int seen = 0;
  for (auto path = document["paths"].begin(); path != document["paths"].end(); ++path) {
    const cJson& content = path->at("get").at("responses").at("200").at("content");
    if (!content.contains("application/json")) continue;
    const cJson answer = Read(path.key(), {{"meter", "METER1"}});
    EXPECT_TRUE(Fits(answer, content.at("application/json").at("schema"))) << path.key();
    EXPECT_FALSE(answer.empty()) << path.key();
    ++seen;
  }
  EXPECT_EQ(seen, 5u);
}

TEST_F(Api, TheDocumentTellsEveryPathThatThereIs) {
  const cJson document = Read("/api/openapi.json");
  for (const cRoute& route : GetRoutes()) {
    const std::string path(route.path);
    if (!path.starts_with("/api/") || path == "/api/openapi.json" || path == "/api/series") continue;
    EXPECT_TRUE(document["paths"].contains(path)) << path;
  }
  EXPECT_TRUE(document["paths"].contains("/metrics"));
}

TEST_F(Api, TheDocumentTellsWhichParametersMustBeThere) {
  const cJson document = Read("/api/openapi.json");
  for (auto path = document["paths"].begin(); path != document["paths"].end(); ++path) {
    bool needsOne = false;
    for (const cJson& parameter : path->at("get").at("parameters")) needsOne |= parameter.at("required").get<bool>();
    EXPECT_EQ(Get(path.key()).Status(), needsOne ? 400u : 200u) << path.key();
  }
}

TEST_F(Api, AServiceThatIsAwayIsSaid) {
  m_services.clear();
  ASSERT_TRUE(Await([&] { return !m_pages->GetGateway().data.IsConnected(); }));
  const cAnswer answer = Get("/api/meters");
  EXPECT_EQ(answer.Status(), 503u);
  EXPECT_EQ(answer.body, "The service \"data\" is away. Try again in a moment.\n");
}

}  // namespace
}  // namespace tav::pages
