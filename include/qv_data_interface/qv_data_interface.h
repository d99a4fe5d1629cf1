/// @file
/// Everything public but build_check.h.
#ifndef QV_DATA_INTERFACE_QV_DATA_INTERFACE_H
#define QV_DATA_INTERFACE_QV_DATA_INTERFACE_H

#include "qv_data_interface/data_interface.h"
#include "qv_data_interface/dummy_req_interface.h"
#include "qv_data_interface/internal_data_interface.h"
#include "qv_data_interface/notice.h"
#include "qv_data_interface/parameters.h"
#include "qv_data_interface/result_codes.h"

#endif
