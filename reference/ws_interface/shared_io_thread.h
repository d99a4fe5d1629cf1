// A manager's share in an I/O thread. The process has at most one such thread a core, however many managers and
// connections there are: the first managers start one each, the later ones join the one with the fewest.
//
// A notice that blocks holds up the other connections of its thread. When memory is short, a task that fails costs all
// of them their attempt, for nobody knows whose operation went with it; each begins anew.
//
// Threads: as of the thread behind it; Stop from any. Ownership: the thread ends with the last share in it.
#ifndef REFERENCE_WS_INTERFACE_SHARED_IO_THREAD_H
#define REFERENCE_WS_INTERFACE_SHARED_IO_THREAD_H

#include <atomic>
#include <memory>
#include <utility>

#include "reference/ws_interface/io_thread.h"

namespace reference::ws {

class SharedIoThread final : public Reactor {
 public:
  // Throws std::system_error when a thread is needed and cannot be started.
  SharedIoThread();
  // Stops.
  ~SharedIoThread() override;
  SharedIoThread(const SharedIoThread&) = delete;
  SharedIoThread& operator=(const SharedIoThread&) = delete;

  std::unique_ptr<Waker> MakeWaker(std::weak_ptr<WakerUser> user) override {
    return thread->MakeWaker(std::move(user));
  }
  std::shared_ptr<Transport> MakeTransport(const Endpoint& endpoint, std::chrono::milliseconds keepAlive) override {
    return thread->MakeTransport(endpoint, keepAlive);
  }

  // Gives the share back. When it was the last one in its thread, that thread is stopped, with what IoThread::Stop says
  // about waiting. Needs no memory. May be called again. REQUIRES: the connections of this share have been closed.
  void Stop();

 private:
  const std::shared_ptr<IoThread> thread;
  std::atomic<bool> givenBack{false};
};

}  // namespace reference::ws

#endif
