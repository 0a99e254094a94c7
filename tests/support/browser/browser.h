// SPDX-License-Identifier: Apache-2.0
// cBrowser: a headless Chromium, and the words in which a test speaks of pages. Elements are named by CSS selectors; of
// several that fit, the first is meant. Every failure throws with what the browser said. Where there is no browser,
// tests skip themselves:
//
//   if (const std::string why = cBrowser::WhyMissing(); !why.empty()) GTEST_SKIP() << why;
#pragma once

#include <chrono>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <tests/support/browser/network_log.h>
#include <tests/support/browser/web_driver.h>
#include <nlohmann/json.hpp>

class cBrowser {
 public:
  static constexpr std::chrono::seconds kPatience{15};

  static std::string WhyMissing() { return cWebDriver::WhyMissing(); }

  cBrowser();

  // ---- going somewhere; each returns when the page is loaded
  void Open(const std::string& url);
  void Reload();
  void Back();
  std::string GetUrl();
  std::string GetTitle();

  // ---- doing something, as a person does it
  void Click(const std::string& css);
  // Replaces what stands in a field.
  void Type(const std::string& css, const std::string& text);
  // Keys beside what stands there, to the focused element when css is "".
  void Press(const std::string& css, const std::string& keys);
  // The option of that value.
  void Select(const std::string& css, const std::string& value);
  // Of fields whose keys depend on the language: dates, times, colours, ranges.
  void SetValue(const std::string& css, const std::string& value);
  // The file that a file field uploads.
  void ChooseFile(const std::string& css, const std::string& file);
  std::string AlertText();
  void AcceptAlert();
  void DismissAlert();

  // ---- looking at what is there
  bool Exists(const std::string& css);
  // Texts as they are shown: of what is hidden, none.
  std::string Text(const std::string& css);
  std::vector<std::string> Texts(const std::string& css);
  // Empty when it is not there; throws when the element is not.
  std::string Attribute(const std::string& css, const std::string& name);
  // A property of the element, such as "value" or "checked".
  nlohmann::json Property(const std::string& css, const std::string& name);
  // The body of a function of JavaScript; arguments stand in `arguments`.
  nlohmann::json Execute(const std::string& script, const nlohmann::json& arguments = nlohmann::json::array());
  nlohmann::json Cookies();
  void DeleteCookies();

  // ---- waiting, within kPatience; throws with what is there instead
  // The text of the first element, as soon as it fits.
  std::string AwaitText(const std::string& css, const std::function<bool(const std::string&)>& fits);
  std::string AwaitText(const std::string& css, const std::string& part);
  // The address, as soon as it holds that.
  std::string AwaitUrl(const std::string& part);
  // Until the script returns something true.
  void AwaitTrue(const std::string& script);
  void Await(const std::string& what, const std::function<bool()>& holds);

  // ---- how it is shown
  // The size of what shows the page.
  void SetWindow(unsigned int width, unsigned int height);
  // A media feature, such as "prefers-color-scheme" and "dark".
  void SetMedia(const std::string& feature, const std::string& value);
  // Those of pages; what a test executes still is.
  void DisableScripts();
  void SetDownloadFolder(const std::string& folder);
  // The whole page, as PNG.
  void Screenshot(const std::string& file);

  // ---- what went wrong
  // Lines of the console of level error since the last call; resources that failed are among them.
  std::vector<std::string> ConsoleErrors();
  // As of cNetworkLog.
  std::vector<std::string> FailedRequests();
  std::set<std::string> AllHostsContacted();

 private:
  std::string Find(const std::string& css);
  void ReadNetworkLog();

  cWebDriver m_driver;
  cNetworkLog m_network;
  nlohmann::json m_media = nlohmann::json::array();
};
