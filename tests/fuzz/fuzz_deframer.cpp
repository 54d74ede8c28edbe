// The stream deframer of both ends, joining reads and taking each read alone: every frame it hands out is
// whole (its length field matches its payload), nothing is read past the buffer, and what it holds for
// the next read stays under one frame of the largest payload it takes.
#include "tests/fuzz/FuzzSupport.h"

#include "protocol/Frame.h"
#include "protocol/StreamDeframer.h"

#include <cstdlib>

TAVREL_FUZZ_INITIALISE()

namespace {

// Small enough that the inputs reach the bound.
constexpr int MaxPayload = 64;
constexpr qint64 StaleAfterMs = 100;
constexpr qint64 ReadGapMs = 30;

void check(bool holds) {
    if (!holds)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    using proto::StreamDeframer;
    const QList<QByteArray> reads = fuzz::chunks(fuzz::bytes(data, size));
    for (const StreamDeframer::Policy policy :
         {StreamDeframer::Policy::Lenient, StreamDeframer::Policy::Checked}) {
        for (const bool joining : {true, false}) {
            StreamDeframer deframer(policy, MaxPayload, StaleAfterMs);
            deframer.setJoining(joining);
            qint64 now = 0;
            for (const QByteArray &read : reads) {
                now += ReadGapMs;
                for (const StreamDeframer::Item &item : deframer.feed(read, now)) {
                    if (item.firmware) {
                        check(!item.bytes.isEmpty());
                        continue;
                    }
                    const int announced = quint8(item.bytes.at(proto::Frame::LengthOffset)) |
                                          (quint8(item.bytes.at(proto::Frame::LengthOffset + 1)) << 8);
                    check(item.payload.size() == announced &&
                          item.bytes.size() == announced + proto::Frame::Overhead);
                }
                check(deframer.buffered() < MaxPayload + proto::Frame::Overhead);
                check(joining || deframer.buffered() == 0);
            }
        }
    }
    return 0;
}
