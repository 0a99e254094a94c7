// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/mbif/mbus_reading.h>

#include <algorithm>

#include <gateway/driver/mbus/reader/mbus_text.h>
#include <tav/framework/helper.h>

namespace tav::mbus {

namespace {

vorn::cData Data(cBytes bytes) { return {bytes.data(), bytes.size()}; }

bool HasEntry(const cMeterRecord& reading, const std::string& name) {
  const auto& entries = reading.GetMeasurementEntries();
  return std::any_of(entries.begin(), entries.end(), [&](const auto& entry) { return entry.GetName() == name; });
}

// The blocks, and a number where a value before it has the same.
std::string FreeBlockName(const cMBusRecord& record, const cMeterRecord& reading) {
  std::string name = BlockName(record);
  if (!HasEntry(reading, name)) return name;
  for (unsigned int number = 2;; ++number)
    if (std::string next = name + "#" + std::to_string(number); !HasEntry(reading, next)) return next;
}

// The first telegram that tells whose it is.
const cMBusTelegram* FindHeader(const std::vector<cMBusTelegram>& telegrams) {
  const auto found =
      std::find_if(telegrams.begin(), telegrams.end(), [](const auto& each) { return each.header.hasMeter; });
  return found != telegrams.end() ? &*found : telegrams.empty() ? nullptr : &telegrams.front();
}

std::vector<cMBusTelegram> ReadTelegrams(const std::vector<std::string>& frames) {
  std::vector<cMBusTelegram> telegrams;
  for (const std::string& bytes : frames) {
    cMBusFrame frame;
    cMBusTelegram telegram;
    cMBusFault fault;
    if (ReadFrame(BytesOf(bytes), frame, fault) == eFrameWhole && ReadTelegram(frame, telegram, fault) &&
        telegram.HasRecords())
      telegrams.push_back(telegram);
  }
  return telegrams;
}

}  // namespace

struct cMBusReadingMaker::cTarget {
  const cMBusNaming& naming;
  const cMoment& moment;
  std::string address;
  std::string medium;
  cMeterRecord& reading;
};

cMBusReadingCounts& cMBusReadingCounts::operator+=(const cMBusReadingCounts& other) {
  telegrams += other.telegrams;
  values += other.values;
  unmapped += other.unmapped;
  unreadable += other.unreadable;
  return *this;
}

std::string BlockName(const cMBusRecord& record) { return "mbus:" + HexText(record.dib) + "/" + HexText(record.vib); }

bool cMBusReadingMaker::Make(const std::vector<std::string>& frames, const cMBusMeter& meter, const cMBusNaming& naming,
                             const cMoment& moment, cMeterRecord& reading) {
  m_fault.clear();
  const std::vector<cMBusTelegram> telegrams = ReadTelegrams(frames);
  const cMBusTelegram* const first = FindHeader(telegrams);
  if (first == nullptr) return false;
  const cMBusHeader& header = first->header;
  const std::string address = meter.address.ToString();
  const std::string id = !meter.id.empty() ? meter.id : header.hasMeter ? IdText(header.id) : address;
  const std::string medium = meter.medium.empty() ? cMeterTav::GetMbusMediumText(header.medium) : meter.medium;
  const std::string maker = header.manufacturer != 0 ? ManufacturerText(header.manufacturer) : std::string();
  reading.Set(kMBusDriver, maker, medium, id, address, cMeterTav::GetMbusStatusText(header.status), moment.seconds,
              moment.source, vorn::GetOSC());
  cTarget target{naming, moment, address, medium, reading};
  for (const cMBusTelegram& telegram : telegrams) TakeTelegram(telegram, target);
  if (meter.raw)
    for (const std::string& frame : frames) reading.SetRaw(frame);
  return true;
}

void cMBusReadingMaker::TakeTelegram(const cMBusTelegram& telegram, cTarget& target) {
  ++m_counts.telegrams;
  m_reader.Begin(telegram);
  for (cMBusRecord record; m_reader.Next(record);)
    if (record.HasValue()) TakeRecord(record, target);
  if (!m_fault.empty()) return;
  if (m_reader.HasFault()) m_fault = m_reader.GetFault().ToString();
  if (telegram.encrypted) m_fault = "the telegram is encrypted";
}

void cMBusReadingMaker::TakeRecord(const cMBusRecord& record, cTarget& target) {
  const cMBusNaming& naming = target.naming;
  cObisMapEntry rule;
  const bool named =
      naming.rules != nullptr && naming.rules->GetEntryByDibVibFromMBUS(target.address, {}, target.medium,
                                                                        Data(record.dib), Data(record.vib), rule);
  if (!named && naming.rules != nullptr && !naming.keepUnmapped) {
    ++m_counts.unmapped;
    return;
  }
  ++m_counts.values;
  if (record.mark != nullptr) ++m_counts.unreadable;
  const bool asRule = named && !naming.keepNames && !HasEntry(target.reading, rule.GetObisID());
  cMeasurementEntry entry(asRule ? rule.GetObisID() : FreeBlockName(record, target.reading), ValueText(record),
                          record.value.IsNumber() ? UnitText(record) : std::string(), target.moment.seconds,
                          target.moment.source);
  target.reading.AddMeasurementEntry(entry);
}

}  // namespace tav::mbus
