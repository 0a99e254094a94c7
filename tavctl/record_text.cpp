// SPDX-License-Identifier: Apache-2.0
#include <tavctl/record_text.h>

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string_view>

#include <tav/service/device_protocol.h>
#include <tavctl/time_text.h>
#include <tavctl/utf8.h>

namespace tav::ctl {

namespace {

using cJson = nlohmann::ordered_json;

constexpr const char* kMasked = "***";

// Of meters and push targets; behind them those of the mobile modem.
constexpr std::string_view kSecretNames[] = {"key", "password", device::kMobilePin, device::kUser, device::kPassword};

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char character : ForTerminal(text)) {
    if (character == '"') quoted += '\\';
    quoted += character;
  }
  return quoted + '"';
}

std::string DataText(const vorn::cRecordPar& parameter) {
  const std::string_view bytes = parameter.GetBytesView();
  const std::string_view shown = bytes.substr(0, cRecordText::kMaxData);
  std::string text = "<" + vorn::cData(shown.data(), shown.size()).ToString(0);
  if (shown.size() < bytes.size()) text += " ... " + std::to_string(bytes.size()) + " bytes";
  return text + ">";
}

std::string HexDigits(const vorn::cRecordPar& parameter) {
  vorn::cData data = parameter.GetData();
  data.SetSeparator("");
  return data.ToString(0);
}

}  // namespace

bool cRecordText::IsMasked(const vorn::cRecordPar& parameter) const {
  const std::string_view name = parameter.GetNameView();
  return m_secrets == eSecrets::Mask &&
         std::find(std::begin(kSecretNames), std::end(kSecretNames), name) != std::end(kSecretNames);
}

std::string cRecordText::Value(const vorn::cRecordPar& parameter) const {
  if (IsMasked(parameter)) return kMasked;
  vorn::cRecord nested;
  switch (parameter.GetType()) {
    case vorn::eParText:
      return parameter.HasText() ? Quoted(parameter.GetBytesView()) : "null";
    case vorn::eParData:
      return DataText(parameter);
    case vorn::eParTime:
      return FormatTime(parameter.GetTime().GetSeconds());
    case vorn::eParRecord:
      parameter.GetRecord(nested);
      return "{" + AsLine(nested) + "}";
    default:
      return parameter.GetText();
  }
}

std::string cRecordText::AsLine(const vorn::cRecord& record) const {
  std::string line;
  for (vorn::cRecordPar at = record.First(); at.IsValid(); at = at.Next())
    line += (line.empty() ? "" : " ") + ForTerminal(at.GetNameView()) + "=" + Value(at);
  return line;
}

std::string cRecordText::AsLines(const vorn::cRecord& record, std::size_t indent) const {
  std::string lines;
  for (vorn::cRecordPar at = record.First(); at.IsValid(); at = at.Next()) {
    lines += std::string(indent, ' ') + ForTerminal(at.GetNameView());
    vorn::cRecord nested;
    if (!IsMasked(at) && at.GetRecord(nested))
      lines += "\n" + AsLines(nested, indent + 2);
    else
      lines += " = " + Value(at) + "\n";
  }
  return lines;
}

cJson cRecordText::AsJson(const vorn::cRecordPar& parameter) const {
  if (IsMasked(parameter)) return kMasked;
  vorn::cRecord nested;
  switch (parameter.GetType()) {
    case vorn::eParText:
      return parameter.HasText() ? cJson(ToUtf8(parameter.GetBytesView())) : cJson(nullptr);
    case vorn::eParInt:
      return parameter.GetInt();
    case vorn::eParUInt:
    case vorn::eParUInt64:
      return parameter.GetUInt64();
    case vorn::eParBool:
      return parameter.GetBool();
    case vorn::eParRecord:
      parameter.GetRecord(nested);
      return AsJson(nested);
    case vorn::eParTime:
      return FormatTime(parameter.GetTime().GetSeconds());
    case vorn::eParData:
      return HexDigits(parameter);
    case vorn::eParUuid:
      return parameter.GetText();
    default:
      return nullptr;
  }
}

cJson cRecordText::AsJson(const vorn::cRecord& record) const {
  cJson object = cJson::object();
  for (vorn::cRecordPar at = record.First(); at.IsValid(); at = at.Next()) {
    const std::string name = ToUtf8(at.GetNameView());
    if (object.contains(name)) continue;
    vorn::cRecordPar same = at.NextSame();
    cJson& value = object[name] = AsJson(at);
    if (same.IsValid()) value = cJson::array({value});
    for (; same.IsValid(); same = same.NextSame()) value.push_back(AsJson(same));
  }
  return object;
}

}  // namespace tav::ctl
