// SPDX-License-Identifier: Apache-2.0
#include <tavctl/options.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>

#include <gateway/form/time_text.h>
#include <tav/framework/time.h>

namespace tav::ctl {

namespace {

constexpr double kShortest = 0.1, kLongest = 86400;

template <typename Number>
std::optional<Number> Parse(const std::string& text) {
  Number number{};
  const char* const end = text.data() + text.size();
  const auto [last, fault] = std::from_chars(text.data(), end, number);
  return fault == std::errc() && last == end ? std::optional(number) : std::nullopt;
}

[[noreturn]] void Expected(const char* name, const std::string& what, const std::string& found) {
  throw CLI::ValidationError(name, "expected " + what + ", found \"" + found + "\"");
}

void AddParsed(CLI::App& app, const char* name, const char* type, const std::string& help,
               const std::function<void(const std::string&)>& parse) {
  app.add_option_function<std::string>(name, parse, help)->type_name(*name == '-' ? type : "");
}

}  // namespace

void AddArgument(CLI::App& app, const char* name, std::string& value, const std::string& help, eNeed need) {
  app.add_option(name, value, help)->type_name("")->required(need == eNeed::Required);
}

void AddArguments(CLI::App& app, const char* name, std::vector<std::string>& values, const std::string& help,
                  eNeed need) {
  app.add_option(name, values, help)->type_name("")->expected(-1)->required(need == eNeed::Required);
}

void AddText(CLI::App& app, const char* name, std::string& value, const std::string& help) {
  app.add_option(name, value, help)->type_name("TEXT");
}

void AddFlag(CLI::App& app, const char* name, bool& value, const std::string& help) { app.add_flag(name, value, help); }

void AddNumber(CLI::App& app, const char* name, std::uint64_t& value, const std::string& help) {
  AddParsed(app, name, "N", help, [name, &value](const std::string& text) {
    const auto number = Parse<std::uint64_t>(text);
    if (!number) Expected(name, "a whole number from 0 on", text);
    value = *number;
  });
}

void AddSeconds(CLI::App& app, const char* name, unsigned int& milliseconds, const std::string& help) {
  AddParsed(app, name, "S", help, [name, &milliseconds](const std::string& text) {
    const auto seconds = Parse<double>(text);
    if (!seconds || !(*seconds >= kShortest && *seconds <= kLongest)) Expected(name, "seconds from 0.1 to 86400", text);
    milliseconds = static_cast<unsigned int>(std::lround(*seconds * 1000));
  });
}

void AddTime(CLI::App& app, const char* name, std::optional<unsigned int>& value, const std::string& help) {
  AddParsed(app, name, "TIME", help, [name, &value](const std::string& text) {
    unsigned int seconds = 0;
    std::string error;
    if (!form::ParseTime(text, vorn::cTime::Now().GetSeconds(), seconds, error))
      throw CLI::ValidationError(name, error);
    value = seconds;
  });
}

void AddChoice(CLI::App& app, std::span<const std::string_view> words, std::optional<unsigned int>& value,
               const std::string& help, eNeed need) {
  std::string name;
  for (const std::string_view word : words) name.append(name.empty() ? "" : "|").append(word);
  const auto choose = [name, words, &value](const std::string& text) {
    const auto found = std::find(words.begin(), words.end(), text);
    if (found == words.end()) Expected(name.c_str(), "one of these", text);
    value = static_cast<unsigned int>(found - words.begin());
  };
  app.add_option_function<std::string>(name, choose, help)->type_name("")->required(need == eNeed::Required);
}

void AddTimeRange(CLI::App& app, cTimeRange& range) {
  AddTime(app, "--from", range.from, "Not before this time");
  AddTime(app, "--to", range.to, "Not after this time");
}

CLI::App& AddAction(CLI::App& app, const char* name, const char* help) {
  app.require_subcommand(1);
  return *app.add_subcommand(name, help);
}

void AllowNoAction(CLI::App& app) { app.require_subcommand(0, 1); }

std::string ChosenAction(const CLI::App& app) {
  const auto chosen = app.get_subcommands();
  return chosen.empty() ? std::string() : chosen.front()->get_name();
}

}  // namespace tav::ctl
