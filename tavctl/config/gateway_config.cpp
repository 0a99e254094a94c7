// SPDX-License-Identifier: Apache-2.0
#include <tavctl/config/gateway_config.h>

#include <algorithm>
#include <iterator>

#include <tav/framework/scm_channel.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tavctl/failure.h>

namespace tav::ctl {

namespace {

template <typename Record>
std::vector<Record> RecordsOf(const vorn::cRecord& answer, std::string_view key) {
  std::vector<Record> records;
  vorn::cRecord form;
  for (vorn::cRecordPar par = answer.GetPar(key); par.GetRecord(form); par = par.NextSame())
    if (!records.emplace_back().FromRecord(form))
      throw cFailure(eExitRefused, "service 'data' gave a \"" + std::string(key) + "\" that cannot be read: " +
                                       (records.back().error.empty() ? "it is not valid" : records.back().error));
  return records;
}

template <typename Record>
std::vector<Record> Called(const std::string& name, std::vector<Record> records) {
  std::vector<Record> found;
  for (const Record& record : records)
    if (name.empty() || record.name == name) found.push_back(record);
  return found;
}

std::vector<std::string> RemovedOf(const vorn::cRecord& answer) {
  std::vector<std::string> removed;
  for (vorn::cRecordPar par = answer.GetPar(db_ctrl::kRemoved); par.IsValid(); par = par.NextSame())
    removed.push_back(par.GetText());
  return removed;
}

vorn::cRecord Numbered(unsigned long long idx, const std::string& name) {
  vorn::cRecord request;
  request.AppendUInt64Par(db_ctrl::kIdx, idx);
  request.AppendTextPar(db_ctrl::kName, name);
  return request;
}

void AppendText(vorn::cRecord& request, std::string_view key, const std::string& text) {
  if (!text.empty()) request.AppendTextPar(key, text);
}

template <typename Record>
vorn::cRecord Holding(std::string_view key, const Record& record) {
  vorn::cRecord request;
  request.AppendRecordPar(key, record.ToRecord());
  return request;
}

}  // namespace

cGatewayConfig::cGatewayConfig(cContext& context) : m_link(context, db_ctrl::kProtocol) {}

// All are asked for, since the service refuses a name that is not there.
std::vector<cInterfaceRecord> cGatewayConfig::GetInterfaces(const std::string& name) {
  vorn::cRecord request;
  request.AppendBoolPar(db_ctrl::kWithMeters, false);
  request.AppendBoolPar(db_ctrl::kWithLoggers, false);
  return Called(name,
                RecordsOf<cInterfaceRecord>(m_link.Ask(db_ctrl::eGetInterface, request), db_ctrl::kInterfaceRecord));
}

// By identifier, or when nobody has that, by address.
std::vector<cMeterConfig> cGatewayConfig::GetMeters(const std::string& which) {
  auto all = RecordsOf<cMeterConfig>(m_link.Ask(db_ctrl::eGetMeter, {}), db_ctrl::kMeterConfigRecord);
  if (which.empty()) return all;
  std::vector<cMeterConfig> found;
  for (std::string cMeterConfig::*by : {&cMeterConfig::meterID, &cMeterConfig::addr})
    if (found.empty())
      std::copy_if(all.begin(), all.end(), std::back_inserter(found),
                   [&](const cMeterConfig& meter) { return meter.*by == which; });
  return found;
}

std::vector<cPushTarget> cGatewayConfig::GetPushTargets(const std::string& name) {
  return Called(name, RecordsOf<cPushTarget>(m_link.Ask(db_ctrl::eGetPushTarget, {}), db_ctrl::kPushTargetRecord));
}

// A template's record does not tell its number, which comes beside it.
std::vector<cMeterTemplate> cGatewayConfig::GetTemplates(const std::string& name) {
  const vorn::cRecord answer = m_link.Ask(db_ctrl::eGetMeterTemplate, {});
  auto templates = RecordsOf<cMeterTemplate>(answer, db_ctrl::kMeterTemplateRecord);
  vorn::cRecordPar idx = answer.GetPar(db_ctrl::kIdx);
  for (cMeterTemplate& each : templates) {
    each.id = idx.GetUInt64();
    idx = idx.NextSame();
  }
  return Called(name, std::move(templates));
}

form::cConfigDocument cGatewayConfig::GetAll(const std::function<void()>& onStep) {
  form::cConfigDocument all;
  all.interfaces = GetInterfaces();
  onStep();
  all.meters = GetMeters();
  onStep();
  all.pushTargets = GetPushTargets();
  onStep();
  all.templates = GetTemplates();
  onStep();
  return all;
}

void cGatewayConfig::Set(const cInterfaceRecord& interface) {
  m_link.Ask(db_ctrl::eSetInterface, Holding(db_ctrl::kInterfaceRecord, interface));
}

void cGatewayConfig::Set(const cMeterConfig& meter) {
  m_link.Ask(db_ctrl::eSetMeter, Holding(db_ctrl::kMeterConfigRecord, meter));
}

unsigned long long cGatewayConfig::Set(const cPushTarget& pushTarget) {
  return m_link.Ask(db_ctrl::eSetPushTarget, Holding(db_ctrl::kPushTargetRecord, pushTarget))
      .GetUInt64Par(db_ctrl::kIdx);
}

unsigned long long cGatewayConfig::Set(const cMeterTemplate& meterTemplate) {
  return m_link.Ask(db_ctrl::eSetMeterTemplate, Holding(db_ctrl::kMeterTemplateRecord, meterTemplate))
      .GetUInt64Par(db_ctrl::kIdx);
}

std::vector<std::string> cGatewayConfig::DeleteInterface(const std::string& name) {
  vorn::cRecord request;
  AppendText(request, db_ctrl::kName, name);
  return RemovedOf(m_link.Ask(db_ctrl::eDeleteInterface, request));
}

std::vector<std::string> cGatewayConfig::DeleteMeter(const cMeterConfig& meter) {
  vorn::cRecord request;
  AppendText(request, db_ctrl::kMeterDashId, meter.meterID);
  AppendText(request, db_ctrl::kMedium, meter.medium);
  AppendText(request, db_ctrl::kManufactor, meter.mfct);
  return RemovedOf(m_link.Ask(db_ctrl::eDeleteMeter, request));
}

void cGatewayConfig::DeletePushTarget(unsigned long long idx, const std::string& name) {
  m_link.Ask(db_ctrl::eDeletePushTarget, Numbered(idx, name));
}

void cGatewayConfig::DeleteTemplate(unsigned long long idx, const std::string& name) {
  m_link.Ask(db_ctrl::eDeleteMeterTemplate, Numbered(idx, name));
}

void cGatewayConfig::Apply(const form::cConfigDocument& config, bool replace) {
  vorn::cRecord request;
  for (const auto& each : config.interfaces) request.AppendRecordPar(db_ctrl::kInterfaceRecord, each.ToRecord());
  for (const auto& each : config.meters) request.AppendRecordPar(db_ctrl::kMeterConfigRecord, each.ToRecord());
  for (const auto& each : config.pushTargets) request.AppendRecordPar(db_ctrl::kPushTargetRecord, each.ToRecord());
  for (const auto& each : config.templates) request.AppendUInt64Par(db_ctrl::kIdx, each.id);
  for (const auto& each : config.templates) request.AppendRecordPar(db_ctrl::kMeterTemplateRecord, each.ToRecord());
  request.AppendBoolPar(db_ctrl::kReplace, replace);
  if (request.GetBytes().size() > kMaxConfig)
    throw cFailure(eExitRefused, "the configuration has " + std::to_string(request.GetBytes().size()) +
                                     " bytes, a message takes " + std::to_string(kMaxConfig) + " at most");
  m_link.Ask(db_ctrl::eApplyConfig, request);
}

}  // namespace tav::ctl
