// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/http_text.h>

#include <algorithm>
#include <ctime>

namespace tav::gateway::web {

namespace {

char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool IsTokenCharacter(char c) {
  constexpr std::string_view kOther = "!#$%&'*+-.^_`|~";
  return (c >= '0' && c <= '9') || (Lower(c) >= 'a' && Lower(c) <= 'z') || kOther.find(c) != std::string_view::npos;
}

// Whether the weight of an element "coding;q=0.5" is 0.
bool IsRefused(std::string_view parameters) {
  const std::size_t at = parameters.find("q=");
  if (at == std::string_view::npos) return false;
  const std::string_view weight = Trim(parameters.substr(at + 2));
  return weight.starts_with('0') && weight.find_first_of("123456789") == std::string_view::npos;
}

}  // namespace

std::string ToLower(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), Lower);
  return lower;
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return Lower(x) == Lower(y); });
}

std::string_view Trim(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t");
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

std::vector<std::string_view> SplitList(std::string_view text) {
  std::vector<std::string_view> elements;
  while (!text.empty()) {
    const std::size_t comma = std::min(text.find(','), text.size());
    if (const std::string_view element = Trim(text.substr(0, comma)); !element.empty()) elements.push_back(element);
    text.remove_prefix(std::min(comma + 1, text.size()));
  }
  return elements;
}

bool IsToken(std::string_view text) { return !text.empty() && std::all_of(text.begin(), text.end(), IsTokenCharacter); }

bool HasControlCharacter(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) { return (c >= 0 && c < ' ') || c == 0x7F; });
}

bool AcceptsCoding(std::string_view acceptEncoding, std::string_view coding) {
  bool any = false;
  for (const std::string_view element : SplitList(acceptEncoding)) {
    const std::size_t semicolon = std::min(element.find(';'), element.size());
    const std::string_view name = Trim(element.substr(0, semicolon));
    const bool wanted = !IsRefused(element.substr(semicolon));
    if (EqualsIgnoringCase(name, coding)) return wanted;
    if (name == "*") any = wanted;
  }
  return any;
}

std::string HttpDate(std::int64_t utc) {
  constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const std::time_t time = utc;
  std::tm parts{};
  gmtime_r(&time, &parts);
  char text[64];
  const std::size_t size = std::strftime(text, sizeof text, ", %d XXX %Y %H:%M:%S GMT", &parts);
  return kDays[parts.tm_wday] + std::string(text, size).replace(5, 3, kMonths[parts.tm_mon]);
}

}  // namespace tav::gateway::web
