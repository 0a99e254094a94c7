// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/core/html.h>

namespace tav::pages {

namespace {

bool IsUnreserved(char letter) {
  return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') || (letter >= '0' && letter <= '9') ||
         std::string_view("-._~").find(letter) != std::string_view::npos;
}

void AppendEncoded(std::string& url, std::string_view text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  for (const char letter : text)
    if (IsUnreserved(letter)) {
      url += letter;
    } else {
      const auto byte = static_cast<unsigned char>(letter);
      url += '%';
      url += kDigits[byte >> 4];
      url += kDigits[byte & 15];
    }
}

}  // namespace

cHtml& cHtml::PutAll(std::string_view markup, std::initializer_list<std::string> values) {
  for (const std::string& value : values) {
    const std::size_t place = markup.find("{}");
    m_text += markup.substr(0, place);
    m_text += value;
    markup.remove_prefix(place + 2);
  }
  m_text += markup;
  return *this;
}

std::string MakeUrl(std::string_view path, std::initializer_list<std::pair<std::string_view, std::string_view>> query) {
  std::string url(path);
  char separator = '?';
  for (const auto& [name, value] : query) {
    url += separator;
    AppendEncoded(url, name);
    url += '=';
    AppendEncoded(url, value);
    separator = '&';
  }
  return url;
}

}  // namespace tav::pages
