#include "reference/common/notice_gate.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <stdexcept>

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
  std::promise<void> entered;
  std::promise<void> leave;
  auto delivery = std::async(std::launch::async, [&] {
    gate.Deliver([&](Sink&) {
      entered.set_value();
      leave.get_future().wait_for(10s);
    });
  });
  ASSERT_EQ(entered.get_future().wait_for(10s), std::future_status::ready);

  auto closing = std::async(std::launch::async, [&] { gate.Close(); });
  EXPECT_EQ(closing.wait_for(50ms), std::future_status::timeout);
  leave.set_value();
  EXPECT_EQ(closing.wait_for(10s), std::future_status::ready);
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

TEST(NoticeGateTest, TheSinkMayDieInsideItsNotice) {
  auto sink = std::make_shared<Sink>();
  Gate gate(sink);
  const std::weak_ptr<Sink> watch = sink;
  EXPECT_TRUE(gate.Deliver([&](Sink&) { sink.reset(); }));
  EXPECT_TRUE(watch.expired());
}

TEST(NoticeGateTest, AnExceptionOfTheSinksEndsItsNotice) {
  const auto sink = std::make_shared<Sink>();
  Gate gate(sink);
  EXPECT_THROW(gate.Deliver([](Sink&) { throw std::runtime_error("sink"); }), std::runtime_error);
  auto closing = std::async(std::launch::async, [&] { gate.Close(); });
  ASSERT_EQ(closing.wait_for(10s), std::future_status::ready);
}

}  // namespace
