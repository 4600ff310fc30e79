// list_fuzzer.cpp - kiList<int> with several open forward and reverse
// iterators beside a std::list model that applies the same rule: an iterator
// on a removed item moves to that item's previous one (to "before the first"
// when it was the first). Items move to a pool of detached items and into a
// second list; bad arguments must be refused; the list is sometimes destroyed
// under its open iterators. Contents, links, count and every iterator's
// position are compared after each operation.
//
// Input: one byte an operation, the bytes after it its arguments; reads past
// the end give zeros.
#include <cstdint>
#include <iterator>
#include <list>
#include <memory>
#include <vector>

#include "ki/containers/List.h"

#include "FuzzInput.h"

namespace {

constexpr size_t kMaxInput = 4096;
constexpr int kMaxOps = 1024;
constexpr size_t kIterators = 6;
constexpr size_t kPool = 8;

using IntList = kiList<int>;
using Item = IntList::Item;

using kiFuzz::Check;
using kiFuzz::Reader;

// An element of the model: the real item (its identity) and its value.
struct Entry {
  Item* item;
  int value;
};
using Model = std::list<Entry>;
using Pos = Model::iterator;  // end() stands for "no current item"

struct IteratorSlot {
  std::unique_ptr<kiBaseListIterator> real;
  bool forward = true;
  bool open = false;  // attached to the main list
  Pos pos;
};

class Harness {
 public:
  explicit Harness(Reader& in) : m_in(in), m_list(new IntList) {}
  ~Harness() {
    // Either order is legal: iterators first, or the list under open ones.
    if ((m_in.Byte() & 1) != 0) m_list.reset();
    for (IteratorSlot& s : m_slots) s.real.reset();
  }

  void Step();
  void CheckAll();

 private:
  int Value() { return m_in.Byte() % 8; }  // few values, so duplicates occur

  // Position index (by the byte) or end() for a null anchor.
  Pos PickPos(Model& model) {
    const size_t n = model.size();
    const size_t at = m_in.Byte() % (n + 1);
    return at == n ? model.end() : std::next(model.begin(), static_cast<std::ptrdiff_t>(at));
  }
  Item* ItemAt(Model& model, Pos pos) { return pos == model.end() ? nullptr : pos->item; }

  // The model's half of the removal rule, then the erase.
  void ModelRemove(Pos pos) {
    for (IteratorSlot& s : m_slots) {
      if (s.open && s.pos == pos) s.pos = pos == m_model.begin() ? m_model.end() : std::prev(pos);
    }
    m_model.erase(pos);
  }

  bool Advance(IteratorSlot& s) {
    if (!s.open) return false;
    if (s.forward) {
      s.pos = s.pos == m_model.end() ? m_model.begin() : std::next(s.pos);
    } else if (s.pos == m_model.end()) {
      s.pos = m_model.empty() ? m_model.end() : std::prev(m_model.end());
    } else {
      s.pos = s.pos == m_model.begin() ? m_model.end() : std::prev(s.pos);
    }
    return s.pos != m_model.end();
  }

  void OpenIterator(IteratorSlot& s, bool forward) {
    s.forward = forward;
    if (forward) {
      s.real.reset(new IntList::ForwardIterator(m_list.get()));
    } else {
      s.real.reset(new IntList::ReverseIterator(m_list.get()));
    }
    s.open = true;
    s.pos = m_model.end();
  }

  void CloseModelIterators() {
    for (IteratorSlot& s : m_slots) s.open = false;
  }

  void TakeToPool(Item* item, int value) {
    if (m_pool.size() < kPool) {
      m_pool.emplace_back(item);
      m_poolValues.push_back(value);
    } else {
      delete item;
    }
  }

  void BadArguments();

  Reader& m_in;
  std::unique_ptr<IntList> m_list;
  Model m_model;
  IntList m_other;  // no iterators; a second home for items
  Model m_otherModel;
  IteratorSlot m_slots[kIterators];
  std::vector<std::unique_ptr<Item>> m_pool;  // detached items, owned here
  std::vector<int> m_poolValues;
};

void Harness::Step() {
  IteratorSlot& slot = m_slots[m_in.Byte() % kIterators];
  switch (m_in.Byte() % 16) {
    case 0: {
      const int v = Value();
      Item* item = m_list->push_back(v);
      m_model.push_back({item, v});
      break;
    }
    case 1: {
      const int v = Value();
      Item* item = m_list->push_front(v);
      m_model.push_front({item, v});
      break;
    }
    case 2:
    case 3: {  // push_before / push_after, anchored anywhere or null
      const bool after = (m_in.Byte() & 1) != 0;
      const int v = Value();
      const Pos anchor = PickPos(m_model);
      Item* anchorItem = ItemAt(m_model, anchor);
      Item* item = after ? m_list->push_after(v, anchorItem) : m_list->push_before(v, anchorItem);
      Check(item != nullptr, "anchored push refused");
      if (after) {
        m_model.insert(anchor == m_model.end() ? m_model.end() : std::next(anchor), {item, v});
      } else {
        m_model.insert(anchor == m_model.end() ? m_model.begin() : anchor, {item, v});
      }
      break;
    }
    case 4:
      Check(m_list->pop_front() == !m_model.empty(), "pop_front");
      if (!m_model.empty()) ModelRemove(m_model.begin());
      break;
    case 5:
      Check(m_list->pop_back() == !m_model.empty(), "pop_back");
      if (!m_model.empty()) ModelRemove(std::prev(m_model.end()));
      break;
    case 6: {  // pop(iterator)
      const bool expected = slot.real && slot.open && slot.pos != m_model.end();
      Check((slot.real && m_list->pop(*slot.real)) == expected, "pop(iterator)");
      if (expected) ModelRemove(slot.pos);
      break;
    }
    case 7: {  // pop(value): the first match only
      const int v = Value();
      Pos found = m_model.begin();
      while (found != m_model.end() && found->value != v) ++found;
      Check(m_list->pop(v) == (found != m_model.end()), "pop(value)");
      if (found != m_model.end()) ModelRemove(found);
      break;
    }
    case 8: {  // pop(item) or Detach(item), anywhere (null at the end)
      const bool detach = (m_in.Byte() & 1) != 0;
      const Pos pos = PickPos(m_model);
      Item* item = ItemAt(m_model, pos);
      if (detach) {
        Check(m_list->Detach(item) == item, "Detach");
      } else {
        Check(m_list->pop(item) == (item != nullptr), "pop(item)");
      }
      if (item == nullptr) break;
      const int v = pos->value;
      ModelRemove(pos);
      if (detach) {
        Check(item->GetNext() == nullptr && item->GetPrev() == nullptr, "detached links");
        TakeToPool(item, v);
      }
      break;
    }
    case 9: {  // a pooled item back into either list, at the back or before an anchor
      if (m_pool.empty()) break;
      const size_t at = m_in.Byte() % m_pool.size();
      const bool toOther = (m_in.Byte() & 1) != 0;
      IntList& list = toOther ? m_other : *m_list;
      Model& model = toOther ? m_otherModel : m_model;
      const Pos anchor = PickPos(model);
      Item* item = m_pool[at].get();
      Check(list.PushBefore(item, ItemAt(model, anchor)), "pooled push");
      model.insert(anchor == model.end() ? model.begin() : anchor, {item, m_poolValues[at]});
      m_pool[at].release();
      m_pool.erase(m_pool.begin() + static_cast<std::ptrdiff_t>(at));
      m_poolValues.erase(m_poolValues.begin() + static_cast<std::ptrdiff_t>(at));
      break;
    }
    case 10: {  // the second list's front item into the pool
      Item* first = m_other.GetFirstItem();
      Check(m_other.Detach(first) == first, "other Detach");
      if (first == nullptr) break;
      TakeToPool(first, m_otherModel.front().value);
      m_otherModel.pop_front();
      break;
    }
    case 11:
    case 12: {  // step
      const bool expected = slot.real && Advance(slot);
      bool got = false;
      if (slot.real) {
        got = slot.forward ? static_cast<kiBaseListForwardIterator&>(*slot.real).Next()
                           : static_cast<kiBaseListReverseIterator&>(*slot.real).Prev();
      }
      Check(got == expected, "step result");
      break;
    }
    case 13: {  // open, close, or detach / reattach an iterator
      const uint8_t how = m_in.Byte() % 3;
      if (!slot.real) {
        OpenIterator(slot, (how & 1) != 0);
      } else if (how == 0) {
        slot.real.reset();
        slot.open = false;
      } else if (slot.open) {
        Check(m_list->DetachIterator(slot.real.get()), "DetachIterator");
        slot.open = false;
      } else {
        Check(m_list->AttachIterator(slot.real.get()), "AttachIterator");
        slot.open = true;
        slot.pos = m_model.end();
      }
      break;
    }
    case 14:
      if ((m_in.Byte() & 3) == 0) {  // destroyed under its open iterators
        m_list.reset(new IntList);
        m_model.clear();
        CloseModelIterators();
      } else {
        m_list->erase();
        while (!m_model.empty()) ModelRemove(m_model.begin());
      }
      break;
    default:
      BadArguments();
      break;
  }
}

// Every refusal leaves both lists and the iterators as they were.
void Harness::BadArguments() {
  IntList& list = *m_list;
  Item* otherEnd = (m_in.Byte() & 1) != 0 ? m_other.GetFirstItem() : m_other.GetLastItem();
  Item* pooled = m_pool.empty() ? nullptr : m_pool.front().get();
  Item* own = ItemAt(m_model, PickPos(m_model));
  Check(!list.PushBack(nullptr) && !list.PushFront(nullptr), "push null");
  Check(list.Detach(nullptr) == nullptr && !list.Remove(nullptr), "detach null");
  Check(list.Detach(pooled) == nullptr && !list.pop(pooled), "detach a loose item");
  Check(list.Detach(otherEnd) == nullptr && !list.pop(otherEnd), "detach another list's end");
  Check(!list.PushBack(own) && !list.PushFront(own), "push a linked item");
  // The lone item of another list has no links and cannot be told from a free
  // one, so only an end of a longer list is offered.
  if (m_other.size() >= 2) {
    Check(!list.PushBack(otherEnd) && !list.PushAfter(otherEnd, own), "push another's item");
  }
  if (otherEnd != nullptr && pooled != nullptr) {
    Check(!list.PushBefore(pooled, otherEnd) && !list.PushAfter(pooled, otherEnd),
          "anchor in another list");
  }
  IntList::ForwardIterator foreign(&m_other);
  foreign.Next();
  Check(!list.pop(foreign), "pop through another list's iterator");
  list.ItemRemoved(nullptr);
  Check(!list.AttachIterator(nullptr) && !list.DetachIterator(nullptr), "null iterator");
  Check(!list.DetachIterator(&foreign), "detach another list's iterator");
}

void CheckSame(const IntList& list, const Model& model, const char* what) {
  Check(list.size() == static_cast<int>(model.size()) && list.empty() == model.empty(), what);
  const kiBaseListItem* prev = nullptr;
  const Item* item = list.GetFirstItem();
  for (const Entry& e : model) {
    Check(item == e.item && item->Get() == e.value && item->GetPrev() == prev, what);
    prev = item;
    item = item->GetNextItem();
  }
  Check(item == nullptr && list.GetEnd() == prev, what);
  Check(list.front() == (model.empty() ? 0 : model.front().value), "front");
  Check(list.back() == (model.empty() ? 0 : model.back().value), "back");
}

void Harness::CheckAll() {
  CheckSame(*m_list, m_model, "main list");
  CheckSame(m_other, m_otherModel, "second list");
  for (const IteratorSlot& s : m_slots) {
    if (!s.real) continue;
    Check((s.real->GetList() != nullptr) == s.open, "iterator's list");
    Check(!s.open || s.real->GetList() == m_list.get(), "iterator on the wrong list");
    const kiBaseListItem* expected = s.open && s.pos != m_model.end() ? s.pos->item : nullptr;
    Check(s.real->GetCurrent() == expected, "iterator position");
  }
  for (const std::unique_ptr<Item>& item : m_pool) {
    Check(item->GetNext() == nullptr && item->GetPrev() == nullptr, "pooled links");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  Reader in(data, size);
  Harness h(in);
  for (int op = 0; op < kMaxOps && !in.AtEnd(); ++op) {
    h.Step();
    h.CheckAll();
  }
  return 0;
}
