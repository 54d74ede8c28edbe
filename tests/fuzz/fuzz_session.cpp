// The session's receive path: reads from the link go through Device (frame check, held frame heads)
// into the parser and the section decoders of all ten sections and the telemetry record.
#include "tests/fuzz/FuzzSupport.h"

#include "Devices/VantorConfiguration.h"
#include "protocol/Connection.h"
#include "protocol/Device.h"

namespace {

class FuzzLink : public Connection {
public:
    QByteArray pending;
    bool open() override { return true; }
    void close() override {}
    bool isOpen() const override { return true; }
    int state() const override { return Connected; }
    qint64 write(const QByteArray &bytes) override { return bytes.size(); }
    QByteArray readAll() override {
        QByteArray taken;
        taken.swap(pending);
        return taken;
    }
    void deliver(const QByteArray &chunk) {
        pending = chunk;
        emit readyRead();
    }
};

} // namespace

TAVREL_FUZZ_INITIALISE()

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    {
        VantorConfiguration configuration;
        Device device(&configuration);
        auto *link = new FuzzLink;
        device.setLink(link);
        for (const QByteArray &chunk : fuzz::chunks(fuzz::bytes(data, size)))
            link->deliver(chunk);
    }
    fuzz::settle();
    return 0;
}
