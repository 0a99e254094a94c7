// SPDX-License-Identifier: Apache-2.0
// A gateway as a person has it before him: the real processes with a simulated meter, and a real browser.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include <tests/support/browser/browser.h>
#include <tests/support/child_process.h>
#include <tests/support/temp_folder.h>

namespace tav::pages {

class cGatewayWorld : public testing::Test {
 protected:
  static inline const std::string kMeter = "0A015441560000000001";  // the simulation's first
  static constexpr const char* kPassword = "correct horse";

  void SetUp() override {
    if (const std::string why = cBrowser::WhyMissing(); !why.empty()) GTEST_SKIP() << why;
    std::filesystem::create_directory(Directory());
    StartGateway();
    StartPages();
    StartDriver();
    m_setupUrl = AwaitSaid("pages.said", "set it at ");
    m_base = m_setupUrl.substr(0, m_setupUrl.find("/setup"));
    m_browser = std::make_unique<cBrowser>();
  }
  // Last to first, as an operator would.
  void TearDown() override {
    m_browser.reset();
    for (auto* process : {&m_driver, &m_pages, &m_gateway}) {
      if (*process == nullptr) continue;
      (*process)->Signal(SIGTERM);
      EXPECT_EQ((*process)->Wait(60'000), 0) << Load("gateway.said") << Load("pages.said") << Load("driver.said");
    }
  }

  std::string Directory() const { return m_folder.File("gateway"); }
  void StartGateway() {
    m_gateway = Start({TAV_GATEWAY, "run", "--dir", Directory(), "--web-listen", "127.0.0.1:0"}, "gateway.said");
  }
  void StartPages() { m_pages = Start({TAV_PAGES, "--dir", Directory()}, "pages.said"); }
  void StartDriver() {
    m_driver = Start({EHZIF, "--dir", Directory(), "--input", "sim", "--period", "1"}, "driver.said");
  }
  std::unique_ptr<cChildProcess> Start(const std::vector<std::string>& arguments, const std::string& said) const {
    return std::make_unique<cChildProcess>(arguments, std::vector<std::string>{}, m_folder.File(said));
  }

  std::string Load(const std::string& file) const {
    std::ifstream in(m_folder.File(file));
    return {std::istreambuf_iterator<char>(in), {}};
  }
  // What stands behind a word on a line that a process says.
  std::string AwaitSaid(const std::string& file, const std::string& word) {
    using namespace std::chrono;
    for (const auto end = steady_clock::now() + seconds(60); steady_clock::now() < end;) {
      const std::string said = Load(file);
      const std::size_t at = said.find(word);
      const std::size_t line = at == std::string::npos ? at : said.find('\n', at);
      if (line != std::string::npos) return said.substr(at + word.size(), line - at - word.size());
      m_gateway->Wait(20);
    }
    ADD_FAILURE() << "nobody says '" << word << "': " << Load(file) << Load("gateway.said");
    return {};
  }

  void SetThePassword() {
    m_browser->Open(m_setupUrl);
    m_browser->Type("#password", kPassword);
    m_browser->Type("#again", kPassword);
    m_browser->Click("form.entry .actions button");
    m_browser->AwaitText("h1", "Meters");
  }
  void LogIn(const std::string& password = kPassword) {
    m_browser->Type("#name", "admin");
    m_browser->Type("#password", password);
    m_browser->Click("form.entry .actions button");
  }
  void OpenPage(const std::string& path) { m_browser->Open(m_base + path); }
  std::string MeterPath() const { return "/meter?id=" + kMeter; }

  // A picture of the page, kept where TAV_SCREENSHOTS says; without that it is taken all the same.
  void Picture(const std::string& name) {
    const char* const folder = std::getenv("TAV_SCREENSHOTS");
    m_browser->Screenshot((folder != nullptr ? std::string(folder) + "/" : m_folder.GetPath() + "/") + name + ".png");
  }
  // What a screen reader finds on the page that is open: labels, headings, names of buttons.
  void ExpectEverybodyCanUseIt(const std::string& path) {
    const auto faults = m_browser->Execute(
        "const faults = [];"
        "const say = (what, element) => faults.push(what + ': ' + element.outerHTML.slice(0, 120));"
        "for (const field of document.querySelectorAll('input:not([type=hidden]), select, textarea'))"
        "  if (!field.labels.length && !field.getAttribute('aria-label')) say('no label', field);"
        "for (const button of document.querySelectorAll('button, a[href]'))"
        "  if (!button.textContent.trim() && !button.getAttribute('aria-label')) say('no name', button);"
        "for (const image of document.querySelectorAll('img, canvas'))"
        "  if (!image.alt && !image.getAttribute('aria-label')) say('no text', image);"
        "for (const head of document.querySelectorAll('th')) if (!head.scope) say('no scope', head);"
        "const ids = [...document.querySelectorAll('[id]')].map(e => e.id);"
        "if (new Set(ids).size != ids.length) faults.push('an id stands twice: ' + ids);"
        "if (document.querySelectorAll('h1').length != 1) faults.push('not one h1');"
        "if (!document.documentElement.lang) faults.push('no language');"
        "return faults;");
    EXPECT_EQ(faults.dump(), "[]") << path;
  }
  void ExpectNothingWrong() {
    EXPECT_THAT(m_browser->ConsoleErrors(), testing::IsEmpty());
    EXPECT_THAT(m_browser->FailedRequests(), testing::IsEmpty());
    EXPECT_THAT(m_browser->AllHostsContacted(), testing::ElementsAre(m_base.substr(std::string("http://").size())));
  }

  cTempFolder m_folder;
  std::unique_ptr<cChildProcess> m_gateway;
  std::unique_ptr<cChildProcess> m_pages;
  std::unique_ptr<cChildProcess> m_driver;
  std::string m_setupUrl;
  std::string m_base;
  std::unique_ptr<cBrowser> m_browser;
};

}  // namespace tav::pages
