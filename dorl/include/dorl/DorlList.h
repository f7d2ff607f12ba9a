#pragma once

#ifndef DORL_POSITION_DEFINED
#define DORL_POSITION_DEFINED
struct DorlPositionOpaque;
// An opaque place in a list; null means "none" or "past the end".
typedef DorlPositionOpaque* DORLPOSITION;
#endif

// A doubly linked list of small values, usually pointers. Reading past either end, or from an
// empty list, yields a value-initialised T rather than failing.
template <class T> class CDorlList {
public:
    typedef DORLPOSITION POSITION;

    CDorlList() = default;
    virtual ~CDorlList() { RemoveAll(); }
    CDorlList(const CDorlList&) = delete;
    CDorlList& operator=(const CDorlList&) = delete;

    int GetCount() const { return m_count; }
    bool IsEmpty() const { return m_count == 0; }

    T GetHead() const { return m_head ? m_head->data : T(); }
    T GetTail() const { return m_tail ? m_tail->data : T(); }
    POSITION GetHeadPosition() const { return ToPosition(m_head); }
    POSITION GetTailPosition() const { return ToPosition(m_tail); }

    POSITION AddHead(T value)
    {
        CNode* node = new CNode{m_head, nullptr, value};
        if (m_head)
            m_head->pPrev = node;
        else
            m_tail = node;
        m_head = node;
        ++m_count;
        return ToPosition(node);
    }

    POSITION AddTail(T value)
    {
        CNode* node = new CNode{nullptr, m_tail, value};
        if (m_tail)
            m_tail->pNext = node;
        else
            m_head = node;
        m_tail = node;
        ++m_count;
        return ToPosition(node);
    }

    T RemoveHead() { return Unlink(m_head); }
    T RemoveTail() { return Unlink(m_tail); }
    void RemoveAt(POSITION position) { Unlink(ToNode(position)); }

    void RemoveAll()
    {
        while (m_head)
            Unlink(m_head);
    }

    // Yields the element at position and moves position on; position is null after the tail.
    T GetNext(POSITION& position) const
    {
        CNode* node = ToNode(position);
        if (!node)
            return T();
        position = ToPosition(node->pNext);
        return node->data;
    }

    T GetPrev(POSITION& position) const
    {
        CNode* node = ToNode(position);
        if (!node)
            return T();
        position = ToPosition(node->pPrev);
        return node->data;
    }

    T GetAt(POSITION position) const
    {
        CNode* node = ToNode(position);
        return node ? node->data : T();
    }

    void SetAt(POSITION position, T value)
    {
        if (CNode* node = ToNode(position))
            node->data = value;
    }

    // Searches from the element after startAfter, or from the head when it is null.
    POSITION Find(T value, POSITION startAfter = nullptr) const
    {
        CNode* node = startAfter ? ToNode(startAfter)->pNext : m_head;
        for (; node; node = node->pNext) {
            if (node->data == value)
                return ToPosition(node);
        }
        return nullptr;
    }

    POSITION FindIndex(int index) const
    {
        if (index < 0 || index >= m_count)
            return nullptr;
        CNode* node = m_head;
        while (index-- > 0)
            node = node->pNext;
        return ToPosition(node);
    }

private:
    struct CNode {
        CNode* pNext;
        CNode* pPrev;
        T data;
    };

    static POSITION ToPosition(CNode* node) { return reinterpret_cast<POSITION>(node); }
    static CNode* ToNode(POSITION position) { return reinterpret_cast<CNode*>(position); }

    T Unlink(CNode* node)
    {
        if (!node)
            return T();
        if (node->pPrev)
            node->pPrev->pNext = node->pNext;
        else
            m_head = node->pNext;
        if (node->pNext)
            node->pNext->pPrev = node->pPrev;
        else
            m_tail = node->pPrev;
        --m_count;
        T value = node->data;
        delete node;
        return value;
    }

    CNode* m_head = nullptr;
    CNode* m_tail = nullptr;
    int m_count = 0;
};
