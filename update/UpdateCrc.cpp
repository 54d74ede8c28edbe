#include "update/UpdateCrc.h"

#include <array>

namespace {

// Entry i is what eight register shifts do when the register's top byte is i: message bits enter at bit 0
// and need more than eight shifts to reach bit 15, so they never decide an exclusive-or within one byte.
constexpr std::array<quint16, 256> makeTable() {
    std::array<quint16, 256> table{};
    for (int i = 0; i < 256; ++i) {
        quint16 reg = quint16(i << 8);
        for (int bit = 0; bit < 8; ++bit) {
            const bool top = reg & 0x8000;
            reg = quint16(reg << 1);
            if (top)
                reg ^= UpdateCrc::Generator;
        }
        table[std::size_t(i)] = reg;
    }
    return table;
}

constexpr std::array<quint16, 256> Table = makeTable();

} // namespace

quint16 UpdateCrc::compute(const char *data, int size, quint16 start) {
    quint16 reg = start;
    for (int i = 0; i < size; ++i)
        reg = quint16((reg << 8) | quint8(data[i])) ^ Table[reg >> 8];
    return reg;
}

quint16 UpdateCrc::compute(const QByteArray &bytes, int from, int count) {
    if (from < 0 || from >= bytes.size() || count <= 0)
        return 0;
    return compute(bytes.constData() + from, qMin(count, bytes.size() - from));
}
