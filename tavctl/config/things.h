// SPDX-License-Identifier: Apache-2.0
// tavctl interface, meter, collector, push-target and template: what the gateway is configured with, one by one.
#pragma once

#include <tavctl/config/thing_command.h>

namespace tav::ctl {

class cInterfaceCommand final : public cThingCommand {
 public:
  cInterfaceCommand();

 protected:
  Columns GetColumns() const override;
  std::vector<form::cJson> Find(cGatewayConfig& config, const std::string& name, form::eSecrets secrets) override;
  void Set(cGatewayConfig& config, const std::string& name, const std::vector<cAssignment>& fields) override;
  std::vector<std::string> Delete(cGatewayConfig& config, const std::string& name) override;
};

// Meters are named by their identifier or their address.
class cMeterCommand final : public cThingCommand {
 public:
  cMeterCommand();

 protected:
  Columns GetColumns() const override;
  std::vector<form::cJson> Find(cGatewayConfig& config, const std::string& name, form::eSecrets secrets) override;
  void Set(cGatewayConfig& config, const std::string& name, const std::vector<cAssignment>& fields) override;
  std::vector<std::string> Delete(cGatewayConfig& config, const std::string& name) override;
};

// Collectors are named METER/NAME, or METER for all of a meter.
class cCollectorCommand final : public cThingCommand {
 public:
  cCollectorCommand();

 protected:
  Columns GetColumns() const override;
  std::vector<form::cJson> Find(cGatewayConfig& config, const std::string& name, form::eSecrets secrets) override;
  void Set(cGatewayConfig& config, const std::string& name, const std::vector<cAssignment>& fields) override;
  std::vector<std::string> Delete(cGatewayConfig& config, const std::string& name) override;
};

class cPushTargetCommand final : public cThingCommand {
 public:
  cPushTargetCommand();

 protected:
  Columns GetColumns() const override;
  std::vector<form::cJson> Find(cGatewayConfig& config, const std::string& name, form::eSecrets secrets) override;
  void Set(cGatewayConfig& config, const std::string& name, const std::vector<cAssignment>& fields) override;
  std::vector<std::string> Delete(cGatewayConfig& config, const std::string& name) override;
};

// The fields of its meter and its push target bear a prefix: meter-config.medium, push-config.host. "export" writes a
// file a template, named after its number, "import" reads such files.
class cTemplateCommand final : public cThingCommand {
 public:
  cTemplateCommand();
  void AddOptions(CLI::App& app) override;

 protected:
  Columns GetColumns() const override;
  std::vector<form::cJson> Find(cGatewayConfig& config, const std::string& name, form::eSecrets secrets) override;
  void Set(cGatewayConfig& config, const std::string& name, const std::vector<cAssignment>& fields) override;
  std::vector<std::string> Delete(cGatewayConfig& config, const std::string& name) override;
  bool RunOther(cContext& context, cGatewayConfig& config, const std::string& action) override;

 private:
  void Export(cContext& context, cGatewayConfig& config);
  void Import(cContext& context, cGatewayConfig& config);

  std::string m_folder;
  std::vector<std::string> m_files;
  bool m_withSecrets = false;
};

}  // namespace tav::ctl
