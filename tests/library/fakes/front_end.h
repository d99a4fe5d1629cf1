// A front end whose notices stand in the one list of calls.
#ifndef TESTS_LIBRARY_FAKES_FRONT_END_H
#define TESTS_LIBRARY_FAKES_FRONT_END_H

#include "tests/library/fakes/recorder.h"
#include "tests/support/front_end.h"

namespace fakes {

struct FrontEnd final : tests::FrontEnd {
 protected:
  void OnLine(const std::string& line) override { Recorder::Get().Add("notice." + line); }
};

}  // namespace fakes

#endif
