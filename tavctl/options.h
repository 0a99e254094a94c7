// SPDX-License-Identifier: Apache-2.0
// The options and arguments that commands have. What does not fit is refused with the option's name, what was expected
// and what was found. Names without dashes are arguments: "METER".
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace tav::ctl {

enum class eNeed { Optional, Required };

void AddArgument(CLI::App& app, const char* name, std::string& value, const std::string& help, eNeed need);
// One word or more.
void AddArguments(CLI::App& app, const char* name, std::vector<std::string>& values, const std::string& help,
                  eNeed need);
void AddText(CLI::App& app, const char* name, std::string& value, const std::string& help);
void AddFlag(CLI::App& app, const char* name, bool& value, const std::string& help);
// A whole number from 0 on.
void AddNumber(CLI::App& app, const char* name, std::uint64_t& value, const std::string& help);
// Seconds, also with a fraction, from 0.1 to a day; kept in milliseconds.
void AddSeconds(CLI::App& app, const char* name, unsigned int& milliseconds, const std::string& help);
// --from and --to, in any form of ParseTime; seconds UTC.
struct cTimeRange {
  std::optional<unsigned int> from;
  std::optional<unsigned int> to;
};
void AddTimeRange(CLI::App& app, cTimeRange& range);

// A word out of a list, kept as its place in it. Help and completion show the words.
void AddChoice(CLI::App& app, std::span<const std::string_view> words, std::optional<unsigned int>& value,
               const std::string& help, eNeed need);
// In any form of ParseTime; seconds UTC.
void AddTime(CLI::App& app, const char* name, std::optional<unsigned int>& value, const std::string& help);

// A word behind a command that says what to do, as "list" behind "meter"; one of them has to be there.
CLI::App& AddAction(CLI::App& app, const char* name, const char* help);
// Lets a command with actions do something without one.
void AllowNoAction(CLI::App& app);
// The one that was chosen; empty: none.
std::string ChosenAction(const CLI::App& app);

}  // namespace tav::ctl
