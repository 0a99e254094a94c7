// SPDX-License-Identifier: Apache-2.0
#include <tavctl/completion_command.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <set>
#include <span>

#include <tavctl/failure.h>
#include <tavctl/options.h>

namespace tav::ctl {

namespace {

// The command that lists what an argument of that name may be.
struct cArgument {
  std::string_view name;
  std::string_view list;
};

constexpr cArgument kArguments[] = {{"METER", "meters"}, {"SERVICE", "services"}, {"NAME", "store"}};
// The same for the words behind a command that takes an action.
constexpr cArgument kThings[] = {{"INTERFACE", "interface list"}, {"METER", "meter list"},
                                 {"METER/NAME", "meter list"},    {"PUSH-TARGET", "push-target list"},
                                 {"TEMPLATE", "template list"},   {"RULE", "obis list"}};

// Names come from meters: they are compared and quoted, and never expanded by the shell.
constexpr const char* kHead = R"bash(# bash completion of tavctl, made by: tavctl completion bash
_tavctl_first() {
  "${COMP_WORDS[0]}" "${directory[@]}" --timeout 1 "$@" 2>/dev/null | sed -e 1d -e 's/  .*//'
}
_tavctl_offer() {
  local word
  while IFS= read -r word; do
    [[ $word != "$current"* ]] || COMPREPLY+=("$(printf %q "$word")")
  done
}
_tavctl_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen "$1" -- "$current")
}
_tavctl() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} command='' action='' words='' list='' i
  local -a directory=()
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case ${COMP_WORDS[i]} in
      --dir) directory=(--dir "${COMP_WORDS[++i]}") ;;
      --timeout) ((++i)) ;;
      -*) ;;
      *) if [ -z "$command" ]; then command=${COMP_WORDS[i]}; elif [ -z "$action" ]; then action=${COMP_WORDS[i]}; fi ;;
    esac
  done
  COMPREPLY=()
  case $previous in
    --dir) _tavctl_files -d; return ;;
)bash";

constexpr const char* kTail = R"bash(  esac
  [[ $current != -* ]] || list=
  if [ "$list" = files ]; then
    _tavctl_files -f
  else
    _tavctl_offer < <(printf '%s\n' $words; [ -z "$list" ] || _tavctl_first $list)
  fi
}
complete -F _tavctl tavctl
)bash";

std::string LongName(const CLI::Option& option) {
  return option.get_lnames().empty() ? std::string() : "--" + option.get_lnames().front();
}

using Words = std::set<std::string>;

void AddOptionWords(const CLI::App& app, Words& words) {
  for (const CLI::Option* option : app.get_options())
    if (const std::string name = LongName(*option); !name.empty()) words.insert(name);
}

// Options whose value only its user knows.
void AddValueOptions(const CLI::App& app, Words& words) {
  for (const CLI::Option* option : app.get_options())
    if (const std::string name = LongName(*option);
        !name.empty() && name != "--dir" && option->get_items_expected_max() != 0)
      words.insert(name);
}

std::string Joined(const Words& words, const char* separator) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : separator) + word;
  return text;
}

// "on|off" as words.
std::string Spaced(std::string choices) {
  std::replace(choices.begin(), choices.end(), '|', ' ');
  return choices;
}

// What stands in place of an option: a list to ask for, "files", or words.
std::string ArgumentWords(const CLI::Option& argument, std::span<const cArgument> lists) {
  const std::string name = argument.get_name(true);
  if (name == "FILE" || name == "FOLDER") return " list=files";
  if (name.find('|') != std::string::npos) return " words+=\" " + Spaced(name) + "\"";
  if (name == "SHELL") return " words+=\" bash\"";
  for (const cArgument& known : lists)
    if (known.name == name) return " list='" + std::string(known.list) + "'";
  return "";
}

std::string Case(const std::string& pattern, const Words& words, const std::string& argument) {
  return "    " + pattern + ") words=\"" + Joined(words, " ") + "\"" + argument + " ;;\n";
}

std::string CommandCase(const std::string& pattern, const CLI::App& command, Words words,
                        std::span<const cArgument> lists) {
  AddOptionWords(command, words);
  std::string argument;
  for (const CLI::Option* option : command.get_options())
    if (option->get_positional()) argument += ArgumentWords(*option, lists);
  return Case(pattern, words, argument);
}

// A command, or its actions and what stands behind each.
std::string CommandCases(const CLI::App& command, const Words& common) {
  const auto actions = command.get_subcommands({});
  if (actions.empty()) return CommandCase(command.get_name() + "\\ *", command, common, kArguments);
  std::string cases;
  Words names = common;
  for (const CLI::App* action : actions) {
    names.insert(action->get_name());
    cases += CommandCase(command.get_name() + "\\ " + action->get_name(), *action, common, kThings);
  }
  return cases + Case(command.get_name() + "\\ *", names, "");
}

std::string BashScript(const CLI::App& app) {
  Words common, values;
  AddOptionWords(app, common);
  AddValueOptions(app, values);
  std::string cases;
  Words first = common;
  for (const CLI::App* command : app.get_subcommands({})) {
    cases += CommandCases(*command, common);
    AddValueOptions(*command, values);
    for (const CLI::App* action : command->get_subcommands({})) AddValueOptions(*action, values);
    first.insert(command->get_name());
  }
  return kHead + ("    " + Joined(values, "|") + ") return ;;\n  esac\n  case \"$command $action\" in\n") + cases +
         Case("\\ *", first, "") + kTail;
}

}  // namespace

void cCompletionCommand::AddOptions(CLI::App& app) {
  m_tavctl = app.get_parent();
  AddArgument(app, "SHELL", m_shell, "The shell: bash", eNeed::Required);
}

eExit cCompletionCommand::Run(cContext& context) {
  if (m_shell != "bash") throw cFailure(eExitUsage, "completion: SHELL: expected bash, found \"" + m_shell + "\"");
  if (context.json) throw cFailure(eExitUsage, "completion: --json: a script is no JSON document");
  context.streams.out << BashScript(*m_tavctl);
  return eExitDone;
}

}  // namespace tav::ctl
