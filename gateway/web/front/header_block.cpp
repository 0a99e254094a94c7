// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/header_block.h>

#include <algorithm>

#include <gateway/web/front/web_limits.h>

namespace tav::gateway::web {

namespace {

struct cKnownField {
  std::string_view name;
  bool repeats;
};

constexpr std::string_view kStatus = "status";
constexpr std::string_view kContentType = "content-type";
// Speaks of the exchange between page and front end only: nothing worth a line of trace.
constexpr std::string_view kConnection = "connection";

constexpr cKnownField kPassedOn[] = {
    {"allow", true},
    {"cache-control", true},
    {"content-disposition", false},
    {"content-language", true},
    {kContentType, false},
    {"etag", false},
    {"last-modified", false},
    {"location", false},
    {"pragma", true},
    {"retry-after", false},
    {"set-cookie", true},
    {"vary", true},
    {"www-authenticate", true},
};

constexpr std::string_view kRunTogether[] = {"Cache-Control:", "Pragma:", "Connection:"};

constexpr unsigned int kFirstStatus = 200;  // those below are not the end of an exchange
constexpr unsigned int kLastStatus = 599;

const cKnownField* FindKnown(std::string_view name) {
  const auto* const found = std::find_if(std::begin(kPassedOn), std::end(kPassedOn),
                                         [&](const cKnownField& known) { return known.name == name; });
  return found != std::end(kPassedOn) ? found : nullptr;
}

std::size_t FindRunTogether(std::string_view value, std::size_t from) {
  std::size_t first = std::string_view::npos;
  for (const std::string_view begin : kRunTogether) first = std::min(first, value.find(begin, from));
  return first;
}

}  // namespace

std::size_t cHeaderBlock::Take(std::string_view bytes) {
  if (m_state == eState::Broken) return bytes.size();
  std::size_t taken = 0;
  while (m_state == eState::Open && taken < bytes.size()) {
    const std::size_t line = std::min(bytes.find('\n', taken), bytes.size() - 1) + 1 - taken;
    m_text.append(bytes.substr(taken, line));
    taken += line;
    if (m_text.size() > kMaxHeaderBlockBytes)
      Break("the header block has more than " + std::to_string(kMaxHeaderBlockBytes) + " bytes");
    else if (EndsHere())
      ReadLines();
  }
  return m_state == eState::Broken ? bytes.size() : taken;
}

std::string_view cHeaderBlock::Find(std::string_view name) const {
  for (const cHeaderField& field : m_fields)
    if (EqualsIgnoringCase(field.name, name)) return field.value;
  return {};
}

bool cHeaderBlock::EndsHere() const {
  const std::string_view text = m_text;
  return text == "\n" || text == "\r\n" || text.ends_with("\n\n") || text.ends_with("\n\r\n");
}

void cHeaderBlock::Break(const std::string& error) {
  m_state = eState::Broken;
  m_error = error;
  m_fields.clear();
}

void cHeaderBlock::ReadLines() {
  m_state = eState::Done;
  std::string_view rest = m_text;
  while (m_state == eState::Done && !rest.empty()) {
    std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(line.size() + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (!line.empty()) ReadLine(line);
  }
  if (m_state == eState::Done && m_status == 0) Break("there is no Status");
  m_text = {};
}

void cHeaderBlock::ReadLine(std::string_view line) {
  const std::size_t colon = std::min(line.find(':'), line.size());
  const std::string_view name = line.substr(0, colon);
  if (HasControlCharacter(line)) return Break("a field has a control character");
  if (colon == line.size() || !IsToken(name)) return Break("a line is no field: no name with a colon behind it");
  const std::string_view value = Trim(line.substr(colon + 1));
  if (EqualsIgnoringCase(name, kStatus))
    TakeStatus(value);
  else if (EqualsIgnoringCase(name, kContentType))
    ReadContentType(value);
  else
    TakeField(name, value);
}

void cHeaderBlock::ReadContentType(std::string_view value) {
  std::size_t begin = FindRunTogether(value, 0);
  TakeField("Content-Type", Trim(value.substr(0, begin)));
  while (m_state == eState::Done && begin != std::string_view::npos) {
    const std::size_t colon = value.find(':', begin);
    const std::size_t end = FindRunTogether(value, colon);
    TakeField(value.substr(begin, colon - begin), Trim(value.substr(colon + 1, end - colon - 1)));
    begin = end;
  }
}

void cHeaderBlock::TakeStatus(std::string_view value) {
  const std::string_view digits = value.substr(0, value.find(' '));
  const bool isNumber = digits.size() == 3 && digits.find_first_not_of("0123456789") == std::string_view::npos;
  const unsigned int status = isNumber ? static_cast<unsigned int>(std::stoul(std::string(digits))) : 0;
  if (status < kFirstStatus || status > kLastStatus) return Break("Status is no number from 200 to 599");
  if (m_status != 0) return Break("Status stands twice");
  m_status = status;
}

void cHeaderBlock::TakeField(std::string_view name, std::string_view value) {
  const std::string lower = ToLower(name);
  const cKnownField* const known = FindKnown(lower);
  if (lower == kConnection || (known != nullptr && value.empty())) return;
  if (known == nullptr)
    m_dropped.emplace_back(name);
  else if (!known->repeats && !Find(lower).empty())
    Break(std::string(name) + " stands twice");
  else
    m_fields.push_back({std::string(name), std::string(value)});
}

}  // namespace tav::gateway::web
