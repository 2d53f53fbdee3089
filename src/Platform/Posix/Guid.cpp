#include "Platform/Guid.h"

#include <errno.h>
#include <pthread.h>
#include <sys/random.h>

#include <cstring>
#include <string>

#include "Platform/Failure.h"

namespace vorlent::os {

namespace {

// How often this process was forked off another.
unsigned forks = 0;

// Random bytes, drawn for many GUIDs at once and used up one by one.
class RandomBytes {
 public:
  std::array<std::uint8_t, 16> Next() {
    // A process that was forked off must not give out what its parent does.
    if (next_ == pool_.size() || drawnIn_ != forks) Draw();
    std::array<std::uint8_t, 16> bytes;
    std::memcpy(bytes.data(), pool_.data() + next_, bytes.size());
    next_ += bytes.size();
    return bytes;
  }

 private:
  void Draw() {
    static const int registered = pthread_atfork(nullptr, nullptr, [] { ++forks; });
    if (registered != 0) throw Failure(ErrorNumber::DeviceIo, "no random numbers: forks go unnoticed");
    next_ = pool_.size();
    for (std::size_t drawn = 0; drawn < pool_.size();) {
      const ssize_t count = getrandom(pool_.data() + drawn, pool_.size() - drawn, 0);
      if (count < 0 && errno != EINTR) {
        throw Failure(ErrorNumber::DeviceIo, std::string("no random numbers: ") + std::strerror(errno));
      }
      if (count > 0) drawn += static_cast<std::size_t>(count);
    }
    drawnIn_ = forks;
    next_ = 0;
  }

  std::array<std::uint8_t, 4096> pool_ = {};
  std::size_t next_ = pool_.size();
  unsigned drawnIn_ = 0;
};

}  // namespace

std::array<std::uint8_t, 16> NewGuidBytes() {
  thread_local RandomBytes random;
  std::array<std::uint8_t, 16> bytes = random.Next();
  // RFC 4122: the upper four bits of byte 6 are the version, the upper two of byte 8 are binary 10.
  bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
  bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);
  return bytes;
}

}  // namespace vorlent::os
