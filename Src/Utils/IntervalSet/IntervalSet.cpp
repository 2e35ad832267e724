// Sorted boundary keys: a key at an even place opens an interval, one at an odd place closes it.
//
//     {[10, 20), [30, 40)}     keys   10  20  30  40
//                              place   0   1   2   3
//
// So the gaps are the same run read one place later, and erasing a range is inserting it among the gaps:
// one routine serves both, with the parity of the places that open a span of the kind being added.
#include "Utils/IntervalSet.h"

#include <algorithm>
#include <utility>

#include "Fundo3/Report.h"
#include "Utils/IntervalSet/KeyRun.h"

namespace Tovra::Utils {

static constexpr char kSource[] = "Src/Utils/IntervalSet";

namespace {

using Interval = CIntervalSet::Interval;
using Place = KeyRun::Place;

// Whether a key opens a span of the kind whose parity it is: 0 the intervals, 1 the gaps.
bool opens(Place place, unsigned parity) { return place.offset % 2 == parity; }

// Whether a range that ends at a value touches the span that a key opens.
bool touches(const KeyRun& keys, Place place, int end) { return !keys.isEnd(place) && end >= keys[place]; }

// Replaces the keys within [a, b), of which there is at least one.
void replaceKeys(KeyRun& keys, Place lo, Place hi, const Interval& range, unsigned parity) {
    if (opens(lo, parity)) {
        keys.set(lo, range.first);
        lo = keys.next(lo);
    }
    if (opens(hi, parity)) {
        if (touches(keys, hi, range.second)) {
            hi = keys.next(hi);
        } else {
            hi = keys.previous(hi);
            keys.set(hi, range.second);
        }
    }
    keys.erase(lo, hi);
}

// Adds a range to the spans of a parity.
void insert_erase_range(KeyRun& keys, const Interval& range, unsigned parity) {
    if (range.first >= range.second) return;
    const Place lo = keys.lowerBound(range.first);
    const Place hi = keys.lowerBound(range.second, lo);
    if (lo != hi) {
        replaceKeys(keys, lo, hi, range, parity);
    } else if (opens(lo, parity)) {
        if (touches(keys, lo, range.second)) {
            keys.set(lo, range.first);
        } else {
            keys.insert(lo, range.first, range.second);
        }
    }
    FUNDO_ASSERT_IN(keys.size() % 2 == 0,
                    "void Tovra::Utils::insert_erase_range(KeyRun &, const Interval &, unsigned int)");
}

// Appends an interval that starts no lower than the last one appended.
void appendMerged(KeyRun& keys, const Interval& interval) {
    if (keys.size() != 0) {
        const Place last = keys.previous(keys.end());
        if (interval.first <= keys[last]) {
            if (interval.second > keys[last]) keys.set(last, interval.second);
            return;
        }
    }
    keys.append(interval.first, interval.second);
}

KeyRun merged(const CIntervalSet& a, const CIntervalSet& b) {
    KeyRun keys;
    for (auto i = a.begin(), j = b.begin(); i != a.end() || j != b.end();) {
        const bool fromB = i == a.end() || (j != b.end() && j->first <= i->first);
        appendMerged(keys, *(fromB ? j : i)++);
    }
    return keys;
}

}  // namespace

struct CIntervalSet::Internal {
    KeyRun keys;
};

CIntervalSet::CIntervalSet() : m_internal(new Internal) {}

CIntervalSet::CIntervalSet(const CIntervalSet& other) : m_internal(new Internal(*other.m_internal)) {}

CIntervalSet& CIntervalSet::operator=(const CIntervalSet& other) {
    m_internal->keys = other.m_internal->keys;
    return *this;
}

CIntervalSet::~CIntervalSet() { delete m_internal; }

void CIntervalSet::swap(CIntervalSet& other) { std::swap(m_internal->keys, other.m_internal->keys); }

void CIntervalSet::insert(const Interval& interval) { insert_erase_range(m_internal->keys, interval, 0); }

void CIntervalSet::erase(const Interval& interval) { insert_erase_range(m_internal->keys, interval, 1); }

CIntervalSet& CIntervalSet::operator+=(const CIntervalSet& other) {
    if (other.empty()) return *this;
    if (empty()) return *this = other;
    m_internal->keys = merged(*this, other);
    return *this;
}

void CIntervalSet::clear() { m_internal->keys = KeyRun(); }

bool CIntervalSet::empty() const { return m_internal->keys.size() == 0; }

int CIntervalSet::count() const { return static_cast<int>(m_internal->keys.size() / 2); }

CIntervalSet::Interval CIntervalSet::get(int index) const {
    const KeyRun& keys = m_internal->keys;
    const size_t number = static_cast<size_t>(index) * 2;
    // Tested without the multiplication that its text shows, which overflows for numbers far outside.
    if (index < 0 || number >= keys.size()) {
        Fundo::Detail::assertionFailed("size_t(index * 2 + 1) < m_internal->keys.size()",
                                       "Interval Tovra::Utils::CIntervalSet::get(int) const", kSource,
                                       __LINE__);
    }
    const Place start = keys.placeOf(number);
    return {keys[start], keys[keys.next(start)]};
}

int CIntervalSet::find(int value) const {
    const KeyRun& keys = m_internal->keys;
    const Place place = keys.lowerBound(value);
    return keys.isEnd(place) ? -1 : static_cast<int>(keys.indexOf(place) / 2);
}

bool CIntervalSet::contains(int value) const {
    const KeyRun& keys = m_internal->keys;
    const Place place = keys.lowerBound(value);
    // At a key, the value is inside if the key opens; between keys, if the next one closes.
    return !keys.isEnd(place) && opens(place, keys[place] == value ? 0 : 1);
}

bool CIntervalSet::operator==(const CIntervalSet& other) const {
    return count() == other.count() && std::equal(begin(), end(), other.begin());
}

CIntervalSet::const_iterator CIntervalSet::begin() const { return const_iterator(*this); }

CIntervalSet::const_iterator CIntervalSet::end() const { return const_iterator(); }

CIntervalSet::const_iterator::const_iterator(const CIntervalSet& set) : m_set(&set) { enterBlock(0); }

void CIntervalSet::const_iterator::enterBlock(size_t block) {
    const auto& blocks = m_set->m_internal->keys.blocks();
    m_block = block;
    m_key = block < blocks.size() ? blocks[block].data() : nullptr;
    m_stop = block < blocks.size() ? m_key + blocks[block].size() : nullptr;
}

}  // namespace Tovra::Utils
