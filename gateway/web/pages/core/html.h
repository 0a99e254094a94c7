// SPDX-License-Identifier: Apache-2.0
// cHtml: a piece of HTML, written by templates in which "{}" stands for a value.
//
//   html.Put("<td class=\"num\">{}</td>", reading.GetValue());
//
// A template is a text of the source and never one of the running process; every value is escaped, so that no text of a
// meter or a user becomes markup. The compiler counts the values.
#pragma once

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>

#include <gateway/form/html_text.h>

namespace tav::pages {

class cHtml {
 public:
  template <typename... Values>
  class cTemplate {
   public:
    consteval cTemplate(const char* text) : m_text(text) {  // NOLINT(google-explicit-constructor): written in place
      if (CountPlaces(m_text) != sizeof...(Values)) throw "as many values as places";
    }
    constexpr std::string_view GetText() const { return m_text; }

   private:
    std::string_view m_text;
  };

  template <typename... Values>
  cHtml& Put(cTemplate<std::type_identity_t<Values>...> markup, const Values&... values) {
    return PutAll(markup.GetText(), {ToMarkup(values)...});
  }
  cHtml& Put(const cHtml& html) {
    m_text += html.m_text;
    return *this;
  }

  const std::string& GetText() const { return m_text; }
  bool IsEmpty() const { return m_text.empty(); }
  void Clear() { m_text.clear(); }

 private:
  static consteval std::size_t CountPlaces(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t at = text.find("{}"); at != text.npos; at = text.find("{}", at + 2)) ++count;
    return count;
  }
  static std::string ToMarkup(std::string_view text) { return form::EscapeHtml(text); }
  static std::string ToMarkup(const cHtml& html) { return html.m_text; }
  template <std::integral Number>
  static std::string ToMarkup(Number number) {
    return std::to_string(number);
  }
  cHtml& PutAll(std::string_view markup, std::initializer_list<std::string> values);

  std::string m_text;
};

// An address within the gateway's pages: the path, and variables whose values are encoded (RFC 3986, 2.1).
std::string MakeUrl(std::string_view path, std::initializer_list<std::pair<std::string_view, std::string_view>> query);

}  // namespace tav::pages
