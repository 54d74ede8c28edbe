// The maintenance tool's network settings file "network.xml".
#include "tests/fuzz/FuzzSupport.h"

#include "update/QTIFWUpdater.h"

TAVREL_FUZZ_INITIALISE()

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    QTIFWUpdater::NetworkSettings settings;
    QString error;
    QTIFWUpdater::readNetworkSettings(fuzz::scratchFile(fuzz::bytes(data, size), "network.xml"), settings,
                                      error);
    return 0;
}
