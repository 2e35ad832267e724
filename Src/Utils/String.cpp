#include "Utils/String.h"

#include <strings.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "Fundo3/Report.h"

namespace Tovra::Utils {

static constexpr char kSource[] = "Src/Utils/String";

int (*snprintf)(char*, size_t, const char*, ...) = ::snprintf;
int (*stricmp)(const char*, const char*) = ::strcasecmp;

namespace {

bool is_big_endian() {
    static constexpr uint32_t bint = 0x01020304;
    unsigned char first = 0;
    std::memcpy(&first, &bint, 1);
    return first == 1;
}

// How far the number at a place from the left (0 to 3) is shifted in an address.
unsigned shiftOf(unsigned place) { return 8 * (is_big_endian() ? place : 3 - place); }

int numberAt(IpAddress ip, unsigned place) { return static_cast<int>((ip >> shiftOf(place)) & 0xff); }

}  // namespace

size_t strncat(char* dst, size_t dstSize, const char* src, size_t n) {
    const size_t room = dstSize - std::strlen(dst) - 1;
    const size_t length = std::min(room, n);
    std::strncat(dst, src, length);
    // Contract: the allowance, not what src gave.
    return length;
}

size_t strncpy(char* dst, size_t dstSize, const char* src, size_t n) {
    const size_t length = std::min(dstSize - 1, n);
    std::strncpy(dst, src, length);
    dst[length] = '\0';
    return std::strlen(dst);
}

int snprintf_x(char* dst, int size, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int wanted = std::vsnprintf(dst, static_cast<size_t>(size), format, arguments);
    va_end(arguments);
    if (wanted >= size - 1) {
        dst[size - 1] = '\0';
    } else if (wanted < 0) {
        return 0;
    }
    return static_cast<int>(std::strlen(dst));
}

char* ipToString(IpAddress ip, char* buffer, unsigned long size) {
    snprintf_x(buffer, static_cast<int>(size), "%d.%d.%d.%d", numberAt(ip, 0), numberAt(ip, 1),
               numberAt(ip, 2), numberAt(ip, 3));
    return buffer;
}

IpAddress stringToIp(const char* text) {
    int numbers[4] = {};
    if (text == nullptr ||
        std::sscanf(text, "%d.%d.%d.%d", &numbers[0], &numbers[1], &numbers[2], &numbers[3]) != 4) {
        FUNDO_REPORT(Fundo::Detail::kWarn, "param str %s is invalid\n", text != nullptr ? text : "(null)");
    }
    IpAddress ip = 0;
    for (unsigned place = 0; place < 4; ++place)
        ip |= (static_cast<IpAddress>(numbers[place]) & 0xff) << shiftOf(place);
    return ip;
}

}  // namespace Tovra::Utils
