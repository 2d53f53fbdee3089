#include "Connectors/Mozilla/ImportCommand.h"

namespace vorlent {

namespace {

constexpr std::string_view kSubfolderKeywords = "#subpath";

// Cuts at the first separator without copying the rest, which for a command of many mailboxes is long.
std::string_view Cut(std::string_view& rest, char separator) {
  const std::size_t end = rest.find(separator);
  const std::string_view token = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return token;
}

void AppendLine(std::string& text, std::string_view word, std::string_view argument) {
  text.append(word).append(" ").append(argument).append("\r\n");
}

}  // namespace

ImportCommand ImportCommand::Parse(std::string_view text) {
  ImportCommand command;
  while (!text.empty()) {
    std::string_view argument = Cut(text, '\n');
    if (argument.ends_with('\r')) argument.remove_suffix(1);
    const std::string_view word = Cut(argument, ' ');
    if (word == "target") {
      command.target = argument;
    } else if (word == "action") {
      command.move = argument == "move";
    } else if (word == "option") {
      command.tree = argument == "tree";
    } else if (word == "keyword" && argument == kSubfolderKeywords) {
      command.subfolderKeywords = true;
    } else if (word == "keyword") {
      command.keywords.emplace_back(argument);
    } else if (word == "import") {
      command.mailboxes.emplace_back(argument);
    }
  }
  return command;
}

std::string ImportCommand::Text() const {
  std::string text;
  AppendLine(text, "target", target);
  AppendLine(text, "action", move ? "move" : "copy");
  if (subfolderKeywords) AppendLine(text, "keyword", kSubfolderKeywords);
  if (tree) AppendLine(text, "option", "tree");
  for (const std::string& keyword : keywords)
    AppendLine(text, "keyword", keyword);
  for (const std::string& mailbox : mailboxes)
    AppendLine(text, "import", mailbox);
  return text;
}

std::string ImportCommand::KeywordText() const {
  std::string text;
  for (const std::string& keyword : keywords) {
    if (!text.empty()) text += ',';
    text += keyword;
  }
  return text;
}

}  // namespace vorlent
