// What the sweep is made of: stories, each a stretch of a connection's life, and the intruders that meet them.
//
// Threads: a story runs on a thread of its own, an intruder there or on another one.
// Ownership: tables without state. What an action works on is its fixture's.
#ifndef TESTS_LIBRARY_SWEEP_STORY_H
#define TESTS_LIBRARY_SWEEP_STORY_H

#include <functional>
#include <stdexcept>
#include <string_view>
#include <type_traits>
#include <vector>

#include "pass_interface/pass_interface_notic.h"
#include "tests/library/library_test.h"

namespace sweep {

using library_test::IWSInterfaceNotic;
using library_test::LibraryTest;
using pass_interface::IPassInterfaceNotic;

constexpr std::int32_t kSaysNothing = -2;

// A call of the front end's, written as a function of the fixture; or notices of the services', as one of their sinks.
struct Action {
  template <class Work>
  Action(Work work) : needsController(std::is_invocable_v<Work, LibraryTest&>) {
    run = [work](LibraryTest& test) {
      if constexpr (!std::is_invocable_v<Work, LibraryTest&>) {
        if (const auto sink = test.PassSink()) work(*sink, dynamic_cast<IWSInterfaceNotic&>(*sink));
        return kSaysNothing;
      } else if constexpr (std::is_void_v<std::invoke_result_t<Work, LibraryTest&>>) {
        work(test);
        return kSaysNothing;
      } else {
        return work(test);
      }
    };
  }

  bool needsController;
  std::function<std::int32_t(LibraryTest&)> run;
};

struct Story {
  std::string_view name;
  void (*prepare)(LibraryTest& test);
  Action action;
  int leastCallOuts;
};

struct Intruder {
  std::string_view name;
  Action action;
  bool releases = false;
};

// What the intruder "failure" makes of the call-out.
struct ServiceFailure : std::runtime_error {
  ServiceFailure() : std::runtime_error("the service fails") {}
};

// Where a controller may stand.
inline constexpr auto kIdle = [](LibraryTest&) {};
inline constexpr auto kReady = [](LibraryTest& test) { test.InitReady(); };
inline constexpr auto kRequested = [](LibraryTest& test) { test.Request(); };
inline constexpr auto kConnected = [](LibraryTest& test) { test.Connect(); };
inline constexpr auto kCached = [](LibraryTest& test) {
  test.Connect();
  test.controller->ReleasePhoneConnect();
  test.InitReady();
};

const std::vector<Story>& Stories();
const std::vector<Intruder>& Intruders();
const Intruder& Failure();

constexpr std::uint32_t kSessionExpired = 60103013;
constexpr std::int32_t kRefused = 4004;

// The services' answers and notices.
void BringAnswer(IPassInterfaceNotic& sink, std::int32_t transportResult, std::int32_t code, const char* sessionId);
void Renew(IPassInterfaceNotic& sink, std::int32_t code);
void EveryNotice(IWSInterfaceNotic& sink);

// What must hold after any story, whatever came in between.
struct StoryTest : LibraryTest {
  static void ExpectNothingHeld();
  // Releases, and then no notice or answer reaches anybody.
  void ExpectSilenceAfterRelease();
  // By the service; and releases again.
  void ExpectThatItConnectsAgain();
};

}  // namespace sweep

#endif
