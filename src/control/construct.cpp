// Making and ending a controller. Construction runs on the front end's thread; destruction on whichever thread drops
// the last pointer, a service's notice thread included.
#include "control/data_control.h"
#include "surface/result_messages.h"
#include "telemetry/clock.h"

namespace qv_data_interface {

CQVDataControl::CQVDataControl(bool isInternal) : isInternal(isInternal) {}

CQVDataControl::~CQVDataControl() {
  try {
    CQVDataControl::ReleasePhoneConnect();
  } catch (...) {
    // A release carries on to its end before it throws, and a destructor has nobody to tell.
  }
}

bool CQVDataControl::IsCurrent(Generation since) const {
  return generation == since && initState == kStateReady;
}

void CQVDataControl::TellStatus(const FrontEnd& frontEnd, std::int32_t code) {
  Tell(frontEnd, [code](IQVDataInterfaceNotic& notic) { notic.OnStatus(code, ResultMessage(code)); });
}

void CQVDataControl::RecordMilestoneNow(const char* name) {
  RecordMilestone(name, NowMs());
}

}  // namespace qv_data_interface
