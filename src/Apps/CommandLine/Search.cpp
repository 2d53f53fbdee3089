#include "Apps/CommandLine/ItemOutput.h"
#include "Apps/CommandLine/Verbs.h"
#include "Connectors/Mozilla/RecordedMail.h"
#include "Host/FileKeys.h"
#include "Standalone/Phrases.h"

namespace vorlent::app {

namespace {

struct SearchOptions {
  std::string archive;
  std::vector<std::string> words;
  bool json = false;
  bool files = false;
};

std::vector<StandaloneItemPtr> Find(Archive& archive, const SearchOptions& options) {
  if (options.words.empty()) return ItemsOf(archive);
  std::string words;
  for (const std::string& word : options.words)
    words += ComponentText(word) + " ";
  const auto found = archive.Search(words);
  return {found.begin(), found.end()};
}

// By these numbers an item is found again, whatever was searched for.
std::vector<std::int32_t> NumbersOf(Archive& archive, const std::vector<StandaloneItemPtr>& items) {
  std::vector<std::int32_t> numbers;
  numbers.reserve(items.size());
  for (const StandaloneItemPtr& item : items)
    numbers.push_back(archive.PositionOf(dynamic_cast<const ArchiveItem&>(*item)));
  return numbers;
}

// With the ID by which `restore` finds it among several of one ID, unless another mail has that of its own.
StandaloneItemPtr UnderOwnId(Archive& archive, const StandaloneItemPtr& item) {
  if (!IdsAreNumbered()) return item;
  const std::int32_t copy = archive.CopyNumberOf(dynamic_cast<const ArchiveItem&>(*item));
  const std::string id = NumberedId(item->ID(), copy);
  if (copy == 1 || !archive.ItemsOf(id).empty()) return item;
  auto shown = std::make_shared<StandaloneItem>();
  shown->ImportRecord(item->Record());
  shown->SetID(id);
  return shown;
}

void PrintFiles(const StandaloneItem& item) {
  for (std::int32_t i = 1; i <= item.DataCount(); ++i) {
    const std::string key = item.DataKey(i);
    if (DescribesFile(key)) PrintLine(NativeShown(item.DataFile(key, 0)));
  }
}

ExitCode Search(Session& session, const SearchOptions& options) {
  const ArchivePtr archive = session.OpenArchive(options.archive);
  std::vector<StandaloneItemPtr> items = Find(*archive, options);
  StopIfAsked();
  if (items.empty()) {
    session.Output().Complain(InWords(Phrase::NothingFound, {options.archive}));
    return ExitCode::Partly;
  }
  if (options.files) {
    for (const StandaloneItemPtr& item : items)
      PrintFiles(*item);
    return ExitCode::Done;
  }
  const std::vector<std::int32_t> numbers = NumbersOf(*archive, items);
  for (StandaloneItemPtr& item : items)
    item = UnderOwnId(*archive, item);
  if (!options.json) {
    PrintLines(ItemTables(items, TerminalWidth(0), numbers));
    return ExitCode::Done;
  }
  for (const StandaloneItemPtr& item : items)
    PrintLine(ItemJson(*item));
  return ExitCode::Done;
}

}  // namespace

void DeclareSearch(CLI::App& command, Action& action) {
  const auto options = std::make_shared<SearchOptions>();
  command.add_option("ARCHIVE", options->archive, "Folder of the archive")->type_name("DIR")->required();
  command.add_option(
      "WORD", options->words,
      "Words that the mails hold in subject, names, keywords, text or names of attachments; all mails "
      "without any");
  auto* json = command.add_flag("--json", options->json, "One JSON object per line");
  command.add_flag("--files", options->files, "The paths of the mails' files")->excludes(json);
  command.callback(
      [options, &action] { action = [options](Session& session) { return Search(session, *options); }; });
}

}  // namespace vorlent::app
