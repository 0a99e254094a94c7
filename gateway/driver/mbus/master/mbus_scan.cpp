// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/master/mbus_scan.h>

#include <algorithm>
#include <set>
#include <utility>

#include <gateway/driver/mbus/master/mbus_requests.h>
#include <gateway/driver/mbus/master/mbus_search.h>

namespace tav::mbus {

namespace {

constexpr const char* kSeveral = "several meters answer";

// What the header of an answer says; false for one that cannot be read.
bool ReadHeader(const cMBusAnswer& answer, cMBusTelegram& telegram, std::string& why) {
  cMBusFault fault;
  if (ReadTelegram(answer.frame, telegram, fault)) return true;
  why = "the answer cannot be read: " + fault.ToString();
  return false;
}

// The fixed data structure tells neither manufacturer nor version, and a coarser medium than a selection asks for.
cMBusAddress AddressOf(const cMBusTelegram& telegram) {
  cMBusAddress address = cMBusAddress::Of(telegram.header);
  if (telegram.information != eCiFixed) return address;
  return {kSecondary, address.id};
}

}  // namespace

class cMBusScan::cState {
 public:
  cState(cMBusScan& scan, cMBusMaster& master, const cMBusScanOptions& options)
      : m_scan(scan), m_master(master), m_options(options), m_search(options.mask), m_primary(options.first) {
    m_options.last = std::min(options.last, kLastPrimary);
  }
  ~cState() {
    if (m_isAsking) m_master.Abandon();
  }

  void Start();

 private:
  using Step = void (cState::*)(const cMBusAnswer&);

  void Ask(const std::string& bytes, eExpected expected, Step next, unsigned int retries = ~0u);
  void Tell(const std::string& asking);
  void Found(const cMBusFound& found);
  void End(const std::string& why);

  // By primary address.
  void AskPrimary();
  void OnInitialised(const cMBusAnswer& answer);
  void OnPrimary(const cMBusAnswer& answer);
  void NextPrimary(const cMBusHeader& header, const std::string& note);

  // By secondary address.
  void OnFree(const cMBusAnswer&) { AskMask(); }
  void AskMask();
  void OnSelected(const cMBusAnswer& answer);
  void OnMask(const cMBusAnswer& answer);
  void TakeMeter(const cMBusTelegram& telegram);
  void TakeNameless(const std::string& note);
  void FoundAt(const cMBusAddress& address, const cMBusHeader& header, const std::string& note);
  void Narrow(const std::string& note);
  void OnLetGo(const cMBusAnswer&) { End({}); }

  cMBusScan& m_scan;
  cMBusMaster& m_master;
  cMBusScanOptions m_options;
  cMBusSearch m_search;
  unsigned int m_primary;
  cMBusAddress m_mask;  // asked for
  std::set<cMBusAddress> m_known;
  unsigned int m_found = 0;
  bool m_isAsking = false;
};

void cMBusScan::cState::Start() {
  if (m_options.secondary)
    Ask(MakeInitialise(kSecondary), eExpected::Ack, &cState::OnFree, 0);
  else
    AskPrimary();
}

void cMBusScan::cState::Ask(const std::string& bytes, eExpected expected, Step next, unsigned int retries) {
  m_isAsking = true;
  const cMBusRequest request{bytes, expected, 0, retries, false};
  m_master.Exchange(request, [this, next](const cMBusAnswer& answer) {
    m_isAsking = false;
    if (answer.outcome == eOutcome::LineLost)
      End(answer.cause);
    else
      (this->*next)(answer);
  });
}

void cMBusScan::cState::Tell(const std::string& asking) {
  const double primaries = m_options.last + 1.0 - m_options.first;
  const double done = m_options.secondary ? m_search.GetDone() : (m_primary - m_options.first) / primaries;
  if (m_scan.onProgress) m_scan.onProgress({asking, done, m_found});
}

void cMBusScan::cState::Found(const cMBusFound& found) {
  ++m_found;
  if (m_scan.onFound) m_scan.onFound(found);
}

// What is called may end the scan.
void cMBusScan::cState::End(const std::string& why) {
  const auto ended = m_scan.onEnd;
  if (why.empty() && m_scan.onProgress) m_scan.onProgress({{}, 1, m_found});
  if (ended) ended(why);
}

// ---- by primary address

void cMBusScan::cState::AskPrimary() {
  if (m_primary > m_options.last) return End({});
  Tell(std::to_string(m_primary));
  Ask(MakeInitialise(static_cast<std::uint8_t>(m_primary)), eExpected::Ack, &cState::OnInitialised);
}

void cMBusScan::cState::OnInitialised(const cMBusAnswer& answer) {
  if (answer.outcome == eOutcome::Silent) {
    ++m_primary;
    AskPrimary();
    return;
  }
  Ask(MakeReadoutRequest(static_cast<std::uint8_t>(m_primary), true), eExpected::Data, &cState::OnPrimary);
}

void cMBusScan::cState::OnPrimary(const cMBusAnswer& answer) {
  cMBusTelegram telegram;
  std::string note;
  switch (answer.outcome) {
    case eOutcome::Answered:
      if (answer.frame.kind == eFrameAck)
        note = "the meter has no data: it answers without any";
      else if (ReadHeader(answer, telegram, note) && telegram.address != m_primary)
        note = "address " + std::to_string(telegram.address) + " has answered";
      break;
    case eOutcome::Silent:
      note = "the meter acknowledges, but tells nothing";
      break;
    case eOutcome::Damaged:
      note = "the answer cannot be read: " + answer.cause;
      break;
    default:
      note = std::string(kSeveral) + ": " + answer.cause;
  }
  NextPrimary(telegram.header, note);
}

void cMBusScan::cState::NextPrimary(const cMBusHeader& header, const std::string& note) {
  Found({cMBusAddress::Primary(static_cast<std::uint8_t>(m_primary)), header, note});
  ++m_primary;
  AskPrimary();
}

// ---- by secondary address

void cMBusScan::cState::AskMask() {
  bool isLeft = m_search.Next(m_mask);
  for (; isLeft && m_search.IsLeftOver(); isLeft = m_search.Next(m_mask))
    FoundAt(m_mask, {}, "meters answer that cannot be told apart, or cannot be read");
  if (!isLeft) {
    Ask(MakeInitialise(kSecondary), eExpected::Ack, &cState::OnLetGo, 0);
    return;
  }
  Tell(m_mask.ToString());
  Ask(MakeSelection(m_mask), eExpected::Ack, &cState::OnSelected);
}

void cMBusScan::cState::OnSelected(const cMBusAnswer& answer) {
  if (answer.outcome == eOutcome::Silent)
    AskMask();
  else if (answer.outcome == eOutcome::Answered)
    Ask(MakeReadoutRequest(kSecondary, true), eExpected::Data, &cState::OnMask);
  else
    Narrow(std::string(kSeveral) + ": " + answer.cause);
}

void cMBusScan::cState::OnMask(const cMBusAnswer& answer) {
  cMBusTelegram telegram;
  std::string why;
  if (answer.outcome == eOutcome::Silent)
    AskMask();  // it is gone, or never has anything to tell
  else if (answer.outcome != eOutcome::Answered)
    Narrow(std::string(answer.outcome == eOutcome::Damaged ? "the answer cannot be read" : kSeveral) + ": " +
           answer.cause);
  else if (answer.frame.kind == eFrameAck)
    TakeNameless("the meter has no data: it answers without any");
  else if (!ReadHeader(answer, telegram, why))
    TakeNameless(why);
  else if (!telegram.header.hasMeter)
    TakeNameless("the meter does not tell its identification");
  else
    TakeMeter(telegram);
}

void cMBusScan::cState::TakeMeter(const cMBusTelegram& telegram) {
  const bool isMeant = m_mask.Matches(telegram.header);
  FoundAt(AddressOf(telegram), telegram.header, isMeant ? "" : "the meter answers a selection that is not its own");
  AskMask();
}

void cMBusScan::cState::FoundAt(const cMBusAddress& address, const cMBusHeader& header, const std::string& note) {
  if (!m_known.insert(address).second) return;
  m_search.NoteFound(header.manufacturer);
  Found({address, header, note});
}

// What does not tell who it is has its own identification when that is narrowed down.
void cMBusScan::cState::TakeNameless(const std::string& note) {
  if (m_mask.MayBeSeveral()) return Narrow(note);
  FoundAt(m_mask, {}, note);
  AskMask();
}

// What cannot be told apart any further is one entry.
void cMBusScan::cState::Narrow(const std::string& note) {
  if (!m_search.Narrow()) FoundAt(m_mask, {}, note);
  AskMask();
}

cMBusScan::cMBusScan(cMBusMaster& master, const cMBusScanOptions& options)
    : m_state(std::make_unique<cState>(*this, master, options)) {}

cMBusScan::~cMBusScan() = default;

void cMBusScan::Start() { m_state->Start(); }

}  // namespace tav::mbus
