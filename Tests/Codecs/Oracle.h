#pragma once

#include <iconv.h>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace Oracle {

// Characters by the system's converter, one by one.
class Converter {
public:
    Converter(const std::string& to, const std::string& from)
        : m_converter(iconv_open(to.c_str(), from.c_str())) {
        if (m_converter == reinterpret_cast<iconv_t>(-1)) throw std::runtime_error("no converter for " + to);
    }
    ~Converter() { iconv_close(m_converter); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // Empty if the input is not convertible as a whole, or not by an assignment of the charset.
    std::string operator()(std::string in) {
        char out[64];
        char *src = in.data(), *dst = out;
        size_t left = in.size(), room = sizeof out;
        iconv(m_converter, nullptr, nullptr, nullptr, nullptr);
        if (iconv(m_converter, &src, &left, &dst, &room) != 0) return {};
        return std::string(out, dst);
    }

private:
    iconv_t m_converter;
};

// One unit from text; 0 if there is none.
inline unsigned unitOf(Converter& toUtf16, const std::string& text) {
    const std::string bytes = toUtf16(text);
    if (bytes.size() != 2) return 0;
    return static_cast<unsigned char>(bytes[0]) | static_cast<unsigned>(static_cast<unsigned char>(bytes[1]))
                                                      << 8;
}

// A unit as native UTF-16.
inline std::string utf16(unsigned unit) {
    return {static_cast<char>(unit & 0xff), static_cast<char>(unit >> 8)};
}

// A value as UTF-8 of up to three bytes, by arithmetic.
inline std::string utf8(unsigned value) {
    const auto tail = [value](unsigned shift) { return static_cast<char>(0x80 | (value >> shift & 0x3f)); };
    if (value < 0x80) return {static_cast<char>(value)};
    if (value < 0x800) return {static_cast<char>(0xc0 | value >> 6), tail(0)};
    return {static_cast<char>(0xe0 | value >> 12), tail(6), tail(0)};
}

}  // namespace Oracle
