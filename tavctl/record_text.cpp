// SPDX-License-Identifier: Apache-2.0
#include <tavctl/record_text.h>

#include <string_view>

#include <gateway/form/time_text.h>
#include <tavctl/terminal_text.h>

namespace tav::ctl {

namespace {

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

}  // namespace

bool cRecordText::IsMasked(const vorn::cRecordPar& parameter) const {
  return m_mask == form::eMask::Secrets && form::IsSecret(parameter.GetNameView());
}

std::string cRecordText::Value(const vorn::cRecordPar& parameter) const {
  if (IsMasked(parameter)) return form::kMasked;
  vorn::cRecord nested;
  switch (parameter.GetType()) {
    case vorn::eParText:
      return parameter.HasText() ? Quoted(parameter.GetBytesView()) : "null";
    case vorn::eParData:
      return DataText(parameter);
    case vorn::eParTime:
      return form::FormatTime(parameter.GetTime().GetSeconds());
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

}  // namespace tav::ctl
