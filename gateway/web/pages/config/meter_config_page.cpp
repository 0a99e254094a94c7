// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/meter_config_page.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include <gateway/form/record_json.h>
#include <gateway/form/time_text.h>
#include <gateway/web/pages/config/config_answers.h>
#include <gateway/web/pages/config/config_table.h>
#include <gateway/web/pages/config/config_urls.h>
#include <gateway/web/pages/core/gateway_clients.h>
#include <tav/framework/time.h>

namespace tav::pages {

namespace {

constexpr int kIndent = 2;

cHtml ActionField(const char* name, const char* label, const char* type, const std::string& value, const char* hint) {
  return cHtml().Put(
      "<div class=\"field\"><label for=\"a-{}\">{}</label><input type=\"{}\" id=\"a-{}\" name=\"{}\" value=\"{}\" "
      "autocomplete=\"off\"><p class=\"hint\">{}</p></div>\n",
      std::string_view(name), std::string_view(label), std::string_view(type), std::string_view(name),
      std::string_view(name), value, std::string_view(hint));
}

cHtml DriverAnswer(const vorn::cRecord& answer) {
  vorn::cRecord content;
  if (!answer.GetPar(db_ctrl::kContent).GetRecord(content) || content.IsEmpty()) return {};
  const form::cJson json = form::ToJson(content, form::eMask::Secrets);
  return cHtml().Put("<pre class=\"code\">{}</pre>\n",
                     json.dump(kIndent, ' ', false, nlohmann::json::error_handler_t::replace));
}

}  // namespace

std::string cMeterConfigPage::GetName() const { return m_meter.meterID.empty() ? Query("id") : m_meter.meterID; }
std::string cMeterConfigPage::GetUrl() const { return MeterConfigUrl(m_meter); }
std::string cMeterConfigPage::GetListUrl() const { return kMeterConfigsPath; }

// What is typed goes on standing on its template.
std::string cMeterConfigPage::GetNewUrl() const {
  const std::string preset = Query("template");
  return preset.empty() ? kMeterConfigPath : MakeUrl(kMeterConfigPath, {{"template", preset}});
}

// ---- reading

void cMeterConfigPage::Load() {
  if (IsNew()) return LoadNew();
  FindMeter({Query("id"), Query("medium"), Query("mfct")}, eFit::Meant, [this](const cMeterConfig* meter) {
    if (meter != nullptr) m_meter = *meter;
    Loaded(meter != nullptr);
  });
}

void cMeterConfigPage::LoadNew() {
  Await(db_ctrl::kProtocol, db_ctrl::eGetMeterTemplate, Gateway().data.GetMeterTemplate(Id(), ""),
        [this](const vorn::cRecord& answer) {
          m_templates = TemplatesOf(answer);
          std::erase_if(m_templates, [](const cMeterTemplate& each) { return !each.enable; });
          if (!BeginAsTemplate())
            return ShowError(404, "There is no template \"" + Query("template") + "\" for new meters.");
          if (!IsPost()) return Loaded(false);
          FindMeter({Posted("meterID"), Posted("medium"), Posted("mfct")}, eFit::Exact,
                    [this](const cMeterConfig* meter) { Loaded(meter != nullptr); });
        });
}

bool cMeterConfigPage::BeginAsTemplate() {
  const std::string name = Query("template");
  if (name.empty()) return true;
  const auto found = std::find_if(m_templates.begin(), m_templates.end(),
                                  [&](const cMeterTemplate& each) { return each.name == name; });
  if (found == m_templates.end()) return false;
  m_meter = found->meterConfig;
  return true;
}

void cMeterConfigPage::Edit(cFieldForm& form) {
  if (IsNew()) return form.Edit(m_meter, form::kMeterFields, {});
  form.Edit(m_meter, form::kMeterFields, {.fixed = {"meterID", "medium", "mfct"}});
}

// Collectors have states of their own.
vorn::cRecord cMeterConfigPage::GetRecord() const {
  cMeterConfig alone = m_meter;
  alone.collectors.clear();
  return alone.ToRecord();
}

// ---- changing

std::string cMeterConfigPage::FaultOfThing() {
  cMeterConfig read;
  return read.FromRecord(m_meter.ToRecord()) ? std::string() : read.error;
}

void cMeterConfigPage::Store() { AwaitChange(db_ctrl::eSetMeter, Gateway().data.SetMeter(Id(), m_meter)); }

void cMeterConfigPage::Erase() {
  AwaitChange(db_ctrl::eDeleteMeter, Gateway().data.DeleteMeter(Id(), m_meter.meterID, m_meter.medium, m_meter.mfct));
}

std::string cMeterConfigPage::GetLoss() const {
  const std::size_t count = m_meter.collectors.size();
  const std::string collectors = count == 0   ? "It has no collectors"
                                 : count == 1 ? "Its collector goes with it"
                                              : "Its " + std::to_string(count) + " collectors go with it";
  return collectors + "; stored readings stay.";
}

// ---- what its driver can do

void cMeterConfigPage::Act(const std::string& action) {
  if (action == "activate")
    return AwaitDriver(db_ctrl::eActivateMeter,
                       Gateway().data.ActivateMeter(Id(), m_meter.meterID, m_meter.medium, m_meter.mfct,
                                                    Posted("vendor"), Posted("key")));
  if (action == "valve")
    return AwaitDriver(db_ctrl::eSetValve,
                       Gateway().data.SetValve(Id(), m_meter.meterID, m_meter.mfct, m_meter.medium, Posted("valve")));
  if (action == "clock") return SetClock();
  cMeterBasedPage::Act(action);
}

void cMeterConfigPage::SetClock() {
  unsigned int seconds = 0;
  std::string error;
  if (!form::ParseTime(Posted("time"), vorn::cTime::Now().GetSeconds(), seconds, error))
    return ShowThing(400, ErrorNote("Time: " + error));
  AwaitDriver(db_ctrl::eSetTimeDate,
              Gateway().data.SetTimeDate(Id(), m_meter.meterID, m_meter.mfct, m_meter.medium, seconds));
}

void cMeterConfigPage::AwaitDriver(unsigned int request, bool sent) {
  Await(
      db_ctrl::kProtocol, request, sent,
      [this](const vorn::cRecord& answer) {
        ShowThing(200, DoneNote("The driver has done it.").Put(DriverAnswer(answer)));
      },
      [this](const std::string& reason) { ShowThing(409, ErrorNote("Not done: " + reason)); });
  if (sent) StartTimeout(kDriverPatience);
}

// ---- what is shown

cHtml cMeterConfigPage::GetLead() {
  if (m_templates.empty()) return {};
  cHtml options;
  for (const cMeterTemplate& each : m_templates)
    if (each.name == Query("template"))
      options.Put("<option selected>{}</option>", each.name);
    else
      options.Put("<option>{}</option>", each.name);
  return cHtml().Put(
      "<form class=\"entry\" method=\"get\" action=\"{}\">\n<div class=\"field\"><label "
      "for=\"template\">Template</label>"
      "<select id=\"template\" name=\"template\">{}</select>"
      "<p class=\"hint\">Fills in the fields below; a key and collectors of the template come with it.</p></div>\n"
      "<div class=\"actions\"><button>Begin as the template has it</button></div>\n</form>\n",
      std::string_view(kMeterConfigPath), options);
}

cHtml cMeterConfigPage::GetRest() {
  cHtml rest;
  rest.Put("<p><a href=\"{}\">Readings of this meter</a>, <a href=\"{}\">its interface</a></p>\n",
           MakeUrl("/meter", {{"id", m_meter.meterID}}), InterfaceUrl(m_meter.interfaceName));
  rest.Put("<h2>Collectors</h2>\n{}", CollectorTable(m_meter, eLinks::With));
  if (!GetVisitor().MayChange()) return rest;
  rest.Put("<p class=\"actions\"><a class=\"button\" href=\"{}\">New collector</a></p>\n", CollectorUrl(m_meter, ""));
  return rest.Put(Actions());
}

// What was typed into one of them stands in it again, but for a key.
cHtml cMeterConfigPage::Actions() const {
  const auto typed = [this](const char* name, const char* otherwise) {
    return IsPost() && Posted("action") != "save" ? Posted(name) : std::string(otherwise);
  };
  cHtml activation = ActionField("vendor", "Vendor", "text", typed("vendor", ""), "Left out when empty.");
  activation.Put(ActionField("key", "Key", "password", {}, "Left out when empty."));
  cHtml actions;
  actions.Put("<h2>Ask the driver</h2>\n<h3>Activate the meter</h3>\n{}",
              ActionForm("activate", "Activate", activation));
  actions.Put("<h3>Set the valve</h3>\n{}", ActionForm("valve", "Set the valve",
                                                       ActionField("valve", "Position", "text", typed("valve", ""),
                                                                   "A position that the meter's driver knows.")));
  actions.Put("<h3>Set the clock</h3>\n{}", ActionForm("clock", "Set the clock",
                                                       ActionField("time", "Time", "text", typed("time", "now"),
                                                                   "A time such as 2024-03-01 12:00, or now.")));
  return actions;
}

}  // namespace tav::pages
