// SPDX-License-Identifier: Apache-2.0
// Configuration records as JSON objects, by the tables of fields.h, and back: every fault of an object is found, and
// named with its place.
#pragma once

#include <algorithm>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include <gateway/form/config_fields.h>
#include <gateway/form/json.h>

namespace tav::form {

enum class eSecrets { Leave, Show };

// What is wrong in a document, and where: "meters[2].medium: expected a text, found 5".
struct cFault {
  std::string place;
  std::string what;
};
using Faults = std::vector<cFault>;

// The place of a member: "meters[2]" and "medium" give "meters[2].medium".
inline std::string Below(std::string place, std::string_view name) {
  if (!place.empty()) place += '.';
  return place += name;
}

// The JSON form of a value of a field, and back; false and what was expected when it does not fit.
template <typename Value>
bool TakeJson(const cJson& json, Value& value, std::string& expected) {
  if constexpr (std::is_same_v<Value, std::string> || std::is_same_v<Value, bool>) {
    expected = std::is_same_v<Value, bool> ? "true or false" : "a text";
    if (std::is_same_v<Value, bool> ? !json.is_boolean() : !json.is_string()) return false;
    value = json.get<Value>();
    return true;
  } else {
    // TOML has no number above 2^63: such a one is a text.
    const bool isText = json.is_string() && sizeof(Value) == sizeof(std::uint64_t);
    const bool isNumber = json.is_number_unsigned() || json.is_number_integer();
    return TakeText(isText ? json.get<std::string>() : isNumber ? json.dump() : std::string(), value, expected);
  }
}

template <typename Record, std::size_t N>
cJson ToJson(const Record& record, const cField<Record> (&fields)[N], eSecrets secrets) {
  cJson object = cJson::object();
  for (const cField<Record>& field : fields)
    if (!field.secret || secrets == eSecrets::Show)
      std::visit([&](auto member) { object[std::string(field.name)] = record.*member; }, field.member);
  return object;
}

// Sets the fields that the object has. Members that are no fields are for the caller, when they are among others.
template <typename Record, std::size_t N>
void FromJson(const cJson& object, const cField<Record> (&fields)[N], Record& record, const std::string& place,
              Faults& faults, std::initializer_list<std::string_view> others = {}) {
  if (!object.is_object()) {
    faults.push_back({place, "expected fields, found " + ToLine(object)});
    return;
  }
  for (auto item = object.begin(); item != object.end(); ++item) {
    if (std::find(others.begin(), others.end(), item.key()) != others.end()) continue;
    const cField<Record>* const field = FindField(fields, item.key());
    std::string expected;
    if (field == nullptr)
      faults.push_back({Below(place, item.key()), "there is no such field; there are " + FieldNames(fields)});
    else if (!std::visit([&](auto member) { return TakeJson(*item, record.*member, expected); }, field->member))
      faults.push_back({Below(place, item.key()), "expected " + expected + ", found " + ToLine(*item)});
  }
}

// The values of an object as a row of a listing: what stands nested in it is left out.
vorn::cRecord RowOf(const cJson& object);

// ---- one thing with what stands nested in it

inline constexpr const char* kCollectors = "collectors";

template <typename Things, typename Convert>
cJson ListToJson(const Things& things, const Convert& convert) {
  cJson list = cJson::array();
  for (const auto& thing : things) list.push_back(convert(thing));
  return list;
}

cJson MeterToJson(const cMeterConfig& meter, eSecrets secrets);
cJson TemplateToJson(const cMeterTemplate& meterTemplate, eSecrets secrets);

// take(item, place) for every item of a list that an object may have.
using TakeItem = std::function<void(const cJson& item, const std::string& place)>;
void ListFromJson(const cJson& object, const char* name, const std::string& place, Faults& faults,
                  const TakeItem& take);

void MeterFromJson(const cJson& object, cMeterConfig& meter, const std::string& place, Faults& faults);
void TemplateFromJson(const cJson& object, cMeterTemplate& meterTemplate, const std::string& place, Faults& faults);

// Why the push target of a template could not be read back; empty when it can, or when there is none.
std::string PushConfigFault(const cMeterTemplate& meterTemplate);

}  // namespace tav::form
