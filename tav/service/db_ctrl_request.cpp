// SPDX-License-Identifier: Apache-2.0
#include <tav/service/db_ctrl_request.h>

#include <algorithm>
#include <cstdlib>

#include <tav/record/record_fields.h>

namespace tav {

namespace {

unsigned int Number(const std::string& text, unsigned int whenEmpty) {
  if (text.empty()) return whenEmpty;
  return static_cast<unsigned int>(std::clamp(std::strtoll(text.c_str(), nullptr, 10), 0LL, 0xFFFFFFFFLL));
}

// Leaves the field alone when the parameter is not there with a value of its type, as TakeText does.
void TakeUInt(const vorn::cRecord& rec, const char* name, unsigned int& to) {
  const vorn::cRecordPar par = rec.GetPar(name);
  if (IsFilled(par, vorn::eParUInt)) to = par.GetUInt();
}

std::string OrUnknown(const std::string& text) { return text.empty() ? "?" : text; }

}  // namespace

cDbCtrlRequest::~cDbCtrlRequest() = default;

void cDbCtrlRequest::Init() { *this = cDbCtrlRequest(); }

bool cDbCtrlRequest::IsRawEnabled(std::string& format) const {
  format = m_rawFormat;
  return !m_rawFormat.empty();
}

void cDbCtrlRequest::AddObisID(const std::string& id) {
  if (!id.empty()) m_obisIds.push_back(id);
}

void cDbCtrlRequest::SetMaxLen(const std::string& s) { m_maxLen = Number(s, kDefaultMaxLen); }

void cDbCtrlRequest::SetFromUTC(const std::string& s) { m_fromUTC = Number(s, 0); }

void cDbCtrlRequest::SetToUTC(const std::string& s) { m_toUTC = Number(s, kOpenEnd); }

vorn::cRecord& cDbCtrlRequest::ToRecord() {
  m_record = vorn::cRecord();
  m_record.AppendUIntPar("version", m_version);
  AppendUnlessEmpty(m_record, "meterID", m_meterID);
  AppendUnlessEmpty(m_record, "addr", m_addr);
  AppendUnlessEmpty(m_record, "vendor", m_vendor);
  AppendUnlessEmpty(m_record, "mfct", m_mfct);
  AppendUnlessEmpty(m_record, "medium", m_medium);
  AppendUnlessEmpty(m_record, "mode", m_mode);
  if (!m_obisIds.empty()) {
    vorn::cRecord ids;
    for (const std::string& id : m_obisIds) ids.AppendTextPar("obis-id", id);
    m_record.AppendRecordPar("obis-id", ids);
  }
  AppendUnlessEmpty(m_record, "raw-format", m_rawFormat);
  m_record.AppendUIntPar("fromUTC", m_fromUTC);
  m_record.AppendUIntPar("toUTC", m_toUTC);
  m_record.AppendUIntPar("maxlen", m_maxLen);
  AppendUnlessEmpty(m_record, "profile", m_profile);
  return m_record;
}

bool cDbCtrlRequest::FromRecord(const vorn::cRecord& rec) {
  const vorn::cRecord from = rec;  // NOLINT(performance-unnecessary-copy-initialization): it may be our own
  Init();
  TakeUInt(from, "version", m_version);
  if (m_version != kVersion) {
    m_error = "bad version";
    return false;
  }
  TakeText(from, "meterID", m_meterID);
  TakeText(from, "addr", m_addr);
  TakeText(from, "vendor", m_vendor);
  TakeText(from, "medium", m_medium);
  TakeText(from, "mfct", m_mfct);
  TakeText(from, "mode", m_mode);
  TakeText(from, "raw-format", m_rawFormat);
  if (!m_rawFormat.empty() && m_rawFormat != "base64" && m_rawFormat != "other") {
    m_error = "unknown raw-format";
    return false;
  }
  TakeUInt(from, "fromUTC", m_fromUTC);
  TakeUInt(from, "toUTC", m_toUTC);
  TakeText(from, "profile", m_profile);
  TakeUInt(from, "maxlen", m_maxLen);
  const vorn::cRecord ids = from.GetRecordPar("obis-id");
  for (vorn::cRecordPar id = ids.GetPar("obis-id"); id.IsValid(); id = id.NextSame())
    if (id.IsText()) AddObisID(id.GetText());
  return true;
}

std::string cDbCtrlRequest::ToString() const {
  return "meterID=" + OrUnknown(m_meterID) + " addr=" + OrUnknown(m_addr) + " vendor=" + OrUnknown(m_vendor) +
         " medium=" + OrUnknown(m_medium) + " mfct=" + OrUnknown(m_mfct) + " mode=" + OrUnknown(m_mode);
}

}  // namespace tav
