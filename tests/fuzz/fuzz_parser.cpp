// The response parser on its own: the first byte is the packet type, the rest the payload, as the frame
// layer hands them over.
#include "tests/fuzz/FuzzSupport.h"

#include "Devices/VantorConfiguration.h"
#include "protocol/UNPParcer.h"

TAVREL_FUZZ_INITIALISE()

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 1)
        return 0;
    VantorConfiguration configuration;
    UNPParcer parser(&configuration);
    const QByteArray input = fuzz::bytes(data, size);
    parser.parse(quint8(input.at(0)), input.mid(1));
    // The same bytes as a packet that starts at its header.
    parser.parse(input);
    return 0;
}
