// SPDX-License-Identifier: Apache-2.0
#include <tavctl/explain_command.h>

#include <gateway/driver/mbus/explain/mbus_explain.h>
#include <gateway/driver/sml/sml_explain.h>
#include <tav/obis/obis_protocol.h>
#include <tavctl/failure.h>
#include <tavctl/input_file.h>
#include <tavctl/obis/rule_document.h>
#include <tavctl/obis/rule_naming.h>
#include <tavctl/obis/rule_service.h>
#include <tavctl/options.h>
#include <tavctl/socket_probe.h>

namespace tav::ctl {

namespace {

std::string FirstBad(const cExplanation& explained) {
  return explained.firstBad.empty() ? "" : ", the first one " + explained.firstBad;
}

std::string Verdict(const cExplanation& explained) {
  if (explained.counts.bad != 0) return std::to_string(explained.counts.bad) + " bad telegram(s)" + FirstBad(explained);
  if (explained.counts.good == 0) return "no whole telegram in it" + FirstBad(explained);
  return std::to_string(explained.faults) +
         " fault(s) within telegrams whose checksum is right; the listing says where";
}

cExplanation AsSml(const std::string& capture, const std::shared_ptr<cRuleNaming>& naming) {
  if (naming == nullptr) return sml::ExplainSml(capture);
  return sml::ExplainSml(capture, [&](const std::string& obis) { return naming->Ask(obis); });
}

cExplanation AsMBus(const std::string& capture, const std::shared_ptr<cRuleNaming>& naming) {
  if (naming == nullptr) return mbus::ExplainMBus(capture);
  const auto data = [](mbus::cBytes bytes) { return vorn::cData(bytes.data(), bytes.size()); };
  return mbus::ExplainMBus(capture, [&](const mbus::cMBusIdentity& identity) {
    return naming->Ask(identity.meterAddr, identity.medium, data(identity.dib), data(identity.vib));
  });
}

// What is neither is taken for M-Bus, whose reader says what is wrong with its first byte.
cExplanation Explain(const std::string& capture, const std::optional<cObisMap>& rules) {
  const auto naming = rules ? std::make_shared<cRuleNaming>(*rules) : nullptr;
  const bool isMBus = !capture.empty() && !sml::HoldsSml(capture);
  return isMBus ? AsMBus(capture, naming) : AsSml(capture, naming);
}

}  // namespace

void cExplainCommand::AddOptions(CLI::App& app) {
  AddArgument(app, "FILE", m_file, "The capture, as bytes or as hexadecimal digits; - is standard input",
              eNeed::Optional);
  AddText(app, "--rules", m_rulesFile, "Names by the rules of this TOML file in place of the gateway's");
  AddFlag(app, "--no-rules", m_noRules, "Names by no rules");
  m_query.AddOptions(app);
}

eExit cExplainCommand::Run(cContext& context) {
  if (m_file.empty() != m_query.IsGiven())
    throw cFailure(eExitUsage, std::string("explain: expected FILE or --value, found ") +
                                   (m_file.empty() ? "none" : "both") + "; see tavctl explain --help");
  if (m_noRules && (!m_rulesFile.empty() || m_query.IsGiven()))
    throw cFailure(eExitUsage,
                   std::string("explain: --no-rules does not go with ") + (m_query.IsGiven() ? "--value" : "--rules"));
  if (!m_query.IsGiven()) return ExplainCapture(context);
  m_query.Make();  // what is wrong with it needs no gateway
  return m_query.Answer(m_rulesFile.empty() ? cRuleService(context).GetMap() : ReadRuleMap(m_rulesFile, context),
                        context);
}

// Those of a gateway only where one runs: a capture can be explained anywhere.
std::optional<cObisMap> cExplainCommand::FindRules(cContext& context) const {
  if (!m_rulesFile.empty()) return ReadRuleMap(m_rulesFile, context);
  if (m_noRules) return std::nullopt;
  const std::string socket = context.service.GetSocketPath(std::string(obis::kProtocol.GetService()));
  if (ProbeSocket(socket).state != eSocket::Listening) return std::nullopt;
  try {
    return cRuleService(context).GetMap();
  } catch (const cFailure&) {
    return std::nullopt;
  }
}

eExit cExplainCommand::ExplainCapture(cContext& context) const {
  const bool fromInput = m_file == "-";
  const std::string capture = ReadInput(m_file, context.streams.in, kMaxCapture);
  const cExplanation explained = Explain(capture, FindRules(context));
  context.streams.out << (context.json ? explained.json : explained.listing);
  if (context.json) context.streams.out << '\n';
  if (explained.AllGood()) return eExitDone;
  context.Note((fromInput ? "standard input" : m_file) + ": " + Verdict(explained));
  return eExitNegative;
}

}  // namespace tav::ctl
