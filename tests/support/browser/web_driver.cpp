// SPDX-License-Identifier: Apache-2.0
#include <tests/support/browser/web_driver.h>

#include <curl/curl.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

using nlohmann::json;

namespace {

constexpr std::chrono::seconds kStartPatience{20};
constexpr unsigned int kLookMs = 20;
constexpr int kMaxTries = 5;
constexpr long kCommandSeconds = 60;

// Its whole path; empty when there is none.
std::string FindProgram(const std::string& name) {
  const char* const path = std::getenv("PATH");
  std::istringstream folders(path != nullptr ? path : "/usr/bin");
  for (std::string folder; std::getline(folders, folder, ':');)
    if (const std::string file = folder + "/" + name; access(file.c_str(), X_OK) == 0) return file;
  return {};
}

std::string ReadAll(const std::string& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

std::size_t Collect(char* bytes, std::size_t size, std::size_t count, void* text) {
  static_cast<std::string*>(text)->append(bytes, size * count);
  return size * count;
}

// The driver chooses a free port and says which; empty when it has not yet.
std::string PortOf(const std::string& said) {
  const std::string before = "successfully on port ";
  const std::size_t at = said.find(before);
  const std::size_t end = at == std::string::npos ? at : said.find('.', at);
  return end == std::string::npos ? std::string() : said.substr(at + before.size(), end - at - before.size());
}

json Arguments(const std::string& userData) {
  json arguments = {"--headless=new",
                    "--disable-gpu",
                    "--disable-dev-shm-usage",
                    "--no-first-run",
                    "--disable-background-networking",
                    "--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1, EXCLUDE localhost",
                    "--user-data-dir=" + userData};
  if (geteuid() == 0) arguments.push_back("--no-sandbox");
  return arguments;
}

json Capabilities(const std::string& userData) {
  // Servers under test have certificates of their own making.
  return {{"capabilities",
           {{"alwaysMatch",
             {{"browserName", "chrome"},
              {"acceptInsecureCerts", true},
              {"goog:loggingPrefs", {{"browser", "ALL"}, {"performance", "ALL"}}},
              {"goog:chromeOptions",
               {{"binary", FindProgram("chromium")},
                {"args", Arguments(userData)},
                {"prefs", {{"session", {{"restore_on_startup", 4}, {"startup_urls", {"about:blank"}}}}}}}}}}}}};
}

}  // namespace

std::string cWebDriver::WhyMissing() {
  if (FindProgram("chromium").empty()) return "there is no browser here; install the package chromium";
  if (FindProgram("chromedriver").empty()) return "the browser has no driver here; install the package chromium-driver";
  return {};
}

cWebDriver::cWebDriver() {
  if (const std::string why = WhyMissing(); !why.empty()) throw cWebDriverError(why);
  // It takes the port that one of the two loopback addresses gives it on the other as well, where it may be in use.
  for (int tries = 0; m_address.empty() && tries < kMaxTries; ++tries) StartDriver();
  if (m_address.empty())
    throw cWebDriverError("the driver did not start; it said: " + ReadAll(m_folder.File("driver")));
  StartSession();
}

cWebDriver::~cWebDriver() { Stop(); }

// What browser and driver write, they write into the folder.
void cWebDriver::StartDriver() {
  const std::vector<std::string> environment = {"HOME=" + m_folder.GetPath(), "TMPDIR=" + m_folder.GetPath()};
  m_process = std::make_unique<cChildProcess>(std::vector<std::string>{FindProgram("chromedriver"), "--port=0"},
                                              environment, m_folder.File("driver"));
  const auto end = std::chrono::steady_clock::now() + kStartPatience;
  while (std::chrono::steady_clock::now() < end) {
    const bool hasEnded = m_process->Wait(kLookMs).has_value();
    const std::string port = PortOf(ReadAll(m_folder.File("driver")));
    if (!port.empty()) m_address = "http://127.0.0.1:" + port;
    if (!port.empty() || hasEnded) return;
  }
}

void cWebDriver::StartSession() {
  const json started = Request("POST", "/session", Capabilities(m_folder.File("profile")));
  m_session = "/session/" + started.at("sessionId").get<std::string>();
}

// The driver ends its browser with the session, and not otherwise.
void cWebDriver::Stop() {
  try {
    if (!m_session.empty()) Request("DELETE", m_session, nullptr);
  } catch (const std::exception&) {
    // Nobody is left to hear of it.
  }
  m_process->Signal(SIGTERM);
  m_process->Wait();
}

json cWebDriver::Post(const std::string& command, const json& body) {
  return Request("POST", m_session + "/" + command, body);
}

json cWebDriver::Get(const std::string& command) { return Request("GET", m_session + "/" + command, nullptr); }

json cWebDriver::Delete(const std::string& command) { return Request("DELETE", m_session + "/" + command, nullptr); }

json cWebDriver::Cdp(const std::string& command, const json& parameters) {
  return Post("goog/cdp/execute", {{"cmd", command}, {"params", parameters}});
}

json cWebDriver::Request(const char* method, const std::string& path, const json& body) {
  const std::unique_ptr<CURL, void (*)(CURL*)> curl(curl_easy_init(), curl_easy_cleanup);
  const std::unique_ptr<curl_slist, void (*)(curl_slist*)> headers(
      curl_slist_append(nullptr, "Content-Type: application/json; charset=utf-8"), curl_slist_free_all);
  const std::string address = m_address + path;
  const std::string sent = body.is_null() ? std::string() : body.dump();
  std::string received;
  curl_easy_setopt(curl.get(), CURLOPT_URL, address.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_CUSTOMREQUEST, method);
  curl_easy_setopt(curl.get(), CURLOPT_NOPROXY, "*");
  curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, kCommandSeconds);
  curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers.get());
  curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, Collect);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &received);
  if (!body.is_null()) curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDS, sent.c_str());
  const std::string what = std::string(method) + " " + path + " " + sent.substr(0, 300);
  if (const CURLcode code = curl_easy_perform(curl.get()); code != CURLE_OK)
    throw cWebDriverError(what + ": " + curl_easy_strerror(code));
  const json answer = json::parse(received, nullptr, false);
  if (!answer.is_object() || !answer.contains("value")) throw cWebDriverError(what + ": no answer: " + received);
  const json& value = answer["value"];
  if (value.is_object() && value.contains("error") && value.contains("message"))
    throw cWebDriverError(what + ": " + value["error"].get<std::string>() + ": " + value["message"].get<std::string>());
  return value;
}
