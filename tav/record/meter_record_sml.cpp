// SPDX-License-Identifier: Apache-2.0
// A reading from the record form of an SML get-list response (BSI TR-03109 SML, SML_GetList.Res).
#include <cstdio>

#include <tav/framework/helper.h>
#include <tav/record/meter_record.h>
#include <tav/unit_tav.h>

namespace tav {

namespace {

constexpr unsigned long long kManufacturer = 0x8181C78203FF;  // 129-129:199.130.3*255
constexpr unsigned long long kStatusWord = 0x0100600505FF;    // 1-0:96.5.5*255

// A scaler has one byte in SML; anything far beyond is no scaler, and would cost as many digits.
constexpr int kMaxScaler = 1000;

std::string MeterIdOf(vorn::cData serverId) {
  if (serverId.IsPrintable()) return serverId.AsText();
  serverId.SetSeparator("");
  return serverId.ToString(0);
}

std::string StatusText(unsigned int status) {
  return status == 0 ? "ok" : vorn::FormatString("%d", static_cast<int>(status));
}

// The decimal text with its point moved; a sign counts as a digit.
std::string Scaled(std::string text, int scaler) {
  if (scaler >= 0) return text.append(static_cast<std::size_t>(scaler), '0');
  const auto places = static_cast<std::size_t>(-scaler);
  if (places < text.size()) return text.insert(text.size() - places, 1, '.');
  return "0." + std::string(places - text.size(), '0') + text;
}

}  // namespace

bool cMeterRecord::FromSmlGetListRes(const std::string& driver, const std::string& medium,
                                     cMeterTav::eTimeSource timesource, unsigned int timestamp,
                                     const vorn::cRecord& res) {
  Init();
  m_driver = driver;
  m_medium = medium;
  m_timesource = timesource;
  m_timestamp = timestamp;
  m_osc = vorn::GetOSC();
  const vorn::cRecordPar serverId = res.GetPar("serverId");
  const vorn::cRecordPar list = res.GetPar("valList");
  vorn::cRecord values;
  if (!serverId.IsData() || serverId.IsEmpty() || list.IsEmpty() || !list.GetRecord(values)) return false;
  m_meterID = MeterIdOf(serverId.GetData());
  m_addr = m_meterID;
  vorn::cRecord value;
  for (vorn::cRecordPar par = values.GetPar("valListEntry"); par.IsValid(); par = par.NextSame())
    if (par.GetRecord(value)) TakeSmlValue(value);
  m_valid = true;
  return true;
}

void cMeterRecord::TakeSmlValue(const vorn::cRecord& entry) {
  const vorn::cRecordPar objName = entry.GetPar("objName");
  if (!objName.IsValid()) {
    std::puts("not valid");
    return;
  }
  const unsigned long long obis = objName.GetUInt64();
  const vorn::cRecordPar value = entry.GetPar("value");
  if (obis == kManufacturer) m_manufactor = value.GetBytesView();
  // An entry's "status" only tells that there is one; the number is that of its value in both cases.
  const vorn::cRecordPar status = entry.GetPar("status");
  if (obis == kStatusWord || (m_status.empty() && status.IsUInt())) m_status = StatusText(value.GetUInt());
  const vorn::cRecordPar unit = entry.GetPar("unit");
  if (!unit.IsEmpty() && !value.IsEmpty()) AddSmlEntry(entry, obis, value.GetText(), unit.GetUInt());
}

void cMeterRecord::AddSmlEntry(const vorn::cRecord& value, unsigned long long obis, const std::string& text,
                               unsigned int unit) {
  const std::string name = cMeterTav::ObisLangform(obis);
  const int scaler = value.GetIntPar("scaler");
  if (scaler < -kMaxScaler || scaler > kMaxScaler) {
    vorn::Trace(UnitTAV(), 2, "FromSmlGetListRes: ", name, " of meter ", m_meterID, " left out, scaler ", scaler,
                " is not within -", kMaxScaler, "..", kMaxScaler);
    return;
  }
  cMeasurementEntry entry(name, Scaled(text, scaler), cMeterTav::ObisUnit(unit), m_timestamp, m_timesource);
  entry.SetSignature(value.GetDataPar("signature"));
  AddMeasurementEntry(entry);
}

}  // namespace tav
