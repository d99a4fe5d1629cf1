// Everything that can go wrong on the way, at every step of both hand-shakes: the wait ends by its time-out, the front
// end hears the right code, a release at that moment is prompt, and afterwards the same controller connects. A peer
// that must not be trusted gets nothing.
#include <algorithm>
#include <fstream>
#include <regex>
#include <sstream>

#include "reference/common/settings.h"
#include "tests/end_to_end/end_to_end.h"

namespace end_to_end {
namespace {

using qv_cloud::Faults;
using qv_cloud::HttpAnswer;
using qv_cloud::kDefaultLine;
using qv_cloud::ServedCertificate;
using qv_cloud::Step;

constexpr char kNoAnswer[] = "OnStatus(60702001, Http Req for phone-connect failed)";
// The states that the front end is told of. On a machine that is busy an attempt may take too long for its own reasons.
constexpr char kNeverStood[] = "(CD){2,}(CSD|CD)*CS";
constexpr char kStood[] = "(CD)*CSD(CSD|CD)*CS";
constexpr char kStaysAway[] = "(CD)+C?";
constexpr char kStands[] = "(CS?D)*CS";

struct Row {
  std::string name;
  std::string told;  // HTTP: the status; lines: the order of the states
  std::string logged;
  Faults faults;
  // Where the client is sent instead of to the cloud.
  std::string host = "localhost";
  std::uint16_t port = 0;
  ServedCertificate certificate = ServedCertificate::valid;

  bool IsHttp() const { return told.starts_with("OnStatus"); }
  bool IsTrusted() const { return certificate == ServedCertificate::valid; }
  bool IsForGood() const { return port != 0 || !IsTrusted(); }
  // Whether the cloud is there, and at fault in what comes behind the hand-shakes of HTTP.
  bool IsAnswerAwaited() const {
    return faults.httpSilentAt == Step::tls || faults.httpAnswer != HttpAnswer::normal || faults.httpLateMs != 0;
  }
  qv_cloud::CloudOptions Options() const {
    qv_cloud::CloudOptions options;
    options.faults = faults;
    (IsHttp() ? options.certificate : options.lineCertificate) = certificate;
    if (IsHttp()) return options;
    options.lineHost = host;
    options.linePort = port;
    return options;
  }
};

// Every fault at one step, and what the log says of each.
struct StepRow {
  const char* name;
  Step step;
  const char* told;
  const char* closed;
  const char* silent;
  const char* garbage;
  bool maySpeakLate = false;
};

struct Rows : std::vector<Row> {
  void Add(const StepRow& at, Step Faults::*closeAt, Step Faults::*silentAt, Step Faults::*garbageAt) {
    const auto add = [&](const char* kind, Step Faults::*member, const char* logged, std::uint32_t silentMs = 0) {
      push_back(Row{kind + std::string(at.name), at.told, logged, With(member, at.step)});
      back().faults.silentMs = silentMs;
    };
    add("ClosedAt", closeAt, at.closed);
    add("SilentAt", silentAt, at.silent);
    add("GarbageAt", garbageAt, at.garbage);
    if (!at.maySpeakLate) return;
    add("TooLateAt", silentAt, at.silent, 1500);
    if (back().IsHttp()) return;
    add("InTimeAt", silentAt, "connected and authenticated", 200);
    back().told = kStands;
  }

  // Where nobody listens, and at names that nobody has. The system says so at its own time.
  void AddElsewhere(const char* told, const char* refused, const char* unknown, const char* hanging) {
    push_back(Row{"refused", told, refused, {}, "localhost", 1});
    push_back(Row{"unknown", told, unknown, {}, "nowhere.invalid", 1});
    if (QV_NAMES_CAN_HANG) push_back(Row{"hanging", told, hanging, {}, "hanging.invalid", 1});
  }

  // What each library says of a certificate.
  void AddUntrusted(const std::string& kind, const char* told, const char* wrongHost) {
    for (const auto& [name, logged, certificate] :
         {std::tuple("Expired", "certificate has expired", ServedCertificate::expired),
          std::tuple("NotYetValid", "certificate is not yet valid", ServedCertificate::notYetValid),
          std::tuple("WrongHost", wrongHost, ServedCertificate::wrongHost),
          std::tuple("SelfSigned", "refused: self-signed certificate", ServedCertificate::selfSigned),
          std::tuple("UnknownAuthority", "refused: unknown authority", ServedCertificate::unknownAuthority),
          std::tuple("MissingIntermediate", "refused: incomplete chain", ServedCertificate::missingIntermediate),
          std::tuple("OldProtocol", "protocol too old", ServedCertificate::oldProtocol)}) {
      push_back(Row{kind + name, told, logged, {}});
      back().certificate = certificate;
    }
  }
};

Rows HttpRows() {
  // The numbers are libcurl's: 1 not HTTP, 28 timed out, 35 TLS failed, 52 and 56 nothing came; or the service's own.
  Rows rows;
  for (const StepRow& step : {StepRow{"Accept", Step::accept, kNoAnswer, "with 35", "with 28", "with 35", true},
                              StepRow{"Hello", Step::hello, kNoAnswer, "with 35", "with 28", "with 35"},
                              StepRow{"Tls", Step::tls, kNoAnswer, "with 5", "with 28", "with 1:"}}) {
    rows.Add(step, &Faults::httpCloseAt, &Faults::httpSilentAt, &Faults::httpGarbageAt);
  }
  rows.AddElsewhere(kNoAnswer, "failed with", "failed with", "with 28: Resolving timed out after 1");
  for (const Row& row : {Row{"ClosedAnswer", kNoAnswer, "with 5", {.httpAnswer = HttpAnswer::closed}},
                         Row{"NoAnswer", kNoAnswer, "with 28", {.httpAnswer = HttpAnswer::never}},
                         Row{"HalfAnAnswer", kNoAnswer, "with 28", {.httpAnswer = HttpAnswer::half}},
                         Row{"GarbageAnswer", kNoAnswer, "with -20", {.httpAnswer = HttpAnswer::garbage}},
                         Row{"LateAnswer", kNoAnswer, "with 28", {.httpLateMs = 3000}},
                         Row{"Status500", "OnStatus(60702002, Http Req for phone-connect can not get 200)",
                             "with status 500", Faults{.httpStatus = 500}},
                         Row{"RefusedWithACode", "OnStatus(60301005, phone connect refused)",
                             "get http code [60301005]", Faults{.refuseConnect = 60301005}}}) {
    rows.push_back(row);
  }
  return rows;
}

Rows LineRows() {
  const char* const noTls = "still TLS hand-shake, no open WebSocket within 1000 ms";
  const char* const noUpgrade = "still WebSocket upgrade, no open WebSocket within 1000 ms";
  const char* const noAuth = "no authRsp within 1000 ms";
  Rows rows;
  for (const StepRow& step :
       {StepRow{"Accept", Step::accept, kNeverStood, "TLS hand-shake: ", noTls, "TLS hand-shake: ", true},
        StepRow{"Hello", Step::hello, kNeverStood, "TLS hand-shake: ", noTls, "TLS hand-shake: "},
        StepRow{"Tls", Step::tls, kNeverStood, "WebSocket upgrade: ", noUpgrade, "bad version", true},
        StepRow{"Upgrade", Step::upgrade, kNeverStood, "connected: ", noAuth, "illegal opcode"},
        StepRow{"Auth", Step::auth, kNeverStood, "connected: ", noAuth, "malformed message", true},
        StepRow{"Play", Step::play, kStood, "connected: ", "no playRsp within 1000 ms", "malformed message", true},
        StepRow{"FirstFrame", Step::firstFrame, kStood, "connected: ", "silent for two keep-alive intervals",
                "malformed video frame"}}) {
    rows.Add(step, &Faults::closeAt, &Faults::silentAt, &Faults::garbageAt);
  }
  rows.AddElsewhere(kStaysAway, "connecting by TCP", "resolving the name",
                    "still resolving the name, no open WebSocket within 1000 ms");
  return rows;
}

// A cloud with a client, so that many connections go wrong side by side within the time of one.
struct Site {
  explicit Site(const Row& row) : row(row), cloud(row.Options()) {}

  // Init with a new front end and GetPhoneConnect. The time-out that is to end the wait is the shortest allowed; the
  // others are far beyond the patience of the test.
  void Connect() {
    qv_data_interface::QvDataSystemParam system;
    const bool isHttp = row.IsHttp(), isAnswer = row.IsAnswerAwaited(), isTimed = row.IsTrusted();
    system.httpValue1 = isTimed && isHttp && !isAnswer ? 1000 : 30000;
    system.httpValue2 = isTimed && isHttp && isAnswer ? 1000 : 60000;
    system.wsManagerValue = isTimed && !isHttp ? 1000 : 30000;
    system.wsOptionInterval = row.faults.silentAt == Step::firstFrame ? 1000 : 60000;
    const std::string baseUrl = isHttp ? "https://" + Address() : cloud.BaseUrl();
    frontEnd = std::make_shared<FrontEnd>();
    const qv_data_interface::QvVideoParam video;
    ASSERT_EQ(
        controller->Init("user", "device", "token", row.name.c_str(), 0, frontEnd, &video, &system, 7, baseUrl.c_str()),
        0);
    ASSERT_EQ(controller->GetPhoneConnect(), 0);
  }

  // Of its HTTP service or of its default line, as the log names it.
  std::string Address() const {
    if (row.port != 0) return row.host + ":" + std::to_string(row.port);
    const std::string url = cloud.BaseUrl();
    if (row.IsHttp()) return url.substr(url.find("//") + 2);
    return "localhost:" + std::to_string(cloud.LinePort(kDefaultLine));
  }

  const Row row;
  qv_cloud::Cloud cloud;
  std::shared_ptr<FrontEnd> frontEnd;
  std::shared_ptr<qv_data_interface::IQVDataInterface> controller = qv_data_interface::IQVDataInterface::Create();
};

struct Network : EndToEnd {
 protected:
  // Whether a line of the log names the address or the phone, and says that.
  bool IsLogged(const Site& site) const {
    std::istringstream log(Log());
    for (std::string line; std::getline(log, line);) {
      const auto has = [&line](const std::string& text) { return line.find(text) != std::string::npos; };
      if (has(site.row.logged) && (has(site.Address()) || has("[" + site.row.name + "]"))) return true;
    }
    return false;
  }

  void ExpectTheFault(const Site& site) const {
    const tests::NoticeRecord& notices = site.frontEnd->notices;
    if (site.row.IsHttp()) {
      EXPECT_TRUE(notices.WaitFor(site.row.told));
      EXPECT_EQ(notices.Lines(), Texts{site.row.told});
      EXPECT_EQ(site.cloud.Stats().lines[kDefaultLine].attempts, 0U);
      EXPECT_EQ(site.controller->SendInReq4(1, 2), -1);
      EXPECT_EQ(site.controller->GetPhoneConnect(), -1);
    } else if (site.row.told == kStands) {
      EXPECT_TRUE(notices.WaitFor(kFirstFrame));
    } else {
      for (std::size_t losses = 2; losses < 10 && (losses == 2 || !IsLogged(site)); ++losses) {
        ASSERT_TRUE(notices.WaitFor(kDisconnected, losses));
      }
    }
    EXPECT_TRUE(IsLogged(site)) << site.row.logged << " at " << site.Address();
    if (site.row.IsTrusted()) return;
    const qv_cloud::CloudStats stats = site.cloud.Stats();
    EXPECT_EQ(site.row.IsHttp() ? stats.phoneConnects : stats.lines.at(kDefaultLine).ever, 0U) << "something was sent";
  }

  // A line comes back by itself.
  static void ExpectTheReturn(const Site& site, std::size_t framesBefore) {
    if (site.row.IsHttp()) return;
    if (!site.row.IsForGood() && site.row.told != kStands) {
      EXPECT_TRUE(site.frontEnd->notices.WaitFor(kFirstFrame, framesBefore + 1));
    }
    const std::string states = site.frontEnd->States();
    EXPECT_TRUE(std::regex_match(states, std::regex(site.row.told))) << states;
  }

  // Whatever the client is doing, and when it has run into the fault anew.
  static void ExpectPromptReleases(Site& site) {
    site.cloud.SetFaults(site.row.faults);
    EXPECT_TRUE(ReleaseIsPrompt(*site.controller));
    const auto met = [isHttp = site.row.IsHttp()](const qv_cloud::CloudStats& stats) {
      return stats.faultsMet + (isHttp ? stats.phoneConnects : 0);
    };
    const auto before = met(site.cloud.Stats());
    site.Connect();
    EXPECT_TRUE(site.row.IsForGood() ||
                site.cloud.WaitUntil([&](const auto& stats) { return met(stats) > before; }, kPatience));
    EXPECT_TRUE(ReleaseIsPrompt(*site.controller));
    const auto released = site.frontEnd;
    const Texts told = released->notices.Lines();

    site.cloud.SetFaults({});
    if (!site.row.IsForGood()) {
      site.Connect();
      EXPECT_TRUE(site.frontEnd->notices.WaitFor(kFirstFrame));
      EXPECT_TRUE(ReleaseIsPrompt(*site.controller));
    }
    EXPECT_EQ(released->notices.Lines(), told);
  }

  void Run(const Rows& rows) {
    std::vector<std::unique_ptr<Site>> sites;
    const std::filesystem::path file = directory / "authorities.pem";
    std::ofstream authorities(file, std::ios::binary);
    for (const Row& row : rows) {
      sites.push_back(std::make_unique<Site>(row));
      authorities << ReadFile(sites.back()->cloud.AuthorityFile());
    }
    authorities.close();
    reference::SetAuthorityFile(file);
    for (const auto& site : sites) site->Connect();
    std::vector<std::size_t> frames;
    for (const auto& site : sites) {
      SCOPED_TRACE(site->row.name);
      ExpectTheFault(*site);
      frames.push_back(site->frontEnd->notices.Count(kFirstFrame));
      site->cloud.SetFaults({});
    }
    for (std::size_t i = 0; i < sites.size(); ++i) {
      SCOPED_TRACE(sites[i]->row.name);
      ExpectTheReturn(*sites[i], frames[i]);
    }
    for (const auto& site : sites) {
      SCOPED_TRACE(site->row.name);
      ExpectPromptReleases(*site);
    }
    RecordProperty("rows", static_cast<int>(rows.size()));
  }
};

TEST_F(Network, EveryFaultOnTheWayToTheServiceIsToldAndReleasedFrom) {
  Run(HttpRows());
}

TEST_F(Network, EveryPeerThatMustNotBeTrustedIsRefusedWithTheReason) {
  Rows rows;
  rows.AddUntrusted("Http", kNoAnswer, "no alternative certificate subject name matches target host name");
  rows.AddUntrusted("Line", kStaysAway, "refused: hostname mismatch");
  Run(rows);
}

TEST_F(Network, EveryFaultOnTheWayToALineIsToldAndReleasedFrom) {
  Run(LineRows());
}

}  // namespace
}  // namespace end_to_end
