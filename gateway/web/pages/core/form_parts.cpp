// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/core/form_parts.h>

namespace tav::pages {

namespace {

std::string_view IdOf(const cInput& input) { return input.id.empty() ? input.name : input.id; }

cHtml Described(const cInput& input) {
  if (input.hint.empty()) return {};
  return cHtml().Put(" aria-describedby=\"{}-hint\"", IdOf(input));
}

cHtml Lint(const cInput& input) {
  if (input.lint.empty()) return {};
  return cHtml().Put(" data-lint=\"{}\" data-lint-into=\"verdict\"", input.lint);
}

cHtml Hint(const cInput& input) {
  if (input.hint.empty()) return {};
  return cHtml().Put("<p class=\"hint\" id=\"{}-hint\">{}</p>", IdOf(input), input.hint);
}

cHtml Field(const cInput& input, const cHtml& control) {
  return cHtml().Put("<div class=\"field\"><label for=\"{}\">{}</label>{}{}</div>\n", IdOf(input), input.label, control,
                     Hint(input));
}

}  // namespace

cHtml TextField(const cInput& input) {
  return Field(input, cHtml().Put("<input id=\"{}\" name=\"{}\" value=\"{}\" autocomplete=\"off\"{}{}>", IdOf(input),
                                  input.name, input.value, Described(input), Lint(input)));
}

cHtml PasswordField(const cInput& input, std::string_view fill) {
  return Field(input, cHtml().Put("<input id=\"{}\" name=\"{}\" type=\"password\" autocomplete=\"{}\"{}>", IdOf(input),
                                  input.name, fill, Described(input)));
}

cHtml ChoiceField(const cInput& input, std::span<const std::string_view> words) {
  cHtml options;
  for (const std::string_view word : words)
    if (word == input.value)
      options.Put("<option selected>{}</option>", word);
    else
      options.Put("<option>{}</option>", word);
  return Field(input, cHtml().Put("<select id=\"{}\" name=\"{}\"{}>{}</select>", IdOf(input), input.name,
                                  Described(input), options));
}

cHtml HiddenField(std::string_view name, std::string_view value) {
  return cHtml().Put("<input type=\"hidden\" name=\"{}\" value=\"{}\">\n", name, value);
}

cHtml Button(std::string_view action, std::string_view text) {
  return cHtml().Put("<button name=\"do\" value=\"{}\">{}</button> ", action, text);
}

cHtml DangerButton(std::string_view action, std::string_view text, std::string_view question) {
  return cHtml().Put("<button class=\"danger\" name=\"do\" value=\"{}\" data-confirm=\"{}\">{}</button> ", action,
                     question, text);
}

cHtml PostForm(std::string_view path, const cHtml& csrf, const cHtml& fields, const cHtml& buttons) {
  return cHtml().Put(
      "<form class=\"entry\" method=\"post\" action=\"{}\">{}\n{}<div class=\"actions\">{}</div></form>\n", path, csrf,
      fields, buttons);
}

cHtml Table(std::initializer_list<std::string_view> titles, const cHtml& rows) {
  cHtml head;
  for (const std::string_view title : titles)
    if (title.starts_with('#'))
      head.Put("<th scope=\"col\" class=\"num\">{}</th>", title.substr(1));
    else
      head.Put("<th scope=\"col\">{}</th>", title);
  return cHtml().Put(
      "<div class=\"table-wrap\" tabindex=\"0\"><table><thead><tr>{}</tr></thead>\n<tbody>\n{}</tbody></table></div>\n",
      head, rows);
}

cHtml ErrorNote(std::string_view text) {
  if (text.empty()) return {};
  return cHtml().Put("<p class=\"note error\" role=\"alert\">{}</p>\n", text);
}

cHtml DoneNote(std::string_view text) {
  if (text.empty()) return {};
  return cHtml().Put("<p class=\"note ok\" role=\"status\">{}</p>\n", text);
}

}  // namespace tav::pages
