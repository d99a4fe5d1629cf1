// A thread that carries HTTP requests: one libcurl multi handle, on which they run beside each other and share
// connections. It lasts until it has nothing more to do, so that a controller whose session stands costs no thread.
//
// Threads: every operation may be called from any thread, from inside a Done callback too. The Done callbacks are
// called on the worker's thread one after another, with no lock held; while one runs, no request makes progress. One
// that throws is logged, and costs the other requests nothing.
// Ownership: the thread owns what it works on together with this object, so this object may die inside a callback.
#ifndef REFERENCE_PASS_INTERFACE_HTTP_WORKER_H
#define REFERENCE_PASS_INTERFACE_HTTP_WORKER_H

#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

#include "reference/common/http_transfer.h"

namespace pass_interface {

using reference::HttpTransfer;

class HttpWorker {
 public:
  // Starts the thread with its first request. Empty when libcurl or the system has nothing to give.
  static std::unique_ptr<HttpWorker> Start(std::unique_ptr<HttpTransfer> first);
  ~HttpWorker();
  HttpWorker(const HttpWorker&) = delete;
  HttpWorker& operator=(const HttpWorker&) = delete;

  // 0: taken over, Done is called once unless the worker stops first. Otherwise a result of pass_result.h, kStopped
  // also when the thread has run out of work; the transfer is then left with the caller.
  std::int32_t Submit(std::unique_ptr<HttpTransfer>& transfer);

  // Wakes the thread, which drops every request without its callback and ends. Returns at once.
  void RequestStop();
  // Waits for the thread's end, unless the calling thread is this one or is delivering a notice. One caller waits.
  // REQUIRES: RequestStop was called.
  void Join();

 private:
  class Loop;

  explicit HttpWorker(std::shared_ptr<Loop> loop);

  const std::shared_ptr<Loop> loop;
  std::mutex threadMutex;
  // Guarded by threadMutex; not joinable once it has been joined or let go.
  std::thread thread;
};

}  // namespace pass_interface

#endif
