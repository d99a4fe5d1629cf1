// Every interleaving at every call-out. The library starts no thread and waits only on its own locks, so each call that
// it makes into a service or into the front end is a point where something else may come in between. Each story is
// stopped inside its 1st, 2nd, 3rd... call-out; there each intruder runs to its end, or until it waits for the story;
// then the story goes on, and what must always hold is checked.
//
// To run one schedule alone, name it in the environment: QV_SCHEDULE="release/3/beside/ChangeIsp". "release"
// and "release/3/beside" select more.
#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>

#include "tests/library/fakes/threads.h"
#include "tests/library/sweep/story.h"

namespace sweep {
namespace {

using fakes::Recorder;
using fakes::Worker;
using library_test::Calls;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

// Beside: on a thread of its own. Inside: on the story's thread, as a service or a front end that calls back.
enum class Mode { kBeside, kInside };

// How long an intruder that may have to wait for the story is given to show that it does not.
constexpr std::chrono::milliseconds kProbe{20};

struct Schedule {
  const Story& story;
  int callOut;
  Mode mode;
  const Intruder& intruder;

  std::string Name() const {
    return std::string(story.name) + "/" + std::to_string(callOut) + (mode == Mode::kBeside ? "/beside/" : "/inside/") +
           std::string(intruder.name);
  }
  // A change of the line waits for the one before it, though not for its notice; nothing else waits for anything.
  bool MayWaitFor(std::string_view call) const {
    return (intruder.name == "ChangeIsp" || intruder.name == "reconnect") && story.name.starts_with("line switch") &&
           !call.starts_with("notice.");
  }
};

struct Outcome {
  // The call at which the story was stopped.
  std::string where;
  std::string trouble;
  bool hasWaited = false;
  bool hasThrown = false;
  std::int32_t story = kSaysNothing;
  std::int32_t intruder = -1;
};

bool IsSelected(const std::string& name) {
  const char* const wanted = std::getenv("QV_SCHEDULE");
  return wanted == nullptr || (name + "/").starts_with(std::string(wanted) + "/");
}

// The schedule that runs, for the message of a process that it ends.
std::string current;

struct Sweep : StoryTest {
  Sweep() {
    std::set_terminate([] {
      std::cerr << "terminated in " << current << std::endl;
      std::abort();
    });
  }

  Outcome Run(const Schedule& schedule) {
    current = schedule.Name();
    Outcome outcome;
    std::optional<Worker> intruder;
    const auto intrude = [&] {
      try {
        const Action& action = schedule.intruder.action;
        // In the midst of a destruction there is no pointer to call through.
        if (controller || !action.needsController) outcome.intruder = action.run(*this);
      } catch (const ServiceFailure&) {
        throw;
      } catch (const std::exception& error) {
        outcome.trouble = std::string("the intruder throws: ") + error.what();
      }
    };
    int count = 0;
    const Recorder::OnEachCall stopAtCallOut = [&](const char* call) {
      if (++count != schedule.callOut) return;
      outcome.where = call;
      Recorder::Watch(nullptr);
      if (schedule.mode == Mode::kInside) {
        intrude();
      } else {
        intruder.emplace(intrude, current);
        outcome.hasWaited = schedule.MayWaitFor(call) && !intruder->EndsWithin(kProbe);
        if (!outcome.hasWaited) intruder->Finish();
      }
      const bool isGone = outcome.where.starts_with("ws.") && Services().connections.front().object.expired();
      if (isGone) outcome.trouble = "the connection is destroyed inside a call";
    };
    const auto tell = [&] {
      Recorder::Watch(&stopAtCallOut);
      try {
        outcome.story = schedule.story.action.run(*this);
      } catch (const ServiceFailure&) {
        outcome.hasThrown = true;
      } catch (const std::exception& error) {
        outcome.trouble = std::string("the story throws: ") + error.what();
      }
      Recorder::Watch(nullptr);
    };
    Worker(tell, current).Finish();
    if (intruder) intruder->Finish();
    return outcome;
  }

  void ExpectResults(const Schedule& schedule, const Outcome& outcome) {
    EXPECT_FALSE(outcome.where.empty()) << "the story has fewer call-outs than it had";
    EXPECT_EQ(outcome.trouble, "");
    if (schedule.intruder.name == Failure().name) {
      EXPECT_EQ(outcome.hasThrown, schedule.story.name != "destruction") << "it reaches who called";
      return;
    }
    if (schedule.intruder.name == "second connect") {
      const bool connects = schedule.story.name.starts_with("connect with");
      EXPECT_EQ((outcome.intruder == 0) + (connects && outcome.story == 0), connects) << "one of two proceeds";
    } else if (outcome.story != kSaysNothing) {
      const bool isOvertaken =
          schedule.intruder.releases && schedule.story.name != "init" && schedule.story.name != "command";
      EXPECT_EQ(outcome.story, isOvertaken || schedule.story.name == "line switch that fails" ? -1 : 0);
    }
    if (schedule.intruder.name == "ChangeIsp" && outcome.intruder != -1) {
      EXPECT_EQ(outcome.intruder, 0);
      EXPECT_EQ(LastConnection().url, "wss://line-2.cloud.example:82");
    }
    if (schedule.story.name == "line switch" && schedule.intruder.name == "ChangeIsp") {
      EXPECT_EQ(outcome.hasWaited, schedule.mode == Mode::kBeside) << "changes of the line exclude each other";
      EXPECT_EQ(outcome.intruder, schedule.mode == Mode::kBeside ? 0 : -1);
    }
    if (schedule.story.name == "release") {
      EXPECT_TRUE(outcome.intruder == -1 || outcome.intruder == kSaysNothing) << "a release refuses from its start";
    }
    Calls calls = Take();
    if (schedule.story.name != "line switch that fails") {
      EXPECT_THAT(calls, Not(Contains(StartsWith("notice.OnStatus(60701001")))) << "no failure of the front end's own";
    }
    if (schedule.intruder.name == "reconnect" && outcome.intruder == 0) {
      const std::string row = std::to_string(*Services().liveRows.begin());
      EXPECT_THAT(calls, Not(Contains(StartsWith("collect.UpdataInstanceSessionId(" + row)))) << "of another session";
    }
    if (schedule.intruder.name == "release") {
      calls.erase(calls.begin(), std::find(calls.begin(), calls.end(), "pass.Stop()"));
      EXPECT_THAT(calls, Not(Contains(StartsWith("notice.OnIspList")))) << "the lines of a phone that was let go";
    }
  }

  void ExpectInvariants(const Schedule& schedule, const Outcome& outcome) {
    Services().createWsFails = false;
    // A row stays where the collector itself is out of reach.
    if (schedule.intruder.name == Failure().name && outcome.where == "collect.GetCollectInstance") {
      Services().liveRows.clear();
    }
    EXPECT_LE(Services().LiveConnections(), 1);
    EXPECT_LE(Services().liveRows.size(), 1U);
    for (const auto& connection : Services().connections) EXPECT_LE(connection.timesDestroyed, 1);
    const std::string_view story = schedule.story.name;
    const std::string_view intruder = schedule.intruder.name;
    const bool isReleased = story == "release" || story == "destruction" || intruder == "last pointer dropped" ||
                            (intruder == "release" && story != "init");
    if (isReleased) {
      ExpectNothingHeld();
      EXPECT_EQ(frontEnd.use_count(), 1);
    } else if (!outcome.hasThrown && Services().LiveConnections() == 1) {
      EXPECT_TRUE(CommandsAreOpen());
      EXPECT_EQ(controller->ChangeIsp(2), 0);
    }
    if (intruder == "reconnect" && outcome.intruder == 0) {
      EXPECT_EQ(Services().LiveConnections(), 1) << "what was overtaken does not disturb what came after it";
      EXPECT_EQ(Services().liveRows.size(), 1U);
    }
    if (story == "init" && outcome.hasThrown) {
      EXPECT_EQ(Init(), 0) << "what a failed Init made serves the next";
    }
    if (story.starts_with("connect with") && outcome.hasThrown) {
      EXPECT_EQ(controller->GetPhoneConnect(), 0) << "a failed connect may be tried again";
    }
    ExpectSilenceAfterRelease();
    ExpectThatItConnectsAgain();
  }

  void RunAtEachCallOut(const Story& story, Mode mode, const std::vector<Intruder>& intruders) {
    const int callOuts = CountCallOuts(story);
    EXPECT_GE(callOuts, story.leastCallOuts) << story.name;
    for (int callOut = 1; callOut <= callOuts; ++callOut) {
      for (const Intruder& intruder : intruders) {
        const Schedule schedule{story, callOut, mode, intruder};
        if (!IsSelected(schedule.Name())) continue;
        StartOver();
        story.prepare(*this);
        const Outcome outcome = Run(schedule);
        ++schedules;
        SCOPED_TRACE("in " + outcome.where + "; to run it alone: QV_SCHEDULE=\"" + schedule.Name() + "\"");
        ExpectResults(schedule, outcome);
        ExpectInvariants(schedule, outcome);
      }
    }
  }

  int CountCallOuts(const Story& story) {
    int count = 0;
    const Recorder::OnEachCall add = [&count](const char*) { ++count; };
    StartOver();
    story.prepare(*this);
    Recorder::Watch(&add);
    story.action.run(*this);
    Recorder::Watch(nullptr);
    return count;
  }

  int schedules = 0;
};

TEST_F(Sweep, EveryIntruderAtEveryCallOutLeavesWhatMustAlwaysHold) {
  for (const Story& story : Stories()) {
    RunAtEachCallOut(story, Mode::kBeside, Intruders());
    RunAtEachCallOut(story, Mode::kInside, Intruders());
    RunAtEachCallOut(story, Mode::kInside, {Failure()});
    if (HasFailure()) break;
  }
  EXPECT_GE(schedules, std::getenv("QV_SCHEDULE") == nullptr ? 3000 : 1) << "there are not as many as there should be";
  std::cout << schedules << " schedules" << std::endl;
  RecordProperty("schedules", schedules);
}

// Without a pause, for the sanitizers. The controller itself serves as the sinks, so that notices come at every moment,
// after a release too.
TEST_F(Sweep, EveryThreadRunsAgainstEveryOther) {
  auto& pass = dynamic_cast<IPassInterfaceNotic&>(*controller);
  Recorder::Get().Mute(true);
  const auto often = [](auto round) {
    return [round] {
      for (int i = 0; i < 300; ++i) round(i);
    };
  };
  {
    Worker owner(often([&](int i) {
      Init();
      controller->GetPhoneConnect();
      controller->SendInReq17(i);
      controller->ReleasePhoneConnect();
    }));
    Worker service(often([&](int i) {
      BringAnswer(pass, i % 7 == 6 ? 1 : 0, i % 5 == 4 ? kRefused : 0, i % 2 ? "a-long-session-1" : "a-long-session-2");
      Renew(pass, i % 11 == 10 ? kRefused : 0);
    }));
    Worker webSocket(often([&](int) {
      EveryNotice(Notices());
      Notices().OnErrorCode(kSessionExpired, "");
    }));
    Worker frontEndThread(often([&](int i) {
      controller->ChangeIsp(static_cast<std::uint32_t>(i % 3));
      controller->SendInReq8("x");
      Internal().SetSdkVersion("2");
      Internal().SendMessageCollect(1, 2, 3, "", "");
    }));
  }
  Recorder::Get().Mute(false);
  controller->ReleasePhoneConnect();
  ExpectNothingHeld();
}

}  // namespace
}  // namespace sweep
