// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/field_form.h>

#include <algorithm>

namespace tav::pages {

namespace {

bool IsUpper(char letter) { return letter >= 'A' && letter <= 'Z'; }
bool IsLower(char letter) { return letter >= 'a' && letter <= 'z'; }
char ToUpper(char letter) { return IsLower(letter) ? static_cast<char>(letter - 'a' + 'A') : letter; }

std::string AsSentence(std::string_view help) {
  std::string sentence(help);
  if (!sentence.empty()) sentence[0] = ToUpper(sentence[0]);
  return sentence.empty() || sentence.back() == '.' ? sentence : sentence + ".";
}

// What comes back of a text that stood in an input: a line, whose control characters are gone.
std::string AsShown(std::string text) {
  std::erase_if(text, [](char letter) { return letter == '\r' || letter == '\n'; });
  return form::EscapeHtml(text);
}

// Names of fields that are no words, as the records have them.
constexpr std::pair<std::string_view, std::string_view> kLabels[] = {
    {"addr", "Address"},       {"mfct", "Manufacturer"}, {"idx", "Number"},
    {"protocoll", "Protocol"}, {"uri", "Path"},          {"maxruntime", "Longest run time"},
};

}  // namespace

std::string FieldLabel(std::string_view name) {
  for (const auto& [field, label] : kLabels)
    if (field == name) return std::string(label);
  std::string label;
  for (const char letter : name) {
    if (IsUpper(letter) && !label.empty() && IsLower(label.back())) label += ' ';
    label += letter == '-' ? ' ' : letter;
  }
  if (!label.empty()) label[0] = ToUpper(label[0]);
  return label;
}

// ---- reading

cFieldForm::cInput cFieldForm::MakeInput(eInput kind, std::string_view name, std::string_view help,
                                         const std::string& stored, const cPart& part) const {
  cInput input;
  input.kind = kind;
  input.name = part.prefix + std::string(name);
  input.label = FieldLabel(name);
  input.hint = AsSentence(help);
  input.legend = part.legend;
  input.isFixed = std::find(part.fixed.begin(), part.fixed.end(), name) != part.fixed.end();
  if (input.isFixed) input.hint += " It cannot be changed.";
  input.isFilled = !stored.empty();
  if (kind != eInput::Secret) input.value = stored;
  return input;
}

bool cFieldForm::TakeTyped(cInput& input, const std::string& stored) {
  if (!m_posted || input.isFixed) return false;
  const std::string typed = m_posted(input.name.c_str());
  switch (input.kind) {
    case eInput::Switch:
      input.value = typed.empty() ? "false" : "true";
      return true;
    case eInput::Secret:
      if (!typed.empty()) input.hint += " What was typed is not shown again: type it once more.";
      input.value = typed;
      input.isRemoved = !m_posted(RemovalOf(input.name).c_str()).empty();
      return !typed.empty() || input.isRemoved;
    case eInput::Number:
      input.value = typed;
      return true;
    default:
      // What an input cannot show as it is stays as it is while nobody changes it.
      if (AsShown(typed) == AsShown(stored)) return false;
      input.value = typed;
      return true;
  }
}

void cFieldForm::Compare(const cFieldForm& present) {
  for (cInput& input : m_inputs)
    for (const cInput& other : present.m_inputs)
      if (other.name == input.name && other.value != input.value)
        input.present = other.kind == eInput::Switch ? YesOrNo(other.value == "true")
                        : other.value.empty()        ? "nothing"
                                                     : other.value;
}

bool cFieldForm::HasFault() const {
  return std::any_of(m_inputs.begin(), m_inputs.end(), [](const cInput& input) { return !input.fault.empty(); });
}

// ---- writing

cHtml cFieldForm::Inputs() const {
  cHtml html;
  std::string legend;
  for (const cInput& input : m_inputs) {
    if (input.legend != legend) {
      if (!legend.empty()) html.Put("</fieldset>\n");
      if (!input.legend.empty()) html.Put("<fieldset><legend>{}</legend>\n", input.legend);
      legend = input.legend;
    }
    html.Put(Field(input));
  }
  if (!legend.empty()) html.Put("</fieldset>\n");
  return html;
}

cHtml cFieldForm::Field(const cInput& input) {
  return cHtml().Put("<div class=\"field\"><label for=\"f-{}\">{}</label>{}\n{}</div>\n", input.name, input.label,
                     Control(input), Remarks(input));
}

cHtml cFieldForm::Control(const cInput& input) {
  cHtml common;
  common.Put("id=\"f-{}\" name=\"{}\" aria-describedby=\"h-{}\"", input.name, input.name, input.name);
  if (!input.fault.empty()) common.Put(" aria-invalid=\"true\"");
  if (input.isFixed) common.Put(" readonly");
  switch (input.kind) {
    case eInput::Switch:
      if (input.value == "true") common.Put(" checked");
      return cHtml().Put("<input type=\"checkbox\" value=\"true\" {}>", common);
    case eInput::Secret:
      return cHtml().Put("<input type=\"password\" autocomplete=\"new-password\" {}>", common);
    case eInput::Number:
      // No limits of its own: a fault is told by the gateway, beside the field.
      return cHtml().Put("<input type=\"number\" value=\"{}\" {}>", input.value, common);
    default:
      return cHtml().Put("<input type=\"text\" value=\"{}\" {}>", input.value, common);
  }
}

cHtml cFieldForm::Remarks(const cInput& input) {
  cHtml html;
  if (input.kind == eInput::Secret && input.isFilled) {
    cHtml removal;
    removal.Put("type=\"checkbox\" value=\"true\" name=\"{}\"", RemovalOf(input.name));
    if (input.isRemoved) removal.Put(" checked");
    html.Put("<p class=\"hint\" id=\"h-{}\">{} Unchanged when empty.</p>\n", input.name, input.hint);
    html.Put("<p class=\"hint\"><label><input {}> Remove what is stored</label></p>\n", removal);
  } else {
    html.Put("<p class=\"hint\" id=\"h-{}\">{}</p>\n", input.name, input.hint);
  }
  if (!input.fault.empty()) html.Put("<p class=\"fault\" role=\"alert\">{}</p>\n", input.fault);
  if (!input.present.empty()) html.Put("<p class=\"fault\">Stored now: {}</p>\n", input.present);
  return html;
}

cHtml cFieldForm::Facts() const {
  cHtml facts;
  std::string legend;
  for (const cInput& input : m_inputs) {
    if (input.kind == eInput::Secret) continue;
    if (input.legend != legend) facts.Put("</dl>\n<h2>{}</h2>\n<dl class=\"facts\">\n", input.legend);
    legend = input.legend;
    facts.Put("<dt>{}</dt><dd>{}</dd>\n", input.label,
              input.kind == eInput::Switch ? YesOrNo(input.value == "true") : input.value);
  }
  return cHtml().Put("<dl class=\"facts\">\n{}</dl>\n", facts);
}

}  // namespace tav::pages
