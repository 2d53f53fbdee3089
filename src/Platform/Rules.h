// Two sets of rules by which files are read and written: exact to the Windows machine that the system was
// drawn for, and right on the disks of today.
#pragma once

#include "Platform/Public.h"

namespace vorlent {

// What ends a line.
enum class LineRule {
  Windows,  // CR, or CR LF; a lone LF is text. Counts take every line end for two bytes.
  Native,   // LF, CR LF or CR. Counts take a line end for what it is.
};

// What text inside the system is held in.
enum class TextEncoding {
  Windows1252,  // One byte per character. What the page doesn't hold becomes "?" or passes as its bytes.
  Utf8,         // All of Unicode. Charsets are converted, and bytes that fit none are taken for Windows-1252.
};

// What the part of an attachment says in its header.
enum class AttachmentHeaders {
  Plain,   // An archive is told no content type, and every attachment goes back as "application/octet-stream"
           // under the name of its "file=" line.
  AsSent,  // The descriptions of archived attachments get a line "type="; they go back with that type and
           // under the name that the sender gave them.
};

// Which sections of a profiles.ini are profiles.
enum class ProfileSections {
  AllButFirst,  // All from the second on, in the order of the file.
  ByName,       // Those called "Profile" and a number that have a name and a path. The profile in use comes
                // first: the one that an "Install" section names, else the one marked as default. Each has
                // a name of its own.
};

// Whose list of profiles ends with the pseudo-profile of the local disks.
enum class DisksProfile {
  Everywhere,  // That of the calendars, too, where it stands for a storage.sdb of the current folder.
  OfMail,      // That of mail only.
};

// How a database is read that another program has in use.
enum class DatabaseInUse {
  Locked,  // Not at all: the library's error is told.
  Copied,  // From a copy of its state at one moment, and that moment is told.
};

// What the title of a bookmark is.
enum class BookmarkTitles {
  OneLine,  // It ends at a line feed; what comes after it takes the place of the address, and so on.
  Whole,    // As the browser has it, line breaks included.
};

// How texts stand in a bookmarks.html.
enum class BookmarkMarkup {
  AsIs,     // Bytes as they are, markup in them too.
  Escaped,  // UTF-8 that a browser reads as the very text.
};

// What stands in a bookmarks.html, and in which order.
enum class BookmarkOrder {
  OfTree,     // Of each node of the host's tree its children, then its items. Folders without a name have no
              // heading, bookmarks without a title have their address for it, and there are no separators.
  OfBrowser,  // Everything as the browser has it, and what has come in since then behind that.
};

// What the preferences of a profile tell of its mail accounts.
enum class MailAccounts {
  AsWritten,  // Name and folder of each, up to the first quote.
  AsShown,    // What Thunderbird makes of them: a name for each, and its folder wherever the profile lies.
};

// By which name a mail folder goes.
enum class MailFolderNames {
  OfFiles,  // That of its file.
  Shown,    // That by which Thunderbird shows it, whatever is in it; an address may have either.
};

// Whose subfolders are mail folders.
enum class Subfolders {
  OfMailboxes,  // Those of a mailbox.
  OfAny,        // Those beside no mailbox, too.
};

// Whether an account is asked how it keeps its mails.
enum class MailStores {
  NotAsked,  // One without mailboxes is empty.
  Told,      // One with a file for each mail is told as that.
};

// What a mail's own header Address is, whose name is also that of the mail's place in the mailbox.
enum class OwnAddress {
  TakesPlace,  // It stands for the place, so that what goes by the place goes elsewhere.
  IsText,      // It is a header that isn't found by its name, and the place stays known.
};

// What divides the mails of a mailbox.
enum class Separators {
  Dashed,     // A line "From - " or ">From - ", whatever follows.
  Envelopes,  // A line "From " with a date or a sender, or neither, before a field or the header's end.
};

// Which of several headers X-Mozilla-Status tells that a mail is expunged.
enum class StatusHeaders {
  Any,
  First,
};

// What becomes of the continuation of a header whose name the mail has already, and which is left out.
enum class RepeatedHeaders {
  TakeAlong,  // They are joined to the header stored last, and that one is left out as well.
  LeaveOut,
};

// What was read ahead of the mail that is to be brought out.
enum class ReadAhead {
  Loses,  // The empty line after a header without a status, and the last line of the mailbox, are lost.
  Keeps,
};

// Which lines divide the parts of a mail.
enum class Boundaries {
  Exact,    // Those of the mail's boundary and of the nested one seen last, to the letter.
  Rfc2046,  // Those of all boundaries that parts are nested in; blanks may follow.
};

// Text after the boundary that closes the mail.
enum class Epilogues {
  Dropped,  // It belongs to no mail.
  Kept,     // It is text of the mail, unless there are empty lines only.
};

// What the encodings of parts do with what isn't foreseen.
enum class TransferEncodings {
  LineByLine,  // Each base64 line for itself; "_" is a blank in quoted-printable text, bad codes lose it.
  Rfc2045,     // Base64 across lines; "_" and bad codes stay.
};

// How encoded words and parameters in the values of headers are read, and which of several headers tells.
enum class HeaderValues {
  Simple,    // Each word and each piece of a parameter by itself, in the order in which they come. A bad code
             // loses the value; a ";" in quotes ends it. The last header tells, and its type in its own case.
  Standard,  // By RFC 2045, 2047 and 2231. Bad codes stay, and the first header tells.
};

// Which dates of mails are read, and what stands in for one that isn't there or can't be read.
enum class MailDates {
  OfOldPrograms,  // Those that the programs of old wrote; of all others some date is made.
  OfAnyProgram,   // Those that a person can read. Else that of the topmost trace, else of the separator.
};

// The years of mails.
enum class MailYears {
  From1980,   // Earlier ones are 1980, so those that two digits tell from 50 on.
  AsWritten,  // Two and three digits tell what RFC 5322 says.
};

// The clock by which the time of a mail is told.
enum class MailTimes {
  OfTheSender,  // As it is written.
  OfTheReader,  // In the system's time zone, where the zone that is written is known.
};

// The clock by which it is told when a bookmark was made.
enum class BookmarkTimes {
  Universal,    // That of UTC.
  OfTheReader,  // That of the system's time zone.
};

// How the lines of a part that isn't base64 end in its file.
enum class PartLineEnds {
  CrLf,  // In CR LF, also the last one, whose end belongs to the boundary.
  AsWritten,
};

// Parts that are no text and have no file name.
enum class NamelessParts {
  Inline,    // They stay in the mail's text as they stand.
  Attached,  // They are attachments of made names.
};

// A mail that is one file, without parts and without text.
enum class SoleFiles {
  Text,      // It is the text of the mail as it stands.
  Attached,  // It is the mail's only attachment.
};

// Attachments of one name in a mail.
enum class SameNames {
  OneFile,  // The last one takes the place of the others.
  Numbered,
};

// How a mailbox is opened to be read.
enum class MailboxOpening {
  ForWriting,  // It is made if it is missing; one that may not be written can't be read.
  ForReading,
};

// Which files of a folder are mailboxes.
enum class MailboxFiles {
  WithSummary,    // Those beside which their summary lies.
  OfThunderbird,  // These, and what is empty or holds mails, as far as it is looked at.
};

// The mailbox's summary file, after a mail was to be marked.
enum class Summaries {
  AlwaysRemoved,
  RemovedWithAMark,  // It stays where nothing was changed.
};

// What a mail, bookmark or event that can't be read does to the run.
enum class BrokenItems {
  EndTheRun,
  AreNamed,  // They are told with their place, and the next one comes; so with closed mailboxes and events.
};

// A file of 54 bytes, the length of a line of base64, that goes back into a mailbox with its mail.
enum class FilesOfOneLine {
  ComeBackEmpty,
  ComeBackWhole,
};

// What an address on the disks stands for that names a folder.
enum class FolderAddresses {
  OfMailboxes,  // For a mailbox of that name, too, which can't be read then.
  OfFolders,    // For the mailboxes in it.
};

// Mails of one ID that are read into a Location.
enum class EqualIds {
  Replace,   // The later one takes the place of the earlier one.
  Numbered,  // Each is an item; the ID of a second one ends in "~2".
};

// How lists and logs show paths.
enum class ShownPaths {
  OfComponent,  // As the component holds them: by drives.
  Native,       // As the system has them. Such a path is also taken for the address of what lies there.
};

// In which language programs show the texts of the component.
enum class ToldTexts {
  AsTold,           // As they come: those of the component and of its form in German.
  InUsersLanguage,  // In that of the user, German or English.
};

// Where the calendars of a profile lie.
enum class CalendarFiles {
  OfSunbird,      // In storage.sdb.
  OfThunderbird,  // In calendar-data\local.sqlite, and what that doesn't have in a storage.sdb.
};

// What times an event may have.
enum class CalendarTimes {
  Of32Bits,          // 1970 to January 2038; one from before comes out wrong, and one from after is an error.
  OfFourDigitYears,  // All that can be shown.
};

// How texts go into the calendar's statements, and a calendar's name into records.
enum class CalendarTexts {
  AsTheyStand,  // A quote spoils the statement, a bar ends the field.
  Escaped,
};

// How addresses name calendars.
enum class CalendarAddresses {
  OfSunbird,  // By names without "/". Preparing one of Lightning reads all profiles.
  Whole,      // A "/" in a name is "%2F". Preparing one reads what it names.
};

// How wide positions in mailboxes, counts of bookmarks and moments are.
enum class Widths {
  OfOld,  // 16 or 32 bits, beyond which is the overflow failure: mailboxes end at 2 GB, seconds in 2038.
  Ample,
};

// The end of a mail that is put back into a mailbox.
enum class MailEnds {
  GetALine,    // An empty line comes after it.
  KeepTheirs,  // Only where it doesn't end in one.
};

// All differences by name. Each is asked for in the one place where it decides. What both sets can read they
// read alike.
struct Rules {
#define RULE(Type, name, windows, today) Type name = windows;
#include "Platform/Rules.def"
#undef RULE

  // Required behaviour to the byte. In force until the host chooses.
  static Rules Windows() {
    return {};
  }

  // What a person expects of their files now.
  static Rules Today() {
    Rules rules;
#define RULE(Type, name, windows, today) rules.name = today;
#include "Platform/Rules.def"
#undef RULE
    return rules;
  }

  bool operator==(const Rules&) const = default;
};

// The rules in force. The host chooses them once, before anything is read.
VORLENT_PUBLIC const Rules& CurrentRules();
VORLENT_PUBLIC void ChooseRules(const Rules& rules);

}  // namespace vorlent
