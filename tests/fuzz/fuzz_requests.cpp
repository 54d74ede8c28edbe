// The virtual tracker's request reader: chunks from the configurator through the receive buffer, each
// complete request answered by the tracker (reads, writes into its configuration, commands), and the
// bytes its boot loader would take during an update.
#include "tests/fuzz/FuzzSupport.h"

#include "protocol/StreamDeframer.h"
#include "tools/devsim/BootLoader.h"
#include "tools/devsim/DevsimSession.h"
#include "tools/devsim/VirtualTracker.h"

TAVREL_FUZZ_INITIALISE()

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    VirtualTracker tracker;
    tracker.setClock([] { return qint64(123456); });
    proto::StreamDeframer reader(proto::StreamDeframer::Policy::Checked, DevsimSession::MaxRequestPayload,
                                 1000);
    BootLoader loader(BootLoader::Options{});
    loader.start();
    qint64 now = 0;
    for (const QByteArray &chunk : fuzz::chunks(fuzz::bytes(data, size))) {
        now += 10;
        for (const proto::StreamDeframer::Item &request : reader.feed(chunk, now))
            tracker.handle(request.type, request.payload);
        loader.receive(chunk);
    }
    tracker.saveState();
    return 0;
}
