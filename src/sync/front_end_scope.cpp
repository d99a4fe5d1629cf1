#include "sync/front_end_scope.h"

namespace qv_data_interface {
namespace {

thread_local int depth = 0;

}  // namespace

FrontEndScope::FrontEndScope() {
  ++depth;
}

FrontEndScope::~FrontEndScope() {
  --depth;
}

bool FrontEndScope::IsInside() {
  return depth > 0;
}

}  // namespace qv_data_interface
