// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/trace.h>

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <map>
#include <memory>

#include <tav/framework/helper.h>

namespace vorn {

namespace {

std::map<std::string, std::unique_ptr<cUnit>>& Units() {
  // Never destroyed: units are asked for until the very end of the process.
  static auto* units = new std::map<std::string, std::unique_ptr<cUnit>>;
  return *units;
}

TraceSink& Sink() {
  static auto* sink = new TraceSink;
  return *sink;
}

// sd-daemon(3): a line that starts with "<N>" has that syslog priority.
const char* JournalPriority(int level) {
  if (level <= 2) return "<3>";
  if (level <= 4) return "<4>";
  if (level <= 8) return "<6>";
  return "<7>";
}

std::string TimeStamp() {
  std::timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  std::tm parts{};
  localtime_r(&now.tv_sec, &parts);
  char text[32];
  const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
  return std::string(text, length) + FormatString(".%03ld ", now.tv_nsec / 1000000);
}

void WriteToStandardError(const cUnit& unit, int level, const std::string& text) {
  static const bool journal = std::getenv("JOURNAL_STREAM") != nullptr;
  std::string line = journal ? JournalPriority(level) : TimeStamp();
  line += unit.GetName();
  line += ": ";
  line += text;
  // Continuation lines are indented, so that one line with breaks stays recognisable as one.
  for (std::size_t at = 0; (at = line.find('\n', at)) != std::string::npos; at += 3) line.insert(at + 1, "  ");
  line += '\n';
  // One write a line: lines of several processes on one terminal do not mix.
  for (std::size_t done = 0; done < line.size();) {
    const ssize_t written = write(STDERR_FILENO, line.data() + done, line.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    done += static_cast<std::size_t>(written);
  }
}

}  // namespace

cUnit* cUnit::Find(const std::string& name) {
  std::unique_ptr<cUnit>& unit = Units()[name];
  if (!unit) unit.reset(new cUnit(name));
  return unit.get();
}

void _Trace(const cUnit* unit, int level, const std::string& text) {
  if (unit == nullptr || unit->GetLevel() < level) return;
  const TraceSink sink = Sink();  // a copy: a sink may replace itself
  if (sink)
    sink(*unit, level, text);
  else
    WriteToStandardError(*unit, level, text);
}

void SetTraceSink(TraceSink sink) { Sink() = std::move(sink); }

}  // namespace vorn
