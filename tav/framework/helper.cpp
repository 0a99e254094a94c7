// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/helper.h>

#include <cstdarg>
#include <cstdio>
#include <ctime>

namespace vorn {

std::vector<std::string> cHelper::Split(const std::string& text, const std::string& separator) {
  std::vector<std::string> parts;
  std::size_t begin = 0;
  if (!separator.empty()) {
    for (std::size_t end; (end = text.find(separator, begin)) != std::string::npos; begin = end + separator.size())
      parts.push_back(text.substr(begin, end - begin));
  }
  parts.push_back(text.substr(begin));
  return parts;
}

std::vector<std::string> cHelper::GetStringTokens(const std::string& text, const std::string& separator) {
  std::vector<std::string> tokens;
  for (std::string& part : Split(text, separator))
    if (!part.empty()) tokens.push_back(std::move(part));
  return tokens;
}

cMap<std::string, std::string> cHelper::TokensAsNameValue(const std::vector<std::string>& tokens) {
  cMap<std::string, std::string> values;
  for (const std::string& token : tokens) {
    const std::size_t equals = token.find('=');
    if (equals != std::string::npos) values.Set(token.substr(0, equals), token.substr(equals + 1));
  }
  return values;
}

std::string FormatString(const char* format, ...) {
  char small[256];
  std::va_list arguments;
  va_start(arguments, format);
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(small, sizeof small, format, arguments);
  va_end(arguments);
  std::string text;
  if (length >= 0 && static_cast<std::size_t>(length) < sizeof small) {
    text.assign(small, static_cast<std::size_t>(length));
  } else if (length >= 0) {
    text.resize(static_cast<std::size_t>(length));
    std::vsnprintf(text.data(), text.size() + 1, format, again);
  }
  va_end(again);
  return text;
}

unsigned int GetOSC() {
  std::timespec now{};
  clock_gettime(CLOCK_BOOTTIME, &now);
  return static_cast<unsigned int>(now.tv_sec);
}

}  // namespace vorn
