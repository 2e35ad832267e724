// A long sorted run of keys, in which a change moves few of them.
//
// The run is one flat vector up to kLargest keys, and beyond that a row of such vectors, the blocks. Beside
// them lie, flat as well, the last key of each block, in which a search begins, and the place of its first
// key in the run.
//
//     blocks    10 20 30 40 | 50 60 | 70 80 ...        every block has an even number of keys, at least 2,
//     lasts              40 |    60 | ...              so that a key has the parity of its offset in the
//     starts     0          |  4    | 6  ...           block, and intervals lie within blocks
//
// A change costs a move within a block and a pass over starts: about 1/500 of what a flat vector moves.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Tovra::Utils {

class KeyRun {
public:
    using Block = std::vector<int>;

    // Where a key is. Behind the last key there is end().
    struct Place {
        size_t block;
        size_t offset;

        bool operator==(const Place& other) const { return block == other.block && offset == other.offset; }
        bool operator!=(const Place& other) const { return !(*this == other); }
    };

    size_t size() const { return m_size; }
    const std::vector<Block>& blocks() const { return m_blocks; }
    Place end() const { return {m_blocks.size(), 0}; }
    bool isEnd(Place place) const { return place.block == m_blocks.size(); }
    int operator[](Place place) const { return m_blocks[place.block][place.offset]; }

    // The first key that is not below a value.
    Place lowerBound(int value) const;
    // The same, if it is not before a place.
    Place lowerBound(int value, Place from) const;
    // The number of keys before a place.
    size_t indexOf(Place place) const;
    // The place of a key by number, which must be within the run.
    Place placeOf(size_t index) const;

    // The neighbours of a place.
    Place next(Place place) const;
    Place previous(Place place) const;

    // Changes a key; the run must stay sorted.
    void set(Place place, int key);
    // Inserts two keys before a place.
    void insert(Place place, int first, int second);
    // Removes an even number of keys.
    void erase(Place from, Place to);
    // Appends two keys.
    void append(int first, int second) { insert(end(), first, second); }

private:
    void removeAcross(Place from, Place to);
    void split(size_t block);
    // Whether a block and its next one fit into a small block.
    bool isSmall(size_t lower) const;
    // Whether a block has shrunk so far that it must go or be joined with a neighbour, and that.
    bool isLoose(size_t block) const;
    void tighten(size_t block);
    // Brings lasts and starts up to date: behind a change of one block's size, or from a block on.
    void resized(size_t block, std::ptrdiff_t keys);
    void index(size_t block);

    std::vector<Block> m_blocks;
    std::vector<int> m_lasts;
    std::vector<uint32_t> m_starts;
    size_t m_size = 0;
};

}  // namespace Tovra::Utils
