#include "Fundo/Fundo3/PrintLog.h"
#include "Fundo/PrintLog.h"
#include "Fundo3/Report.h"

// Sixteen bytes a row: address, hexadecimal columns, characters.

namespace Tovra::Fundo {

namespace {

constexpr int kColumns = 16;
constexpr int kGroupMask = 0x1F0;  // the last row of every 512 bytes

#define HEX_LOG(...) logLibName(Detail::kTrace, "libFundo", __VA_ARGS__)

void dumpRow(const unsigned char* row, int count) {
    HEX_LOG("%p: ", static_cast<const void*>(row));
    for (int i = 0; i < count; ++i)
        HEX_LOG("%02x ", row[i]);
    for (int i = count; i < kColumns; ++i)
        HEX_LOG("   ");
    HEX_LOG("  ");
    for (int i = 0; i < count; ++i)
        HEX_LOG("%c", row[i] < 32 || row[i] > 122 ? '.' : row[i]);
    HEX_LOG("\n");
}

}  // namespace

void dumpHex(unsigned char* data, unsigned long length) {
    if (data == nullptr || !Detail::isLevelOpen(Detail::kTrace)) return;
    // Contract: the length counts as a signed 32-bit number.
    int rest = static_cast<int>(length);
    for (int offset = 0; rest > 0; offset += kColumns, rest -= kColumns) {
        dumpRow(data + offset, rest < kColumns ? rest : kColumns);
        if (rest >= kColumns && (offset & kGroupMask) == kGroupMask) HEX_LOG("\n");
    }
}

}  // namespace Tovra::Fundo

void DumpHex(unsigned char* data, unsigned long length) { Tovra::Fundo::dumpHex(data, length); }
