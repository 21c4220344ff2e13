#pragma once
// A singly linked list of items under keys, the newest first. Owns its nodes, never its items. Keys
// compare by their bytes. Results are HRESULTs; an out-value is set on success only.

#include <windows.h>
#include <cstring>
#include <new>

template <class T, class K>
class List {
  public:
    List() = default;
    List(const List&) = delete;
    List& operator=(const List&) = delete;
    virtual ~List() {
        T item;
        while (RemoveFirst(item) == S_OK)
            continue;
    }

    // ERROR_NOT_ENOUGH_MEMORY as an HRESULT when the node can't be allocated.
    HRESULT Insert(const T& item, const K& key) {
        Node* const node = new (std::nothrow) Node{item, key, m_first};
        if (!node) return HRESULT_FROM_WIN32(ERROR_NOT_ENOUGH_MEMORY);
        m_first = node;
        ++m_count;
        return S_OK;
    }
    // Takes out the first node with that key, and gives its item when asked for. The result of this
    // and of the next two is ERROR_NOT_FOUND as an HRESULT when there is no such node.
    HRESULT Remove(const K& key, T* item = nullptr) {
        for (Node** link = &m_first; *link; link = &(*link)->next) {
            if (std::memcmp(&(*link)->key, &key, sizeof(K)) != 0) continue;
            if (item) *item = (*link)->item;
            TakeOut(link);
            return S_OK;
        }
        return kNotFound;
    }
    HRESULT RemoveFirst(T& item) {
        if (!m_first) return kNotFound;
        item = m_first->item;
        TakeOut(&m_first);
        return S_OK;
    }
    // The item at that place, counted from 0. Walks there: to visit all items, iterate.
    HRESULT Find(DWORD index, T& item) const {
        for (const T& each : *this) {
            if (index-- != 0) continue;
            item = each;
            return S_OK;
        }
        return kNotFound;
    }
    DWORD Count() const { return m_count; }

  private:
    struct Node {
        T item;
        K key;
        Node* next;
    };

    static constexpr HRESULT kNotFound = static_cast<HRESULT>(0x80070490);

    void TakeOut(Node** link) {
        Node* const node = *link;
        *link = node->next;
        --m_count;
        delete node;
    }

    Node* m_first = nullptr;
    DWORD m_count = 0;

  public:
    class Iterator {
      public:
        explicit Iterator(const Node* node) : m_node(node) {}
        const T& operator*() const { return m_node->item; }
        Iterator& operator++() {
            m_node = m_node->next;
            return *this;
        }
        bool operator!=(const Iterator& other) const { return m_node != other.m_node; }

      private:
        const Node* m_node;
    };
    Iterator begin() const { return Iterator(m_first); }
    Iterator end() const { return Iterator(nullptr); }
};
