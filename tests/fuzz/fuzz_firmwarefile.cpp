// The firmware file loader: the header checks, the version lists and the page store of a ".bsk" file.
#include "tests/fuzz/FuzzSupport.h"

#include "update/FirmwareImage.h"

TAVREL_FUZZ_INITIALISE()

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray input = fuzz::bytes(data, size);
    FirmwareImage::checkHeader(input.left(FirmwareImage::HeaderSize), input.size());
    FirmwareImage image;
    if (image.load(fuzz::scratchFile(input, "image.bsk")) == FirmwareImage::Loaded) {
        for (int n = 0; n < image.pageCount(); ++n)
            image.page(n);
    }
    return 0;
}
