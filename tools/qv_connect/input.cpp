#include "tools/qv_connect/input.h"

#include <iostream>
#include <thread>

namespace qv_connect {

void StartReadingInput(std::shared_ptr<EventQueue> events) {
  std::thread([events = std::move(events)] {
    try {
      std::string line;
      while (std::getline(std::cin, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        events->Push(EventKind::kInput, 0, std::move(line));
        line.clear();
      }
      events->Push(EventKind::kInputEnd, 0, {});
    } catch (const std::bad_alloc&) {
      // Nothing to tell it with; the program goes on without input, and Ctrl-C ends it.
    }
  }).detach();
}

}  // namespace qv_connect
