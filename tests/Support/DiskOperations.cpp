#include "Support/DiskOperations.h"

#include <limits>
#include <utility>

#include "Support/DiskCalls.h"

namespace vorlent {

namespace {

constexpr long kNever = std::numeric_limits<long>::max();

// Without a constructor: calls come before the first of those has run.
constinit DiskPlan planned = {};
constinit char plannedEnd[4096] = {};  // the plan's, of which the text may be gone
constinit long callsSoFar = 0;
constinit bool wasReached = false;

constinit DiskCall watchedCalls = {};
constinit const DiskWatch::Watcher* watcherOfCalls = nullptr;

void Begin(const DiskPlan& plan) {
  callsSoFar = 0;
  wasReached = false;
  planned = plan;
  planned.pathEnd = std::string_view(plannedEnd, plan.pathEnd.copy(plannedEnd, sizeof plannedEnd));
}

void End() {
  planned = {};
}

bool IsAmong(DiskCall call, DiskCall calls) {
  return (static_cast<unsigned>(calls) & static_cast<unsigned>(call)) != 0;
}

}  // namespace

bool IsWatched(DiskCall call) {
  return watcherOfCalls != nullptr && IsAmong(call, watchedCalls);
}

void TellWatcher(DiskCall call, const std::string& path) {
  const DiskWatch::Watcher& watcher = *std::exchange(watcherOfCalls, nullptr);
  watcher(call, path);
  watcherOfCalls = &watcher;
}

bool IsPlanned(DiskCall call) {
  return IsAmong(call, planned.calls);
}

std::string_view PlannedPathEnd() {
  return planned.pathEnd;
}

bool FailsNow() {
  const long number = callsSoFar++;
  if (number < planned.number || (number > planned.number && planned.trouble != DiskTrouble::FromHere))
    return false;
  if (planned.trouble == DiskTrouble::Death) Die();
  wasReached = true;
  return true;
}

int PlannedError() {
  return planned.error;
}

DiskFault::DiskFault(const DiskPlan& plan) {
  Begin(plan);
}

DiskFault::~DiskFault() {
  End();
}

bool DiskFault::WasReached() const {
  return wasReached;
}

DiskCallCount::DiskCallCount(DiskCall calls, std::string_view pathEnd) {
  Begin({.calls = calls, .number = kNever, .pathEnd = pathEnd});
}

DiskCallCount::~DiskCallCount() {
  End();
}

long DiskCallCount::Count() const {
  return callsSoFar;
}

DiskWatch::DiskWatch(DiskCall calls, Watcher watcher) : watcher_(std::move(watcher)) {
  watchedCalls = calls;
  watcherOfCalls = &watcher_;
}

DiskWatch::~DiskWatch() {
  watcherOfCalls = nullptr;
}

}  // namespace vorlent
