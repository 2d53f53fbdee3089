#include "Common/qzelCollection.h"

#include <algorithm>
#include <utility>

#include "Common/Width.h"
#include "Platform/Failure.h"

namespace vorlent {

namespace {

std::int32_t Sum(std::int32_t a, std::int32_t b) {
  return ToInt32(std::int64_t{a} + b);
}

std::int32_t Difference(std::int32_t a, std::int32_t b) {
  return ToInt32(std::int64_t{a} - b);
}

// How many positions are added when the capacity is used up.
std::int32_t GrowthOf(std::int32_t capacity) {
  return capacity < 300 ? 50 : capacity < 2000 ? 100 : 200;
}

// Whether the digits in front of a text make a number greater than 0.
bool BeginsWithPosition(std::string_view text) {
  const std::size_t end = text.find_first_not_of("0123456789");
  return text.substr(0, end).find_first_of("123456789") != std::string_view::npos;
}

}  // namespace

qzelCollection::qzelCollection() {
  Clear();
}

void qzelCollection::Clear() {
  itemCount_ = 0;
  slots_ = std::vector<Slot>(kFirstCapacity);
}

void qzelCollection::Add(std::any wrt, std::string_view key, std::int32_t before) {
  if (Capacity() == itemCount_) GrowArrays(Sum(itemCount_, GrowthOf(itemCount_)));
  itemCount_ = Sum(itemCount_, 1);
  std::int32_t position = itemCount_;
  if (before >= 1 && before < itemCount_) {
    ShiftPositions(before, 1);
    position = before;
  }
  Slot& slot = At(position);
  slot.value = std::move(wrt);
  slot.key = key;
  Link(position);
}

std::any qzelCollection::Item(const PositionOrKey& pos) const {
  const std::int32_t position = Resolve(pos);
  return IsLive(position) ? At(position).value : std::any();
}

void qzelCollection::Remove(const PositionOrKey& pos) {
  const std::int32_t position = Resolve(pos);
  if (!IsLive(position)) return;
  --itemCount_;
  UnlinkRange(position, 1);
  ShiftPositions(position, -1);
}

void qzelCollection::RemoveMulti(const PositionOrKey& pos, std::int32_t itmcount) {
  const std::int32_t position = Resolve(pos);
  if (!IsLive(position)) return;
  const bool fits = Difference(Sum(position, itmcount), 1) <= itemCount_;
  const std::int32_t effective = fits ? itmcount : itemCount_ - position - 1;
  itemCount_ = Difference(itemCount_, effective);
  UnlinkRange(position, effective);
  ShiftPositions(position, Difference(0, effective));
}

std::string qzelCollection::key(std::int32_t n) const {
  return IsLive(n) ? At(n).key : "";
}

std::int32_t qzelCollection::GetPosition(std::string_view key) const {
  if (key.empty()) return 0;
  std::int32_t position = heads_[HashKey(key)];
  while (position >= 1 && At(position).key != key)
    position = At(position).chainNext;
  // A chain that lost its order in doublings can lead below the first position.
  return std::max(position, 0);
}

// Each character, shifted by 0 to 5 bits in turn; 255 shifted by 5 is 8160, so no product leaves the buckets.
std::size_t qzelCollection::HashKey(std::string_view key) {
  std::size_t hash = 0;
  unsigned shift = 0;
  for (const char c : key) {
    hash ^= std::size_t{static_cast<unsigned char>(c)} << shift;
    shift = (shift + 1) % 6;
  }
  return hash;
}

std::int32_t& qzelCollection::HeadAt(std::int32_t negatedBucket) {
  const auto bucket = static_cast<std::size_t>(-std::int64_t{negatedBucket});
  if (bucket >= kBuckets) {
    throw Failure(ErrorNumber::SubscriptOutOfRange, "no bucket " + std::to_string(bucket));
  }
  return heads_[bucket];
}

qzelCollection::Slot& qzelCollection::At(std::int32_t position) {
  return const_cast<Slot&>(std::as_const(*this).At(position));
}

const qzelCollection::Slot& qzelCollection::At(std::int32_t position) const {
  if (position < 1 || position > Capacity()) {
    throw Failure(ErrorNumber::SubscriptOutOfRange, "no slot at position " + std::to_string(position));
  }
  return slots_[static_cast<std::size_t>(position - 1)];
}

std::int32_t qzelCollection::Resolve(const PositionOrKey& pos) const {
  return BeginsWithPosition(pos.Text()) ? ParseInt32(pos.Text()) : GetPosition(pos.Text());
}

void qzelCollection::GrowArrays(std::int32_t newCapacity) {
  slots_.resize(static_cast<std::size_t>(newCapacity));
}

// Puts the entry at the end of its key's chain.
void qzelCollection::Link(std::int32_t position) {
  Slot& slot = At(position);
  if (slot.key.empty()) {
    slot.chainPrev = 0;
  } else {
    const std::size_t bucket = HashKey(slot.key);
    std::int32_t& head = heads_[bucket];
    if (head == 0) {
      head = position;
      slot.chainPrev = -static_cast<std::int32_t>(bucket);
    } else {
      std::int32_t last = head;
      while (At(last).chainNext != 0)
        last = At(last).chainNext;
      At(last).chainNext = position;
      slot.chainPrev = last;
    }
  }
  slot.chainNext = 0;
}

void qzelCollection::UnlinkRange(std::int32_t start, std::int32_t n) {
  for (std::int32_t position = start; position < start + n; ++position) {
    const Slot& slot = At(position);
    if (slot.key.empty()) continue;
    if (slot.chainPrev < 1) {
      HeadAt(slot.chainPrev) = slot.chainNext;
    } else {
      At(slot.chainPrev).chainNext = slot.chainNext;
    }
    if (slot.chainNext > 0) At(slot.chainNext).chainPrev = slot.chainPrev;
  }
}

// Moves the slots from `start` on by `delta` and renumbers every link. The count is that after the change.
void qzelCollection::ShiftPositions(std::int32_t start, std::int32_t delta) {
  const auto renumber = [&](std::int32_t& position) {
    if (position >= start) position = Sum(position, delta);
  };
  for (std::int32_t& head : heads_)
    renumber(head);
  // The slots above the count keep what they hold: values are copied down, not taken away.
  if (delta >= 1) {
    for (std::int32_t i = itemCount_; i >= start + delta; --i)
      At(i) = At(i - delta);
  } else if (delta < 0) {
    for (std::int32_t i = start; i <= itemCount_; ++i)
      At(i) = At(i - delta);
  }
  for (std::int32_t i = 1; i <= itemCount_; ++i) {
    renumber(At(i).chainPrev);
    renumber(At(i).chainNext);
  }
}

}  // namespace vorlent
