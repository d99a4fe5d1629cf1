// A resolver that takes the place of the system's in the whole process, and keeps whoever asks for a name that begins
// with "hanging." waiting.
#include <dlfcn.h>
#include <netdb.h>

#include <chrono>
#include <string_view>
#include <thread>

// Longer than every time-out of the tests, and short enough for the threads that are left behind to end with them.
constexpr std::chrono::seconds kDelay{4};

extern "C" __attribute__((visibility("default"))) int getaddrinfo(const char* node, const char* service,
                                                                  const addrinfo* hints, addrinfo** found) {
  if (node != nullptr && std::string_view(node).starts_with("hanging.")) {
    // This is the fault itself, a look-up that hangs. No test waits for its end.
    std::this_thread::sleep_for(kDelay);
    return EAI_NONAME;
  }
  static const auto system = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
  return system(node, service, hints, found);
}
