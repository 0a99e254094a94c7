// SPDX-License-Identifier: Apache-2.0
#include <tests/support/browser/browser.h>

#include <cstdint>
#include <fstream>
#include <string_view>
#include <thread>

using nlohmann::json;

namespace {

constexpr std::chrono::milliseconds kLook{20};
constexpr unsigned int kWidth = 1280;
constexpr unsigned int kHeight = 900;
// The key under which the protocol hands out elements.
constexpr const char* kElement = "element-6066-11e4-a52e-4f735466cecf";

std::string FromBase64(std::string_view text) {
  constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string bytes;
  std::uint32_t bits = 0;
  unsigned int count = 0;
  for (const char c : text) {
    const std::size_t digit = kDigits.find(c);
    if (digit == std::string_view::npos) break;
    bits = bits << 6 | static_cast<std::uint32_t>(digit);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xFF);
  }
  return bytes;
}

}  // namespace

// What the browser did before, on a start page of its own, is nobody's concern.
cBrowser::cBrowser() {
  Open("about:blank");
  ConsoleErrors();
  m_driver.Post("se/log", {{"type", "performance"}});
  SetWindow(kWidth, kHeight);
}

// ---- going somewhere

void cBrowser::Open(const std::string& url) { m_driver.Post("url", {{"url", url}}); }

void cBrowser::Reload() { m_driver.Post("refresh"); }

void cBrowser::Back() { m_driver.Post("back"); }

std::string cBrowser::GetUrl() { return m_driver.Get("url"); }

std::string cBrowser::GetTitle() { return m_driver.Get("title"); }

// ---- doing something

std::string cBrowser::Find(const std::string& css) {
  const json found = m_driver.Post("element", {{"using", "css selector"}, {"value", css}});
  return "element/" + found.at(kElement).get<std::string>();
}

void cBrowser::Click(const std::string& css) { m_driver.Post(Find(css) + "/click"); }

void cBrowser::Type(const std::string& css, const std::string& text) {
  const std::string element = Find(css);
  m_driver.Post(element + "/clear");
  m_driver.Post(element + "/value", {{"text", text}});
}

void cBrowser::Press(const std::string& css, const std::string& keys) {
  const std::string element =
      css.empty() ? "element/" + m_driver.Get("element/active").at(kElement).get<std::string>() : Find(css);
  m_driver.Post(element + "/value", {{"text", keys}});
}

void cBrowser::Select(const std::string& css, const std::string& value) {
  Click(css + " option[value=" + json(value).dump() + "]");
}

void cBrowser::SetValue(const std::string& css, const std::string& value) {
  Find(css);  // names it when it is not there
  Execute(
      "const field = document.querySelector(arguments[0]); field.value = arguments[1];"
      "for (const kind of ['input', 'change']) field.dispatchEvent(new Event(kind, {bubbles: true}));",
      {css, value});
}

void cBrowser::ChooseFile(const std::string& css, const std::string& file) { Press(css, file); }

std::string cBrowser::AlertText() { return m_driver.Get("alert/text"); }

void cBrowser::AcceptAlert() { m_driver.Post("alert/accept"); }

void cBrowser::DismissAlert() { m_driver.Post("alert/dismiss"); }

// ---- looking at what is there

bool cBrowser::Exists(const std::string& css) {
  return Execute("return document.querySelector(arguments[0]) !== null", {css});
}

std::string cBrowser::Text(const std::string& css) {
  const std::vector<std::string> texts = Texts(css);
  if (texts.empty()) throw cWebDriverError("there is no " + css + " on " + GetUrl());
  return texts.front();
}

std::vector<std::string> cBrowser::Texts(const std::string& css) {
  return Execute("return Array.from(document.querySelectorAll(arguments[0]), (each) => each.innerText)", {css});
}

std::string cBrowser::Attribute(const std::string& css, const std::string& name) {
  Find(css);
  return Execute("return document.querySelector(arguments[0]).getAttribute(arguments[1]) || ''", {css, name});
}

json cBrowser::Property(const std::string& css, const std::string& name) {
  return m_driver.Get(Find(css) + "/property/" + name);
}

json cBrowser::Execute(const std::string& script, const json& arguments) {
  return m_driver.Post("execute/sync", {{"script", script}, {"args", arguments}});
}

json cBrowser::Cookies() { return m_driver.Get("cookie"); }

void cBrowser::DeleteCookies() { m_driver.Delete("cookie"); }

// ---- waiting

void cBrowser::Await(const std::string& what, const std::function<bool()>& holds) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!holds()) {
    if (std::chrono::steady_clock::now() > end) throw cWebDriverError("waited in vain for " + what);
    std::this_thread::sleep_for(kLook);
  }
}

std::string cBrowser::AwaitText(const std::string& css, const std::function<bool(const std::string&)>& fits) {
  std::string text = "nothing";
  const auto look = [&] {
    const std::vector<std::string> texts = Texts(css);
    if (texts.empty()) return false;
    text = texts.front();
    return fits(text);
  };
  try {
    Await(css, look);
  } catch (const cWebDriverError& error) {
    throw cWebDriverError(std::string(error.what()) + "; it shows: " + text);
  }
  return text;
}

std::string cBrowser::AwaitText(const std::string& css, const std::string& part) {
  return AwaitText(css, [&](const std::string& text) { return text.find(part) != std::string::npos; });
}

std::string cBrowser::AwaitUrl(const std::string& part) {
  std::string url;
  Await("the address " + part, [&] { return (url = GetUrl()).find(part) != std::string::npos; });
  return url;
}

void cBrowser::AwaitTrue(const std::string& script) {
  Await(script, [&] { return Execute("return Boolean((() => {" + script + "})())").get<bool>(); });
}

// ---- how it is shown

void cBrowser::SetWindow(unsigned int width, unsigned int height) {
  m_driver.Cdp("Emulation.setDeviceMetricsOverride",
               {{"width", width}, {"height", height}, {"deviceScaleFactor", 1}, {"mobile", false}});
}

void cBrowser::SetMedia(const std::string& feature, const std::string& value) {
  for (auto known = m_media.begin(); known != m_media.end(); ++known)
    if ((*known)["name"] == feature) {
      m_media.erase(known);
      break;
    }
  m_media.push_back({{"name", feature}, {"value", value}});
  m_driver.Cdp("Emulation.setEmulatedMedia", {{"features", m_media}});
}

void cBrowser::DisableScripts() { m_driver.Cdp("Emulation.setScriptExecutionDisabled", {{"value", true}}); }

void cBrowser::SetDownloadFolder(const std::string& folder) {
  m_driver.Cdp("Browser.setDownloadBehavior", {{"behavior", "allow"}, {"downloadPath", folder}});
}

void cBrowser::Screenshot(const std::string& file) {
  const json shot = m_driver.Cdp("Page.captureScreenshot", {{"format", "png"}, {"captureBeyondViewport", true}});
  std::ofstream(file, std::ios::binary) << FromBase64(shot.at("data").get<std::string>());
}

// ---- what went wrong

std::vector<std::string> cBrowser::ConsoleErrors() {
  std::vector<std::string> errors;
  for (const json& line : m_driver.Post("se/log", {{"type", "browser"}}))
    if (line.value("level", "") == "SEVERE") errors.push_back(line.value("message", ""));
  return errors;
}

void cBrowser::ReadNetworkLog() {
  for (const json& entry : m_driver.Post("se/log", {{"type", "performance"}})) m_network.Take(entry);
}

std::vector<std::string> cBrowser::FailedRequests() {
  ReadNetworkLog();
  return m_network.TakeFailed();
}

std::set<std::string> cBrowser::AllHostsContacted() {
  ReadNetworkLog();
  return m_network.GetHosts();
}
