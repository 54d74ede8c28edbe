// The configuration file reader: JSON text into the ten sections, with the position of a parse error.
#include "tests/fuzz/FuzzSupport.h"

#include "Devices/ConfigurationFile.h"
#include "Devices/VantorConfiguration.h"

TAVREL_FUZZ_INITIALISE()

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    VantorConfiguration configuration;
    const QByteArray input = fuzz::bytes(data, size);
    if (kd::ConfigurationFile::loadFromData(input, configuration).ok())
        kd::ConfigurationFile::toJson(configuration);
    return 0;
}
