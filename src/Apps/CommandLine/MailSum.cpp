#include "Apps/CommandLine/MailSum.h"

#include <cstdio>

namespace vorlent::app {

namespace {

void ComplainOf(Session& session, const MailPlace& mail, const std::string& outcome) {
  session.Output().Complain(
      InWords(Phrase::MailAtOffset, {NativeShown(mail.mailbox), std::to_string(mail.offset), outcome}));
}

}  // namespace

ExitCode ShowSum(Session& session, const RunTally& tally, Phrase verb, const Cause& failure,
                 std::int64_t alreadyThere) {
  // The sum comes last, also where both outputs go to one place.
  std::fflush(stdout);
  for (const auto& [mail, why] : tally.Failed())
    ComplainOf(session, mail, CauseShown(why));
  for (const auto& [mail, why] : tally.Unmarked())
    ComplainOf(session, mail, InWords(Phrase::NotMarkedAsDeleted, {InWords(why)}));
  const bool told = session.ComplainOfErrors();
  const bool ofAMail = !tally.Failed().empty() && tally.Failed().back().why == failure;
  if (!failure.IsEmpty() && !ofAMail) session.Output().Complain(CauseShown(failure));
  if (!failure.IsEmpty()) session.Output().Complain(InWords(Phrase::EndedEarly));
  for (const Hint hint : tally.HintsWith(failure))
    session.Output().Say(InWords(hint));
  const auto counted = [](auto count) { return std::to_string(count); };
  const std::string there = alreadyThere == 0 ? "" : InWords(Phrase::AlreadyThere, {counted(alreadyThere)});
  std::string sum =
      InWords(Phrase::Sum, {counted(tally.Found()), InWords(verb), counted(tally.Delivered() - alreadyThere),
                            there, counted(tally.Expunged()), counted(tally.Failed().size())});
  if (!tally.Unmarked().empty()) sum += InWords(Phrase::SumOfUnmarked, {counted(tally.Unmarked().size())});
  session.Output().Say(sum);
  if (tally.Found() == 0) return failure.IsEmpty() ? ExitCode::Partly : ExitCode::Unreadable;
  const bool isWhole = failure.IsEmpty() && tally.Failed().empty() && tally.Unmarked().empty() && !told;
  return isWhole ? ExitCode::Done : ExitCode::Partly;
}

}  // namespace vorlent::app
