// Connections as an OpenTelemetry collector receives them; the cloud is the collector, over the same verified TLS.
#include <gmock/gmock.h>
#include <json/json.h>

#include <set>

#include "reference/common/service_threads.h"
#include "reference/common/settings.h"
#include "tests/end_to_end/end_to_end.h"

namespace end_to_end {
namespace {

struct Traces : EndToEnd {
  // Of each connection that was received, once there are so many.
  std::vector<Json::Value> Receive(std::size_t count) {
    std::vector<Json::Value> connections;
    EXPECT_TRUE(CloudSees([&](const qv_cloud::CloudStats& stats) {
      connections.clear();
      for (const std::string& request : stats.traces) {
        Json::Value root;
        Json::Reader().parse(request, root);
        for (const auto& resource : root["resourceSpans"]) {
          EXPECT_EQ(resource["resource"]["attributes"][0]["value"]["stringValue"], "qv_data_interface");
          connections.push_back(resource["scopeSpans"][0]["spans"]);
        }
      }
      return connections.size() >= count;
    }));
    EXPECT_EQ(connections.size(), count);
    for (const std::string& request : Stats().traces) EXPECT_EQ(search.InText("a trace", request), Texts{});
    return connections;
  }

  // The connection first. Its steps are within it, one after the other.
  std::string NamesOfTree(const Json::Value& spans) {
    const auto time = [](const Json::Value& span, const char* key) { return std::stoll(span[key].asString()); };
    const Json::Value& parent = spans[0];
    EXPECT_EQ(parent["kind"], 3);
    EXPECT_EQ(parent["parentSpanId"], Json::Value());
    EXPECT_TRUE(traceIds.insert(parent["traceId"].asString()).second);
    // Nanoseconds of this century.
    EXPECT_EQ(parent["startTimeUnixNano"].asString().size(), 19U);
    long long reached = time(parent, "startTimeUnixNano");
    std::set<std::string> ids;
    std::string names;
    for (const Json::Value& span : spans) {
      names += span["name"].asString() + "; ";
      EXPECT_EQ(span["traceId"].asString().find_first_not_of("0123456789abcdef"), std::string::npos);
      EXPECT_EQ(span["traceId"].asString().size(), 32U);
      EXPECT_EQ(span["traceId"], parent["traceId"]);
      EXPECT_EQ(span["spanId"].asString().size(), 16U);
      EXPECT_TRUE(ids.insert(span["spanId"].asString()).second);
      if (ids.size() == 1) continue;
      EXPECT_EQ(span["parentSpanId"], parent["spanId"]);
      EXPECT_GE(time(span, "startTimeUnixNano"), reached) << span["name"];
      reached = time(span, "endTimeUnixNano");
      EXPECT_GE(reached, time(span, "startTimeUnixNano")) << span["name"];
    }
    EXPECT_EQ(reached, time(parent, "endTimeUnixNano"));
    return names;
  }

  std::set<std::string> traceIds;
};

TEST_F(Traces, EachConnectionIsOneTreeOfItsStepsAndAnErrorIsItsStatus) {
  qv_cloud::Faults faults = With(&qv_cloud::Faults::dropAfterFrames, 3);
  faults.refuseSpans = 7;
  StartCloud(faults);
  reference::SetOtlpEndpoint(cloud->BaseUrl());
  ASSERT_TRUE(ConnectToFirstFrame());
  ASSERT_TRUE(frontEnd->notices.WaitFor(kFirstFrame, 2));
  ASSERT_TRUE(ReleaseIsPrompt());
  const Json::Value first = Receive(1).at(0);
  EXPECT_EQ(
      NamesOfTree(first),
      "connection; phone-connect; resolve the name; TCP, TLS, WebSocket; authentication; choose the format; play; "
      "first frame; ");
  EXPECT_EQ(first[0]["status"], Json::Value());
  EXPECT_EQ(first[0]["attributes"][0]["value"]["stringValue"], targetId);

  credential1 += "-other";
  cloud->SetFaults(With(&qv_cloud::Faults::refuseConnect, 60301005));
  Connect();
  ASSERT_TRUE(frontEnd->notices.WaitFor("OnStatus(60301005"));
  const Json::Value refused = Receive(2).at(1);
  controller->ReleasePhoneConnect();
  EXPECT_EQ(NamesOfTree(refused), "connection; phone-connect; ");
  for (const Json::Value& span : refused) {
    EXPECT_EQ(span["status"]["code"], 2);
    EXPECT_EQ(span["status"]["message"], "phone-connect: error 60301005");
  }
  EXPECT_TRUE(reference::WaitForServiceThreads(kPatience));
  EXPECT_EQ(Receive(2).size(), 2U);
  EXPECT_THAT(Log(), testing::HasSubstr("has refused 7 spans"));
}

}  // namespace
}  // namespace end_to_end
