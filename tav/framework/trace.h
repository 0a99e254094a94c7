// SPDX-License-Identifier: Apache-2.0
// Diagnostics: named units, each with a level, and one sink for the lines of all of them.
//
// A line of level L is produced when its unit's level is at least L. Levels in use: 2 failures, 4 warnings,
// 8 success notes, 16 progress. A unit starts at 4. Write lines with Trace(), which builds one only when it is wanted:
//
//   static vorn::cUnit* unit = vorn::cUnit::Find("UnitTAV");
//   vorn::Trace(unit, 2, "send failed, msg=", [&] { return msg.ToString(); });
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <type_traits>

#include <tav/framework/export.h>

namespace vorn {

class VORN_API cUnit {
 public:
  static constexpr int kDefaultLevel = 4;

  // The unit of that name, made when it is asked for the first time. It lives as long as the process.
  static cUnit* Find(const std::string& name);

  const std::string& GetName() const { return m_name; }
  int GetLevel() const { return m_level; }
  void SetLevel(int level) { m_level = level; }

 private:
  explicit cUnit(const std::string& name) : m_name(name) {}

  std::string m_name;
  int m_level = kDefaultLevel;
};

// Gets the bare line. It may not throw.
using TraceSink = std::function<void(const cUnit& unit, int level, const std::string& text)>;

// Produces one line; drops it when the unit is null or its level too low.
VORN_API void _Trace(const cUnit* unit, int level, const std::string& text);

// An empty sink restores the default one: standard error, with a time stamp, or with a priority for the journal when
// systemd runs the process. The default one keeps a line with breaks together.
VORN_API void SetTraceSink(TraceSink sink);

namespace detail {

inline void AppendPart(std::string& line, std::string_view part) { line.append(part); }
inline void AppendPart(std::string& line, char part) { line.push_back(part); }

template <typename Part>
void AppendAny(std::string& line, const Part& part) {
  if constexpr (std::is_invocable_v<const Part&>)
    AppendPart(line, part());
  else if constexpr (std::is_arithmetic_v<Part> && !std::is_same_v<Part, char>)
    AppendPart(line, std::to_string(part));
  else
    AppendPart(line, part);
}

}  // namespace detail

// One line from its parts: texts, numbers, and functions without arguments that are called only when the line is built.
template <typename... Parts>
void Trace(const cUnit* unit, int level, const Parts&... parts) {
  if (unit == nullptr || unit->GetLevel() < level) return;
  std::string line;
  (detail::AppendAny(line, parts), ...);
  _Trace(unit, level, line);
}

}  // namespace vorn
