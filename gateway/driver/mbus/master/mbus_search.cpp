// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/master/mbus_search.h>

#include <algorithm>
#include <utility>

namespace tav::mbus {

namespace {

// Makers of meters with M-Bus, by their letters (DLMS user association, list of FLAG codes).
constexpr const char* kMakers[] = {
    "ABB", "ACW", "AMT", "APA", "APT", "AXI", "BEC", "BER", "BMT", "DIL", "DME", "DZG", "EDC", "EFE", "EGM", "ELR",
    "ELS", "ELV", "EMH", "EMU", "ENE", "ESY", "FIN", "FML", "GAV", "GMC", "GWF", "HYD", "IME", "INE", "INV", "ISK",
    "ITR", "ITW", "JAN", "KAM", "LAN", "LGB", "LGZ", "LSE", "LUG", "MAD", "MET", "MTX", "NZR", "PAD", "QDS", "RAM",
    "REL", "RKE", "SAP", "SBC", "SEN", "SIE", "SLB", "SON", "SPX", "SVM", "TCH", "TEC", "WEH", "WEP", "ZEN", "ZRI"};

constexpr std::uint16_t kDigits = 10;
constexpr std::uint16_t kHexDigits = 15;  // F is any digit
constexpr std::uint16_t kBytes = 255;     // FF is any byte
constexpr unsigned int kSeveral = 2;      // meters at least where answers collide

std::vector<std::uint16_t> Range(std::uint16_t begin, std::uint16_t end) {
  std::vector<std::uint16_t> values;
  for (std::uint16_t value = begin; value != end; ++value) values.push_back(value);
  return values;
}

}  // namespace

bool cMBusSearch::Next(cMBusAddress& mask) {
  Settle();
  m_isLeftOver = false;
  if (!std::exchange(m_isBegun, true)) {
    m_weight = 1;
    mask = m_mask;
    return true;
  }
  if (TakeNext(mask)) return true;
  m_done = 1;
  return false;
}

bool cMBusSearch::TakeNext(cMBusAddress& mask) {
  while (!m_levels.empty()) {
    cLevel& level = m_levels.back();
    if (level.next != level.values.size() || Extend(level)) {
      m_weight = level.isExtended ? 0 : level.weight;
      m_mask = mask = Fill(level, level.values[level.next++]);
      return true;
    }
    m_isLeftOver = level.part == ePart::Manufacturer && level.foundAtBegin == m_found;
    mask = level.mask;
    m_levels.pop_back();
    if (m_isLeftOver) return true;
  }
  return false;
}

bool cMBusSearch::Narrow() {
  cLevel level;
  if (!OpenPart(m_mask, level)) return false;
  level.mask = m_mask;
  level.values = Values(level.part);
  level.weight = m_weight / static_cast<double>(level.values.size());
  level.foundAtBegin = m_found;
  m_levels.push_back(level);
  m_weight = 0;  // that of its levels counts
  return true;
}

void cMBusSearch::NoteFound(std::uint16_t manufacturer) {
  ++m_found;
  if (std::ranges::find(m_manufacturers, manufacturer) == m_manufacturers.end())
    m_manufacturers.push_back(manufacturer);
}

bool cMBusSearch::OpenPart(const cMBusAddress& mask, cLevel& level) {
  for (unsigned int shift = 32; shift != 0;) {
    shift -= 4;
    if ((mask.id >> shift & 0xF) != 0xF) continue;
    level.part = ePart::Digit;
    level.shift = shift;
    return true;
  }
  if (mask.version == cMBusAddress::kAnyVersion)
    level.part = ePart::Version;
  else if (mask.medium == cMBusAddress::kAnyMedium)
    level.part = ePart::Medium;
  else
    level.part = ePart::Manufacturer;
  return level.part != ePart::Manufacturer || mask.manufacturer == cMBusAddress::kAnyManufacturer;
}

cMBusAddress cMBusSearch::Fill(const cLevel& level, std::uint16_t value) {
  cMBusAddress mask = level.mask;
  switch (level.part) {
    case ePart::Digit:
      mask.id = (mask.id & ~(std::uint32_t{0xF} << level.shift)) | std::uint32_t{value} << level.shift;
      break;
    case ePart::Version:
      mask.version = static_cast<std::uint8_t>(value);
      break;
    case ePart::Medium:
      mask.medium = static_cast<std::uint8_t>(value);
      break;
    case ePart::Manufacturer:
      mask.manufacturer = value;
  }
  return mask;
}

std::vector<std::uint16_t> cMBusSearch::Values(ePart part) const {
  if (part == ePart::Digit) return Range(0, kDigits);
  if (part != ePart::Manufacturer) return Range(0, kBytes);
  std::vector<std::uint16_t> makers = m_manufacturers;
  for (const char* letters : kMakers) {
    const std::uint16_t code = ManufacturerCode(letters);
    if (std::ranges::find(makers, code) == makers.end()) makers.push_back(code);
  }
  return makers;
}

// Identifications are decimal, but for some meters: those are asked for where ten digits do not tell who collided.
bool cMBusSearch::Extend(cLevel& level) const {
  if (level.part != ePart::Digit || level.isExtended || m_found - level.foundAtBegin >= kSeveral) return false;
  level.isExtended = true;
  level.values = Range(kDigits, kHexDigits);
  level.next = 0;
  return true;
}

void cMBusSearch::Settle() {
  m_done = m_isBegun ? std::min(1.0, m_done + m_weight) : 0;
  m_weight = 0;
}

}  // namespace tav::mbus
