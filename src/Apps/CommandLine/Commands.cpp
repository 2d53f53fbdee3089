#include "Apps/CommandLine/Commands.h"

#include "Apps/CommandLine/Verbs.h"

namespace vorlent::app {

const std::vector<Verb>& Verbs() {
  static const std::vector<Verb> verbs = {
      {"browse", "List what lies at an address: profiles, accounts, folders, calendars", "Reading",
       DeclareBrowse},
      {"read", "Read the items of an address: mails, bookmarks, events and tasks", "Reading", DeclareRead},
      {"get", "Bring the files of a mail out of its mailbox", "Reading", DeclareGet},
      {"stream", "Read mail by mail without holding a mailbox, and keep the mails", "Reading", DeclareStream},
      {"bookmarks", "Write the bookmarks of a Firefox profile as bookmarks.html", "Reading",
       DeclareBookmarks},
      {"import", "Copy or move mails into an archive", "Archive", DeclareImport},
      {"wizard", "Import with the wizard, in windows", "Archive", DeclareWizard},
      {"search", "Find mails in an archive", "Archive", DeclareSearch},
      {"restore", "Append an archived mail to a mailbox, attachments included", "Changing mailboxes",
       DeclareRestore},
      {"shortcut", "Append a mail that links to an archived one", "Changing mailboxes", DeclareShortcut},
      {"delete", "Mark mails as deleted in their mailbox", "Changing mailboxes", DeclareDelete},
      {"calendar", "Add, change and remove events and tasks of a calendar", "Changing calendars",
       DeclareCalendar},
  };
  return verbs;
}

}  // namespace vorlent::app
