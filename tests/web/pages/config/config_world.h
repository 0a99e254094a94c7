// SPDX-License-Identifier: Apache-2.0
// A gateway whose configuration is looked at and changed as a browser does it: forms are read off the page that shows
// them, filled in, and sent where they say. What became of it is asked of the data service itself.
#pragma once

#include <algorithm>
#include <list>
#include <string>
#include <vector>

#include <gateway/web/pages/config/config_answers.h>
#include <tav/config/interface_record.h>
#include <tests/web/pages/pages_world.h>

namespace tav::pages {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// Breaks out of markup wherever it is not escaped.
inline constexpr const char* kHostile = "\"><script>alert('1')</script>&amp;";
inline constexpr const char* kHostileShown = "&quot;&gt;&lt;script&gt;alert(&#39;1&#39;)&lt;/script&gt;&amp;amp;";
inline constexpr const char* kSecret = "top-secret-0815";

// A form as it stands on a page.
struct cShownForm {
  std::string path;
  cFields query;
  cFields fields;

  std::string Value(const std::string& name) const {
    for (const auto& [own, value] : fields)
      if (own == name) return value;
    return "(none)";
  }
  cShownForm& Set(const std::string& name, const std::string& value) {
    std::erase_if(fields, [&](const auto& field) { return field.first == name; });
    fields.emplace_back(name, value);
    return *this;
  }
  cShownForm& Clear(const std::string& name) {  // as a box that is not ticked any more
    std::erase_if(fields, [&](const auto& field) { return field.first == name; });
    return *this;
  }
};

class cConfigWorld : public cPagesWorld {
 protected:
  void SetUp() override {
    cPagesWorld::SetUp();
    m_data = std::make_unique<cRecordingClient>(m_gateway.get(), "data");
    ASSERT_TRUE(PollUntil(*m_gateway, [&] { return m_data->IsConnected(); }));
    Enter();
  }
  void TearDown() override {
    m_drivers.clear();
    m_data.reset();
    cPagesWorld::TearDown();
  }

  // ---- pages and forms
  cAnswer Open(const std::string& url) {
    cShownForm target;
    TakeUrl(url, target);
    return Get(target.path, target.query);
  }
  // The form that sends this action; fails the test when the page has none.
  static cShownForm FormOf(const cAnswer& page, const std::string& action) {
    cShownForm form;
    const std::size_t button = page.body.find("name=\"action\" value=\"" + action + "\"");
    const std::size_t begin = button == std::string::npos ? button : page.body.rfind("<form", button);
    if (begin == std::string::npos) {
      ADD_FAILURE() << "no form for " << action << " in: " << page.body;
      return form;
    }
    TakeUrl(Attribute(page.body.substr(begin, page.body.find('>', begin) - begin), "action"), form);
    for (std::size_t at = page.body.find("<input", begin); at < button; at = page.body.find("<input", at + 1)) {
      const std::string input = page.body.substr(at, page.body.find('>', at) - at);
      if (input.find("type=\"checkbox\"") == std::string::npos || input.ends_with(" checked"))
        form.fields.emplace_back(Attribute(input, "name"), Attribute(input, "value"));
    }
    return form.Set("action", action);
  }
  cShownForm FormAt(const std::string& url, const std::string& action = "save") { return FormOf(Open(url), action); }
  cAnswer Submit(const cShownForm& form) { return Ask(MakeRequest("POST", form.path, form.query, form.fields)); }

  // ---- the configuration itself
  vorn::cMsg AskData(unsigned int type, const vorn::cRecord& record) {
    vorn::cUuid id;
    id.Create();
    vorn::cMsg msg(type);
    msg.SetId(id);
    msg.Record() = record;
    vorn::cMsg answer;
    m_data->onMessage = [&](const vorn::cMsg& came) {
      if (came.GetId() == id) answer = came;
    };
    EXPECT_EQ(m_data->Send(msg), 1);
    EXPECT_TRUE(PollUntil(*m_gateway, [&] { return answer.GetType() != 0; }));
    m_data->onMessage = nullptr;
    return answer;
  }
  template <typename Thing>
  void SetThing(unsigned int type, std::string_view key, const Thing& thing) {
    vorn::cRecord record;
    record.AppendRecordPar(key, thing.ToRecord());
    const vorn::cMsg answer = AskData(type, record);
    ASSERT_EQ(answer.GetType(), type + 1) << answer.ToString();
  }
  void Set(const cInterfaceRecord& thing) { SetThing(db_ctrl::eSetInterface, db_ctrl::kInterfaceRecord, thing); }
  void Set(const cMeterConfig& thing) { SetThing(db_ctrl::eSetMeter, db_ctrl::kMeterConfigRecord, thing); }
  void Set(const cPushTarget& thing) { SetThing(db_ctrl::eSetPushTarget, db_ctrl::kPushTargetRecord, thing); }
  void Set(const cMeterTemplate& thing) { SetThing(db_ctrl::eSetMeterTemplate, db_ctrl::kMeterTemplateRecord, thing); }

  std::vector<cInterfaceRecord> Interfaces() {
    vorn::cRecord request;
    request.AppendBoolPar(db_ctrl::kWithMeters, false);
    request.AppendBoolPar(db_ctrl::kWithLoggers, false);
    return ThingsOf<cInterfaceRecord>(AskData(db_ctrl::eGetInterface, request).Record(), db_ctrl::kInterfaceRecord);
  }
  std::vector<cMeterConfig> Meters() {
    return ThingsOf<cMeterConfig>(AskData(db_ctrl::eGetMeter, {}).Record(), db_ctrl::kMeterConfigRecord);
  }
  std::vector<cPushTarget> Targets() {
    return ThingsOf<cPushTarget>(AskData(db_ctrl::eGetPushTarget, {}).Record(), db_ctrl::kPushTargetRecord);
  }
  std::vector<cMeterTemplate> Templates() { return TemplatesOf(AskData(db_ctrl::eGetMeterTemplate, {}).Record()); }

  // ---- things to begin with
  static cMeterConfig Meter(const std::string& id = "4711") {
    cMeterConfig meter;
    meter.SetIdentification(id, "5", "E", "TAV");
    meter.SetInterfaceOptions("SIM", "SML", "interval=900");
    meter.SetKey(kSecret);
    meter.SetVendor("A vendor");
    meter.pushEnabled = true;
    return meter;
  }
  static cCollectorConfig Collector(const std::string& addr = "1") {
    cCollectorConfig collector;
    collector.SetAddr(addr);
    collector.SetActivation(true);
    collector.SetLogger(100, 4, "15min");
    collector.SetLoggedObisID("1-0:1.8.0*255");
    return collector;
  }
  static cPushTarget Target(const std::string& name = "far") {
    cPushTarget target;
    target.configure(0, name, "https", "host.example:8443", "me", kSecret, "in", 10, 60, true, false, true);
    return target;
  }
  void HaveMeter(const std::list<cCollectorConfig>& collectors = {}) {
    Set(cInterfaceRecord("SIM", "", true));
    cMeterConfig meter = Meter();
    meter.collectors = collectors;
    Set(meter);
  }
  // A driver that answers each command: with the text as what it has done, or by what is wrong.
  void HaveDriver(const std::string& name, const std::string& done, const std::string& wrong = {}) {
    m_drivers.push_back(std::make_unique<cRecordingClient>(m_gateway.get(), "data"));
    cRecordingClient& driver = *m_drivers.back();
    ASSERT_TRUE(PollUntil(*m_gateway, [&] { return driver.IsConnected(); }));
    vorn::cMsg registration(db_ctrl::eRegisterDriver);
    registration.Record().AppendTextPar(db_ctrl::kDriver, name);
    ASSERT_EQ(driver.Send(registration), 1);
    ASSERT_TRUE(PollUntil(*m_gateway, [&] { return !driver.messages.empty(); }));
    ASSERT_EQ(driver.messages.back().GetType(), db_ctrl::eDriverRegistered);
    driver.onMessage = [&driver, done, wrong](const vorn::cMsg& msg) {
      if (msg.GetType() != db_ctrl::eNotifyDriver) return;
      vorn::cMsg answer(wrong.empty() ? db_ctrl::eDriverDone : db_ctrl::eDriverFailed);
      answer.SetId(msg.GetId());
      vorn::cRecord content;
      content.AppendTextPar("result", done);
      content.AppendTextPar("key", kSecret);
      if (wrong.empty())
        answer.Record().AppendRecordPar(db_ctrl::kContent, content);
      else
        answer.Record().AppendTextPar(db_ctrl::kReason, wrong);
      driver.Send(answer);
    };
  }
  vorn::cRecord LastCommand() const {
    const auto& messages = m_drivers.back()->messages;
    return messages.empty() ? vorn::cRecord() : messages.back().Record();
  }

  std::unique_ptr<cRecordingClient> m_data;
  std::list<std::unique_ptr<cRecordingClient>> m_drivers;

 private:
  static std::string Attribute(const std::string& tag, const std::string& name) {
    const std::size_t at = tag.find(" " + name + "=\"");
    if (at == std::string::npos) return {};
    const std::size_t begin = at + name.size() + 3;
    std::string value = tag.substr(begin, tag.find('"', begin) - begin);
    for (const auto& [escaped, plain] :
         cFields{{"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&#39;", "'"}, {"&amp;", "&"}})
      for (std::size_t found = value.find(escaped); found != std::string::npos;
           found = value.find(escaped, found + plain.size()))
        value.replace(found, escaped.size(), plain);
    return value;
  }
  static std::string Decode(const std::string& text) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i)
      if (text[i] == '%') {
        decoded += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
        i += 2;
      } else {
        decoded += text[i];
      }
    return decoded;
  }
  static void TakeUrl(const std::string& url, cShownForm& form) {
    const auto parts = vorn::cHelper::Split(url, "?");
    form.path = parts.at(0);
    if (parts.size() < 2) return;
    for (const std::string& variable : vorn::cHelper::GetStringTokens(parts[1], "&")) {
      const auto pair = vorn::cHelper::Split(variable, "=");
      form.query.emplace_back(Decode(pair.at(0)), Decode(pair.at(1)));
    }
  }
};

}  // namespace tav::pages
