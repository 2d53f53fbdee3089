#include "Component/Com/InsideAnswers.h"

#include <map>
#include <memory>
#include <string_view>
#include <utility>

#include "Component/Com/Faces.h"
#include "Host/Com/Failures.h"
#include "Host/Com/HostFace.h"
#include "Host/Connector.h"
#include "Platform/SystemPlatform.h"

namespace vorlent::com {

namespace {

// The system's own platform but for its message boxes.
class ToldPlatform final : public SystemPlatform {
 public:
  explicit ToldPlatform(IMessages* messages) : messages_(messages) {}

  MessageAnswer ShowMessage(std::string_view text, std::string_view title, MessageIcon icon,
                            MessageButtons buttons) override {
    LONG answer = 0;
    Check(messages_->ShowMessage(Bstr(text).Get(), Bstr(title).Get(), static_cast<LONG>(icon),
                                 static_cast<LONG>(buttons), &answer));
    return static_cast<MessageAnswer>(answer);
  }

 private:
  ComPtr<IMessages> messages_;
};

VARIANT_BOOL Truth(bool truth) {
  return truth ? VARIANT_TRUE : VARIANT_FALSE;
}

// The observer of another program as one of the component's.
class ForeignObserver final : public MailRunObserver {
 public:
  explicit ForeignObserver(IRunObserver* observer) : observer_(observer) {}

  void ImportBegins(const LocationPtr& target, bool moves) override {
    Check(observer_->ImportBegins(FaceOf(target).Get(), Truth(moves)));
  }
  void MailsExpunged(std::int32_t count) override { Check(observer_->MailsExpunged(count)); }
  void MailDelivered(const MailPlace& mail, bool hidesPlace) override {
    Check(observer_->MailDelivered(Bstr(mail.mailbox).Get(), mail.offset, Truth(hidesPlace)));
  }
  void AttachmentUnmoved(std::string_view key, std::string_view path) override {
    Check(observer_->AttachmentUnmoved(Bstr(key).Get(), Bstr(path).Get()));
  }
  void MailFailed(const MailPlace& mail, const Cause& why) override {
    Check(observer_->MailFailed(Bstr(mail.mailbox).Get(), mail.offset, Bstr(why.path).Get(),
                                Bstr(why.reason).Get(), static_cast<LONG>(why.hint)));
  }
  void MarkingBegins(const std::string& mailbox) override {
    Check(observer_->MarkingBegins(Bstr(mailbox).Get()));
  }
  void MailNotMarked(const MailPlace& mail, Marking why) override {
    Check(observer_->MailNotMarked(Bstr(mail.mailbox).Get(), mail.offset, static_cast<LONG>(why)));
  }

 private:
  ComPtr<IRunObserver> observer_;
};

// Those that objects hear now.
std::map<const Object*, std::unique_ptr<ForeignObserver>>& Observers() {
  static auto* const observers = new std::map<const Object*, std::unique_ptr<ForeignObserver>>;
  return *observers;
}

template <class Contract>
Contract* As(Object& object) {
  return dynamic_cast<Contract*>(&object);
}

Value ObjectValue(const ComPtr<IDispatch>& object) {
  return Value(object.Get());
}

Value MailFiles(const MailConnector& connector) {
  return ObjectValue(ExposeList(std::make_shared<TextList>(connector.MailFiles())));
}

struct Question {
  std::string_view name;
  Value (*answer)(Object& object, const std::string& given);  // empty for an object without the member
};

Value TextValue(const std::string& text) {
  return Value(std::string_view(text));
}

const Question kQuestions[] = {
    {"MailFiles",
     [](Object& object, const std::string&) {
       const auto* mails = As<MailConnector>(object);
       return mails == nullptr ? Value() : MailFiles(*mails);
     }},
    {"HasRestored",
     [](Object& object, const std::string&) {
       const auto* mails = As<MailConnector>(object);
       return mails == nullptr ? Value() : Value(mails->HasRestored());
     }},
    {"ProfileFolder",
     [](Object& object, const std::string&) {
       const auto* bookmarks = As<BookmarkConnector>(object);
       return bookmarks == nullptr ? Value() : TextValue(bookmarks->ProfileFolder());
     }},
    {"DatabaseFile",
     [](Object& object, const std::string&) {
       if (const auto* bookmarks = As<BookmarkConnector>(object)) return TextValue(bookmarks->DatabaseFile());
       const auto* calendars = As<CalendarConnector>(object);
       return calendars == nullptr ? Value() : TextValue(calendars->DatabaseFile());
     }},
    {"SaveInto",
     [](Object& object, const std::string& given) {
       auto* bookmarks = As<BookmarkConnector>(object);
       if (bookmarks == nullptr) return Value();
       bookmarks->SaveInto(given);
       return Value(true);
     }},
};

[[noreturn]] void RaiseNoSuchMember(std::string_view name) {
  throw Failure(ErrorNumber::NoSuchMember, "no such member: " + std::string(name));
}

}  // namespace

void ShowMessagesBy(IMessages* messages) {
  Platform::Install(messages == nullptr ? nullptr : std::make_shared<ToldPlatform>(messages));
}

void Observe(Object& object, IRunObserver* observer) {
  auto made = observer == nullptr ? nullptr : std::make_unique<ForeignObserver>(observer);
  if (auto* mails = As<MailConnector>(object)) {
    mails->SetRunObserver(made.get());
  } else if (auto* actions = As<ActionList>(object)) {
    actions->SetRunObserver(made.get());
  } else {
    RaiseNoSuchMember("SetRunObserver");
  }
  if (made == nullptr) {
    Observers().erase(&object);
  } else {
    Observers()[&object] = std::move(made);
  }
}

Value Ask(Object& object, const std::string& question, const std::string& given) {
  for (const Question& known : kQuestions) {
    if (known.name != question) continue;
    Value answer = known.answer(object, given);
    if (answer->vt != VT_EMPTY) return answer;
  }
  RaiseNoSuchMember(question);
}

}  // namespace vorlent::com
