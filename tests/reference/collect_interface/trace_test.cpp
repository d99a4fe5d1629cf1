// Which connections are traced, once each and as what; and what the sending costs when the collector fails.
#include <gtest/gtest.h>

#include "reference/collect_interface/connection_trace.h"
#include "reference/collect_interface/trace_exporter.h"
#include "reference/collect_interface/trace_target.h"
#include "reference/common/service_threads.h"
#include "reference/common/settings.h"
#include "tests/support/moment.h"
#include "tests/support/transcribed.h"
#include "tools/qv_cloud/cloud.h"

namespace collect_interface {
namespace {

using std::chrono::steady_clock;
using tests::kPatience;

using Milestones = decltype(ConnectionTrace::milestones);

Milestones At(std::int64_t begin, std::int64_t granted, std::int64_t frame) {
  return {{"startGetInstanceInfo", begin}, {"endGetInstanceInfo", granted}, {"recvFirstFrame", frame}};
}

struct Told {
  int type, state;
  const char* code = "";
  Milestones milestones = At(10, 0, 0);
};

TEST(ConnectionWatchTest, AConnectionIsTracedOnceAndAsWhatItCameTo) {
  const Told stands{1, 3}, frame{1, 2, "", At(10, 11, 19)}, loss{0, 6, "60701002"}, release{1, 4, "", At(10, 11, 19)};
  const Told abandoned{1, 4, "", At(10, 11, 0)}, serviceError{0, 5, "60301007", At(10, 11, 0)};
  const struct {
    std::vector<Told> told;
    const char* traces;
  } rows[] = {
      {{stands, frame, loss, frame, release}, "frame "},
      {{stands, loss, frame, release}, "frame "},
      {{stands, release}, "frame "},  // of an embedding SDK that sends no 1/2
      {{release}, ""},                // one that has been forgotten
      {{{0, 5, "60301005"}, abandoned}, "failed60301005 "},
      {{{0, 0, "60702001"}, {0, 0, "60702001"}}, "failed60702001 "},
      {{loss, abandoned}, "failed60701002 "},
      {{serviceError}, ""},
      {{serviceError, loss, abandoned}, "failed60301007 "},
      {{abandoned, abandoned, {0, 0, "60702001", At(10, 11, 0)}}, "released "},
      {{frame, release, {0, 0, "60702001", At(30, 11, 19)}, {1, 4, "", At(30, 11, 19)}}, "frame failed60702001 "},
      {{frame, release, {0, 5, "60301005", At(19, 11, 19)}}, "frame failed60301005 "},  // within a millisecond
      {{frame, {1, 4, "", At(30, 11, 19)}}, "frame released "},
      {{{1, 2, "", {}}, {1, 4, "", {}}}, ""},
  };
  for (const auto& row : rows) {
    ConnectionWatch watch;
    std::string traces;
    for (const Told& told : row.told) {
      auto status = std::make_shared<pass_interface::MessageCollectStatusData>();
      status->errorCode = told.code;
      status->milestones = told.milestones;
      const auto trace = watch.OnMessage({told.type, told.state, 1, 25, "", status}, "sdk");
      const char* const outcomes[] = {"frame", "failed", "released"};
      if (trace) traces += outcomes[static_cast<int>(trace->outcome)] + trace->errorCode + " ";
    }
    EXPECT_EQ(traces, row.traces) << "row " << &row - rows;
  }
}

struct TraceTargets : tests::Transcribed<> {
  ~TraceTargets() override {
    reference::SetOtlpEndpoint("");
    reference::SetOtlpHeaders("");
  }
};

TEST_F(TraceTargets, ABadSettingIsNamedAndNotShown) {
  ForEachCase([](const std::string& line) {
    const std::size_t blank = line.find(' ');
    const bool isEndpoint = line.substr(0, blank) == "endpoint";
    (isEndpoint ? reference::SetOtlpEndpoint : reference::SetOtlpHeaders)(line.substr(blank + 1));
    const TraceTarget target = CurrentTraceTarget();
    EXPECT_EQ(target.problem.find("secret"), std::string::npos);
    return target.url.empty() ? target.problem : target.url + " " + testing::PrintToString(target.settings.headers);
  });
}

struct TraceExporterTest : testing::Test {
  TraceExporterTest() { reference::SetOtlpEndpoint(cloud.BaseUrl()); }
  bool Sees(std::uint64_t requests, std::size_t delivered = 0) {
    const auto condition = [&](const qv_cloud::CloudStats& stats) {
      return stats.traceRequests >= requests && stats.traces.size() >= delivered;
    };
    return cloud.WaitUntil(condition, kPatience);
  }
  // Lets a request fail, and sees it.
  void Fail(TraceExporter& sender, std::uint32_t status, std::uint32_t retryAfter, qv_cloud::HttpAnswer answer = {}) {
    const std::uint64_t before = cloud.Stats().traceRequests;
    qv_cloud::Faults faults;
    faults.httpStatus = status;
    faults.httpRetryAfter = retryAfter;
    faults.httpAnswer = answer;
    cloud.SetFaults(faults);
    sender.Submit({});
    EXPECT_TRUE(Sees(before + 1));
  }

  static qv_cloud::CloudOptions Plain() {
    qv_cloud::CloudOptions options;
    options.plain = true;
    return options;
  }

  qv_cloud::Cloud cloud{Plain()};
  TraceExporter exporter{
      {3000, 10000, 3, std::chrono::milliseconds(1), std::chrono::milliseconds(5000), std::chrono::milliseconds(400)}};
};

TEST_F(TraceExporterTest, AFailureThatMayPassIsTriedAgainAndTheOthersAreNot) {
  const struct {
    std::uint32_t status, retryAfter;
    std::uint64_t requests;
  } rows[] = {{400, 0, 1}, {500, 0, 1}, {429, 3600, 1}, {429, 0, 3}, {502, 0, 3}, {503, 0, 3}, {504, 0, 3}};
  std::uint64_t requests = 0, delivered = 0;
  for (const auto& row : rows) {
    Fail(exporter, row.status, row.retryAfter);
    EXPECT_TRUE(Sees(requests += row.requests)) << row.status;
    cloud.SetFaults({});
    // Goes out once the first one has been given up.
    exporter.Submit({});
    EXPECT_TRUE(Sees(++requests, ++delivered)) << row.status;
    EXPECT_EQ(cloud.Stats().traceRequests, requests) << row.status;
    EXPECT_EQ(exporter.Dropped(), delivered) << row.status;
  }
  EXPECT_TRUE(reference::WaitForServiceThreads(kPatience));
}

TEST_F(TraceExporterTest, AHostThatWaitsLetsASlowCollectorAnswer) {
  cloud.SetFaults({.httpLateMs = 600});
  TraceExporter patient;
  patient.Submit({});
  EXPECT_TRUE(reference::WaitForServiceThreads(kPatience));
  EXPECT_EQ(patient.Dropped(), 0U);
  EXPECT_TRUE(Sees(1, 1));
  patient.Submit({});
  reference::WaitForServiceThreads(std::chrono::milliseconds(1));
  EXPECT_TRUE(reference::WaitForServiceThreads(kPatience));
  EXPECT_EQ(patient.Dropped(), 1U) << "the first host to wait says how long";
}

TEST_F(TraceExporterTest, ACollectorThatHangsDelaysNothingAndTheQueueStaysBounded) {
  std::uint64_t drops = 0;
  // In the middle of a request, which is lost with the queue; and of a pause, after which all is tried at once.
  for (const bool isPause : {false, true}) {
    Fail(exporter, isPause ? 503 : 200, 4, isPause ? qv_cloud::HttpAnswer::normal : qv_cloud::HttpAnswer::never);
    for (std::size_t i = 0; i < kMaxQueued + 5; ++i) exporter.Submit({});
    EXPECT_EQ(exporter.Dropped(), drops += 5);
    // Another one's pause, by the end of which the first one's thread has long been waiting.
    TraceExporter other;
    const std::size_t delivered = cloud.Stats().traces.size();
    const auto pause = steady_clock::now();
    Fail(other, 503, 1);
    cloud.SetFaults({});
    ASSERT_TRUE(Sees(0, delivered + 1));
    EXPECT_GE(steady_clock::now() - pause, std::chrono::seconds(1));
    const auto begin = steady_clock::now();
    EXPECT_TRUE(reference::WaitForServiceThreads(kPatience));
    EXPECT_LT(steady_clock::now() - begin, std::chrono::milliseconds(800)) << "400 are allowed";
    EXPECT_EQ(exporter.Dropped(), drops += isPause ? 0 : kMaxQueued + 1);
  }
}

}  // namespace
}  // namespace collect_interface
