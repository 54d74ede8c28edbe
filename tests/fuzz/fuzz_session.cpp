// The session's receive path: reads from the link go through Device (frame check, held frame heads)
// into the parser and the section decoders of all ten sections and the telemetry record.
#include "tests/fuzz/FuzzSupport.h"

#include "Devices/VantorConfiguration.h"
#include "protocol/Device.h"

TAVREL_FUZZ_INITIALISE()

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    {
        VantorConfiguration configuration;
        Device device(&configuration);
        auto *link = new fuzz::Link;
        device.setLink(link);
        for (const QByteArray &chunk : fuzz::chunks(fuzz::bytes(data, size)))
            link->deliver(chunk);
    }
    fuzz::settle();
    return 0;
}
