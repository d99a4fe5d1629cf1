#include "reference/ws_interface/shared_io_thread.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <mutex>
#include <thread>
#include <utility>

#include "reference/ws_interface/tls.h"

namespace reference::ws {
namespace {

class Pool {
 public:
  std::shared_ptr<IoThread> Join() {
    const std::lock_guard<std::mutex> lock(mutex);
    Seat& seat = *std::min_element(seats.begin(), seats.begin() + Size(),
                                   [](const Seat& a, const Seat& b) { return a.shares < b.shares; });
    if (!seat.thread) {
      if (!trust) trust = std::make_shared<TlsTrust>();
      seat.thread = std::make_shared<IoThread>(trust);
    }
    ++seat.shares;
    return seat.thread;
  }

  // The thread, when the share was the last one in it.
  std::shared_ptr<IoThread> Leave(const std::shared_ptr<IoThread>& thread) {
    std::shared_ptr<IoThread> ending;
    const std::lock_guard<std::mutex> lock(mutex);
    const auto seat = std::find_if(seats.begin(), seats.end(), [&](const Seat& s) { return s.thread == thread; });
    if (seat != seats.end() && --seat->shares == 0) ending.swap(seat->thread);
    return ending;
  }

 private:
  struct Seat {
    std::shared_ptr<IoThread> thread;
    std::size_t shares = 0;
  };
  static constexpr std::size_t kSeats = 16;

  static std::ptrdiff_t Size() {
    return static_cast<std::ptrdiff_t>(std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, kSeats));
  }

  std::mutex mutex;
  // Outlasts the threads, so that a reconnect need not make it again.
  std::shared_ptr<TlsTrust> trust;
  std::array<Seat, kSeats> seats;
};

// Never destroyed, for a share may be given back while the process ends; and the library stays loaded until then.
Pool& ThePool() {
  static Pool& pool = *new Pool;
  return pool;
}

}  // namespace

SharedIoThread::SharedIoThread() : thread(ThePool().Join()) {}

SharedIoThread::~SharedIoThread() {
  Stop();
}

void SharedIoThread::Stop() {
  if (givenBack.exchange(true)) return;
  if (const std::shared_ptr<IoThread> ending = ThePool().Leave(thread)) ending->Stop();
}

}  // namespace reference::ws
