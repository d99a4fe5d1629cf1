#include "reference/common/notice_gate.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>

#include "tests/support/moment.h"

namespace {

using namespace std::chrono_literals;

struct Sink {
  int notices = 0;
};
using Gate = reference::NoticeGate<Sink>;

void Count(Sink& sink) {
  ++sink.notices;
}

TEST(NoticeGateTest, NoticesReachALivingSinkThroughAnOpenGateOnly) {
  auto sink = std::make_shared<Sink>();
  Gate gate(sink);
  EXPECT_TRUE(gate.Deliver(Count));
  gate.Close();
  EXPECT_FALSE(gate.Deliver(Count));
  EXPECT_EQ(sink->notices, 1);

  Gate orphan(sink);
  sink.reset();
  EXPECT_FALSE(orphan.Deliver(Count));
}

TEST(NoticeGateTest, CloseWaitsForTheNoticeInFlight) {
  const auto sink = std::make_shared<Sink>();
  Gate gate(sink);
  tests::Moment entered, leave;
  auto delivery = std::async(std::launch::async, [&] {
    gate.Deliver([&](Sink&) {
      entered.Come();
      EXPECT_TRUE(leave.Await());
    });
  });
  ASSERT_TRUE(entered.Await());

  auto closing = std::async(std::launch::async, [&] { gate.Close(); });
  EXPECT_EQ(closing.wait_for(50ms), std::future_status::timeout);
  leave.Come();
  EXPECT_EQ(closing.wait_for(tests::kPatience), std::future_status::ready);
}

TEST(NoticeGateTest, CloseFromInsideANoticeOfAnyGateReturns) {
  const auto sink = std::make_shared<Sink>();
  Gate first(sink);
  Gate second(sink);
  first.Deliver([&](Sink&) {
    second.Deliver([&](Sink&) {
      first.Close();
      second.Close();
    });
  });
  EXPECT_TRUE(first.IsClosed());
  EXPECT_TRUE(second.IsClosed());
}

}  // namespace
