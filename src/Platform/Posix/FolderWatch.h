// What happens in folders, told by the system.
#pragma once

#include <string_view>

#include "Platform/Posix/System.h"

namespace vorlent::os {

// Notes every name that appears in watched folders or goes from them, whoever did it, from the call that
// began to watch: what was done before a call of TakeChanges is told by it. Used from one thread.
class FolderWatch {
 public:
  static constexpr int kNone = -1;

  // The number of the watch over an open folder, kNone if it can't be watched, or if others could change it
  // unseen, as over a network.
  int Begin(int folder);
  void End(int watch);

  struct Change {
    enum class Kind { Appeared, Gone, WatchEnded, SomeLost };
    Kind kind;
    int watch;              // not of SomeLost, which concerns all
    std::string_view name;  // native, of what appeared or went
  };

  // Hands over what happened since the last call, in order. False if that can't be told.
  template <class Take>
  bool TakeChanges(Take&& take) {
    if (events_.Get() < 0) return true;
    alignas(8) char buffer[16 * 1024];
    ssize_t size;
    while ((size = Retry([&] { return read(events_.Get(), buffer, sizeof buffer); })) > 0) {
      for (std::string_view left(buffer, static_cast<std::size_t>(size)); !left.empty();)
        take(CutChange(left));
    }
    return size < 0 && errno == EAGAIN;
  }

 private:
  static Change CutChange(std::string_view& events);

  Descriptor events_{-1};
};

}  // namespace vorlent::os
