// Manual pages and completions, made of the same commands that the help shows.
#include <fmt/format.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "Apps/CommandLine/Verbs.h"
#include "Platform/StandardPaths.h"

namespace vorlent::app {

namespace {

namespace fs = std::filesystem;

struct Argument {
  std::vector<std::string> flags;    // with their dashes; none for a positional
  std::string value;                 // the name of what is given, "" for a flag
  std::vector<std::string> choices;  // all values that are taken, if there are so few
  std::string text;

  // "--drive=LETTER=DIR", "SOURCE", with all names and what separates them from the value.
  std::string Shown(std::string_view separator) const {
    const std::string names = fmt::format("{}", fmt::join(flags, ", "));
    return names.empty() || value.empty() ? names + value : names + std::string(separator) + value;
  }
  bool TakesFolder() const { return value == "DIR"; }
  bool TakesFile() const { return value == "FILE" || value == "SOURCE"; }
};

struct Command {
  std::string name;
  std::string text;
  std::string footer;
  std::vector<Argument> arguments;
  std::vector<Command> commands;
};

// "TEXT:{today,windows}" names the choices after the kind of value.
std::vector<std::string> ChoicesIn(const std::string& typeName) {
  const std::size_t begin = typeName.find(":{"), end = typeName.rfind('}');
  if (begin == std::string::npos || end == std::string::npos) return {};
  return CLI::detail::split(typeName.substr(begin + 2, end - begin - 2), ',');
}

Argument Described(const CLI::Option& option) {
  Argument argument;
  for (const std::string& name : option.get_snames())
    argument.flags.push_back("-" + name);
  for (const std::string& name : option.get_lnames())
    argument.flags.push_back("--" + name);
  const std::string typeName = option.get_type_name();
  argument.choices = ChoicesIn(typeName);
  const bool takesValue = option.get_items_expected_max() > 0;
  if (argument.flags.empty()) {
    argument.value = option.get_name(true);
  } else if (takesValue) {
    argument.value =
        argument.choices.empty() ? typeName : fmt::format("{}", fmt::join(argument.choices, "|"));
  }
  argument.text = option.get_description();
  return argument;
}

Command Described(const CLI::App& app) {
  Command command{app.get_name(), app.get_description(), app.get_footer(), {}, {}};
  for (const CLI::Option* option : app.get_options())
    command.arguments.push_back(Described(*option));
  const auto isShown = [](const CLI::App* child) { return !child->get_group().empty(); };
  for (const CLI::App* child : app.get_subcommands(isShown))
    command.commands.push_back(Described(*child));
  return command;
}

// --- Manual pages

// A line that begins with a dot or an apostrophe would be a request, and a dash a hyphen.
std::string Roff(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    const bool beginsLine = escaped.empty() || escaped.back() == '\n';
    if (beginsLine && (c == '.' || c == '\'')) escaped += "\\&";
    if (c == '\\') {
      escaped += "\\e";
    } else if (c == '-') {
      escaped += "\\-";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

void AddArguments(std::string& page, const Command& command, bool areOptions) {
  bool isFirst = true;
  for (const Argument& argument : command.arguments) {
    if (argument.flags.empty() == areOptions) continue;
    if (isFirst) page += areOptions ? ".SH OPTIONS\n" : ".SH ARGUMENTS\n";
    isFirst = false;
    page += fmt::format(".TP\n.B {}\n{}\n", Roff(argument.Shown(" ")), Roff(argument.text));
  }
}

std::string Synopsis(const Command& command, const std::string& path) {
  std::string line = fmt::format(".B {}\n", Roff(path));
  if (!command.commands.empty()) return line + "[OPTIONS] COMMAND ...\n";
  line += "[OPTIONS]";
  for (const Argument& argument : command.arguments) {
    if (argument.flags.empty()) line += " " + argument.value;
  }
  return line + "\n";
}

std::string ManPage(const Command& command, const std::string& path, const std::string& version) {
  const std::string name = CLI::detail::find_and_replace(path, " ", "-");
  std::string page = fmt::format(".TH {} 1 \"\" \"{}\" \"User Commands\"\n.SH NAME\n{} \\- {}\n", Roff(name),
                                 Roff(version), Roff(name), Roff(command.text));
  page += ".SH SYNOPSIS\n" + Synopsis(command, path);
  AddArguments(page, command, false);
  AddArguments(page, command, true);
  if (!command.commands.empty()) page += ".SH COMMANDS\n";
  for (const Command& child : command.commands) {
    page += fmt::format(".TP\n.B {}\n{}\n", Roff(child.name), Roff(child.text));
    for (const Argument& argument : child.commands.empty() ? std::vector<Argument>() : child.arguments)
      page += Roff(argument.Shown(" ")) + "\n";
  }
  if (!command.footer.empty()) page += ".SH NOTES\n.nf\n" + Roff(command.footer) + "\n.fi\n";
  return page;
}

// --- Completions

std::string Quoted(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text)
    quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

// The words that may follow: the names of commands and options.
std::string Words(const Command& command) {
  std::vector<std::string> words;
  words.reserve(command.commands.size());
  for (const Command& child : command.commands)
    words.push_back(child.name);
  for (const Argument& argument : command.arguments)
    words.insert(words.end(), argument.flags.begin(), argument.flags.end());
  return fmt::format("{}", fmt::join(words, " "));
}

// Every command with its path, the program's own being "".
template <class Visit>
void ForEachCommand(const Command& command, const std::string& path, const Visit& visit) {
  visit(command, path);
  for (const Command& child : command.commands)
    ForEachCommand(child, path.empty() ? child.name : path + " " + child.name, visit);
}

std::string BashCompletion(const Command& program) {
  std::string words, values;
  ForEachCommand(program, "", [&](const Command& command, const std::string& path) {
    // A command below this one comes next, and no file.
    const std::string_view next = command.commands.empty() ? "" : " next=command";
    words += fmt::format("    {}) words={}{} ;;\n", Quoted(path), Quoted(Words(command)), next);
    for (const Argument& argument : command.arguments) {
      if (argument.flags.empty() || argument.value.empty()) continue;
      const std::string action =
          argument.TakesFolder() ? "compgen -d -- \"$word\""
          : !argument.choices.empty()
              ? fmt::format("compgen -W {} -- \"$word\"",
                            Quoted(fmt::format("{}", fmt::join(argument.choices, " "))))
              : "compgen -f -- \"$word\"";
      values += fmt::format("    {}) mapfile -t COMPREPLY < <({}); return ;;\n",
                            Quoted(path + ":" + argument.flags.back()), action);
    }
  });
  return fmt::format(
      R"(# Completion of {0} for bash.
_{1}() {{
  local word=${{COMP_WORDS[COMP_CWORD]}} before=${{COMP_WORDS[COMP_CWORD-1]}} path='' words='' next='' i
  for ((i = 1; i < COMP_CWORD; i++)); do
    case "${{path:+$path }}${{COMP_WORDS[i]}}" in
{2}    esac
  done
  case "$path:$before" in
{3}  esac
  case "$path" in
{4}  esac
  if [[ $word == -* || $next == command ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
  else
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  fi
}}
complete -o filenames -F _{1} {0}
)",
      program.name, "vorlent_mozilla",
      [&] {
        std::string paths;
        ForEachCommand(program, "", [&](const Command&, const std::string& path) {
          if (!path.empty()) paths += fmt::format("      {0}) path={0} ;;\n", Quoted(path));
        });
        return paths;
      }(),
      values, words);
}

std::string FishCompletion(const Command& program) {
  std::string lines = fmt::format("# Completion of {} for fish.\n", program.name);
  ForEachCommand(program, "", [&](const Command& command, const std::string& path) {
    const std::string verb = path.substr(path.rfind(' ') + 1);
    const std::string condition =
        path.empty() ? "__fish_use_subcommand" : "__fish_seen_subcommand_from " + verb;
    for (const Command& child : command.commands) {
      lines += fmt::format("complete -c {} -f -n {} -a {} -d {}\n", program.name, Quoted(condition),
                           child.name, Quoted(child.text));
    }
    for (const Argument& argument : command.arguments) {
      if (argument.flags.empty()) continue;
      lines += fmt::format("complete -c {}", program.name);
      // The program's own options stand before or after a verb.
      if (!path.empty()) lines += fmt::format(" -n {}", Quoted(condition));
      for (const std::string& flag : argument.flags)
        lines += flag.starts_with("--") ? " -l " + flag.substr(2) : " -s " + flag.substr(1);
      if (!argument.choices.empty()) {
        lines += " -x -a " + Quoted(fmt::format("{}", fmt::join(argument.choices, " ")));
      } else if (argument.TakesFolder()) {
        lines += " -x -a '(__fish_complete_directories)'";
      } else if (!argument.value.empty()) {
        lines += " -r";
      }
      lines += fmt::format(" -d {}\n", Quoted(argument.text));
    }
  });
  return lines;
}

// In a description of an argument zsh reads brackets and colons.
std::string ZshText(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '[' || c == ']' || c == ':' || c == '\\') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::string ZshValue(const Argument& argument) {
  if (!argument.choices.empty()) return fmt::format("({})", fmt::join(argument.choices, " "));
  if (argument.TakesFolder()) return "_files -/";
  return "_files";
}

std::string ZshFunction(const Command& command, const std::string& path) {
  std::string lines = fmt::format("_{}() {{\n  _arguments -C", path);
  bool hasPositional = false;
  for (const Argument& argument : command.arguments) {
    for (const std::string& flag : argument.flags) {
      const std::string value =
          argument.value.empty() ? "" : fmt::format(":{}:{}", ZshText(argument.value), ZshValue(argument));
      lines += " \\\n    " + Quoted(fmt::format("*{}[{}]{}", flag, ZshText(argument.text), value));
    }
    hasPositional = hasPositional || argument.flags.empty();
  }
  if (hasPositional) lines += " \\\n    '*:argument:_files'";
  if (!command.commands.empty()) {
    lines +=
        " \\\n    '1:command:->command' '*::argument:->argument'\n  case $state in\n    command) _values "
        "command";
    for (const Command& child : command.commands)
      lines += " \\\n      " + Quoted(fmt::format("{}[{}]", child.name, ZshText(child.text)));
    lines += " ;;\n    argument)\n      case $words[1] in\n";
    for (const Command& child : command.commands)
      lines += fmt::format("        {}) _{}_{} ;;\n", child.name, path, child.name);
    lines += "      esac ;;\n  esac";
  }
  lines += "\n}\n";
  for (const Command& child : command.commands)
    lines += ZshFunction(child, path + "_" + child.name);
  return lines;
}

std::string ZshCompletion(const Command& program) {
  return fmt::format("#compdef {}\n# Completion of {} for zsh.\n{}_vorlent_mozilla \"$@\"\n", program.name,
                     program.name, ZshFunction(program, "vorlent_mozilla"));
}

void Write(const fs::path& file, const std::string& text) {
  fs::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary);
  stream << text;
  stream.close();
  if (!stream) throw fs::filesystem_error("write", file, std::error_code(errno, std::generic_category()));
}

// Writes into a folder: man/man1 with a page for the program and one for each verb, and the completions for
// bash, zsh and fish.
void WriteDocuments(const CLI::App& app, const fs::path& folder) {
  const Command program = Described(app);
  const std::string version = program.name + " " VORLENT_VERSION;
  ForEachCommand(program, "", [&](const Command& command, const std::string& path) {
    const std::string full = path.empty() ? program.name : program.name + " " + path;
    const std::string name = CLI::detail::find_and_replace(full, " ", "-") + ".1";
    Write(folder / "man/man1" / name, ManPage(command, full, version));
  });
  Write(folder / "bash-completion/completions" / program.name, BashCompletion(program));
  Write(folder / "zsh/vendor-completions" / ("_" + program.name), ZshCompletion(program));
  Write(folder / "fish/vendor_completions.d" / (program.name + ".fish"), FishCompletion(program));
}

}  // namespace

void DeclareDocuments(CLI::App& command, Action& action) {
  const auto folder = std::make_shared<std::string>();
  command.add_option("FOLDER", *folder, "Where to, in the layout of a system's share/")->required();
  const CLI::App* program = command.get_parent();
  command.callback([folder, program, &action] {
    action = [folder, program](Session&) {
      WriteDocuments(*program, os::StandardPath(*folder));
      return ExitCode::Done;
    };
  });
}

}  // namespace vorlent::app
