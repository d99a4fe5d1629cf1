// The thread of a service. When Stop has returned no notice begins any more, and none is running unless Stop was called
// from inside one, of any service.
#ifndef OWN_SERVICES_WORKER_H
#define OWN_SERVICES_WORKER_H

#include <memory>
#include <mutex>
#include <thread>

#include "base/export.h"

// Whether the calling thread is inside a notice. One variable for all the libraries.
SDK_BASE_API bool& InsideNotice();

class Worker {
 public:
  class Gate {
   public:
    // False when the service has been stopped, be it inside the notice, or when the sink is gone.
    template <class Sink, class Notice>
    bool Tell(const std::weak_ptr<Sink>& weakSink, Notice notice) {
      struct Scope {
        Scope() { InsideNotice() = true; }
        ~Scope() { InsideNotice() = false; }
      } const scope;  // made before sink: letting go of that may stop this very service
      const std::shared_ptr<Sink> sink = weakSink.lock();
      if (!sink || !IsOpen()) return false;
      notice(*sink);
      return IsOpen();
    }
    void Close() {
      const std::lock_guard<std::mutex> lock(mutex);
      isOpen = false;
    }

   private:
    bool IsOpen() {
      const std::lock_guard<std::mutex> lock(mutex);
      return isOpen;
    }

    std::mutex mutex;
    bool isOpen = true;
  };

  ~Worker() { Stop(); }

  // Runs work(gate) on a new thread. Once only; false afterwards.
  template <class Work>
  bool Start(Work work) {
    const std::lock_guard<std::mutex> lock(threadMutex);
    if (hasStarted) return false;
    hasStarted = true;
    const auto shared = gate;
    thread = std::thread([shared, work] { work(*shared); });
    return true;
  }

  void Stop() {
    gate->Close();
    std::thread ending;
    {
      const std::lock_guard<std::mutex> lock(threadMutex);
      ending.swap(thread);
    }
    if (!ending.joinable()) return;
    // Two services that stop each other from inside their notices would wait for ever.
    InsideNotice() ? ending.detach() : ending.join();
  }

 private:
  const std::shared_ptr<Gate> gate = std::make_shared<Gate>();
  std::mutex threadMutex;
  std::thread thread;
  bool hasStarted = false;
};

#endif
