// The boot loader's messages as the configurator receives them during a firmware transfer: page
// requests, confirmations and errors, in chunks of any size, with the image being served.
#include "tests/fuzz/FuzzSupport.h"
#include "tests/update/BskBuilder.h"

#include "update/DeviceUpdater.h"
#include "update/FirmwareImage.h"

static FirmwareImage *image = nullptr;

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) {
    fuzz::initialise(argc, argv);
    BskBuilder builder;
    builder.pages = 4;
    image = new FirmwareImage;
    image->load(fuzz::scratchFile(builder.build(), "served.bsk"));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    fuzz::Link link;
    DeviceUpdater updater;
    updater.setConnection(&link);
    updater.setImage(image);
    updater.begin();
    for (const QByteArray &chunk : fuzz::chunks(fuzz::bytes(data, size)))
        updater.offer(chunk);
    // The page timer sends what the messages asked for.
    QCoreApplication::processEvents();
    updater.stop();
    return 0;
}
