// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/html_text.h>

#include <gateway/form/utf8.h>

namespace tav::form {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

bool IsControl(char letter) {
  const auto byte = static_cast<unsigned char>(letter);
  return (byte < 0x20 && letter != '\n' && letter != '\t' && letter != '\r') || byte == 0x7F;
}

}  // namespace

std::string EscapeHtml(std::string_view text) {
  std::string escaped;
  for (const char letter : form::ToUtf8(text)) switch (letter) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&#39;";
        break;
      default:
        if (IsControl(letter))
          escaped += kReplacement;
        else
          escaped += letter;
    }
  return escaped;
}

}  // namespace tav::form
