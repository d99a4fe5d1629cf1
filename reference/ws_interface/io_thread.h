// A thread on which connections run, and its end.
//
// Threads: MakeWaker and Stop from any; MakeTransport on the I/O thread. Ownership: the thread owns the io_context and
// its sockets; whoever holds this object holds only the door to it. So a waker that outlives the thread wakes nobody.
#ifndef REFERENCE_WS_INTERFACE_IO_THREAD_H
#define REFERENCE_WS_INTERFACE_IO_THREAD_H

#include <memory>
#include <mutex>
#include <thread>

#include "reference/ws_interface/transport.h"

namespace reference::ws {

class TlsTrust;

class IoThread final : public Reactor {
 public:
  // Throws std::system_error when the thread cannot be started.
  explicit IoThread(std::shared_ptr<TlsTrust> trust);
  // Stops.
  ~IoThread() override;
  IoThread(const IoThread&) = delete;
  IoThread& operator=(const IoThread&) = delete;

  std::unique_ptr<Waker> MakeWaker(std::weak_ptr<WakerUser> user) override;
  std::shared_ptr<Transport> MakeTransport(const Endpoint& endpoint, std::chrono::milliseconds keepAlive) override;

  // Ends the thread after what it has been woken for, and waits for that; but not on the thread itself, not from inside
  // any notice, and no longer than a moment for the look-up of a name, which cannot be interrupted: then the thread
  // ends by itself. Needs no memory. May be called again. REQUIRES: the connections on this thread have been closed.
  void Stop();

 private:
  class Loop;
  class LoopWaker;

  const std::shared_ptr<Loop> loop;
  std::mutex threadMutex;
  std::thread thread;
};

}  // namespace reference::ws

#endif
