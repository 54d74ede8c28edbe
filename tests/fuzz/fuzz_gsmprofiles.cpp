// The GSM profile store read from its file.
#include "tests/fuzz/FuzzSupport.h"

#include "pages/GsmProfileStore.h"

TAVREL_FUZZ_INITIALISE()

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    GsmProfileStore store(fuzz::scratchFile(fuzz::bytes(data, size), "GSMprofileList.json"));
    store.load();
    for (const GsmProfile &profile : store.profiles())
        store.indexOf(profile.name);
    return 0;
}
