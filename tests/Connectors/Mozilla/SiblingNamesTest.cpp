#include "Connectors/Mozilla/SiblingNames.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace vorlent {
namespace {

KeyedList<std::string> Listing(std::initializer_list<const char*> names) {
  KeyedList<std::string> listed;
  for (const char* name : names)
    listed.Add(std::string(name));
  return listed;
}

TEST(HasEndingTest, LetterCaseDoesNotCount) {
  EXPECT_TRUE(HasEnding("Inbox.msf", ".msf"));
  EXPECT_TRUE(HasEnding("INBOX.MSF", ".msf"));
  EXPECT_TRUE(HasEnding(".msf", ".msf"));
  EXPECT_FALSE(HasEnding("msf", ".msf"));
  EXPECT_FALSE(HasEnding("Inbox.msf2", ".msf"));
  EXPECT_FALSE(HasEnding("", ".msf"));
}

TEST(SiblingNamesTest, NamesAreFoundInAnyLetterCase) {
  const KeyedList<std::string> listed = Listing(
      {"Inbox", "Inbox.msf", "SENT", "sent.MSF", "notes.txt", "Entw\xFCrfe", "ENTW\xDCRFE.msf", ".msf"});
  const SiblingNames indexes(listed, ".msf");
  for (const char* name : {"Inbox", "INBOX", "SENT", "Sent", "Entw\xFCrfe", ""})
    EXPECT_TRUE(indexes.StandBeside(name)) << name;
  for (const char* name : {"notes.txt", "Inbox.msf", "Inbo", "Inboxx"})
    EXPECT_FALSE(indexes.StandBeside(name)) << name;
}

TEST(SiblingNamesTest, EmptyListingHoldsNothing) {
  const KeyedList<std::string> listed;
  EXPECT_FALSE(SiblingNames(listed, ".sbd").StandBeside("Inbox"));
}

}  // namespace
}  // namespace vorlent
