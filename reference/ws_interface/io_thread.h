// The thread on which connections run, and its end.
//
// Threads: Post and Stop from any; MakeTimer and MakeTransport on the I/O thread. Ownership: the thread owns the
// io_context, its timers and sockets; whoever holds this object holds only the door to it. So an object that outlives
// the thread posts into nothing.
#ifndef REFERENCE_WS_INTERFACE_IO_THREAD_H
#define REFERENCE_WS_INTERFACE_IO_THREAD_H

#include <memory>
#include <mutex>
#include <thread>

#include "reference/ws_interface/transport.h"

namespace reference::ws {

class IoThread final : public Reactor {
 public:
  // Throws std::system_error when the thread cannot be started.
  IoThread();
  // Stops.
  ~IoThread() override;
  IoThread(const IoThread&) = delete;
  IoThread& operator=(const IoThread&) = delete;

  void Post(std::function<void()> task) override;
  std::unique_ptr<Timer> MakeTimer() override;
  std::shared_ptr<Transport> MakeTransport(const Endpoint& endpoint, std::chrono::milliseconds keepAlive) override;

  // Ends the thread after what is posted already, and waits for that; but not on the thread itself, not from inside any
  // notice, and no longer than a moment for a name resolution, which cannot be interrupted: then the thread ends by
  // itself. Needs no memory. May be called again. REQUIRES: the connections on this thread have been closed.
  void Stop();

 private:
  struct Loop;

  const std::shared_ptr<Loop> loop;
  std::mutex threadMutex;
  std::thread thread;
};

}  // namespace reference::ws

#endif
