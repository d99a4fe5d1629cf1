// The public interfaces' constructors, destructors and assignments: the exported homes of their dispatch tables.
#include "qv_data_interface/qv_data_interface.h"

namespace qv_data_interface {

IQVDataInterface::IQVDataInterface() = default;
IQVDataInterface::IQVDataInterface(const IQVDataInterface& /*other*/) {}
IQVDataInterface::~IQVDataInterface() = default;
IQVDataInterface& IQVDataInterface::operator=(const IQVDataInterface& /*other*/) = default;

IQVInternalDataInterface::IQVInternalDataInterface() = default;
IQVInternalDataInterface::IQVInternalDataInterface(const IQVInternalDataInterface& /*other*/) : IQVDataInterface() {}
IQVInternalDataInterface::~IQVInternalDataInterface() = default;
IQVInternalDataInterface& IQVInternalDataInterface::operator=(const IQVInternalDataInterface& /*other*/) = default;

IQVDataDummyReqInterface::IQVDataDummyReqInterface() = default;
IQVDataDummyReqInterface::IQVDataDummyReqInterface(const IQVDataDummyReqInterface& /*other*/) : IQVDataInterface() {}
IQVDataDummyReqInterface::IQVDataDummyReqInterface(IQVDataDummyReqInterface&& /*other*/) noexcept
    : IQVDataInterface() {}
IQVDataDummyReqInterface::~IQVDataDummyReqInterface() = default;
IQVDataDummyReqInterface& IQVDataDummyReqInterface::operator=(const IQVDataDummyReqInterface& /*other*/) = default;
IQVDataDummyReqInterface& IQVDataDummyReqInterface::operator=(IQVDataDummyReqInterface&& /*other*/) noexcept = default;

}  // namespace qv_data_interface
