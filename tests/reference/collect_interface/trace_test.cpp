// Which connections are traced, once each and as what; and what the sending costs when the collector fails.
#include <map>
#include <sstream>

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

// A message of the library's, and when the request of its connection began, was granted, and the first frame came.
struct Told {
  int type, state;
  const char* code;
  std::int64_t begin, granted = 0, frame = 0;
};

const std::map<std::string, Told> kMessages = {
    {"stands", {1, 3, "", 10}},
    {"frame", {1, 2, "", 10, 11, 19}},
    {"loss", {0, 6, "60701002", 10}},
    {"release", {1, 4, "", 10, 11, 19}},
    {"release-without-frame", {1, 4, "", 10, 11}},
    {"release-of-the-next", {1, 4, "", 30, 11, 19}},
    {"refusal", {0, 5, "60301005", 10}},
    {"refusal-of-the-next-in-the-frame's-millisecond", {0, 5, "60301005", 19, 11, 19}},
    {"refusal-of-a-refresh", {0, 5, "60301007", 10, 11}},
    {"failure", {0, 0, "60702001", 10}},
    {"failure-after-the-release", {0, 0, "60702001", 10, 11}},
    {"failure-of-the-next", {0, 0, "60702001", 30, 11, 19}},
    {"without-milestones", {1, 2, "", 0}}};

using ConnectionWatches = tests::Transcribed<>;

TEST_F(ConnectionWatches, TraceAConnectionOnceAndAsWhatItCameTo) {
  ForEachCase([](const std::string& line) {
    ConnectionWatch watch;
    std::string traces;
    std::istringstream words(line);
    for (std::string word; words >> word;) {
      const Told& told = kMessages.at(word);
      auto status = std::make_shared<pass_interface::MessageCollectStatusData>();
      status->errorCode = told.code;
      if (told.begin != 0) {
        status->milestones = {
            {"startGetInstanceInfo", told.begin}, {"endGetInstanceInfo", told.granted}, {"recvFirstFrame", told.frame}};
      }
      constexpr const char* kOutcomes[] = {"frame", "failed ", "released"};
      const auto trace = watch.OnMessage({told.type, told.state, 1, 25, "", status}, "sdk");
      traces += word + (trace ? ": " + (kOutcomes[static_cast<int>(trace->outcome)] + trace->errorCode) : "") + "; ";
    }
    return traces;
  });
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
