#include "tools/qv_connect/interrupt.h"

#include <atomic>
#include <csignal>

namespace qv_connect {
namespace {

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may touch nothing else");

void OnSignal(int number) {
  interrupted.store(true);
  std::signal(number, SIG_DFL);
}

}  // namespace

void InstallInterruptHandler() {
  std::signal(SIGINT, OnSignal);
  std::signal(SIGTERM, OnSignal);
}

bool Interrupted() {
  return interrupted.load();
}

}  // namespace qv_connect
