// String and record helpers, path and file helpers, and the dates of everyday use.
//
// Positions in strings count from 1, 0 means not found. A working string (std::string&) is changed in place.
// Comparison is exact unless a routine says otherwise.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Common/KeyedList.h"

namespace vorlent {

// --- Cutting and finding (StdModulText.cpp) ----------------------------------------------------------------

// The text before the first `sep`, leaving in `s` the text after it; without `sep` all of `s`, which is
// emptied.
std::string CutToken(std::string& s, std::string_view sep);

// The same on a view, for parsers that only read: nothing is copied.
std::string_view CutToken(std::string_view& s, std::string_view sep);

// The text before the first `sep`, or all of `s`, which stays.
std::string PeekToken(std::string_view s, std::string_view sep);

// CutToken with blanks trimmed from the token and from the rest.
std::string CutTrimmedToken(std::string& s, std::string_view sep);

// CutToken at one line feed; one carriage return at the token's end is dropped.
std::string CutLine(std::string& s);
std::string_view CutLine(std::string_view& s);

// The next word: quoted by double quotes (a doubled one stands for one), by single quotes, or up to a blank.
std::string CutWord(std::string& s);

// Position of the first `sep` with an even number of backslashes before it.
std::int32_t FindUnescaped(std::string_view s, std::string_view sep);

// CutToken at FindUnescaped; the backslashes stay in the token.
std::string CutEscapedToken(std::string& s, std::string_view sep);

// Shortens `s` by `n` characters at its right end.
void DropRight(std::string& s, std::int16_t n);

// Without the blanks (code 32 only) at both ends.
std::string Trim(std::string_view s);

// The same as a view, for parsers that only read.
std::string_view TrimView(std::string_view s);

// Without leading and trailing characters of code below 33.
std::string TrimBlank(std::string_view s);

// From lines of key=value, the value of the first line whose key is exactly `key`; "" without one.
std::string GetLineValue(std::string_view text, std::string_view key);

// --- Records -----------------------------------------------------------------------------------------------

// The unescaped value of `key` in a record of "|"-separated key=value fields; "" if absent, the first if
// repeated.
std::string GetParam(std::string_view record, std::string_view key);

// The value as it may stand in a record. Each character of `extra` is escaped too; an `extra` of more than
// 32,767 characters is an overflow.
std::string EscapeValue(std::string_view value, std::string_view extra = {});

// Undoes EscapeValue; a line feed comes back as carriage return and line feed.
std::string UnescapeValue(std::string_view value);

// --- Other text --------------------------------------------------------------------------------------------

// Replaces every `find` in `s`, from the left and without looking at what was put in. `ignoreCase` goes by
// the letters of the code page; `wholeWord` takes the hits of FindWholeWord only. "" is never found.
void ReplaceText(std::string& s, std::string_view find, std::string_view repl, bool ignoreCase = false,
                 bool wholeWord = false);  // a macro of windows.h: never read both

// Position of the first occurrence of `word` at or after `start` that has no word character on either side.
std::int32_t FindWholeWord(std::int32_t start, std::string_view s, std::string_view word);

// A to Z, a to z and "_".
bool IsWordChar(char c);

// `s` as a legal file name, forbidden characters as "%" and two hexadecimal digits. More than 32,767
// characters are an overflow.
std::string EncodeFileName(std::string_view s, std::string_view extra = {});

// Upper-case hexadecimal text, padded with "0" to `width` digits.
std::string HexPad(std::int16_t value, std::int16_t width);

// A new GUID as 38 characters with braces, upper-case.
std::string NewGuidText();

// The leading number of a text, as lenient as can be: blanks anywhere are skipped, the rest is ignored, no
// number is 0. "&H" and "&O" lead hexadecimal and octal digits. Never fails: what is too small is 0, what is
// too large the largest number there is.
double ReadNumber(std::string_view s);

// The mouse pointer: the default when the work is done, the hourglass when it isn't.
void SetWaitCursor(bool done);

// Removes all items.
template <class T>
void ClearCollection(KeyedList<T>& list) {
  list.Clear();
}

// Whether a reference is set; IsNothing is its negation.
template <class T>
bool HasObject(const std::shared_ptr<T>& reference) {
  return reference != nullptr;
}

template <class T>
bool IsNothing(const std::shared_ptr<T>& reference) {
  return reference == nullptr;
}

// --- Paths (StdModulPaths.cpp) -----------------------------------------------------------------------------
//
// Windows paths, or addresses if they hold "://".

// `p` trimmed, with its separator at the end: "\" for a path, "/" for an address. "" stays "".
std::string AddPathSep(std::string_view p);

// `p` without one closing separator of either kind. The root of a drive keeps its own, and "C:" gets one.
std::string RemovePathSep(std::string_view p);

// `rel` resolved against `base`.
std::string AddPath(std::string_view base, std::string_view rel);

// Whether `p` begins with a drive ("C:") or a share ("\\"), or is an address.
bool IsAbsolutePath(std::string_view p);

// The folder part with its closing separator, "" for a bare name.
std::string GetPath(std::string_view p);

// What follows the last separator, trimmed.
std::string GetFileName(std::string_view p);

// --- Files (StdModulFiles.cpp) -----------------------------------------------------------------------------
//
// Tolerant operations: none of them raises. "" as a folder never means the current one: it has no entries.

// Whether a folder is there and may be listed; for a drive ("C:\") whether it has a root directory.
bool FolderExists(std::string_view p);

// Whether the length of a file can be read, which that of a folder can't.
bool FileExists(std::string_view p);

// The attribute bits, -1 when they can't be read, or for a path that ends in "\." or "\..".
std::int32_t GetFileAttr(std::string_view p);

// The bits as letters in the order A, R, H, S, D; all five for a path without attributes.
std::string GetFileAttrText(std::string_view p);

// Creates every folder of `p`.
void MakePath(std::string_view p);

// Deletes a file, read-only or not; with "*" or "?" all files that match. For texts that may be a pattern by
// intent: a mailbox or an attachment may be called so, and others would go with it.
void KillFile(std::string_view p);

// Deletes a file of just that name, read-only or not. For names that come from the disk or from a mail.
void RemoveExactFile(std::string_view p);

// Removes all subfolders of `p`, its files if `files`, itself if `self`.
void DeleteFolder(std::string_view p, bool files, bool self);

// The entries of a folder one by one, "." and ".." not among them, hidden and system ones included.
class FolderEntries {
 public:
  // The first entry's name, "" if there is none or the folder can't be read.
  std::string First(std::string_view folder);
  // The name after it, "" after the last.
  std::string Next();

 private:
  std::vector<std::string> names_;
  std::size_t next_ = 0;
};

// The first entry of a folder, "" if there is none.
std::string FirstFolderEntry(std::string_view p);

// Fills the lists that are given with the bare names that match `pattern`, in the order of the listing.
void ListFolder(std::string_view p, KeyedList<std::string>* files, KeyedList<std::string>* folders,
                std::string_view pattern);

// Moves a file into a folder that is made if it is missing. Note the order: the target comes first. One that
// exists is deleted before anything else; the source stays if the file could not be moved. Nothing happens
// without a source, or if both paths are equal but for letter case.
void MoveFile(std::string_view target, std::string_view source);  // a macro of windows.h: never read both

// --- Dates (StdModulDates.cpp) -----------------------------------------------------------------------------
//
// Stamp: yyyymmddhhmmss. Display text: dd.mm.yyyy hh:mm:ss.

// The present local time as a stamp.
std::string NowStamp();

// The present local time as "hh:mm:ss".
std::string NowTimeText();

// Seconds since midnight, with their fraction.
double SecondsSinceMidnight();

// Display text of a stamp, a dashed stamp (yyyymmdd-hhmmss), a date-only stamp (yyyymmdd::) or display text.
// May rewrite `s`.
std::string StampToDisplay(std::string& s);

// A stamp of display text, of a dashed stamp or of a stamp.
std::string DisplayToStamp(std::string_view s);

// Time of last change as display text, "" if it can't be read.
std::string GetFileDate(std::string_view path);

// Sets a file's times to a local time given as display text; "" does nothing. Silent on every failure.
void SetFileDate(std::string_view path, std::string_view text);

}  // namespace vorlent
