// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/explain/mbus_document.h>

#include <utility>

#include <gateway/driver/mbus/reader/mbus_text.h>
#include <gateway/form/utf8.h>
#include <tav/record/meter_tav.h>

namespace tav::mbus {

namespace {

using cJson = cCaptureJson;

cJson TextOrNull(const std::string& text) { return text.empty() ? cJson(nullptr) : cJson(form::ToUtf8(text)); }

}  // namespace

void cMBusDocument::Begin(const cMBusPiece& piece) {
  m_telegram = {{"offset", piece.offset}, {"good", false}};
  for (const char* key : {"meter", "manufacturer", "version", "medium", "access", "status", "configuration", "address",
                          "control", "information"})
    m_telegram[key] = nullptr;
  m_telegram["more"] = false;
  m_telegram["error"] = nullptr;
  m_telegram["reason"] = nullptr;
  m_telegram["values"] = cJson::array();
  if (piece.frame.kind == eFrameAck) return;
  m_telegram["address"] = piece.frame.address;
  m_telegram["control"] = piece.frame.control;
  if (piece.frame.kind == eFrameLong) m_telegram["information"] = piece.frame.information;
}

void cMBusDocument::Header(const cMBusTelegram& telegram) {
  const cMBusHeader& header = telegram.header;
  if (header.hasMeter) {
    m_telegram["meter"] = IdText(header.id);
    if (header.manufacturer != 0) m_telegram["manufacturer"] = ManufacturerText(header.manufacturer);
    if (telegram.information != eCiFixed) m_telegram["version"] = header.version;
    m_telegram["medium"] = cMeterTav::GetMbusMediumText(header.medium);
  }
  if (telegram.information == eCiError && !telegram.data.empty())
    m_telegram["error"] = ApplicationErrorText(telegram.data[0]);
  if (!telegram.HasRecords() || telegram.information == eCiNoHeader) return;
  m_telegram["access"] = header.access;
  m_telegram["status"] = header.status;
  if (telegram.information != eCiFixed) m_telegram["configuration"] = header.configuration;
}

void cMBusDocument::Record(const cMBusRecord& record, std::size_t number, const cObisNaming& naming) {
  const cBaseValue base = BaseValue(record);
  cJson json;
  json["record"] = number;
  json["function"] = FunctionText(record.function);
  json["storage"] = record.storage;
  json["tariff"] = record.tariff;
  json["subunit"] = record.subunit;
  json["dib"] = TextOrNull(HexText(record.dib, " "));
  json["vib"] = TextOrNull(HexText(record.vib, " "));
  json["raw"] = TextOrNull(RawText(record));
  json["scaler"] = record.value.IsNumber() ? cJson(record.meaning.scaler) : cJson(nullptr);
  json["unit"] = TextOrNull(UnitText(record));
  json["value"] = TextOrNull(ValueText(record));
  json["base_value"] = TextOrNull(base.value);
  json["base_unit"] = TextOrNull(base.unit);
  json["mark"] = record.mark != nullptr ? cJson(record.mark) : cJson(nullptr);
  json["rule"] = RuleOrNull(naming.rule);
  m_telegram["values"].push_back(std::move(json));
}

void cMBusDocument::End(const cMBusFault* why, bool hasMore) {
  m_telegram["good"] = why == nullptr;
  m_telegram["more"] = hasMore;
  if (why != nullptr) m_telegram["reason"] = why->ToString();
  if (!m_telegrams.empty()) m_telegrams += ',';
  m_telegrams += DumpLine(m_telegram);
}

std::string cMBusDocument::ToText(const cExplanation::cCounts& counts) const {
  const cJson json = {{"kind", "mbus"},
                      {"good", counts.good},
                      {"bad", counts.bad},
                      {"incomplete", counts.incomplete},
                      {"skipped_bytes", counts.skippedBytes}};
  std::string text = DumpLine(json);
  text.pop_back();
  text.reserve(text.size() + m_telegrams.size() + 20);
  return text.append(",\"telegrams\":[").append(m_telegrams).append("]}");
}

}  // namespace tav::mbus
