#pragma once

#include <cstddef>
#include <iterator>
#include <utility>

#include "Fundo/Fundo3/Export.h"

namespace Tovra::Utils {

/// A set of integers, kept as disjoint half-open intervals [start, end) in ascending order. Intervals that
/// overlap or touch are one, so that equal sets have equal intervals.
///
/// A value like any other: copies are deep, const operations may run on several threads at once. Operations
/// that change the set invalidate its iterators.
///
/// insert(), erase(), get() and find() search in logarithmic time; a change moves some hundred keys at most
/// besides those that it removes, and passes over one word for every few hundred intervals.
class FUNDO_API CIntervalSet {
public:
    /// Start and end; the end is not in the interval. One whose start is not below its end is empty.
    typedef std::pair<int, int> Interval;

    class const_iterator;

    /// The empty set.
    CIntervalSet();
    /// A deep copy.
    CIntervalSet(const CIntervalSet& other);
    /// A deep copy.
    CIntervalSet& operator=(const CIntervalSet& other);
    ~CIntervalSet();

    /// Exchanges the contents; constant time.
    void swap(CIntervalSet& other);

    /// Adds the integers of an interval; an empty one changes nothing.
    void insert(const Interval& interval);
    /// Removes the integers of an interval; an empty one changes nothing.
    void erase(const Interval& interval);
    /// Adds the integers of another set, in time linear in both.
    CIntervalSet& operator+=(const CIntervalSet& other);

    /// Removes all.
    void clear();
    /// Whether no integer is in the set.
    bool empty() const;
    /// The number of intervals.
    int count() const;
    /// The interval by number, from 0 in ascending order. A number outside 0 .. count() - 1 fails the
    /// assertion.
    Interval get(int index) const;

    /// The number of the first interval whose end is at or above a value, or -1. Not a test of membership: a
    /// value in a gap gets the interval behind it, and a value equal to an end that interval.
    int find(int value) const;
    /// Whether an integer is in the set.
    bool contains(int value) const;

    /// Whether both sets hold the same integers.
    bool operator==(const CIntervalSet& other) const;
    /// Whether one holds an integer that the other does not.
    bool operator!=(const CIntervalSet& other) const { return !(*this == other); }

    /// The first interval.
    const_iterator begin() const;
    /// Behind the last interval.
    const_iterator end() const;

private:
    struct Internal;
    Internal* m_internal;
};

/// Walks the intervals in ascending order and gives each by value. Several may walk one set.
class FUNDO_API CIntervalSet::const_iterator {
public:
    /// @cond
    using iterator_category = std::input_iterator_tag;
    using value_type = Interval;
    using difference_type = std::ptrdiff_t;
    using reference = Interval;
    struct pointer {
        Interval interval;
        const Interval* operator->() const { return &interval; }
    };

    const_iterator() = default;
    reference operator*() const { return {m_key[0], m_key[1]}; }
    pointer operator->() const { return {**this}; }
    const_iterator& operator++() {
        m_key += 2;
        if (m_key == m_stop) enterBlock(m_block + 1);
        return *this;
    }
    const_iterator operator++(int) {
        const const_iterator former = *this;
        ++*this;
        return former;
    }
    bool operator==(const const_iterator& other) const { return m_key == other.m_key; }
    bool operator!=(const const_iterator& other) const { return m_key != other.m_key; }
    /// @endcond

private:
    friend class CIntervalSet;
    explicit const_iterator(const CIntervalSet& set);
    void enterBlock(std::size_t block);

    const CIntervalSet* m_set = nullptr;
    const int* m_key = nullptr;   // null behind the last interval
    const int* m_stop = nullptr;  // behind the keys that lie together with it
    std::size_t m_block = 0;
};

}  // namespace Tovra::Utils
