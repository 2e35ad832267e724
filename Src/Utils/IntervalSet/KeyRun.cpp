#include "Utils/IntervalSet/KeyRun.h"

#include <algorithm>

namespace Tovra::Utils {

namespace {

// Keys of a block: a larger one costs moves, more of them cost the pass over starts.
constexpr size_t kLargest = 512;
// Neighbours that together have no more are joined.
constexpr size_t kSmall = kLargest / 2;

// std::lower_bound without branches that depend on keys, which nobody could predict.
size_t lowerBoundIn(const int* keys, size_t count, int value) {
    const int* base = keys;
    while (count > 1) {
        const size_t half = count / 2;
        base += base[half - 1] < value ? half : 0;
        count -= half;
    }
    return static_cast<size_t>(base - keys) + (count == 1 && *base < value ? 1 : 0);
}

size_t lowerBoundIn(const std::vector<int>& keys, int value) {
    return lowerBoundIn(keys.data(), keys.size(), value);
}

KeyRun::Block::iterator at(KeyRun::Block& block, size_t offset) {
    return block.begin() + static_cast<std::ptrdiff_t>(offset);
}

}  // namespace

KeyRun::Place KeyRun::lowerBound(int value) const {
    const size_t block = lowerBoundIn(m_lasts, value);
    if (block == m_blocks.size()) return {block, 0};
    return {block, lowerBoundIn(m_blocks[block], value)};
}

KeyRun::Place KeyRun::lowerBound(int value, Place from) const {
    // Most ranges end where they begin.
    if (isEnd(from) || value <= (*this)[from]) return from;
    return lowerBound(value);
}

size_t KeyRun::indexOf(Place place) const {
    return isEnd(place) ? m_size : m_starts[place.block] + place.offset;
}

KeyRun::Place KeyRun::placeOf(size_t index) const {
    const auto behind = std::upper_bound(m_starts.begin(), m_starts.end(), index);
    return {static_cast<size_t>(behind - m_starts.begin()) - 1, index - *(behind - 1)};
}

KeyRun::Place KeyRun::next(Place place) const {
    if (place.offset + 1 < m_blocks[place.block].size()) return {place.block, place.offset + 1};
    return {place.block + 1, 0};
}

KeyRun::Place KeyRun::previous(Place place) const {
    if (place.offset > 0) return {place.block, place.offset - 1};
    return {place.block - 1, m_blocks[place.block - 1].size() - 1};
}

void KeyRun::set(Place place, int key) {
    m_blocks[place.block][place.offset] = key;
    m_lasts[place.block] = m_blocks[place.block].back();
}

void KeyRun::insert(Place place, int first, int second) {
    if (isEnd(place)) {
        if (m_blocks.empty()) {
            m_blocks.emplace_back();
            index(0);
        }
        place = {m_blocks.size() - 1, m_blocks.back().size()};
    }
    Block& block = m_blocks[place.block];
    block.insert(at(block, place.offset), {first, second});
    resized(place.block, 2);
    if (block.size() > kLargest) split(place.block);
}

void KeyRun::erase(Place from, Place to) {
    if (from == to) return;
    if (from.block == to.block) {
        Block& block = m_blocks[from.block];
        block.erase(at(block, from.offset), at(block, to.offset));
        if (!isLoose(from.block)) {
            resized(from.block,
                    static_cast<std::ptrdiff_t>(from.offset) - static_cast<std::ptrdiff_t>(to.offset));
            return;
        }
    } else {
        removeAcross(from, to);
    }
    tighten(from.block);
    index(from.block > 0 ? from.block - 1 : 0);
}

void KeyRun::removeAcross(Place from, Place to) {
    Block& first = m_blocks[from.block];
    first.resize(from.offset);
    if (!isEnd(to)) {
        Block& last = m_blocks[to.block];
        // An interval that now begins in one block and ends in the other goes into the first.
        if (from.offset % 2 != 0) first.push_back(last[to.offset++]);
        last.erase(last.begin(), at(last, to.offset));
        if (last.empty()) ++to.block;
    }
    m_blocks.erase(m_blocks.begin() + static_cast<std::ptrdiff_t>(from.block + 1),
                   m_blocks.begin() + static_cast<std::ptrdiff_t>(to.block));
}

void KeyRun::split(size_t block) {
    constexpr auto kHalf = kLargest / 2;
    static_assert(kHalf % 2 == 0, "blocks keep whole intervals");
    Block upper;
    upper.reserve(kLargest + 2);
    Block& lower = m_blocks[block];
    upper.assign(at(lower, kHalf), lower.end());
    lower.resize(kHalf);
    m_blocks.insert(m_blocks.begin() + static_cast<std::ptrdiff_t>(block + 1), std::move(upper));
    index(block);
}

bool KeyRun::isSmall(size_t lower) const {
    return lower + 1 < m_blocks.size() && m_blocks[lower].size() + m_blocks[lower + 1].size() <= kSmall;
}

bool KeyRun::isLoose(size_t block) const {
    return m_blocks[block].empty() || isSmall(block) || (block > 0 && isSmall(block - 1));
}

void KeyRun::tighten(size_t block) {
    const auto iterator = [this](size_t i) { return m_blocks.begin() + static_cast<std::ptrdiff_t>(i); };
    if (m_blocks[block].empty()) {
        m_blocks.erase(iterator(block));
        return;
    }
    if (!isLoose(block)) return;
    const size_t lower = isSmall(block) ? block : block - 1;
    const Block& upper = m_blocks[lower + 1];
    m_blocks[lower].insert(m_blocks[lower].end(), upper.begin(), upper.end());
    m_blocks.erase(iterator(lower + 1));
}

void KeyRun::resized(size_t block, std::ptrdiff_t keys) {
    m_lasts[block] = m_blocks[block].back();
    m_size += static_cast<size_t>(keys);
    const auto shift = static_cast<uint32_t>(keys);
    for (size_t i = block + 1; i < m_starts.size(); ++i)
        m_starts[i] += shift;
}

void KeyRun::index(size_t block) {
    const size_t count = m_blocks.size();
    m_lasts.resize(count);
    m_starts.resize(count);
    size_t start = block > 0 ? m_starts[block - 1] + m_blocks[block - 1].size() : 0;
    for (size_t i = block; i < count; ++i) {
        m_lasts[i] = m_blocks[i].empty() ? 0 : m_blocks[i].back();
        m_starts[i] = static_cast<uint32_t>(start);
        start += m_blocks[i].size();
    }
    m_size = start;
}

}  // namespace Tovra::Utils
