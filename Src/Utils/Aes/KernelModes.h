// The modes of operation over any AES kernel, each written once.
//
// A kernel is a policy C: a vector Vec of C::kBlocks blocks, one AES round on it, and a few moves. In the
// modes whose blocks do not wait for one another,
//
//     out = cipher(input) ^ mask
//
//     mode             cipher      input      mask
//     ECB              both        data       none
//     CBC decryption   inverse     data       previous
//     CFB decryption   forward     previous   data
//     CTR              forward     counter    data
//
// where previous is the cipher text one block earlier. A batch is C::kFlight vectors, to hide the latency of
// a round, then single vectors; blocks short of a vector, and the serial modes, are for the kernel of blocks.
// A batch is loaded as a whole before any of it is stored, so in and out may be the same buffer.
//
// In the serial modes the latency of the rounds is all there is: the last round key, the first one of the
// next block and the data are added up beside the rounds and go in with the last round.
//
// A template does not take its target from its arguments: the including source defines FUNDO_AES_TARGET, the
// attribute of its kernel, and everything here has internal linkage.
#pragma once

#ifndef FUNDO_AES_TARGET
#error "the kernel defines FUNDO_AES_TARGET, empty or a target attribute"
#endif
#define FUNDO_AES_INLINE FUNDO_AES_TARGET inline __attribute__((always_inline))

#include <cstdint>
#include <utility>

#include "Utils/Aes/Kernel.h"

namespace Tovra::Utils::AES {
namespace {

enum class Source { none, data, previous, counter };

struct Shape {
    bool inverse;
    Source input;
    Source mask;
};

constexpr Shape shapeOf(Operation operation) {
    switch (operation) {
        case kEcbDecrypt:
            return {true, Source::data, Source::none};
        case kCbcDecrypt:
            return {true, Source::data, Source::previous};
        case kCfb128Decrypt:
            return {false, Source::previous, Source::data};
        case kCtr:
            return {false, Source::counter, Source::data};
        default:
            return {false, Source::data, Source::none};
    }
}

constexpr bool isSerial(Operation operation) {
    return operation == kCbcEncrypt || operation == kCfb128Encrypt || operation == kCfb8Encrypt ||
           operation == kCfb8Decrypt;
}

template <class C, bool Inverse, std::size_t N>
FUNDO_AES_INLINE void oneRound(const Schedule& schedule, typename C::Vec (&x)[N], int round) {
    const typename C::Vec key = C::key(schedule, round);
    for (std::size_t i = 0; i < N; ++i)
        x[i] = C::template round<Inverse>(x[i], key);
}

// Rounds 1 to the last on blocks that have the first round key in them; last goes in with the last round. The
// nine rounds that every key length has are laid out in a row where a round is an instruction.
template <class C, bool Inverse, std::size_t N>
FUNDO_AES_INLINE void rounds(const Schedule& schedule, typename C::Vec (&x)[N], const typename C::Vec& last) {
    int round = 1;
    if constexpr (C::kInRow) {
        for (; round < 10; ++round)
            oneRound<C, Inverse>(schedule, x, round);
    }
    for (; round < schedule.rounds; ++round)
        oneRound<C, Inverse>(schedule, x, round);
    for (std::size_t i = 0; i < N; ++i)
        x[i] = C::template lastRound<Inverse>(x[i], last);
}

template <class C, bool Inverse, std::size_t N>
FUNDO_AES_INLINE void cipher(const Schedule& schedule, typename C::Vec (&x)[N]) {
    const typename C::Vec first = C::key(schedule, 0);
    for (std::size_t i = 0; i < N; ++i)
        x[i] = C::mix(x[i], first);
    rounds<C, Inverse>(schedule, x, C::key(schedule, schedule.rounds));
}

// What is no work for a vector: a kernel of vectors is chosen only where there is the kernel of blocks.
template <Operation Op>
void rest(const Schedule& schedule, const std::uint8_t* in, std::uint8_t* out, std::size_t count,
          std::uint8_t* chain) {
#if FUNDO_X86_64
    kAesNiKernel.run[Op](schedule, in, out, count, chain);
#endif
}

// The next N vectors of a parallel mode.
template <class C, Operation Op, std::size_t N>
FUNDO_AES_INLINE void batch(const Schedule& schedule, const std::uint8_t* in, std::uint8_t* out,
                            typename C::Vec& last, typename C::Counter& counter) {
    constexpr Shape kShape = shapeOf(Op);
    constexpr std::size_t kStep = C::kBlocks * kBlockSize;
    typename C::Vec data[N], previous[N], x[N];
    for (std::size_t i = 0; i < N; ++i) {
        data[i] = C::load(in + i * kStep);
        previous[i] = C::shiftIn(last, data[i]);
        last = data[i];
    }
    for (std::size_t i = 0; i < N; ++i) {
        if constexpr (kShape.input == Source::data) x[i] = data[i];
        if constexpr (kShape.input == Source::previous) x[i] = previous[i];
        if constexpr (kShape.input == Source::counter) x[i] = C::counterBlocks(counter, i);
    }
    if constexpr (kShape.input == Source::counter) counter = C::advanced(counter, N);
    cipher<C, kShape.inverse>(schedule, x);
    for (std::size_t i = 0; i < N; ++i) {
        if constexpr (kShape.mask == Source::data) x[i] = C::mix(x[i], data[i]);
        if constexpr (kShape.mask == Source::previous) x[i] = C::mix(x[i], previous[i]);
        C::store(out + i * kStep, x[i]);
    }
}

// A mode whose blocks do not wait for one another.
template <class C, Operation Op>
FUNDO_AES_TARGET void parallel(const Schedule& schedule, const std::uint8_t* in, std::uint8_t* out,
                               std::size_t count, std::uint8_t* chain) {
    constexpr Shape kShape = shapeOf(Op);
    constexpr bool kCounts = kShape.input == Source::counter;
    constexpr bool kChains = kShape.input == Source::previous || kShape.mask == Source::previous;
    typename C::Vec last{};
    typename C::Counter counter{};
    if constexpr (kChains) last = C::loadLast(chain);
    if constexpr (kCounts) counter = C::loadCounter(chain);
    const auto advance = [&](std::size_t vectors) {
        in += vectors * C::kBlocks * kBlockSize;
        out += vectors * C::kBlocks * kBlockSize;
        count -= vectors * C::kBlocks;
    };
    for (; count >= C::kFlight * C::kBlocks; advance(C::kFlight))
        batch<C, Op, C::kFlight>(schedule, in, out, last, counter);
    for (; count >= C::kBlocks; advance(1))
        batch<C, Op, 1>(schedule, in, out, last, counter);
    if constexpr (kChains) C::storeLast(chain, last);
    if constexpr (kCounts) C::storeCounter(chain, counter);
    if (count != 0) rest<Op>(schedule, in, out, count, chain);
}

// CBC and CFB128 encryption: the cipher text of a block goes into the next one with the first round key, in
// CBC also with the data to come. State is that sum; what was mixed in comes off again on the way out.
template <class C, Operation Op>
FUNDO_AES_TARGET void serial(const Schedule& schedule, const std::uint8_t* in, std::uint8_t* out,
                             std::size_t count, std::uint8_t* chain) {
    if (count == 0) return;
    const typename C::Vec first = C::key(schedule, 0);
    const typename C::Vec fold = C::mix(C::key(schedule, schedule.rounds), first);
    typename C::Vec data = C::load(in);
    typename C::Vec state[1] = {C::mix(C::load(chain), first)};
    if constexpr (Op == kCbcEncrypt) state[0] = C::mix(state[0], data);
    for (; count > 1; --count, out += kBlockSize) {
        in += kBlockSize;
        const typename C::Vec next = C::load(in);
        const typename C::Vec ahead = Op == kCbcEncrypt ? next : data;
        rounds<C, false>(schedule, state, C::mix(fold, ahead));
        C::store(out, C::mix(state[0], Op == kCbcEncrypt ? C::mix(first, ahead) : first));
        data = next;
    }
    rounds<C, false>(schedule, state, Op == kCbcEncrypt ? fold : C::mix(fold, data));
    const typename C::Vec last = C::mix(state[0], first);
    C::store(out, last);
    C::store(chain, last);
}

// The next N bytes of CFB8; window is the last 16 bytes of cipher text. Decryption knows all windows before.
template <class C, bool Encrypting, std::size_t N>
FUNDO_AES_INLINE void feedback(const Schedule& schedule, const std::uint8_t* in, std::uint8_t* out,
                               typename C::Vec& window) {
    static_assert(!Encrypting || N == 1);
    typename C::Vec data[N], x[N];
    for (std::size_t i = 0; i < N; ++i) {
        data[i] = C::fromByte(in[i]);
        x[i] = window;
        if constexpr (!Encrypting) window = C::pushed(window, data[i]);
    }
    cipher<C, false>(schedule, x);
    for (std::size_t i = 0; i < N; ++i) {
        x[i] = C::mix(x[i], data[i]);
        out[i] = C::firstByte(x[i]);
        if constexpr (Encrypting) window = C::pushed(window, x[i]);
    }
}

template <class C, bool Encrypting>
FUNDO_AES_TARGET void bytewise(const Schedule& schedule, const std::uint8_t* in, std::uint8_t* out,
                               std::size_t count, std::uint8_t* chain) {
    typename C::Vec window = C::load(chain);
    if constexpr (!Encrypting) {
        for (; count >= C::kFlight; count -= C::kFlight, in += C::kFlight, out += C::kFlight)
            feedback<C, false, C::kFlight>(schedule, in, out, window);
    }
    for (; count != 0; --count, ++in, ++out)
        feedback<C, Encrypting, 1>(schedule, in, out, window);
    C::store(chain, window);
}

template <class C, Operation Op>
constexpr Run operationOf() {
    if constexpr (C::kBlocks > 1 && isSerial(Op))
        return rest<Op>;
    else if constexpr (Op == kCbcEncrypt || Op == kCfb128Encrypt)
        return serial<C, Op>;
    else if constexpr (Op == kCfb8Encrypt || Op == kCfb8Decrypt)
        return bytewise<C, Op == kCfb8Encrypt>;
    else
        return parallel<C, Op>;
}

template <class C, std::size_t... Op>
constexpr Kernel makeKernel(const char* name, std::index_sequence<Op...>) {
    return {name, {operationOf<C, static_cast<Operation>(Op)>()...}};
}

template <class C>
constexpr Kernel makeKernel(const char* name) {
    return makeKernel<C>(name, std::make_index_sequence<kOperations>());
}

}  // namespace
}  // namespace Tovra::Utils::AES
