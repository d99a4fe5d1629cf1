#include "reference/common/notice_gate.h"

namespace reference {
namespace {

thread_local int depth = 0;

}  // namespace

NoticeScope::NoticeScope() {
  ++depth;
}

NoticeScope::~NoticeScope() {
  --depth;
}

bool NoticeScope::IsInside() {
  return depth > 0;
}

}  // namespace reference
