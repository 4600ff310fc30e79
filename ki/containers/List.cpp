// List.cpp - kiBaseList, its items and its iterators: linking, membership
// checks, and the chain of open iterators that removals move back.
#include "ki/containers/List.h"

#include <climits>

// ---- kiBaseListItem ----------------------------------------------------------

kiBaseListItem::~kiBaseListItem() = default;

// ---- kiBaseList --------------------------------------------------------------

kiBaseList::~kiBaseList() {
  CloseIterators();
  kiBaseListItem* item = m_first;
  // Emptied before the items go, so an item's destructor finds a consistent
  // (empty) list.
  m_first = nullptr;
  m_last = nullptr;
  m_count = 0;
  while (item != nullptr) {
    kiBaseListItem* next = item->m_next;
    delete item;
    item = next;
  }
}

// Each neighbour must link back to item, and an end item must be this list's
// end: a lone unlinked item or an end item of another list is refused.
bool kiBaseList::Holds(const kiBaseListItem* item) const {
  if (item == nullptr) return false;
  const bool frontOk = item->m_prev != nullptr ? item->m_prev->m_next == item : m_first == item;
  const bool backOk = item->m_next != nullptr ? item->m_next->m_prev == item : m_last == item;
  return frontOk && backOk;
}

// A free item has no links and is not the lone item of this list.
bool kiBaseList::CanLink(const kiBaseListItem* item) const {
  return item != nullptr && item->m_next == nullptr && item->m_prev == nullptr && item != m_first &&
         m_count < INT_MAX;
}

kiBaseListItem* kiBaseList::Unlink(kiBaseListItem* item) {
  if (!Holds(item)) return nullptr;
  item->Remove(this);
  if (m_iterators != nullptr) ItemRemoved(item);  // item's links still name its old neighbours
  return item;
}

kiBaseListItem* kiBaseList::Detach(kiBaseListItem* item) {
  if (Unlink(item) == nullptr) return nullptr;
  item->m_next = nullptr;
  item->m_prev = nullptr;
  return item;
}

bool kiBaseList::Remove(kiBaseListItem* item) {
  if (Unlink(item) == nullptr) return false;
  delete item;
  return true;
}

bool kiBaseList::PushBack(kiBaseListItem* item) {
  if (!CanLink(item)) return false;
  item->m_prev = m_last;
  if (m_last != nullptr) {
    m_last->m_next = item;
  } else {
    m_first = item;
  }
  m_last = item;
  ++m_count;
  return true;
}

bool kiBaseList::PushFront(kiBaseListItem* item) {
  if (!CanLink(item)) return false;
  item->m_next = m_first;
  if (m_first != nullptr) {
    m_first->m_prev = item;
  } else {
    m_last = item;
  }
  m_first = item;
  ++m_count;
  return true;
}

bool kiBaseList::PushBefore(kiBaseListItem* item, kiBaseListItem* before) {
  if (before == nullptr || before == m_first) return PushFront(item);
  if (!CanLink(item) || !Holds(before)) return false;
  // before is not the first item, so it has a previous one.
  item->m_prev = before->m_prev;
  item->m_next = before;
  before->m_prev->m_next = item;
  before->m_prev = item;
  ++m_count;
  return true;
}

bool kiBaseList::PushAfter(kiBaseListItem* item, kiBaseListItem* after) {
  if (after == nullptr || after == m_last) return PushBack(item);
  if (!CanLink(item) || !Holds(after)) return false;
  item->m_next = after->m_next;
  item->m_prev = after;
  after->m_next->m_prev = item;
  after->m_next = item;
  ++m_count;
  return true;
}

// At the head of the chain, standing before the first item; the iterator
// has no list yet.
void kiBaseList::LinkIterator(kiBaseListIterator* iterator) {
  iterator->m_current = nullptr;
  iterator->m_nextIterator = m_iterators;
  iterator->m_list = this;
  m_iterators = iterator;
}

// Out of the chain, with no list and no item; the iterator is open on this list.
void kiBaseList::UnlinkIterator(kiBaseListIterator* iterator) {
  for (kiBaseListIterator** link = &m_iterators; *link != nullptr;
       link = &(*link)->m_nextIterator) {
    if (*link == iterator) {
      *link = iterator->m_nextIterator;
      break;
    }
  }
  iterator->m_nextIterator = nullptr;
  iterator->m_list = nullptr;
  iterator->m_current = nullptr;
}

bool kiBaseList::AttachIterator(kiBaseListIterator* iterator) {
  if (iterator == nullptr) return false;
  if (iterator->m_list == this) return true;
  if (iterator->m_list != nullptr) iterator->m_list->UnlinkIterator(iterator);
  LinkIterator(iterator);
  return true;
}

bool kiBaseList::DetachIterator(kiBaseListIterator* iterator) {
  if (iterator == nullptr || iterator->m_list != this) return false;
  UnlinkIterator(iterator);
  return true;
}

void kiBaseList::ItemRemoved(kiBaseListItem* item) {
  if (item == nullptr) return;
  for (kiBaseListIterator* it = m_iterators; it != nullptr; it = it->m_nextIterator) {
    // Back to the previous item, whatever the iterator's direction, so a
    // forward walk goes on with the item that followed.
    if (it->m_current == item) it->m_current = item->m_prev;
  }
}

void kiBaseList::CloseIterators() {
  kiBaseListIterator* it = m_iterators;
  m_iterators = nullptr;
  while (it != nullptr) {
    kiBaseListIterator* next = it->m_nextIterator;
    it->m_current = nullptr;
    it->m_nextIterator = nullptr;
    it->m_list = nullptr;
    it = next;
  }
}

// ---- Iterators ---------------------------------------------------------------

kiBaseListIterator::kiBaseListIterator(kiBaseList* list)
    : m_current(nullptr), m_nextIterator(nullptr), m_list(nullptr) {
  if (list != nullptr) list->LinkIterator(this);  // AttachIterator, without its checks
}

kiBaseListIterator::~kiBaseListIterator() {
  if (m_list != nullptr) m_list->UnlinkIterator(this);  // DetachIterator
}

kiBaseListForwardIterator::~kiBaseListForwardIterator() = default;

kiBaseListReverseIterator::~kiBaseListReverseIterator() = default;
