// SPDX-License-Identifier: Apache-2.0
#include <tavctl/mbus_command.h>

#include <charconv>
#include <optional>

#include <gateway/driver/mbus/explain/mbus_explain.h>
#include <tav/record/meter_tav.h>
#include <tavctl/failure.h>
#include <tavctl/interrupt.h>
#include <tavctl/options.h>
#include <tavctl/progress.h>

namespace tav::ctl {

namespace {

constexpr cColumn kFoundColumns[] = {{"address", "ADDRESS"}, {"meter", "METER"},   {"manufacturer", "MAKER"},
                                     {"version", "VERSION"}, {"medium", "MEDIUM"}, {"note", "NOTE"}};

constexpr std::size_t kSteps = 100;

// The fixed data structure tells neither maker nor version.
vorn::cRecord FoundRow(const mbus::cMBusFound& found) {
  vorn::cRecord row;
  row.AppendTextPar("address", found.address.ToString());
  if (found.header.hasMeter) {
    row.AppendTextPar("meter", mbus::IdText(found.header.id));
    if (found.header.manufacturer != 0) {
      row.AppendTextPar("manufacturer", mbus::ManufacturerText(found.header.manufacturer));
      row.AppendUIntPar("version", found.header.version);
    }
    row.AppendTextPar("medium", cMeterTav::MediumToString(cMeterTav::GetMbusMediumText(found.header.medium)));
  }
  if (!found.note.empty()) row.AppendTextPar("note", found.note);
  return row;
}

// A whole number within limits.
unsigned int Number(const std::string& what, const std::string& text, unsigned int least, unsigned int most) {
  unsigned int number = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (fault == std::errc() && end == text.data() + text.size() && number >= least && number <= most) return number;
  throw cFailure(eExitUsage, "mbus: " + what + ": expected a number from " + std::to_string(least) + " to " +
                                 std::to_string(most) + ", found \"" + text + "\"");
}

void CheckMost(const char* option, std::uint64_t value, std::uint64_t most) {
  if (value > most)
    throw cFailure(eExitUsage, std::string("mbus: ") + option + ": expected at most " + std::to_string(most) +
                                   ", found " + std::to_string(value));
}

mbus::cMBusAddress ParseAddress(const std::string& text) {
  mbus::cMBusAddress address;
  std::string error;
  if (!mbus::cMBusAddress::Parse(text, address, error)) throw cFailure(eExitUsage, "mbus: " + error);
  return address;
}

}  // namespace

CLI::App& cMBusCommand::AddBusAction(CLI::App& app, const char* name, const char* help) {
  CLI::App& action = AddAction(app, name, help);
  AddArgument(action, "LINE", m_line, "A serial device, or tcp://host:port", eNeed::Required);
  AddNumber(action, "--baud", m_baud, "Bits per second of a serial device (default 2400)");
  AddText(action, "--framing", m_framing, "Data bits, parity and stop bits of a serial device (default 8E1)");
  AddFlag(action, "--echo", m_echo, "The level converter gives back what is sent");
  AddNumber(action, "--retries", m_retries, "Requests after one that was not answered well, 0 to 10 (default 2)");
  AddNumber(action, "--answer", m_answerMs,
            "Longest time to the beginning of an answer, in milliseconds; 0 (default): what the standard allows");
  return action;
}

void cMBusCommand::AddOptions(CLI::App& app) {
  m_app = &app;
  CLI::App& scan = AddBusAction(app, "scan", "Find the meters of a bus");
  AddFlag(scan, "--secondary", m_secondary, "By secondary address, with wildcards; else by primary address");
  AddNumber(scan, "--first", m_first, "First primary address (default 0)");
  AddNumber(scan, "--last", m_last, "Last primary address (default 250)");
  AddText(scan, "--mask", m_mask, "Only secondary addresses that match, F for any digit, such as 4495FFFF");
  constexpr const char* kAddress = "Primary address (5) or secondary one (44950146, 449501464D341804)";
  CLI::App& read = AddBusAction(app, "read", "Read a meter and explain its telegrams");
  AddArgument(read, "ADDRESS", m_address, kAddress, eNeed::Required);
  CLI::App& address = AddBusAction(app, "set-address", "Give a meter another primary address");
  AddArgument(address, "ADDRESS", m_address, kAddress, eNeed::Required);
  AddArgument(address, "NEW", m_new, "Its new primary address, 0 to 250", eNeed::Required);
  CLI::App& baud = AddBusAction(app, "set-baud", "Let a meter talk at another rate");
  AddArgument(baud, "ADDRESS", m_address, kAddress, eNeed::Required);
  AddArgument(baud, "NEW", m_new, "Its new rate, 300 to 38400", eNeed::Required);
  CLI::App& reset = AddBusAction(app, "reset", "Reset the application of a meter");
  AddArgument(reset, "ADDRESS", m_address, kAddress, eNeed::Required);
  AddText(reset, "--code", m_code, "What it is to begin with, 0 to 255; without it all of it");
}

mbus::cMBusLineSettings cMBusCommand::MakeSettings() const {
  mbus::cMBusLineSettings settings;
  std::string error;
  CheckMost("--retries", m_retries, mbus::cMBusLineSettings::kMostRetries);
  CheckMost("--answer", m_answerMs, mbus::cMBusLineSettings::kMostAnswerMs);
  CheckMost("--baud", m_baud, ~0u);
  settings.input.baud = static_cast<unsigned int>(m_baud);
  settings.input.framing = m_framing;
  settings.echo = m_echo;
  settings.retries = static_cast<unsigned int>(m_retries);
  settings.longestAnswerMs = static_cast<unsigned int>(m_answerMs);
  if (!cInputSpec::ParseLive(m_line, settings.input, error)) throw cFailure(eExitUsage, "mbus: LINE: " + error);
  if (settings.input.kind == eInputKind::Serial && !CheckSerialSettings(settings.input, error))
    throw cFailure(eExitUsage, "mbus: " + error);
  return settings;
}

mbus::cMBusScanOptions cMBusCommand::MakeScanOptions() const {
  mbus::cMBusScanOptions options;
  CheckMost("--last", m_last, mbus::kLastPrimary);
  CheckMost("--first", m_first, m_last);
  options.first = static_cast<std::uint8_t>(m_first);
  options.last = static_cast<std::uint8_t>(m_last);
  options.secondary = m_secondary || !m_mask.empty();
  if (!m_mask.empty()) options.mask = ParseAddress(m_mask);
  if (!options.mask.IsSecondary()) throw cFailure(eExitUsage, "mbus scan: --mask: expected a secondary address");
  return options;
}

void cMBusCommand::CheckArguments(const std::string& action) const {
  if (action == "scan")
    MakeScanOptions();
  else
    ParseAddress(m_address);
  if (action == "scan" || action == "read") return;
  if (ParseAddress(m_address).MayBeSeveral())
    throw cFailure(eExitUsage, "mbus " + action + ": ADDRESS: '" + m_address + "' may be several meters, expected one");
  if (action == "set-address") NewAddress();
  if (action == "set-baud") NewBaud();
  if (action == "reset") ResetCode();
}

std::uint8_t cMBusCommand::NewAddress() const {
  return static_cast<std::uint8_t>(Number("NEW", m_new, 0, mbus::kLastPrimary));
}

unsigned int cMBusCommand::NewBaud() const {
  if (MakeSettings().input.kind == eInputKind::Tcp)
    throw cFailure(eExitUsage,
                   "mbus set-baud: LINE: the rate behind tcp:// is the converter's, the meter would be lost");
  const unsigned int baud = Number("NEW", m_new, 300, 38400);
  std::string error;
  if (!mbus::cMBusTool::CheckBaud(baud, error)) throw cFailure(eExitUsage, "mbus: NEW: " + error);
  return baud;
}

int cMBusCommand::ResetCode() const { return m_code.empty() ? -1 : static_cast<int>(Number("--code", m_code, 0, 255)); }

// All of the command line is looked at before the line is opened.
eExit cMBusCommand::Run(cContext& context) {
  const std::string action = ChosenAction(*m_app);
  const mbus::cMBusLineSettings settings = MakeSettings();
  CheckArguments(action);
  const cInterrupt interrupt(context);
  mbus::cMBusTool tool(settings, [&context] {
    context.service.Poll(0);
    return context.interrupted;
  });
  std::string error;
  if (!tool.Open(context.timeoutMs, error)) throw cFailure(eExitUnreachable, error);
  if (action == "scan") return Scan(context, tool);
  if (action == "read") return Read(context, tool);
  SetUp(action, tool);
  return eExitDone;
}

eExit cMBusCommand::Scan(cContext& context, mbus::cMBusTool& tool) const {
  std::string error;
  std::size_t found = 0;
  const auto rows = context.Rows(kFoundColumns);
  std::optional<cProgress> progress(std::in_place, context, "scanning", kSteps);
  const bool done = tool.Scan(
      MakeScanOptions(),
      [&](const mbus::cMBusFound& meter) {
        ++found;
        progress->Clear();
        rows->Write(FoundRow(meter));
      },
      [&](const mbus::cMBusScanProgress& now) {
        progress->Show("scanning " + now.asking + ", " + std::to_string(now.found) + " found",
                       static_cast<std::size_t>(now.done * kSteps));
      },
      error);
  progress.reset();
  rows->End();
  if (!done) throw cFailure(context.interrupted ? eExitNegative : eExitUnreachable, error);
  return found != 0 ? eExitDone : eExitNegative;
}

// What was read before a failure is shown as well.
eExit cMBusCommand::Read(cContext& context, mbus::cMBusTool& tool) const {
  std::string error, capture;
  std::vector<std::string> frames;
  const bool done = tool.Read(ParseAddress(m_address), frames, error);
  for (const std::string& frame : frames) capture += frame;
  if (!capture.empty()) {
    const cExplanation explained = mbus::ExplainMBus(capture);
    context.streams.out << (context.json ? explained.json : explained.listing);
    if (context.json) context.streams.out << '\n';
  }
  if (!done) throw cFailure(eExitNegative, m_address + ": " + error);
  return eExitDone;
}

void cMBusCommand::SetUp(const std::string& action, mbus::cMBusTool& tool) const {
  const mbus::cMBusAddress address = ParseAddress(m_address);
  std::string error;
  bool done = false;
  if (action == "set-address")
    done = tool.SetAddress(address, NewAddress(), error);
  else if (action == "set-baud")
    done = tool.SetBaud(address, NewBaud(), error);
  else
    done = tool.ResetApplication(address, ResetCode(), error);
  if (!done) throw cFailure(eExitNegative, m_address + ": " + error);
}

}  // namespace tav::ctl
