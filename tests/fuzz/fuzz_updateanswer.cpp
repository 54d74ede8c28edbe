// The maintenance tool's XML answer to an update check, and the report made from it.
#include "tests/fuzz/FuzzSupport.h"

#include "update/QTIFWUpdater.h"

TAVREL_FUZZ_INITIALISE()

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    QList<ComponentInformation> components;
    QString error;
    if (QTIFWUpdater::parseAnswer(fuzz::bytes(data, size), components, error))
        QTIFWUpdater::reportText(components);
    return 0;
}
