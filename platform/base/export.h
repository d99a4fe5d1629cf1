#ifndef SDK_BASE_EXPORT_H
#define SDK_BASE_EXPORT_H

#include "base/compiler.h"

#ifdef SDK_BASE_BUILD
#define SDK_BASE_API SDK_EXPORT
#else
#define SDK_BASE_API SDK_IMPORT
#endif

#endif
