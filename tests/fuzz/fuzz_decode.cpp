// The frame explainer of `tavrel-cli decode`: a log line or hex text in, the explanation out.
#include "tests/fuzz/FuzzSupport.h"

#include "cli/FrameText.h"

TAVREL_FUZZ_INITIALISE()

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray input = fuzz::bytes(data, size);
    QByteArray frame;
    if (FrameText::extractHex(QString::fromUtf8(input), &frame))
        FrameText::explain(frame);
    // The raw bytes as a frame too, so the explainer sees every byte value early.
    FrameText::explain(input);
    return 0;
}
