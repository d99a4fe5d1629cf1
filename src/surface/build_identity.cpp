// The text by which a host recognises, in the file of the library, how it was built. It is no export: nobody calls it.
#include "surface/build_identity.h"

#include "qv_data_interface/build_check.h"

namespace qv_data_interface {

const volatile char buildIdentity[] = QV_BUILD_MARK QV_BUILD_IDENTITY;

}  // namespace qv_data_interface
