// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/option_reader.h>

#include <algorithm>
#include <charconv>

namespace tav {

bool ReadOptionNumber(const std::string& text, unsigned int least, unsigned int most, unsigned int& number) {
  unsigned int value = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (fault != std::errc() || end != text.data() + text.size() || value < least || value > most) return false;
  number = value;
  return true;
}

bool HasMeterOf(const cInterfaceRecord& record, const std::string& driver) {
  return std::any_of(record.meters.begin(), record.meters.end(),
                     [&](const cMeterConfig& meter) { return meter.interfaceDriver == driver; });
}

}  // namespace tav
