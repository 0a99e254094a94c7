// SPDX-License-Identifier: Apache-2.0
#include <tavctl/explain_command.h>

#include <nlohmann/json.hpp>

#include <gateway/driver/sml/sml_explain.h>
#include <tavctl/input_file.h>
#include <tavctl/options.h>

namespace tav::ctl {

namespace {

// "; the first one at offset 16" of those that are not good.
std::string FirstBad(const std::string& json) {
  const auto document = nlohmann::json::parse(json, nullptr, false);
  if (!document.is_object() || !document.contains("telegrams")) return "";
  for (const auto& telegram : document["telegrams"])
    if (!telegram.value("good", true))
      return ", the first one at offset " + telegram.value("offset", nlohmann::json()).dump();
  return "";
}

std::string Verdict(const sml::cSmlExplanation& explained) {
  if (explained.counts.bad != 0)
    return std::to_string(explained.counts.bad) + " bad telegram(s)" + FirstBad(explained.json);
  if (explained.counts.good == 0) return "no whole telegram in it";
  return std::to_string(explained.faults) +
         " fault(s) within telegrams whose checksum is right; the listing says where";
}

}  // namespace

void cExplainCommand::AddOptions(CLI::App& app) {
  AddArgument(app, "FILE", m_file, "The capture, as bytes or as hexadecimal digits; - is standard input",
              eNeed::Required);
}

eExit cExplainCommand::Run(cContext& context) {
  const bool fromInput = m_file == "-";
  const std::string capture = ReadInput(m_file, context.streams.in, kMaxCapture);
  const sml::cSmlExplanation explained = sml::ExplainSml(capture);
  context.streams.out << (context.json ? explained.json : explained.listing);
  if (context.json) context.streams.out << '\n';
  if (explained.AllGood()) return eExitDone;
  context.Note((fromInput ? "standard input" : m_file) + ": " + Verdict(explained));
  return eExitNegative;
}

}  // namespace tav::ctl
