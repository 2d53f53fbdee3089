// The import command: the text in which the wizard hands the user's choice to the import run.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorlent {

// One line for each choice, its word divided from its argument by the first blank:
//
//   target <name of a Location>     action move|copy     option tree
//   keyword <keyword>|#subpath      import <path of a mailbox>
struct ImportCommand {
  std::string target;
  bool move = false;
  bool tree = false;
  // "keyword #subpath": the sub-folders become keywords. The run does so in any case.
  bool subfolderKeywords = false;
  std::vector<std::string> keywords;
  std::vector<std::string> mailboxes;

  // Reads a command, its lines in any order. Of target, action and option the last line counts; keyword and
  // import lines add up. Words are compared exactly, a line with any other word is passed over.
  static ImportCommand Parse(std::string_view text);

  // The command's text, each line ended by CR LF, in the order target, action, #subpath, option, keywords,
  // mailboxes.
  std::string Text() const;

  // The keywords in one text, joined by commas.
  std::string KeywordText() const;
};

}  // namespace vorlent
