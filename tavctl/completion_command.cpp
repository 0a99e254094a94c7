// SPDX-License-Identifier: Apache-2.0
#include <tavctl/completion_command.h>

#include <CLI/CLI.hpp>

#include <tavctl/failure.h>
#include <tavctl/options.h>

namespace tav::ctl {

namespace {

// What completes an argument of that name: words that a command prints, or files.
struct cArgument {
  std::string_view name;
  std::string_view words;
};

constexpr cArgument kArguments[] = {
    {"METER", "$(_tavctl_first meters)"},
    {"SERVICE", "$(_tavctl_first services)"},
    {"NAME", "$(_tavctl_first store)"},
    {"SHELL", "bash"},
};

// The first column of a list without its title, asked in the directory that the line names.
constexpr const char* kHead = R"(# bash completion of tavctl, made by: tavctl completion bash
_tavctl_first() {
  tavctl "${directory[@]}" --timeout 1 "$1" 2>/dev/null | sed -e 1d -e 's/  .*//'
}
_tavctl() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} command= words= i
  local -a directory=()
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case ${COMP_WORDS[i]} in
      --dir) directory=(--dir "${COMP_WORDS[++i]}") ;;
      --timeout) ((++i)) ;;
      -*) ;;
      *) [ -n "$command" ] || command=${COMP_WORDS[i]} ;;
    esac
  done
  COMPREPLY=()
  case $previous in
    --dir) mapfile -t COMPREPLY < <(compgen -d -- "$current"); return ;;
)";

constexpr const char* kTail = R"(  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}
complete -F _tavctl tavctl
)";

std::string LongName(const CLI::Option& option) { return "--" + option.get_lnames().front(); }

std::string OptionWords(const CLI::App& app) {
  std::string words;
  for (const CLI::Option* option : app.get_options())
    if (!option->get_lnames().empty()) words += LongName(*option) + " ";
  return words;
}

// Options whose value only its user knows.
std::string ValuePattern(const CLI::App& app) {
  std::string pattern;
  std::vector<const CLI::App*> all = app.get_subcommands({});
  all.push_back(&app);
  for (const CLI::App* one : all)
    for (const CLI::Option* option : one->get_options())
      if (!option->get_lnames().empty() && option->get_items_expected_max() != 0 && LongName(*option) != "--dir")
        pattern += (pattern.empty() ? "" : "|") + LongName(*option);
  return pattern;
}

std::string Case(const CLI::App& command, const std::string& common) {
  std::string words = common + OptionWords(command), files;
  for (const CLI::Option* option : command.get_options([](const CLI::Option* one) { return one->get_positional(); })) {
    if (option->get_name(true) == "FILE") files = "mapfile -t COMPREPLY < <(compgen -f -- \"$current\"); ";
    for (const cArgument& argument : kArguments)
      if (argument.name == option->get_name(true)) words += std::string(argument.words);
  }
  const std::string assign = "words=\"" + words + "\" ;;\n";
  if (files.empty()) return "    " + command.get_name() + ") " + assign;
  return "    " + command.get_name() + ") [[ $current == -* ]] || { " + files + "return; }; " + assign;
}

std::string BashScript(const CLI::App& app) {
  const std::string common = OptionWords(app);
  std::string script = kHead, names;
  script += "    " + ValuePattern(app) + ") return ;;\n  esac\n  case $command in\n";
  for (const CLI::App* command : app.get_subcommands({})) {
    script += Case(*command, common);
    names += command->get_name() + " ";
  }
  return script + "    '') words=\"" + common + names + "\" ;;\n" + kTail;
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
