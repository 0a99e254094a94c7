// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/config/config_form.h>

#include <algorithm>
#include <set>
#include <span>

#include <gateway/service/data/config/config_limits.h>
#include <gateway/service/data/profile/profile_event.h>
#include <tav/framework/helper.h>
#include <tav/record/meter_tav.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::data {

namespace {

using vorn::cRecord;
using vorn::cRecordPar;

enum class eNeed {
  Nothing,  // absent is as good as empty
  Value,    // to be there, and not empty
};

// Texts that name something hold no control characters, so that they can stand in a line of trace.
enum class eText { Any, Name };

struct cFormPar {
  std::string_view name;
  vorn::eParType type;
  eNeed need = eNeed::Nothing;
  std::size_t maxBytes = 0;
  eText text = eText::Any;
};

constexpr std::string_view kCollectorPar = "collector-config";

// clang-format off
constexpr cFormPar kInterfaceForm[] = {
  {"name",               vorn::eParText, eNeed::Value,   kMaxName,    eText::Name},
  {"options",            vorn::eParText, eNeed::Nothing, kMaxOptions},
  {"enabled",            vorn::eParBool},
};

constexpr cFormPar kMeterForm[] = {
  {"meterID",            vorn::eParText, eNeed::Value,   kMaxName,    eText::Name},
  {"addr",               vorn::eParText, eNeed::Nothing, kMaxName,    eText::Name},
  {"medium",             vorn::eParText, eNeed::Nothing, kMaxName,    eText::Name},
  {"mfct",               vorn::eParText, eNeed::Nothing, kMaxName,    eText::Name},
  {"key",                vorn::eParText, eNeed::Nothing, kMaxText},
  {"vendor",             vorn::eParText, eNeed::Nothing, kMaxText},
  {"interface-name",     vorn::eParText, eNeed::Value,   kMaxName,    eText::Name},
  {"interface-protocol", vorn::eParText, eNeed::Nothing, kMaxName,    eText::Name},
  {"interface-options",  vorn::eParText, eNeed::Nothing, kMaxOptions},
  {"push-enabled",       vorn::eParBool},
  {"store-raw-enabled",  vorn::eParBool},
};

constexpr cFormPar kCollectorForm[] = {
  {"addr",               vorn::eParText, eNeed::Value,   kMaxName,    eText::Name},
  {"should-removed",     vorn::eParBool},
  {"activation",         vorn::eParBool},
  {"countRP",            vorn::eParUInt},
  {"distanecRP",         vorn::eParUInt},
  {"distanceRP",         vorn::eParUInt},
  {"event-type",         vorn::eParText, eNeed::Nothing, kMaxName,    eText::Name},
  {"obis-ids",           vorn::eParText, eNeed::Nothing, kMaxObisIds},
  {"push-target-idx",    vorn::eParUInt64},
  {"push-target-name",   vorn::eParText, eNeed::Nothing, kMaxName,    eText::Name},
  {"push-period",        vorn::eParText, eNeed::Nothing, kMaxName,    eText::Name},
  {"push-enabled",       vorn::eParBool},
  {"push-raw-enabled",   vorn::eParBool},
  {"push-random-offset", vorn::eParUInt},
};

constexpr cFormPar kPushTargetForm[] = {
  {"idx",                vorn::eParUInt64, eNeed::Value},
  {"name",               vorn::eParText, eNeed::Value,   kMaxName,    eText::Name},
  {"protocoll",          vorn::eParText, eNeed::Value,   kMaxName,    eText::Name},
  {"username",           vorn::eParText, eNeed::Nothing, kMaxText},
  {"password",           vorn::eParText, eNeed::Nothing, kMaxText},
  {"host",               vorn::eParText, eNeed::Value,   kMaxText,    eText::Name},
  {"uri",                vorn::eParText, eNeed::Nothing, kMaxOptions},
  {"collect",            vorn::eParUInt},
  {"maxruntime",         vorn::eParUInt},
  {"enabled",            vorn::eParBool},
  {"log-enabled",        vorn::eParBool},
  {"post-enabled",       vorn::eParBool},
};

constexpr cFormPar kTemplateForm[] = {
  {"name",               vorn::eParText, eNeed::Value,   kMaxName,    eText::Name},
  {"enable",             vorn::eParBool},
  {"meter-config",       vorn::eParRecord},
  {"push-config",        vorn::eParRecord},
};
// clang-format on

enum class eComplete { Yes, No };

bool HasControl(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

// What is wrong with one parameter; empty when nothing is.
std::string FaultOf(const cFormPar& wanted, const cRecordPar& found, eComplete complete) {
  const bool needed = wanted.need == eNeed::Value && complete == eComplete::Yes;
  if (!found.IsValid())
    return needed ? " is missing, expected type " + std::string(ParTypeName(wanted.type)) : std::string();
  if (found.GetType() != wanted.type)
    return ": expected type " + std::string(ParTypeName(wanted.type)) + ", found " +
           std::string(ParTypeName(found.GetType()));
  if (needed && found.IsEmpty()) return " is empty";
  const std::string_view text = found.GetBytesView();
  if (wanted.maxBytes != 0 && text.size() > wanted.maxBytes)
    return " has " + std::to_string(text.size()) + " bytes, at most " + std::to_string(wanted.maxBytes) + " are kept";
  if (wanted.text == eText::Name && HasControl(text)) return " holds a control character";
  return {};
}

bool CheckForm(std::span<const cFormPar> form, const cRecord& record, const cPlace& at,
               eComplete complete = eComplete::Yes) {
  if (const cRecordPar version = record.GetPar("version"); !version.IsUInt() || version.GetUInt() != 1) {
    at.Fault(version.IsValid() ? "unknown version " + version.GetText() : "parameter \"version\" is missing");
    return false;
  }
  bool good = true;
  for (const cFormPar& wanted : form)
    if (const std::string fault = FaultOf(wanted, record.GetPar(wanted.name), complete); !fault.empty()) {
      at.Fault("parameter \"" + std::string(wanted.name) + "\"" + fault);
      good = false;
    }
  return good;
}

// ---- collectors

// What is wrong with a list of identifiers; empty when nothing is.
std::string FaultOfObisIds(const std::string& ids) {
  if (ids.empty()) return "obis-ids is empty";
  std::set<std::string> known;
  for (const std::string& id : vorn::cHelper::Split(ids, ",")) {
    if (!cMeterTav::ObisIsValid(id)) return "obis-ids: " + QuotedName(id) + " is no OBIS identifier";
    if (!known.insert(id).second) return "obis-ids: " + QuotedName(id) + " is there twice";
  }
  return {};
}

bool CheckCollector(const cRecord& record, const cCollectorConfig& collector, const cPlace& at) {
  if (collector.shouldRemoved) return true;
  bool good = true;
  const auto fault = [&](const std::string& text) {
    at.Fault(text);
    good = false;
  };
  if (!cProfileEvent::Parse(collector.eventType))
    fault("event-type " + QuotedName(collector.eventType) + " is none of " + cProfileEvent::kPossible);
  if (collector.distanceRP > cProfileEvent::kMaxDistance)
    fault("distanceRP " + std::to_string(collector.distanceRP) + " is over " +
          std::to_string(cProfileEvent::kMaxDistance));
  if (const std::string text = FaultOfObisIds(collector.obisIds); !text.empty()) fault(text);
  if (const unsigned int offset = record.GetUIntPar("push-random-offset"); offset != collector.pushRandomOffset)
    fault("push-random-offset " + std::to_string(offset) + " is over 65535");
  return good;
}

bool ReadCollector(const cRecord& record, const cPlace& at, cCollectorConfig& collector) {
  if (!CheckForm(kCollectorForm, record, at)) return false;
  collector.FromRecord(record);
  if (const cRecordPar distance = record.GetPar("distanecRP"); distance.IsValid())
    collector.distanceRP = distance.GetUInt();
  return CheckCollector(record, collector, at);
}

bool ReadCollectors(const cRecord& record, const cPlace& at, cMeterConfig& meter) {
  meter.collectors.clear();
  bool good = true;
  std::set<std::string> known;
  unsigned int number = 0;
  for (cRecordPar par = record.GetPar(kCollectorPar); par.IsValid(); par = par.NextSame()) {
    ++number;
    cRecord nested;
    const bool readable = par.GetRecord(nested);
    const std::string addr = nested.GetTextPar("addr");
    const cPlace inside = at.In(addr.empty() ? "collector " + std::to_string(number) : DescribeCollector(addr));
    cCollectorConfig collector;
    if (!readable)
      inside.Fault("expected type record, found " + std::string(ParTypeName(par.GetType())));
    else if (!ReadCollector(nested, inside, collector))
      good = false;
    else if (!known.insert(addr).second)
      inside.Fault("is there twice");
    else
      meter.AddCollector(collector);
  }
  return good && known.size() == number;
}

cRecord CollectorForm(const cCollectorConfig& collector) {
  cRecord record;
  record.AppendUIntPar("version", collector.version);
  record.AppendTextPar("addr", collector.addr);
  record.AppendBoolPar("should-removed", collector.shouldRemoved);
  record.AppendBoolPar("activation", collector.activation);
  record.AppendUIntPar("countRP", collector.countRP);
  record.AppendUIntPar("distanceRP", collector.distanceRP);
  record.AppendTextPar("event-type", collector.eventType);
  record.AppendTextPar("obis-ids", collector.obisIds);
  record.AppendUInt64Par("push-target-idx", collector.pushTargetIdx);
  record.AppendTextPar("push-target-name", collector.pushTargetName);
  record.AppendTextPar("push-period", collector.pushPeriod);
  record.AppendBoolPar("push-enabled", collector.pushEnabled);
  record.AppendBoolPar("push-raw-enabled", collector.pushRawEnabled);
  record.AppendUIntPar("push-random-offset", collector.pushRandomOffset);
  return record;
}

// Every fault of the collectors is told, even when the meter's own parameters are wrong.
bool ReadMeterForm(const cRecord& record, const cPlace& at, eComplete complete, cMeterConfig& meter) {
  const bool own = CheckForm(kMeterForm, record, at, complete);
  if (own) meter.FromRecord(record);
  return ReadCollectors(record, at, meter) && own;
}

// The place of a record that has a name: "meter '123'", and without one only where it stood.
cPlace PlaceOf(const cPlace& at, const char* kind, const std::string& name) {
  return at.In(name.empty() ? kind : kind + (" " + QuotedName(name)));
}

}  // namespace

bool ReadInterface(const cRecord& record, const cPlace& at, cInterfaceRecord& interface) {
  const cPlace place = PlaceOf(at, "interface", record.GetTextPar("name"));
  if (!CheckForm(kInterfaceForm, record, place)) return false;
  if (record.GetPar(db_ctrl::kMeterConfigRecord).IsValid()) {
    place.Fault("holds a \"meterconfig-record\": a meter is set by itself and names its interface");
    return false;
  }
  return interface.FromRecord(record);
}

bool ReadMeter(const cRecord& record, const cPlace& at, cMeterConfig& meter) {
  return ReadMeterForm(record, PlaceOf(at, "meter", record.GetTextPar("meterID")), eComplete::Yes, meter);
}

bool ReadPushTarget(const cRecord& record, const cPlace& at, cPushTarget& target) {
  const cPlace place = PlaceOf(at, "push target", record.GetTextPar("name"));
  if (!CheckForm(kPushTargetForm, record, place)) return false;
  if (target.FromRecord(record) && target.idx <= kMaxIdx) return true;
  place.Fault(target.idx > kMaxIdx ? "idx is over " + std::to_string(kMaxIdx) : target.error);
  return false;
}

bool ReadTemplate(const cRecord& record, const cPlace& at, std::string& name, cRecord& form) {
  name = record.GetTextPar("name");
  const cPlace place = PlaceOf(at, "template", name);
  if (!CheckForm(kTemplateForm, record, place)) return false;
  form = cRecord();
  form.AppendUIntPar("version", 1);
  form.AppendTextPar("name", name);
  form.AppendBoolPar("enable", record.GetBoolPar("enable"));
  bool good = true;
  if (const cRecord nested = record.GetRecordPar("meter-config"); !nested.IsEmpty()) {
    cMeterConfig meter;
    good = ReadMeterForm(nested, place.In("meter-config"), eComplete::No, meter);
    form.AppendRecordPar("meter-config", MeterForm(meter, eCollectors::With));
  }
  if (const cRecord nested = record.GetRecordPar("push-config"); !nested.IsEmpty()) {
    good = CheckForm(kPushTargetForm, nested, place.In("push-config"), eComplete::No) && good;
    form.AppendRecordPar("push-config", nested);
  }
  return good;
}

cRecord MeterForm(const cMeterConfig& meter, eCollectors collectors) {
  cMeterConfig alone = meter;
  alone.collectors.clear();
  cRecord record = alone.ToRecord();
  if (collectors == eCollectors::With)
    for (const cCollectorConfig& collector : meter.collectors)
      record.AppendRecordPar(kCollectorPar, CollectorForm(collector));
  return record;
}

std::string Describe(const cInterfaceRecord& interface) { return "interface " + QuotedName(interface.name); }

std::string Describe(const cMeterConfig& meter) {
  return "meter " + QuotedName(meter.meterID) + " medium " + QuotedName(meter.medium) + " manufactor " +
         QuotedName(meter.mfct);
}

std::string Describe(const cPushTarget& target) { return "push target " + QuotedName(target.name); }

std::string DescribeCollector(const std::string& addr) { return "collector " + QuotedName(addr); }

std::string DescribeTemplate(const std::string& name) { return "template " + QuotedName(name); }

}  // namespace tav::data
