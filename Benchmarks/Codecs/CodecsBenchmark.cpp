// Conversions of texts of 1 KiB and 64 KiB. All sides keep their converters open and their buffers ready.

#include <benchmark/benchmark.h>
#include <iconv.h>

#include <cstdlib>
#include <string>
#include <vector>

#ifdef HAVE_ICU
#include <unicode/ucnv.h>
#include <unicode/ustring.h>
#endif

#include "Utils/Unicode.h"

using namespace Tovra;

namespace {

const std::string kChinese =
    u8"这座城市的图书馆建于一九三二年，收藏了许多关于河流、桥梁和铁路的旧地图。每天早晨，"
    u8"学生们沿着长廊走进阅览室，安静地翻开书页。";
const std::string kRussian =
    u8"Библиотека этого города построена у реки, и каждое утро ученики идут по длинному "
    u8"коридору в читальный зал. ";
const std::string kEnglish =
    "The library of this town stands by the river; every morning pupils walk down the hall. ";

using Units = std::vector<unsigned short>;

// Whole copies of a sample, about so many bytes.
std::string repeated(const std::string& sample, size_t size) {
    std::string text;
    while (text.size() + sample.size() <= size)
        text += sample;
    return text;
}

class Iconv {
public:
    Iconv(const char* to, const char* from) : m_converter(iconv_open(to, from)) {}
    ~Iconv() { iconv_close(m_converter); }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;

    // The bytes written.
    size_t convert(const void* src, size_t size, void* dst, size_t room) {
        char* in = const_cast<char*>(static_cast<const char*>(src));
        char* out = static_cast<char*>(dst);
        size_t left = room;
        if (iconv(m_converter, &in, &size, &out, &left) != 0) std::abort();
        return room - left;
    }

private:
    iconv_t m_converter;
};

std::string recoded(const std::string& text, const char* to, const char* from) {
    std::string out(4 * text.size(), '\0');
    out.resize(Iconv(to, from).convert(text.data(), text.size(), out.data(), out.size()));
    return out;
}

Units unitsOf(const std::string& utf8) {
    const std::string bytes = recoded(utf8, "UTF-16LE", "UTF-8");
    Units units(bytes.size() / 2);
    bytes.copy(reinterpret_cast<char*>(units.data()), bytes.size());
    units.push_back(0);
    return units;
}

unsigned char* bytesOf(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

#ifdef HAVE_ICU
UChar* ucharsOf(Units& units) { return reinterpret_cast<UChar*>(units.data()); }

// Converters that ICU drives over a buffer of units between them, as ucnv_convert() does, but kept open.
class IcuPair {
public:
    IcuPair(const char* to, const char* from) {
        UErrorCode error = U_ZERO_ERROR;
        m_to = ucnv_open(to, &error);
        m_from = ucnv_open(from, &error);
        if (U_FAILURE(error)) std::abort();
    }
    ~IcuPair() {
        ucnv_close(m_to);
        ucnv_close(m_from);
    }
    IcuPair(const IcuPair&) = delete;
    IcuPair& operator=(const IcuPair&) = delete;

    size_t convert(const std::string& src, std::string& dst) {
        UErrorCode error = U_ZERO_ERROR;
        UChar pivot[1024];
        UChar *pivotFrom = pivot, *pivotTo = pivot;
        const char* in = src.data();
        char* out = dst.data();
        ucnv_convertEx(m_to, m_from, &out, dst.data() + dst.size(), &in, src.data() + src.size(), pivot,
                       &pivotFrom, &pivotTo, pivot + 1024, true, true, &error);
        if (U_FAILURE(error)) std::abort();
        return static_cast<size_t>(out - dst.data());
    }

private:
    UConverter* m_to = nullptr;
    UConverter* m_from = nullptr;
};
#endif

// UTF-8 to units.
void decode(const std::string& name, const std::string& sample, size_t size) {
    const std::string text = repeated(sample, size);
    benchmark::RegisterBenchmark(("Fundo/decode/" + name).c_str(), [text](benchmark::State& state) {
        std::string src = text;
        Units dst(src.size() + 1);
        for (auto _ : state)
            benchmark::DoNotOptimize(
                Utils::utf8_mbstowcs(dst.data(), bytesOf(src), static_cast<int>(src.size())));
    });
    benchmark::RegisterBenchmark(("Iconv/decode/" + name).c_str(), [text](benchmark::State& state) {
        Iconv iconv("UTF-16LE", "UTF-8");
        Units dst(text.size() + 1);
        for (auto _ : state)
            benchmark::DoNotOptimize(iconv.convert(text.data(), text.size(), dst.data(), 2 * dst.size()));
    });
#ifdef HAVE_ICU
    benchmark::RegisterBenchmark(("Icu/decode/" + name).c_str(), [text](benchmark::State& state) {
        Units dst(text.size() + 1);
        for (auto _ : state) {
            UErrorCode error = U_ZERO_ERROR;
            int32_t length = 0;
            u_strFromUTF8(ucharsOf(dst), static_cast<int32_t>(dst.size()), &length, text.data(),
                          static_cast<int32_t>(text.size()), &error);
            benchmark::DoNotOptimize(length);
        }
    });
#endif
}

// Units to UTF-8.
void encode(const std::string& name, const std::string& sample, size_t size) {
    const std::string text = repeated(sample, size);
    benchmark::RegisterBenchmark(("Fundo/encode/" + name).c_str(), [text](benchmark::State& state) {
        const Units src = unitsOf(text);
        std::string dst(text.size() + 1, '\0');
        for (auto _ : state)
            benchmark::DoNotOptimize(
                Utils::utf8_wcstombs(bytesOf(dst), src.data(), static_cast<int>(dst.size())));
    });
    benchmark::RegisterBenchmark(("Iconv/encode/" + name).c_str(), [text](benchmark::State& state) {
        Iconv iconv("UTF-8", "UTF-16LE");
        const Units src = unitsOf(text);
        std::string dst(text.size() + 1, '\0');
        for (auto _ : state)
            benchmark::DoNotOptimize(iconv.convert(src.data(), 2 * (src.size() - 1), dst.data(), dst.size()));
    });
#ifdef HAVE_ICU
    benchmark::RegisterBenchmark(("Icu/encode/" + name).c_str(), [text](benchmark::State& state) {
        Units src = unitsOf(text);
        std::string dst(text.size() + 1, '\0');
        for (auto _ : state) {
            UErrorCode error = U_ZERO_ERROR;
            int32_t length = 0;
            u_strToUTF8(dst.data(), static_cast<int32_t>(dst.size()), &length, ucharsOf(src),
                        static_cast<int32_t>(src.size() - 1), &error);
            benchmark::DoNotOptimize(length);
        }
    });
#endif
}

// Between two byte encodings; ours takes the text and the room.
void recode(const std::string& name, const char* to, const char* from, const std::string& sample, size_t size,
            void (*ours)(std::string& src, std::string& dst)) {
    const std::string text = recoded(repeated(sample, size), from, "UTF-8");
    benchmark::RegisterBenchmark(("Fundo/recode/" + name).c_str(), [text, ours](benchmark::State& state) {
        std::string src = text, dst(4 * text.size(), '\0');
        for (auto _ : state) {
            ours(src, dst);
            benchmark::ClobberMemory();
        }
    });
    benchmark::RegisterBenchmark(("Iconv/recode/" + name).c_str(), [text, to, from](benchmark::State& state) {
        Iconv iconv(to, from);
        std::string dst(4 * text.size(), '\0');
        for (auto _ : state)
            benchmark::DoNotOptimize(iconv.convert(text.data(), text.size(), dst.data(), dst.size()));
    });
#ifdef HAVE_ICU
    benchmark::RegisterBenchmark(("Icu/recode/" + name).c_str(), [text, to, from](benchmark::State& state) {
        IcuPair icu(to, from);
        std::string dst(4 * text.size(), '\0');
        for (auto _ : state)
            benchmark::DoNotOptimize(icu.convert(text, dst));
    });
#endif
}

void fromCp936(std::string& src, std::string& dst) {
    const auto size = static_cast<int>(src.size() * 3 / 2);
    if (Utils::Gb2312TUtf8(src.data(), bytesOf(dst), size) < 1) std::abort();
}

void toCp936(std::string& src, std::string& dst) {
    const auto size = static_cast<int>(src.size());
    if (Utils::utf8TGb2312(bytesOf(src), dst.data(), size, size) < 1) std::abort();
}

void fromCp1251(std::string& src, std::string& dst) {
    int dstLen = static_cast<int>(dst.size()), srcLen = static_cast<int>(src.size());
    if (Utils::cp1251_to_utf8(bytesOf(dst), dstLen, bytesOf(src), srcLen) != 0) std::abort();
}

const bool s_registered = [] {
    for (const size_t kib : {size_t{1}, size_t{64}}) {
        const std::string tail = "/" + std::to_string(kib) + "KiB";
        const size_t size = kib * 1024;
        decode("ascii" + tail, kEnglish, size);
        encode("ascii" + tail, kEnglish, size);
        decode("chinese" + tail, kChinese, size);
        encode("chinese" + tail, kChinese, size);
        recode("cp936_to_utf8" + tail, "UTF-8", "CP936", kChinese, size, fromCp936);
        recode("utf8_to_cp936" + tail, "CP936", "UTF-8", kChinese, size, toCp936);
        recode("cp1251_to_utf8" + tail, "UTF-8", "CP1251", kRussian, size, fromCp1251);
    }
    return true;
}();

}  // namespace
