// An observer of runs over mails that notes what it hears.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Host/MailRunObserver.h"

namespace vorlent::test {

inline std::string_view NameOf(Marking marking) {
  static constexpr std::array<std::string_view, 9> kNames = {"Marked",     "NoStatus",   "BadStatus",
                                                             "NoNumber",   "OtherMail",  "HiddenPlace",
                                                             "KeptByUser", "Unreadable", "ReadOnly"};
  return kNames.at(static_cast<std::size_t>(marking));
}

// Every call becomes one line of `events`, such as "delivered Inbox at 250", with mailboxes by their bare
// names.
class RecordingRunObserver : public MailRunObserver {
 public:
  void ImportBegins(const LocationPtr& target, bool moves) override {
    Note(std::string(moves ? "moving" : "copying") + " to " + target->Name());
  }
  void MailsExpunged(std::int32_t count) override { Note("expunged " + std::to_string(count)); }
  void MailDelivered(const MailPlace& mail, bool hidesPlace) override {
    last = mail;
    Note("delivered " + Place(mail) + (hidesPlace ? ", hidden" : ""));
  }
  void MailFailed(const MailPlace& mail, const Cause& why) override {
    last = mail;
    Note("failed " + Place(mail) + ": " + why.Text());
  }
  void MarkingBegins(const std::string& mailbox) override {
    Note("marking in " + BareName(mailbox));
    if (onMarking) onMarking(mailbox);
  }
  void MailNotMarked(const MailPlace& mail, Marking why) override {
    Note("not marked " + Place(mail) + ": " + std::string(NameOf(why)));
  }

  std::vector<std::string> events;
  MailPlace last;  // the mail delivered or failed last
  std::function<void(const std::string& mailbox)> onMarking;

 private:
  static std::string BareName(std::string_view path) {
    return std::string(path.substr(path.rfind('\\') + 1));
  }
  static std::string Place(const MailPlace& mail) {
    return BareName(mail.mailbox) + " at " + std::to_string(mail.offset);
  }
  void Note(std::string event) { events.push_back(std::move(event)); }
};

}  // namespace vorlent::test
