// SPDX-License-Identifier: Apache-2.0
// cFieldForm: the fields of configuration records as a form, by the tables of gateway/form/config_fields.h.
//
//   cFieldForm form(posted);                               // what the visitor typed; without it: what is stored
//   form.Edit(interface, form::kInterfaceFields, {.fixed = {"name"}});  // sets the record's fields from it
//   if (!form.HasFault()) ...
//   body.Put(form.Inputs());                               // or Facts(), for a visitor who may only look
//
// A secret never stands in it: its input is empty, left empty it means that the secret stays unless it is said to go.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <gateway/form/config_fields.h>
#include <gateway/web/pages/core/html.h>

namespace tav::pages {

// The name of a field or a column for people: "interface-name" is "Interface name", "meterID" "Meter ID".
std::string FieldLabel(std::string_view name);

template <typename Record>
bool IsSwitch(const form::cField<Record>& field) {
  return std::holds_alternative<bool Record::*>(field.member);
}
inline const char* YesOrNo(bool value) { return value ? "yes" : "no"; }

class cFieldForm {
 public:
  // What was typed into the input of that name.
  using Posted = std::function<std::string(const char* name)>;
  struct cPart {
    std::string prefix = {};  // of the names of its inputs
    std::string legend = {};
    std::vector<std::string_view> fixed = {};  // fields that are shown and cannot be changed
  };

  cFieldForm() = default;
  explicit cFieldForm(Posted posted) : m_posted(std::move(posted)) {}

  template <typename Record, std::size_t N>
  void Edit(Record& record, const form::cField<Record> (&fields)[N], const cPart& part);

  // Says beside each field that differs from what another form shows what stands there.
  void Compare(const cFieldForm& present);
  bool HasFault() const;

  cHtml Inputs() const;
  cHtml Facts() const;  // without secrets

 private:
  enum class eInput { Text, Number, Switch, Secret };
  struct cInput {
    eInput kind = eInput::Text;
    std::string name;
    std::string label;
    std::string hint;
    std::string legend;
    std::string value;
    std::string fault;
    std::string present;  // what is stored now, where that is told
    bool isFixed = false;
    bool isFilled = false;   // of a secret: there is one
    bool isRemoved = false;  // and it is to go
  };

  template <typename Record>
  static eInput KindOf(const form::cField<Record>& field) {
    if (IsSwitch(field)) return eInput::Switch;
    if (field.secret) return eInput::Secret;
    return std::holds_alternative<std::string Record::*>(field.member) ? eInput::Text : eInput::Number;
  }
  cInput MakeInput(eInput kind, std::string_view name, std::string_view help, const std::string& stored,
                   const cPart& part) const;
  // Whether the field is to be set to what stands in the input now.
  bool TakeTyped(cInput& input, const std::string& stored);
  static std::string RemovalOf(const std::string& name) { return name + ".remove"; }
  static cHtml Field(const cInput& input);
  static cHtml Control(const cInput& input);
  static cHtml Remarks(const cInput& input);

  Posted m_posted;
  std::vector<cInput> m_inputs;
};

template <typename Record, std::size_t N>
void cFieldForm::Edit(Record& record, const form::cField<Record> (&fields)[N], const cPart& part) {
  for (const form::cField<Record>& field : fields) {
    const std::string stored = FieldText(record, field);
    cInput input = MakeInput(KindOf(field), field.name, field.help, stored, part);
    std::string expected;
    if (TakeTyped(input, stored) && !SetField(record, field, input.value, expected))
      input.fault = "Expected " + expected + ".";
    if (input.kind == eInput::Secret) input.value.clear();
    m_inputs.push_back(std::move(input));
  }
}

}  // namespace tav::pages
