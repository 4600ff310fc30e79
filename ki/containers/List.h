// List.h - kiBaseList, the intrusive doubly linked list whose open iterators
// survive removals, its items and iterators, and the typed layer kiList<T>.
#ifndef KI_CONTAINERS_LIST_H
#define KI_CONTAINERS_LIST_H

#include "ki/Export.h"

class kiBaseList;

// A link of a kiBaseList. Derive from it to put objects in a list; the list
// that holds an item owns it and deletes it through this virtual destructor.
// An item is in at most one list at a time. Deleting an item while it is
// still linked is the caller's fault: unlink it (Detach) first.
class KI_API kiBaseListItem {
 public:
  kiBaseListItem() : m_next(nullptr), m_prev(nullptr) {}
  virtual ~kiBaseListItem();
  kiBaseListItem(const kiBaseListItem&) = delete;
  kiBaseListItem& operator=(const kiBaseListItem&) = delete;

  // The neighbours; both null when the item is in no list (or alone in one).
  kiBaseListItem* GetNext() const { return m_next; }
  kiBaseListItem* GetPrev() const { return m_prev; }

 private:
  friend class kiBaseList;

  // Unlinks the item from list: its neighbours are joined, the list's first
  // or last pointer moves when the item was at an end, the count drops by
  // one. The item's own links are left as they were; the list clears or
  // deletes it. Reached only through kiBaseList, which checks membership.
  inline void Remove(kiBaseList* list);

  kiBaseListItem* m_next;
  kiBaseListItem* m_prev;
};

class kiBaseListIterator;

// An intrusive doubly linked list. It owns its items (deleted on Remove, on
// erase and by the destructor; Detach hands one back undeleted) and keeps a
// chain of the iterators open on it, so that removing an item under an
// iterator moves the iterator to the item before and never leaves it on a
// freed item. One thread at a time, or under the caller's lock. Not copyable:
// the items are linked into this very object.
//
// Membership is checked from the item's links: an item is taken as part of
// this list when each neighbour links back to it, and an end item only when
// the list's own end pointer names it. That refuses items that are in no
// list and the end items of other lists; a middle item of another list
// cannot be told apart cheaply and must not be passed.
class KI_API kiBaseList {
 public:
  kiBaseList() : m_iterators(nullptr), m_first(nullptr), m_last(nullptr), m_count(0) {}
  // Closes every open iterator (their Next and Prev then answer false), then
  // deletes every item from the first onward.
  virtual ~kiBaseList();
  kiBaseList(const kiBaseList&) = delete;
  kiBaseList& operator=(const kiBaseList&) = delete;

  // Unlinks item without deleting it: iterators standing on it move to its
  // previous item, and its links are cleared so that it can be pushed into
  // any list. Answers item, or null (nothing done) when item is null or not
  // in this list.
  virtual kiBaseListItem* Detach(kiBaseListItem* item);
  // Unlinks item as Detach does, then deletes it. False (nothing done) when
  // item is null or not in this list. kiList<T> sends every pop and erase
  // through here, so an override sees them all.
  virtual bool Remove(kiBaseListItem* item);

  kiBaseListItem* GetBegin() const { return m_first; }  // null when empty
  kiBaseListItem* GetEnd() const { return m_last; }     // null when empty
  int GetCount() const { return m_count; }
  bool IsEmpty() const { return m_first == nullptr; }

  // Link item at the back / front; the list takes ownership. False (item
  // untouched, still the caller's) when item is null, is already linked (its
  // links are set, or it is this list's first item) or the count is at its
  // maximum.
  bool PushBack(kiBaseListItem* item);
  bool PushFront(kiBaseListItem* item);
  // Link item just before `before`; a null anchor or the first item means
  // PushFront. False, as for PushBack, and also when the anchor is not in
  // this list.
  bool PushBefore(kiBaseListItem* item, kiBaseListItem* before);
  // The mirror of PushBefore: a null anchor or the last item means PushBack.
  bool PushAfter(kiBaseListItem* item, kiBaseListItem* after);

  // Puts iterator at the head of the chain of open iterators, standing
  // before the first item. An iterator open on another list leaves that
  // list first; one already on this list is left as it is. False for null.
  bool AttachIterator(kiBaseListIterator* iterator);
  // Takes iterator out of the chain; it keeps no list and no item, so its
  // Next and Prev answer false. False (nothing done) when iterator is null
  // or not open on this list.
  bool DetachIterator(kiBaseListIterator* iterator);
  // Moves every open iterator standing on item to item's previous item (to
  // "before the first" when item is the first); Detach and Remove call it
  // once the item is unlinked. Null is ignored.
  void ItemRemoved(kiBaseListItem* item);
  // Leaves every open iterator with no list and no item; the chain empties.
  void CloseIterators();

 private:
  friend class kiBaseListItem;
  friend class kiBaseListIterator;

  // Inline so that the exported operations built on them need no calls
  // through the symbol table; defined and used in List.cpp only.
  inline bool Holds(const kiBaseListItem* item) const;
  inline bool CanLink(const kiBaseListItem* item) const;
  inline kiBaseListItem* Unlink(kiBaseListItem* item);
  inline void LinkIterator(kiBaseListIterator* iterator);
  inline void UnlinkIterator(kiBaseListIterator* iterator);

  kiBaseListIterator* m_iterators;  // head of the chain of open iterators
  kiBaseListItem* m_first;
  kiBaseListItem* m_last;
  int m_count;
};

inline void kiBaseListItem::Remove(kiBaseList* list) {
  if (m_prev != nullptr) {
    m_prev->m_next = m_next;
  } else {
    list->m_first = m_next;
  }
  if (m_next != nullptr) {
    m_next->m_prev = m_prev;
  } else {
    list->m_last = m_prev;
  }
  --list->m_count;
}

// A position in a kiBaseList that stays valid while items are removed: the
// list moves it back when its item goes. It starts before the first item
// (current null). Owned by its creator; the list only links it. Not
// copyable: the list's chain points at this very object.
class KI_API kiBaseListIterator {
 public:
  // Opens the iterator on list; a null list gives an iterator with no list,
  // whose steps answer false.
  explicit kiBaseListIterator(kiBaseList* list);
  // Leaves the list's chain; an iterator whose list is gone has nothing to do.
  virtual ~kiBaseListIterator();
  kiBaseListIterator(const kiBaseListIterator&) = delete;
  kiBaseListIterator& operator=(const kiBaseListIterator&) = delete;

  // The item it stands on: null before the first step, after the end, and
  // once the list is gone.
  kiBaseListItem* GetCurrent() const { return m_current; }
  // The list it is open on; null once that list has closed its iterators.
  kiBaseList* GetList() const { return m_list; }

 protected:
  kiBaseListItem* m_current;
  kiBaseListIterator* m_nextIterator;  // the owning list's chain
  kiBaseList* m_list;

 private:
  friend class kiBaseList;
};

// Walks from the first item to the last.
class KI_API kiBaseListForwardIterator : public kiBaseListIterator {
 public:
  explicit kiBaseListForwardIterator(kiBaseList* list)  // null: no list
      : kiBaseListIterator(list) {}
  ~kiBaseListForwardIterator() override;

  // Steps to the next item, or to the first one from "before the first" and
  // from past the end (so a finished walk starts again). True while it stands
  // on an item; false past the end and whenever the list is gone.
  bool Next() {
    if (m_list == nullptr) return false;
    m_current = m_current != nullptr ? m_current->GetNext() : m_list->GetBegin();
    return m_current != nullptr;
  }
};

// Walks from the last item to the first. Removing the item it stands on moves
// it to the previous item, as for a forward iterator, so its next Prev skips
// one item: intended, one rule for both directions.
class KI_API kiBaseListReverseIterator : public kiBaseListIterator {
 public:
  explicit kiBaseListReverseIterator(kiBaseList* list)  // null: no list
      : kiBaseListIterator(list) {}
  ~kiBaseListReverseIterator() override;

  // Steps to the previous item, or to the last one when it stands on none.
  // True while it stands on an item; false before the first and whenever the
  // list is gone.
  bool Prev() {
    if (m_list == nullptr) return false;
    m_current = m_current != nullptr ? m_current->GetPrev() : m_list->GetEnd();
    return m_current != nullptr;
  }
};

// ---- The typed layer -------------------------------------------------------

// An item holding a copy of a T.
template <typename T>
class kiListItem : public kiBaseListItem {
 public:
  explicit kiListItem(const T& value) : m_value(value) {}

  T& Get() { return m_value; }
  const T& Get() const { return m_value; }
  // The neighbours, typed; only meaningful inside a kiList<T>.
  kiListItem* GetNextItem() const { return static_cast<kiListItem*>(GetNext()); }
  kiListItem* GetPrevItem() const { return static_cast<kiListItem*>(GetPrev()); }

 private:
  T m_value;
};

// A list of T values, each copied into a heap kiListItem<T>. Every item of a
// kiList<T> must be a kiListItem<T>: push through these functions, or push
// kiListItem<T> objects through the base. Every pop and erase deletes through
// the virtual Remove, so a derived list's override sees them all.
template <typename T>
class kiList : public kiBaseList {
 public:
  using Item = kiListItem<T>;

  // Iterators that answer the value they stand on.
  class ForwardIterator : public kiBaseListForwardIterator {
   public:
    explicit ForwardIterator(kiList* list) : kiBaseListForwardIterator(list) {}  // null: no list
    Item* GetItem() const { return static_cast<Item*>(GetCurrent()); }
    // The current value; a default-constructed T when it stands on no item.
    T Get() const { return GetItem() != nullptr ? GetItem()->Get() : T(); }
  };
  class ReverseIterator : public kiBaseListReverseIterator {
   public:
    explicit ReverseIterator(kiList* list) : kiBaseListReverseIterator(list) {}  // null: no list
    Item* GetItem() const { return static_cast<Item*>(GetCurrent()); }
    T Get() const { return GetItem() != nullptr ? GetItem()->Get() : T(); }
  };

  kiList() = default;

  // Each answers the new item, or null when nothing was pushed (the count is
  // at its maximum).
  Item* push_back(const T& value) {
    Item* added = new Item(value);
    return Linked(added, PushBack(added));
  }
  Item* push_front(const T& value) {
    Item* added = new Item(value);
    return Linked(added, PushFront(added));
  }
  // Before / after item; a null anchor means the front / the back. Null, and
  // nothing pushed, when the anchor is not in this list.
  Item* push_before(const T& value, Item* item) {
    Item* added = new Item(value);
    return Linked(added, PushBefore(added, item));
  }
  Item* push_after(const T& value, Item* item) {
    Item* added = new Item(value);
    return Linked(added, PushAfter(added, item));
  }

  // The first / last value; a default-constructed T when the list is empty.
  T front() const { return GetBegin() != nullptr ? GetFirstItem()->Get() : T(); }
  T back() const { return GetEnd() != nullptr ? GetLastItem()->Get() : T(); }
  Item* GetFirstItem() const { return static_cast<Item*>(GetBegin()); }  // null when empty
  Item* GetLastItem() const { return static_cast<Item*>(GetEnd()); }     // null when empty

  // Remove the first / last item; false when the list is empty.
  bool pop_front() { return Remove(GetBegin()); }
  bool pop_back() { return Remove(GetEnd()); }
  // Removes item; false when it is null or not in this list.
  bool pop(Item* item) { return Remove(item); }
  // Removes the item iterator stands on, which steps back to the item before;
  // false when it stands on none or is not open on this list.
  bool pop(kiBaseListIterator& iterator) {
    return iterator.GetList() == this && Remove(iterator.GetCurrent());
  }
  // Removes the first item whose value equals value; false when none does.
  bool pop(const T& value) {
    for (Item* item = GetFirstItem(); item != nullptr; item = item->GetNextItem()) {
      if (item->Get() == value) return Remove(item);
    }
    return false;
  }

  int size() const { return GetCount(); }
  bool empty() const { return IsEmpty(); }
  // Removes every item, first to last, through Remove. Stops early when an
  // override leaves the first item in place, rather than loop for ever.
  void erase() {
    while (kiBaseListItem* first = GetBegin()) {
      Remove(first);
      if (GetBegin() == first) break;
    }
  }

 private:
  Item* Linked(Item* item, bool linked) {
    if (linked) return item;
    delete item;
    return nullptr;
  }
};

#endif  // KI_CONTAINERS_LIST_H
