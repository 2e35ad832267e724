#pragma once

#include <cstdint>
#include <cstring>

namespace Tovra::Fundo::Detail {

// The name of a thread or timer: at most 31 characters, and "Nonamed" for null. Any thread may set it while
// another copies it; the copy may then mix old and new characters, but it always has an end.
class SharedName {
public:
    struct Copy {
        char text[32];
    };

    explicit SharedName(const char* name) { set(name); }

    void set(const char* name) {
        Copy padded = {};
        const char* source = name != nullptr ? name : "Nonamed";
        for (size_t i = 0; i < sizeof padded.text - 1 && source[i] != '\0'; ++i)
            padded.text[i] = source[i];
        uint64_t words[kWords];
        std::memcpy(words, padded.text, sizeof words);
        for (int i = 0; i < kWords; ++i)
            __atomic_store_n(&m_words[i], words[i], __ATOMIC_RELAXED);
    }

    Copy copy() const {
        uint64_t words[kWords];
        for (int i = 0; i < kWords; ++i)
            words[i] = __atomic_load_n(&m_words[i], __ATOMIC_RELAXED);
        Copy result;
        std::memcpy(result.text, words, sizeof words);
        return result;
    }

    // The characters in place, for those who know that nobody sets them meanwhile.
    const char* text() const { return reinterpret_cast<const char*>(m_words); }

private:
    static constexpr int kWords = 4;
    uint64_t m_words[kWords];
    static_assert(sizeof(Copy) == kWords * sizeof(uint64_t), "a name is kept in whole words");
};

}  // namespace Tovra::Fundo::Detail
