// SPDX-License-Identifier: Apache-2.0
#include <tavctl/config/document.h>

#include <algorithm>
#include <functional>

#include <tavctl/config/toml_text.h>

namespace tav::ctl {

namespace {

constexpr const char* kInterfaces = "interfaces";
constexpr const char* kMeters = "meters";
constexpr const char* kPushTargets = "push-targets";
constexpr const char* kTemplates = "templates";
constexpr const char* kCollectors = "collectors";
constexpr const char* kMeterConfig = "meter-config";
constexpr const char* kPushConfig = "push-config";

// ---- out

template <typename Things, typename Convert>
cJson ListOf(const Things& things, const Convert& convert) {
  cJson list = cJson::array();
  for (const auto& thing : things) list.push_back(convert(thing));
  return list;
}

cJson ToDocument(const cConfigDocument& config, eSecrets secrets) {
  cJson document = cJson::object();
  document[kInterfaces] =
      ListOf(config.interfaces, [&](const auto& each) { return ToJson(each, kInterfaceFields, secrets); });
  document[kMeters] = ListOf(config.meters, [&](const auto& each) { return MeterToJson(each, secrets); });
  document[kPushTargets] =
      ListOf(config.pushTargets, [&](const auto& each) { return ToJson(each, kPushTargetFields, secrets); });
  document[kTemplates] = ListOf(config.templates, [&](const auto& each) { return TemplateToJson(each, secrets); });
  return document;
}

// ---- in

using Take = std::function<void(const cJson& item, const std::string& place)>;

// The members of a document that are lists; anything else in it is a fault.
class cDocumentReader {
 public:
  cDocumentReader(const cJson& document, Faults& faults) : m_document(document), m_faults(faults) {}

  void List(const cJson& of, const std::string& place, const char* name, const Take& take) {
    const auto found = of.find(name);
    if (found == of.end()) return;
    const std::string at = Below(place, name);
    if (!found->is_array()) return m_faults.push_back({at, "expected a list"});
    for (std::size_t i = 0; i < found->size(); ++i) take((*found)[i], at + "[" + std::to_string(i) + "]");
  }
  void OnlyKnown(std::initializer_list<std::string_view> names) {
    for (const auto& [name, value] : m_document.items())
      if (std::find(names.begin(), names.end(), name) == names.end())
        m_faults.push_back({name, "there is no such part; there are interfaces, meters, push-targets, templates"});
  }
  template <typename Record, std::size_t N>
  void Fields(const cJson& item, const cField<Record> (&fields)[N], Record& record, const std::string& place,
              std::initializer_list<std::string_view> others = {}) {
    FromJson(item, std::span<const cField<Record>>(fields), record, place, m_faults, others);
  }
  void Meter(const cJson& item, cMeterConfig& meter, const std::string& place) {
    Fields(item, kMeterFields, meter, place, {kCollectors});
    if (!item.is_object()) return;
    List(item, place, kCollectors, [&](const cJson& each, const std::string& at) {
      cCollectorConfig collector;
      Fields(each, kCollectorFields, collector, at);
      meter.AddCollector(collector);
    });
  }
  void Template(const cJson& item, cMeterTemplate& meterTemplate, const std::string& place) {
    Fields(item, kTemplateFields, meterTemplate, place, {kMeterConfig, kPushConfig});
    if (!item.is_object()) return;
    if (item.contains(kMeterConfig)) Meter(item[kMeterConfig], meterTemplate.meterConfig, Below(place, kMeterConfig));
    if (item.contains(kPushConfig))
      Fields(item[kPushConfig], kPushTargetFields, meterTemplate.pushConfig, Below(place, kPushConfig));
    const std::string fault = PushConfigFault(meterTemplate);
    if (!fault.empty()) m_faults.push_back({Below(place, kPushConfig), fault});
  }

 private:
  const cJson& m_document;
  Faults& m_faults;
};

cConfigDocument FromDocument(const cJson& document, Faults& faults) {
  cConfigDocument config;
  if (!document.is_object()) {
    faults.push_back({"document", "expected interfaces, meters, push-targets, templates"});
    return config;
  }
  cDocumentReader reader(document, faults);
  reader.OnlyKnown({kInterfaces, kMeters, kPushTargets, kTemplates});
  reader.List(document, {}, kInterfaces, [&](const cJson& item, const std::string& place) {
    reader.Fields(item, kInterfaceFields, config.interfaces.emplace_back(), place);
  });
  reader.List(document, {}, kMeters, [&](const cJson& item, const std::string& place) {
    reader.Meter(item, config.meters.emplace_back(), place);
  });
  reader.List(document, {}, kPushTargets, [&](const cJson& item, const std::string& place) {
    reader.Fields(item, kPushTargetFields, config.pushTargets.emplace_back(), place);
  });
  reader.List(document, {}, kTemplates, [&](const cJson& item, const std::string& place) {
    reader.Template(item, config.templates.emplace_back(), place);
  });
  return config;
}

// ---- secrets

// Copies a secret that an item leaves out from the present one that has the same values under the keys.
void Borrow(cJson& item, const cJson& present, const char* secret, std::initializer_list<const char*> keys) {
  if (!item.is_object() || item.contains(secret) || !present.is_array()) return;
  for (const cJson& other : present) {
    const bool same = std::all_of(keys.begin(), keys.end(), [&](const char* key) {
      return item.value(key, cJson("")) == other.value(key, cJson(""));
    });
    if (!same || !other.contains(secret)) continue;
    item[secret] = other[secret];
    return;
  }
}

void BorrowAll(cJson& document, const char* list, const cJson& present, const char* secret,
               std::initializer_list<const char*> keys) {
  if (!document.is_object() || !document.contains(list) || !document[list].is_array()) return;
  for (cJson& item : document[list]) Borrow(item, present[list], secret, keys);
}

// A template's two are found by the template's name.
void BorrowNested(cJson& document, const cJson& present, const char* nested, const char* secret) {
  if (!document.is_object() || !document.contains(kTemplates) || !document[kTemplates].is_array()) return;
  for (cJson& item : document[kTemplates]) {
    if (!item.is_object() || !item.contains(nested)) continue;
    for (const cJson& other : present[kTemplates])
      if (item.value("name", cJson("")) == other.value("name", cJson("")))
        Borrow(item[nested], cJson::array({other[nested]}), secret, {});
  }
}

void BorrowSecrets(cJson& document, const cConfigDocument& config) {
  const cJson present = ToDocument(config, eSecrets::Show);
  BorrowAll(document, kMeters, present, "key", {"meterID", "medium", "mfct"});
  BorrowAll(document, kPushTargets, present, "password", {"name"});
  BorrowNested(document, present, kMeterConfig, "key");
  BorrowNested(document, present, kPushConfig, "password");
}

// ---- texts

bool IsJson(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  return first != std::string::npos && text[first] == '{';
}

bool Parse(const std::string& text, cJson& document, Lines& lines, std::string& error) {
  if (!IsJson(text)) return FromToml(text, document, lines, error);
  try {
    document = cJson::parse(text);
    return true;
  } catch (const cJson::parse_error& fault) {
    error = fault.what();
    const std::size_t what = error.find("] ");  // behind the library's number
    if (what != std::string::npos) error.erase(0, what + 2);
    return false;
  }
}

// "line 7: " where the place stands, or what holds it.
std::string LineOf(std::string place, const Lines& lines) {
  for (;;) {
    const auto found = lines.find(place);
    if (found != lines.end()) return "line " + std::to_string(found->second) + ": ";
    const std::size_t last = place.find_last_of(".[");
    if (last == std::string::npos) return {};
    place.erase(last);
  }
}

}  // namespace

cJson MeterToJson(const cMeterConfig& meter, eSecrets secrets) {
  cJson object = ToJson(meter, kMeterFields, secrets);
  object[kCollectors] =
      ListOf(meter.collectors, [&](const auto& each) { return ToJson(each, kCollectorFields, secrets); });
  return object;
}

cJson TemplateToJson(const cMeterTemplate& meterTemplate, eSecrets secrets) {
  cJson object = ToJson(meterTemplate, kTemplateFields, secrets);
  object[kMeterConfig] = MeterToJson(meterTemplate.meterConfig, secrets);
  object[kPushConfig] = ToJson(meterTemplate.pushConfig, kPushTargetFields, secrets);
  return object;
}

std::string PushConfigFault(const cMeterTemplate& meterTemplate) {
  cPushTarget target(meterTemplate.pushConfig);
  return target.ToRecord() == cPushTarget().ToRecord() || target.isValid() ? std::string() : target.error;
}

std::string cConfigDocument::ToText(eDocument form, eSecrets secrets) const {
  const cJson document = ToDocument(*this, secrets);
  return form == eDocument::Toml ? ToToml(document)
                                 : document.dump(2, ' ', false, cJson::error_handler_t::replace) + "\n";
}

cConfigDocument cConfigDocument::FromText(const std::string& text, const cConfigDocument& present, Faults& faults) {
  cJson document;
  Lines lines;
  std::string error;
  if (!Parse(text, document, lines, error)) {
    faults.push_back({"document", error});
    return {};
  }
  BorrowSecrets(document, present);
  cConfigDocument config = FromDocument(document, faults);
  for (cFault& fault : faults) fault.place = LineOf(fault.place, lines) + fault.place;
  return faults.empty() ? config : cConfigDocument();
}

}  // namespace tav::ctl
