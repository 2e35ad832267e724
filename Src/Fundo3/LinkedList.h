#pragma once

namespace Tovra::Fundo::Detail {

// A doubly linked list through m_prev, m_next and m_linked of its records. It owns and locks nothing.
template <class T>
class LinkedList {
public:
    T* head() const { return m_head; }

    void pushFront(T* record) { insertBehind(record, nullptr); }

    // @param before null puts the record at the head
    void insertBehind(T* record, T* before) {
        T* const after = before != nullptr ? before->m_next : m_head;
        record->m_prev = before;
        record->m_next = after;
        record->m_linked = true;
        (before != nullptr ? before->m_next : m_head) = record;
        if (after != nullptr) after->m_prev = record;
    }

    // Harmless for a record that is in no list.
    void remove(T* record) {
        if (!record->m_linked) return;
        (record->m_prev != nullptr ? record->m_prev->m_next : m_head) = record->m_next;
        if (record->m_next != nullptr) record->m_next->m_prev = record->m_prev;
        record->m_linked = false;
    }

private:
    T* m_head = nullptr;
};

}  // namespace Tovra::Fundo::Detail
