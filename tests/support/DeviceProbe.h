#pragma once

#include "protocol/Device.h"
#include "protocol/UNPParcer.h"
#include "protocol/UNPProtocol.h"

// The tests' look at a device's queue and parser, which the product's layers above the protocol never get.
struct DeviceProbe {
    static proto::UNPProtocol *protocol(const Device &device) { return device.protocol(); }
    static UNPParcer *parser(const Device &device) { return device.parser(); }
};
