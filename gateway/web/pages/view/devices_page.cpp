// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/devices_page.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>

#include <gateway/form/config_fields.h>
#include <gateway/form/time_text.h>
#include <gateway/web/pages/core/form_parts.h>
#include <gateway/web/pages/core/gateway_clients.h>
#include <tav/framework/time.h>
#include <tav/service/device_protocol.h>

namespace tav::pages {

namespace {

struct cService {
  const cProtocol& protocol;
  unsigned int getState;
};

// In the order of the page.
constexpr cService kServices[] = {{ui::kProtocol, ui::eGetState},
                                  {time_service::kProtocol, time_service::eGetState},
                                  {gsm::kProtocol, gsm::eGetState}};

struct cDone {
  std::string_view word;
  std::string_view text;
};

constexpr cDone kDone[] = {
    {"led", "The light is switched."},
    {"relay", "The relay is switched."},
    {"clock", "The clock is set."},
    {"wan-up", "The link to the wide area network is told to be up."},
    {"wan-down", "The link to the wide area network is told to be down."},
    {"modem-start", "The connection is being made."},
    {"modem-stop", "The connection is ended."},
};

std::string_view DoneText(std::string_view word) {
  for (const cDone& done : kDone)
    if (done.word == word) return done.text;
  return {};
}

// A light blinks: what it is just now is old before it is read.
std::string Lasting(const std::string& name, const std::string& value) {
  return name.starts_with("led.") ? value.substr(0, value.find(", ")) : value;
}

// The number of a word of a list; false when it is not there.
bool Number(std::span<const std::string_view> words, const std::string& word, unsigned int& number) {
  const auto at = std::find(words.begin(), words.end(), word);
  number = static_cast<unsigned int>(at - words.begin());
  return at != words.end();
}

}  // namespace

void cDevicesPage::Start() {
  if (IsPost()) return Take();
  ReadStates(eUi);
}

vorn::cScmServiceIO& cDevicesPage::ClientOf(eService service) {
  if (service == eUi) return Gateway().ui;
  if (service == eTime) return Gateway().time;
  return Gateway().gsm;
}

// ---- changes

void cDevicesPage::Take() {
  const std::string action = Posted("do");
  if (action == "led") return SwitchLed();
  if (action == "relay") return SwitchRelay();
  if (action == "clock") return SetClock();
  if (action == "wan-up") return Do(eTime, time_service::eWanUp, {});
  if (action == "wan-down") return Do(eTime, time_service::eWanDown, {});
  if (action == "modem-start") return StartModem();
  if (action == "modem-stop") return Do(eGsm, gsm::eStop, {});
  Refuse(400, "The form does not say what to do.");
}

void cDevicesPage::SwitchLed() {
  unsigned int led = 0;
  unsigned int mode = 0;
  if (!Number(ui::kLeds, Posted("led"), led)) return Refuse(400, "There is no light \"" + Posted("led") + "\".");
  if (!Number(ui::kLedModes, Posted("mode"), mode)) return Refuse(400, "No light can be \"" + Posted("mode") + "\".");
  vorn::cRecord record;
  record.AppendUIntPar(device::kLed, led);
  record.AppendUIntPar(device::kLedMode, mode);
  Do(eUi, ui::eSwitchLed, record);
}

void cDevicesPage::SwitchRelay() {
  unsigned int mode = 0;
  unsigned int seconds = 0;
  std::string expected;
  if (!Number(ui::kRelayModes, Posted("mode"), mode))
    return Refuse(400, "The relay cannot be \"" + Posted("mode") + "\".");
  if (const std::string text = Posted("timeout"); !text.empty() && !form::TakeText(text, seconds, expected))
    return Refuse(400, "Seconds: expected " + expected + ", found \"" + text + "\"");
  vorn::cRecord record;
  record.AppendUIntPar(device::kRelayMode, mode);
  record.AppendUIntPar(device::kTimeout, seconds);
  Do(eUi, ui::eSwitchRelay, record);
}

void cDevicesPage::SetClock() {
  unsigned int utc = 0;
  std::string error;
  if (!form::ParseTime(Posted("time"), vorn::cTime::Now().GetSeconds(), utc, error))
    return Refuse(400, "Time: " + error);
  vorn::cRecord record;
  record.AppendTimePar(device::kNewUtc, vorn::cTime::FromSeconds(utc, true));
  Do(eTime, time_service::eSetTime, record);
}

void cDevicesPage::StartModem() {
  if (Posted("apn").empty()) return Refuse(400, "Access point: expected its name, found nothing.");
  vorn::cRecord record;
  record.AppendTextPar(device::kMobilePin, Posted("pin"));
  record.AppendTextPar(device::kApn, Posted("apn"));
  record.AppendTextPar(device::kUser, Posted("user"));
  record.AppendTextPar(device::kPassword, Posted("password"));
  Do(eGsm, gsm::eStart, record);
}

void cDevicesPage::Do(eService service, unsigned int request, const vorn::cRecord& record) {
  const cProtocol& protocol = kServices[service].protocol;
  Ask(
      ClientOf(service), protocol, request, record,
      [this](const vorn::cRecord&) {
        Redirect(MakeUrl("/devices", {{"done", Posted("do")}}));
      },
      [this, &protocol](const std::string& reason) {
        Refuse(409, "The service \"" + std::string(protocol.GetService()) + "\" refused: " + reason);
      });
}

void cDevicesPage::Refuse(unsigned int status, const std::string& fault) {
  m_status = status;
  m_fault = fault;
  ReadStates(eUi);
}

// ---- how the services are

void cDevicesPage::ReadStates(std::size_t next) {
  m_isReading = true;
  if (next == eServices) return Show();
  m_asked = static_cast<eService>(next);
  Ask(
      ClientOf(m_asked), kServices[next].protocol, kServices[next].getState, {},
      [this, next](const vorn::cRecord& answer) {
        for (vorn::cRecordPar par = answer.GetPar(device::kRow); par.IsValid(); par = par.NextSame()) {
          vorn::cRecord row;
          if (par.GetRecord(row))
            m_states[next].rows.emplace_back(row.GetTextPar(device::kName), row.GetTextPar(device::kValue));
        }
        ReadStates(next + 1);
      },
      [this, next](const std::string& reason) {
        m_states[next].fault = reason;
        ReadStates(next + 1);
      });
}

void cDevicesPage::OnUnanswered(unsigned int status, const std::string& text) {
  if (!m_isReading) return Refuse(status, text);
  m_states[m_asked].fault = text;
  ReadStates(m_asked + 1);
}

std::string cDevicesPage::ValueOf(eService service, std::string_view name) const {
  for (const auto& [key, value] : m_states[service].rows)
    if (key == name) return Lasting(key, value);
  return {};
}

// ---- what is shown

void cDevicesPage::Show() {
  cHtml body;
  body.Put(ErrorNote(m_fault)).Put(DoneNote(IsPost() ? std::string_view() : DoneText(Query("done"))));
  body.Put("<section><h2>Lights and relay</h2>\n{}{}</section>\n", Facts(eUi), Lights());
  body.Put("<section><h2>Clock and network</h2>\n{}{}</section>\n", Facts(eTime), Clock());
  body.Put("<section><h2>Mobile modem</h2>\n{}{}</section>\n", Facts(eGsm), Modem());
  ShowPage("Devices", body, m_status);
}

cHtml cDevicesPage::Facts(eService service) const {
  const cState& state = m_states[service];
  if (!state.fault.empty()) return cHtml().Put("<p class=\"note\">{}</p>\n", state.fault);
  const std::string prefix = std::string(kServices[service].protocol.GetService()) + ".";
  cHtml facts;
  for (const auto& [name, value] : state.rows)
    facts.Put("<dt>{}</dt><dd data-live=\"{}\">{}</dd>\n", name, prefix + name, Lasting(name, value));
  return cHtml().Put("<dl class=\"facts\">\n{}</dl>\n", facts);
}

cHtml cDevicesPage::Lights() const {
  if (!GetVisitor().MayChange() || m_states[eUi].rows.empty()) return {};
  cHtml forms;
  for (const std::string_view led : ui::kLeds) {
    const std::string id = "led-" + std::string(led);
    const std::string label = "Light " + std::string(led);
    forms.Put(
        PostForm("/devices", CsrfField(),
                 HiddenField("led", led)
                     .Put(ChoiceField({"mode", label, ValueOf(eUi, "led." + std::string(led)), {}, id}, ui::kLedModes)),
                 Button("led", "Switch")));
  }
  return forms.Put(PostForm(
      "/devices", CsrfField(),
      ChoiceField({"mode", "Relay", ValueOf(eUi, "relay"), {}, "relay-mode"}, ui::kRelayModes)
          .Put(TextField({"timeout", "Seconds until it goes back", Posted("timeout"), "Empty or 0: it stays."})),
      Button("relay", "Switch")));
}

cHtml cDevicesPage::Clock() const {
  if (!GetVisitor().MayChange() || m_states[eTime].rows.empty()) return {};
  cHtml forms = PostForm("/devices", CsrfField(),
                         TextField({"time", "Time to set", Posted("time"),
                                    "Such as 2024-03-01 12:00:00; \"now\" is the time of the system."}),
                         Button("clock", "Set the clock"));
  cHtml buttons = Button("wan-up", "Network is up");
  return forms.Put(PostForm("/devices", CsrfField(), {}, buttons.Put(Button("wan-down", "Network is down"))));
}

cHtml cDevicesPage::Modem() const {
  if (!GetVisitor().MayChange() || m_states[eGsm].rows.empty()) return {};
  const std::string apn = Posted("apn").empty() ? ValueOf(eGsm, "apn") : Posted("apn");
  cHtml fields = PasswordField({"pin", "PIN of the card", {}, "Empty when it has none."}, "off");
  fields.Put(TextField({"apn", "Access point", apn}));
  fields.Put(TextField({"user", "User", Posted("user")}));
  fields.Put(PasswordField({"password", "Password"}, "off"));
  cHtml buttons = Button("modem-start", "Connect");
  return PostForm("/devices", CsrfField(), fields, buttons)
      .Put(PostForm("/devices", CsrfField(), {}, Button("modem-stop", "Disconnect")));
}

}  // namespace tav::pages
