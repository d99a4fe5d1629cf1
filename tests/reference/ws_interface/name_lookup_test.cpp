// Look-ups of names while the system's resolver hangs. This one takes its place in the whole process.
#include "reference/ws_interface/name_lookup.h"

#include <gtest/gtest.h>
#include <netdb.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "reference/common/service_threads.h"

namespace {

struct Resolver {
  std::mutex mutex;
  std::condition_variable changed;
  bool hangs = true;
  std::size_t asked = 0, inside = 0, most = 0;
} resolver;

}  // namespace

extern "C" __attribute__((visibility("default"))) int getaddrinfo(const char*, const char*, const addrinfo*,
                                                                  addrinfo**) {
  std::unique_lock lock(resolver.mutex);
  ++resolver.asked;
  resolver.most = std::max(resolver.most, ++resolver.inside);
  resolver.changed.notify_all();
  resolver.changed.wait_for(lock, std::chrono::seconds(20), [] { return !resolver.hangs; });
  --resolver.inside;
  return EAI_NONAME;
}

namespace reference::ws {
namespace {

TEST(NameLookUp, SomeHangSideBySideAndAllAreAnsweredOnceTheResolverIsWell) {
  constexpr std::size_t kLookUps = 3 * kMaxLookUpThreads;
  boost::asio::io_context context(1);
  std::size_t answered = 0;
  std::vector<std::shared_ptr<const void>> wanted;
  for (std::size_t i = 0; i < kLookUps; ++i) {
    wanted.push_back(
        LookUp(context, "phone.invalid", 1, [&](const auto& error, const auto&) { answered += error ? 1 : 0; }));
  }
  {
    std::unique_lock lock(resolver.mutex);
    ASSERT_TRUE(
        resolver.changed.wait_for(lock, std::chrono::seconds(20), [] { return resolver.inside == kMaxLookUpThreads; }));
    // The last of them wait still, and are asked for nothing.
    wanted.resize(2 * kMaxLookUpThreads);
    resolver.hangs = false;
    resolver.changed.notify_all();
  }
  context.run();
  EXPECT_EQ(answered, kLookUps);
  EXPECT_TRUE(WaitForServiceThreads(std::chrono::seconds(20)));
  EXPECT_EQ(resolver.asked, wanted.size());
  EXPECT_EQ(resolver.most, kMaxLookUpThreads);
}

}  // namespace
}  // namespace reference::ws
