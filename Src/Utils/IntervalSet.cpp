// Sorted boundary keys: a key at an even place opens an interval, one at an odd place closes it.
//
//     {[10, 20), [30, 40)}     keys   10  20  30  40
//                              place   0   1   2   3
//
// So the gaps are the same run read one place later, and erasing a range is inserting it among the gaps:
// one routine serves both, with the parity of the places that open a span of the kind being added.
#include "Utils/IntervalSet.h"

#include <algorithm>
#include <vector>

#include "Fundo3/Report.h"

namespace Tovra::Utils {

static constexpr char kSource[] = "Src/Utils/IntervalSet";

namespace {

using KeyVector = std::vector<int>;
using Interval = CIntervalSet::Interval;

// Replaces the keys within [a, b), of which there is at least one.
void replaceKeys(KeyVector& keys, KeyVector::iterator lo, KeyVector::iterator hi, const Interval& range,
                 unsigned parity) {
    const auto opens = [&](KeyVector::iterator key) {
        return (static_cast<size_t>(key - keys.begin()) & 1U) == parity;
    };
    const bool endsBetweenSpans = opens(hi);
    if (opens(lo)) *lo++ = range.first;
    if (endsBetweenSpans) {
        if (hi != keys.end() && range.second >= *hi) {
            ++hi;  // the next span begins where the range ends
        } else {
            *--hi = range.second;
        }
    }
    keys.erase(lo, hi);
}

// Adds a range to the spans whose opening keys stand at places of a parity: 0 the intervals, 1 the gaps.
void insert_erase_range(KeyVector& keys, const Interval& range, unsigned parity) {
    if (range.first >= range.second) return;
    const auto lo = std::lower_bound(keys.begin(), keys.end(), range.first);
    const auto hi = std::lower_bound(lo, keys.end(), range.second);
    if (lo != hi) {
        replaceKeys(keys, lo, hi, range, parity);
    } else if ((static_cast<size_t>(lo - keys.begin()) & 1U) == parity) {
        if (lo != keys.end() && range.second >= *lo) {
            *lo = range.first;
        } else {
            keys.insert(lo, {range.first, range.second});
        }
    }
    FUNDO_ASSERT_IN(keys.size() % 2 == 0,
                    "void Tovra::Utils::insert_erase_range(KeyVector &, const Interval &, unsigned int)");
}

// Appends an interval that starts no lower than the last one appended.
void appendMerged(KeyVector& keys, int start, int end) {
    if (!keys.empty() && start <= keys.back()) {
        keys.back() = std::max(keys.back(), end);
        return;
    }
    keys.push_back(start);
    keys.push_back(end);
}

KeyVector merged(const KeyVector& a, const KeyVector& b) {
    KeyVector keys;
    keys.reserve(a.size() + b.size());
    size_t i = 0, j = 0;
    while (i < a.size() || j < b.size()) {
        const bool fromB = i == a.size() || (j < b.size() && b[j] <= a[i]);
        const KeyVector& from = fromB ? b : a;
        size_t& place = fromB ? j : i;
        appendMerged(keys, from[place], from[place + 1]);
        place += 2;
    }
    return keys;
}

}  // namespace

struct CIntervalSet::Internal {
    KeyVector keys;
};

CIntervalSet::CIntervalSet() : m_internal(new Internal) {}

CIntervalSet::CIntervalSet(const CIntervalSet& other) : m_internal(new Internal(*other.m_internal)) {}

CIntervalSet& CIntervalSet::operator=(const CIntervalSet& other) {
    m_internal->keys = other.m_internal->keys;
    return *this;
}

CIntervalSet::~CIntervalSet() { delete m_internal; }

void CIntervalSet::swap(CIntervalSet& other) { m_internal->keys.swap(other.m_internal->keys); }

void CIntervalSet::insert(const Interval& interval) { insert_erase_range(m_internal->keys, interval, 0); }

void CIntervalSet::erase(const Interval& interval) { insert_erase_range(m_internal->keys, interval, 1); }

CIntervalSet& CIntervalSet::operator+=(const CIntervalSet& other) {
    if (other.empty()) return *this;
    if (empty()) return *this = other;
    merged(m_internal->keys, other.m_internal->keys).swap(m_internal->keys);
    return *this;
}

void CIntervalSet::clear() { m_internal->keys.clear(); }

bool CIntervalSet::empty() const { return m_internal->keys.empty(); }

int CIntervalSet::count() const { return static_cast<int>(m_internal->keys.size() / 2); }

CIntervalSet::Interval CIntervalSet::get(int index) const {
    const size_t place = static_cast<size_t>(index) * 2;
    // Tested without the multiplication that its text shows, which overflows for numbers far outside.
    if (index < 0 || place >= m_internal->keys.size()) {
        Fundo::Detail::assertionFailed("size_t(index * 2 + 1) < m_internal->keys.size()",
                                       "Interval Tovra::Utils::CIntervalSet::get(int) const", kSource,
                                       __LINE__);
    }
    return {m_internal->keys[place], m_internal->keys[place + 1]};
}

int CIntervalSet::find(int value) const {
    const KeyVector& keys = m_internal->keys;
    const auto key = std::lower_bound(keys.begin(), keys.end(), value);
    return key == keys.end() ? -1 : static_cast<int>((key - keys.begin()) / 2);
}

bool CIntervalSet::contains(int value) const {
    const KeyVector& keys = m_internal->keys;
    return ((std::upper_bound(keys.begin(), keys.end(), value) - keys.begin()) & 1) != 0;
}

bool CIntervalSet::operator==(const CIntervalSet& other) const {
    return m_internal->keys == other.m_internal->keys;
}

CIntervalSet::const_iterator CIntervalSet::begin() const { return const_iterator(m_internal->keys.data()); }

CIntervalSet::const_iterator CIntervalSet::end() const {
    return const_iterator(m_internal->keys.data() + m_internal->keys.size());
}

}  // namespace Tovra::Utils
