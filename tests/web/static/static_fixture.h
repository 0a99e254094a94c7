// SPDX-License-Identifier: Apache-2.0
// What the tests of scripts and style share: a browser, and a server that has the files of gateway/web/static and what
// a test gives it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <tests/support/browser/browser.h>
#include <tests/support/browser/tiny_server.h>

class cStaticFixture : public testing::Test {
 protected:
  static constexpr const char* kChartJs = "/usr/share/javascript/chart.js/chart.min.js";

  void SetUp() override {
    if (const std::string why = cBrowser::WhyMissing(); !why.empty()) GTEST_SKIP() << why;
    m_server = std::make_unique<cTinyServer>([this](const cTinyServer::cRequest& request) { return Answer(request); });
    m_browser = std::make_unique<cBrowser>();
  }
  // Nothing on the page may be forbidden by the policy, fail, or ask another host.
  void TearDown() override {
    if (!m_browser) return;
    if (!m_expectsFailures) {
      EXPECT_THAT(m_browser->ConsoleErrors(), testing::IsEmpty());
      EXPECT_THAT(m_browser->FailedRequests(), testing::IsEmpty());
    }
    for (const std::string& host : m_browser->AllHostsContacted()) EXPECT_EQ(host, m_server->GetHost());
  }

  void Give(const std::string& path, const cTinyServer::cAnswer& answer) {
    const std::lock_guard lock(m_mutex);
    m_answers[path] = answer;
  }
  // Opens a page with that body and these scripts.
  void Show(const std::string& body, const std::vector<std::string>& scripts = {}, const std::string& more = {}) {
    std::string page =
        "<!DOCTYPE html><html lang='en'><head><meta charset='utf-8'><title>t</title>"
        "<meta name='viewport' content='width=device-width'><link rel='icon' href='/static/icon.svg'>"
        "<link rel='stylesheet' href='/static/style.css'>";
    for (const std::string& script : scripts) page += "<script src='/static/" + script + "' defer></script>";
    Give("/", {200, "text/html; charset=utf-8",
               page + "</head><body" + more + "><header class='site'><a class='brand' href='/'>Gateway</a></header>" +
                   "<main id='main'>" + body + "</main></body></html>"});
    m_browser->Open(m_server->Url("/"));
  }
  // Requests to a path since the start, each as its path with query and its body.
  std::vector<std::string> Asked(const std::string& path) {
    const std::lock_guard lock(m_mutex);
    return m_asked[path];
  }

  std::mutex m_mutex;
  std::map<std::string, cTinyServer::cAnswer> m_answers;
  std::map<std::string, std::vector<std::string>> m_asked;
  bool m_expectsFailures = false;
  std::unique_ptr<cTinyServer> m_server;
  std::unique_ptr<cBrowser> m_browser;

 private:
  cTinyServer::cAnswer Answer(const cTinyServer::cRequest& request) {
    const std::string path = request.path.substr(0, request.path.find('?'));
    const std::lock_guard lock(m_mutex);
    m_asked[path].push_back(request.path + (request.body.empty() ? "" : " ") + request.body);
    if (const auto found = m_answers.find(path); found != m_answers.end()) return found->second;
    if (path == "/static/chart.js") return File(kChartJs);
    if (path.rfind("/static/", 0) == 0) return File(TAV_SOURCE_DIR "/gateway/web" + path);
    return {404, "text/plain", "not given"};
  }
  static cTinyServer::cAnswer File(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    if (!file) return {404, "text/plain", "no " + name};
    const std::string ending = name.substr(name.rfind('.'));
    const std::string type = ending == ".css" ? "text/css" : ending == ".js" ? "text/javascript" : "image/svg+xml";
    return {200, type, std::string(std::istreambuf_iterator<char>(file), {})};
  }
};
