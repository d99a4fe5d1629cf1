// Marks that the calling thread is inside a call of the front end's, on behalf of any controller.
#ifndef SYNC_FRONT_END_SCOPE_H
#define SYNC_FRONT_END_SCOPE_H

namespace qv_data_interface {

class FrontEndScope {
 public:
  FrontEndScope();
  ~FrontEndScope();
  FrontEndScope(const FrontEndScope&) = delete;
  FrontEndScope& operator=(const FrontEndScope&) = delete;

  static bool IsInside();
};

}  // namespace qv_data_interface

#endif
