#include "Apps/CommandLine/MailSum.h"

#include <fmt/format.h>

#include <cstdio>

namespace vorlent::app {

namespace {

void ComplainOf(Session& session, const MailPlace& mail, const std::string& outcome) {
  session.Output().Complain(
      fmt::format("{}, mail at offset {}: {}", NativeShown(mail.mailbox), mail.offset, outcome));
}

}  // namespace

ExitCode ShowSum(Session& session, const RunTally& tally, const std::string& verb, const Cause& failure,
                 std::int64_t alreadyThere) {
  // The sum comes last, also where both outputs go to one place.
  std::fflush(stdout);
  for (const auto& [mail, why] : tally.Failed())
    ComplainOf(session, mail, CauseShown(why));
  for (const auto& [mail, why] : tally.Unmarked())
    ComplainOf(session, mail, "not marked as deleted: " + std::string(ReasonOf(why)));
  const bool told = session.ComplainOfErrors();
  const bool ofAMail = !tally.Failed().empty() && tally.Failed().back().why == failure;
  if (!failure.IsEmpty() && !ofAMail) session.Output().Complain(CauseShown(failure));
  if (!failure.IsEmpty()) session.Output().Complain("the run ended before its time");
  for (const Hint hint : tally.HintsWith(failure))
    session.Output().Say(EnglishTextOf(hint));
  const std::string there = alreadyThere == 0 ? "" : fmt::format("already there {} + ", alreadyThere);
  std::string sum =
      fmt::format("found {} = {} {} + {}expunged {} + failed {}", tally.Found(), verb,
                  tally.Delivered() - alreadyThere, there, tally.Expunged(), tally.Failed().size());
  if (!tally.Unmarked().empty()) sum += fmt::format(", not marked as deleted {}", tally.Unmarked().size());
  session.Output().Say(sum);
  if (tally.Found() == 0) return failure.IsEmpty() ? ExitCode::Partly : ExitCode::Unreadable;
  const bool isWhole = failure.IsEmpty() && tally.Failed().empty() && tally.Unmarked().empty() && !told;
  return isWhole ? ExitCode::Done : ExitCode::Partly;
}

}  // namespace vorlent::app
