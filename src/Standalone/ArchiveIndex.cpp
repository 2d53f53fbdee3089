#include "Standalone/ArchiveIndex.h"

#include <algorithm>

#include "Common/StdModul.h"
#include "Host/FileKeys.h"
#include "Host/RecordKeys.h"
#include "Platform/CodePage.h"
#include "Standalone/ArchiveSql.h"
#include "Standalone/FileDescription.h"
#include "Standalone/MailText.h"

namespace vorlent {

namespace sql = archive_sql;

namespace {

constexpr std::string_view kReached = "indexed";

// Items that one transaction takes up at most: the database's log stays small, and the user sees it go on.
constexpr std::int64_t kItemsPerStep = 2048;

// What a person looks for stands at the beginning of a mail, and an index of all would take very long.
constexpr std::size_t kIndexedBytes = 2 * 1024;

// Data fields that say nothing to a person.
bool IsSearched(std::string_view key) {
  return !key.starts_with('_') && key != data_key::kSize && key != data_key::kAttribute &&
         !DescribesFile(key);
}

// What an item shows, as UTF-8.
struct Head {
  explicit Head(const ItemRecord& record)
      : text(DisplayUtf8(record.Value(record_key::kText))),
        keywords(DisplayUtf8(record.Value(record_key::kKeywords))) {
    for (std::int32_t pos = 1; pos <= record.DataCount(); ++pos) {
      const std::string key = record.DataKey(pos);
      if (IsSearched(key)) {
        data.append(DisplayUtf8(record.DataValue(pos))) += '\n';
      } else if (DescribesFile(key)) {
        files.append(DisplayUtf8(FileNameIn(record.DataValue(pos)))) += '\n';
      }
    }
  }

  std::string text, keywords, data, files;
};

// The words in the form of a query: each a quoted string, with its "*" after it.
std::vector<std::string> QueriesOf(std::string_view words) {
  std::vector<std::string> queries;
  for (std::string rest(words); !rest.empty();) {
    std::string word = DisplayUtf8(TrimBlank(CutToken(rest, " ")));
    const bool anyEnding = word.ends_with('*');
    while (word.ends_with('*'))
      word.pop_back();
    if (word.empty()) continue;
    ReplaceText(word, "\"", "\"\"");
    queries.push_back("\"" + word + (anyEnding ? "\"*" : "\""));
  }
  return queries;
}

}  // namespace

ArchiveIndex::ArchiveIndex(ArchiveStore& store, ArchiveFiles& files)
    : store_(store),
      files_(files),
      insertHead_(store.Database(), sql::kInsertHead),
      replaceHead_(store.Database(), sql::kReplaceHead),
      removeHead_(store.Database(), sql::kRemoveHead),
      insertBody_(store.Database(), sql::kInsertBody),
      reached_(store.State(kReached)) {}

bool ArchiveIndex::Reach(std::int64_t number, const std::function<bool(double)>& goOn) {
  const auto toDo = static_cast<double>(number - reached_);
  while (reached_ < number) {
    Step(number);
    if (!goOn(1 - static_cast<double>(number - reached_) / toDo)) break;
  }
  return reached_ >= number;
}

// Takes up some of the items up to the number.
void ArchiveIndex::Step(std::int64_t number) {
  SqliteTransaction transaction(store_.Database());
  const std::int64_t last = std::min(number, reached_ + kItemsPerStep);
  for (std::int64_t next = reached_ + 1; next <= last; ++next) {
    if (StoredItem item; store_.Read(next, item)) Insert(item);
  }
  store_.SetState(kReached, last);
  transaction.Commit();
  reached_ = last;
}

void ArchiveIndex::Insert(const StoredItem& item) {
  WriteHead(insertHead_, item.number, item.record);
  const auto pathOf = [&](std::string_view key) {
    const auto file = std::ranges::find(item.files, key, &StoredFile::key);
    return file == item.files.end() ? std::string() : files_.PathOf(item.number, file->name);
  };
  const std::string mail = pathOf(kMailFileKey);
  const std::string html = pathOf(kHtmlFileKey);
  std::string body;
  // The HTML text comes undone of its encoding, so it goes first.
  if (!html.empty()) body += TextOfHtmlFile(html, mail);
  if (!mail.empty()) body += TextOfMailFile(mail);
  body.resize(std::min(body.size(), kIndexedBytes));
  if (!body.empty()) insertBody_.Bind(1, item.number).Bind(2, body).Run();
}

void ArchiveIndex::WriteHead(SqliteStatement& statement, std::int64_t number, const ItemRecord& record) {
  const Head head(record);
  statement.Bind(1, number).Bind(2, head.text).Bind(3, head.keywords).Bind(4, head.data).Bind(5, head.files);
  statement.Run();
}

void ArchiveIndex::Update(std::int64_t number, const ItemRecord& record) {
  if (number <= reached_) WriteHead(replaceHead_, number, record);
}

// What the index of bodies holds of the item stays there: numbers are never used again, and only items that
// exist are found.
void ArchiveIndex::Remove(std::int64_t number) {
  removeHead_.Bind(1, number).Run();
}

std::vector<std::int64_t> ArchiveIndex::Find(std::string_view words) {
  const std::vector<std::string> queries = QueriesOf(words);
  std::vector<std::int64_t> numbers;
  if (queries.empty()) return numbers;
  std::string text(sql::kFind);
  for (std::size_t i = 1; i <= queries.size(); ++i) {
    std::string word(sql::kFindWord);
    ReplaceText(word, "#", std::to_string(i));
    text += word;
  }
  SqliteStatement select(store_.Database(), text.append(sql::kFindInOrder));
  for (std::size_t i = 0; i < queries.size(); ++i)
    select.Bind(static_cast<int>(i) + 1, queries[i]);
  while (select.Step())
    numbers.push_back(select.Number(0));
  return numbers;
}

}  // namespace vorlent
