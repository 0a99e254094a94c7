// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/record_json.h>

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>

#include <gateway/form/time_text.h>
#include <gateway/form/utf8.h>
#include <tav/http/http_protocol.h>
#include <tav/service/device_protocol.h>

namespace tav::form {

namespace {

// Of meters and push targets; those of the mobile modem; what forms of pages carry, and what stands for a login.
constexpr std::string_view kSecretNames[] = {
    "key", "password", device::kMobilePin, device::kUser,  device::kPassword, "old-password", "again",
    "pin", "csrf",     http::kCookies,     "authorization"};

std::string HexDigits(const vorn::cRecordPar& parameter) {
  vorn::cData data = parameter.GetData();
  data.SetSeparator("");
  return data.ToString(0);
}

}  // namespace

bool IsSecret(std::string_view name) {
  // Of a field within another thing: "meter-config.key".
  const std::string_view last = name.substr(name.rfind('.') + 1);
  return std::find(std::begin(kSecretNames), std::end(kSecretNames), last) != std::end(kSecretNames);
}

cJson ToJson(const vorn::cRecordPar& parameter, eMask mask) {
  if (mask == eMask::Secrets && IsSecret(parameter.GetNameView())) return kMasked;
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
      return ToJson(nested, mask);
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

cJson ToJson(const vorn::cRecord& record, eMask mask) {
  cJson object = cJson::object();
  for (vorn::cRecordPar at = record.First(); at.IsValid(); at = at.Next()) {
    const std::string name = ToUtf8(at.GetNameView());
    if (object.contains(name)) continue;
    vorn::cRecordPar same = at.NextSame();
    cJson& value = object[name] = ToJson(at, mask);
    if (same.IsValid()) value = cJson::array({value});
    for (; same.IsValid(); same = same.NextSame()) value.push_back(ToJson(same, mask));
  }
  return object;
}

}  // namespace tav::form
