// SPDX-License-Identifier: Apache-2.0
// cThingCommand: "list", "show", "set" and "delete" of one kind of configured thing: the words are the same for all of
// them, each kind fills in what it is.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include <tavctl/command.h>
#include <tavctl/config/assignment.h>
#include <tavctl/config/gateway_config.h>

namespace tav::ctl {

class cThingCommand : public cCommand {
 public:
  // nameWord: what names a thing, for help and errors ("METER"); fieldHelp: the fields that "set" takes.
  cThingCommand(const char* name, const char* help, const char* nameWord, std::string fieldHelp)
      : cCommand(name, help), m_nameWord(nameWord), m_fieldHelp(std::move(fieldHelp)) {}

  void AddOptions(CLI::App& app) override;
  eExit Run(cContext& context) override;

 protected:
  // ---- what a kind fills in
  virtual Columns GetColumns() const = 0;
  // All of them, or those of that name.
  virtual std::vector<form::cJson> Find(cGatewayConfig& config, const std::string& name, form::eSecrets secrets) = 0;
  // Makes or changes the one of that name.
  virtual void Set(cGatewayConfig& config, const std::string& name, const std::vector<cAssignment>& fields) = 0;
  // What went.
  virtual std::vector<std::string> Delete(cGatewayConfig& config, const std::string& name) = 0;
  // Other words behind the command; false when the word is none of them.
  virtual bool RunOther(cContext& /*context*/, cGatewayConfig& /*config*/, const std::string& /*action*/) {
    return false;
  }

  const std::string& GetThing() const { return m_name; }
  form::eSecrets GetSecrets() const { return m_secrets ? form::eSecrets::Show : form::eSecrets::Leave; }
  [[noreturn]] void RefuseUnknown(const std::string& name) const;

 private:
  eExit List(cContext& context, cGatewayConfig& config);
  eExit Show(cContext& context, cGatewayConfig& config);

  const char* m_nameWord;
  std::string m_fieldHelp;
  CLI::App* m_app = nullptr;
  std::string m_name;
  std::vector<std::string> m_fields;
  bool m_secrets = false;
};

// "  name       name, such as RS232", a line a field.
template <typename Record, std::size_t N>
std::string FieldHelp(const form::cField<Record> (&fields)[N]) {
  std::string text = "Fields:\n";
  for (const auto& field : fields) {
    std::string name(field.name);
    name.resize(std::max<std::size_t>(name.size(), 20), ' ');
    text += "  " + name + "  " + std::string(field.help) + "\n";
  }
  return text;
}

}  // namespace tav::ctl
