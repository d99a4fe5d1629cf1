#ifndef SDK_WS_INTERFACE_EXPORT_H
#define SDK_WS_INTERFACE_EXPORT_H

#include "base/compiler.h"

#ifdef SDK_WS_INTERFACE_BUILD
#define SDK_WS_INTERFACE_API SDK_EXPORT
#else
#define SDK_WS_INTERFACE_API SDK_IMPORT
#endif

#endif
