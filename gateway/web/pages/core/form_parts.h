// SPDX-License-Identifier: Apache-2.0
// What the forms and listings of the pages are made of: fields with their labels, buttons, tables, and the notes that
// tell what became of a change.
#pragma once

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

#include <gateway/web/pages/core/html.h>

namespace tav::pages {

struct cInput {
  std::string_view name;  // of the field that is sent
  std::string_view label;
  std::string value = {};
  std::string_view hint = {};
  // Of the element, where two forms of a page have fields of one name; empty: the name.
  std::string_view id = {};
  // Where its verdict is asked for while one types; it is shown in the element "verdict". Empty: there is none.
  std::string_view lint = {};
};

cHtml TextField(const cInput& input);
// The value is not looked at: a secret is never sent back. fill: "current-password", "new-password" or "off".
cHtml PasswordField(const cInput& input, std::string_view fill);
// A choice of some words; the value is the one that is chosen.
cHtml ChoiceField(const cInput& input, std::span<const std::string_view> words);
cHtml HiddenField(std::string_view name, std::string_view value);

// The form sends "do" with that value.
cHtml Button(std::string_view action, std::string_view text);
// For what cannot be undone: asks first.
cHtml DangerButton(std::string_view action, std::string_view text, std::string_view question);

// A form of a change; csrf: the field that it carries.
cHtml PostForm(std::string_view path, const cHtml& csrf, const cHtml& fields, const cHtml& buttons);

// rows: the table's lines. A title that begins with "#" stands over numbers.
cHtml Table(std::initializer_list<std::string_view> titles, const cHtml& rows);

// Nothing for an empty text.
cHtml ErrorNote(std::string_view text);
cHtml DoneNote(std::string_view text);

}  // namespace tav::pages
