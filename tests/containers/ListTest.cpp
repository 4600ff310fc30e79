// ListTest.cpp - kiBaseList and kiList<T>: iterators that survive removals,
// anchored inserts, moving items between lists, ownership and bad arguments.
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "ki/containers/List.h"

namespace {

using IntList = kiList<int>;

std::vector<int> Values(const IntList& list) {
  std::vector<int> values;
  for (IntList::Item* i = list.GetFirstItem(); i != nullptr; i = i->GetNextItem()) {
    values.push_back(i->Get());
  }
  return values;
}

std::vector<int> Fill(IntList& list, int n) {
  for (int i = 1; i <= n; ++i) list.push_back(i);
  return Values(list);
}

// An item that counts its destructions.
struct Counted : kiBaseListItem {
  explicit Counted(int* deaths) : m_deaths(deaths) {}
  ~Counted() override { ++*m_deaths; }
  int* m_deaths;
};

// ---- Iterators under removal ---------------------------------------------------

TEST(ListTest, PoppingEachItemWhileWalkingForwardVisitsEveryItemOnce) {
  for (int n : {0, 1, 2, 5}) {
    SCOPED_TRACE(n);
    IntList list;
    const std::vector<int> all = Fill(list, n);
    std::vector<int> seen;
    IntList::ForwardIterator it(&list);
    while (it.Next()) {
      seen.push_back(it.Get());
      ASSERT_TRUE(list.pop(it));
    }
    EXPECT_EQ(all, seen);
    EXPECT_TRUE(list.size() == 0 && list.GetBegin() == nullptr && list.GetEnd() == nullptr);
  }
}

TEST(ListTest, RemovalMovesEveryIteratorOnTheItemToItsPrevious) {
  IntList list;
  Fill(list, 5);
  IntList::ForwardIterator f1(&list), f2(&list);
  IntList::ReverseIterator r(&list);
  for (int i = 0; i < 3; ++i) f1.Next(), f2.Next(), r.Prev();  // all three on 3
  std::unique_ptr<kiBaseListItem> detached(list.Detach(f1.GetCurrent()));
  EXPECT_TRUE(f1.Get() == 2 && f2.Get() == 2 && r.Get() == 2);
  EXPECT_TRUE(f1.Next() && f1.Get() == 4);
  EXPECT_TRUE(r.Prev() && r.Get() == 1);  // intended: the reverse walk skips 2

  // The first item goes: iterators on it stand before the first again.
  ASSERT_TRUE(list.pop_front());  // 1, under r
  EXPECT_EQ(nullptr, r.GetCurrent());
  EXPECT_TRUE(r.Prev() && r.Get() == 5);  // restarts at the end
  ASSERT_TRUE(list.pop(f2));              // 2, now the first
  EXPECT_TRUE(f2.Next() && f2.Get() == 4 && f1.Get() == 4);
  EXPECT_EQ((std::vector<int>{4, 5}), Values(list));
}

// ---- Ownership -------------------------------------------------------------------

TEST(ListTest, EachItemIsDeletedOnceByTheListThatHoldsIt) {
  int deaths = 0;
  kiBaseList other;
  auto list = std::make_unique<kiBaseList>();
  Counted* items[4];
  for (Counted*& c : items) list->PushBack(c = new Counted(&deaths));
  kiBaseListForwardIterator f(list.get());
  kiBaseListReverseIterator r(list.get());
  f.Next();
  r.Prev();
  ASSERT_EQ(items[1], list->Detach(items[1]));
  EXPECT_TRUE(other.PushBack(items[1]));
  EXPECT_TRUE(list->Remove(items[0]) && deaths == 1 && f.GetCurrent() == nullptr);
  list.reset();  // under open iterators
  EXPECT_EQ(3, deaths);
  EXPECT_FALSE(f.Next() || r.Prev());
  EXPECT_TRUE(f.GetList() == nullptr && r.GetCurrent() == nullptr);
  EXPECT_EQ(items[1], other.GetBegin());  // the moved item outlived its first list
}

struct CountingList : IntList {
  bool Remove(kiBaseListItem* item) override {
    ++calls;
    return keep ? false : IntList::Remove(item);
  }
  int calls = 0;
  bool keep = false;
};

TEST(ListTest, PopsAndEraseGoThroughAnOverriddenRemove) {
  CountingList list;
  for (int v : {1, 2, 1, 3, 4}) list.push_back(v);
  EXPECT_TRUE(list.pop(1));  // the first match only
  EXPECT_FALSE(list.pop(7));
  EXPECT_EQ((std::vector<int>{2, 1, 3, 4}), Values(list));
  list.pop_front();
  list.pop_back();
  list.erase();
  EXPECT_TRUE(list.calls == 5 && list.empty());
  Fill(list, 2);
  list.keep = true;
  list.erase();  // an override that keeps its items ends erase instead of spinning
  EXPECT_TRUE(list.calls == 6 && list.size() == 2);
}

// ---- Inserting, and bad arguments ---------------------------------------------------

TEST(ListTest, AnchoredPushesLandBesideTheAnchor) {
  struct Row {
    bool after;
    int anchor;  // 0: null
    std::vector<int> expected;
  };
  const Row rows[] = {{false, 0, {9, 1, 2, 3}}, {false, 1, {9, 1, 2, 3}}, {false, 3, {1, 2, 9, 3}},
                      {true, 0, {1, 2, 3, 9}},  {true, 3, {1, 2, 3, 9}},  {true, 1, {1, 9, 2, 3}}};
  for (const Row& r : rows) {
    SCOPED_TRACE(testing::Message() << (r.after ? "after " : "before ") << r.anchor);
    IntList list;
    Fill(list, 3);
    IntList::Item* anchor = r.anchor == 0 ? nullptr : list.GetFirstItem();
    while (anchor != nullptr && anchor->Get() != r.anchor) anchor = anchor->GetNextItem();
    ASSERT_NE(nullptr, r.after ? list.push_after(9, anchor) : list.push_before(9, anchor));
    EXPECT_EQ(r.expected, Values(list));
    EXPECT_TRUE(list.size() == 4 && list.front() == r.expected[0] && list.back() == r.expected[3]);
  }
}

TEST(ListTest, BadArgumentsAreRefusedAndChangeNothing) {
  IntList list, other, empty, single;
  const std::vector<int> values = Fill(list, 3);
  Fill(other, 3);
  single.push_back(5);
  IntList::Item loose(7);
  IntList::ForwardIterator foreign(&other);
  foreign.Next();
  const struct {
    const char* what;
    bool done;
  } rows[] = {
      {"push null", list.PushBack(nullptr) || list.PushFront(nullptr)},
      {"push linked",
       list.PushBack(list.GetFirstItem()->GetNextItem()) || list.PushFront(list.GetFirstItem()) ||
           single.PushBack(single.GetFirstItem()) || list.PushBack(other.GetLastItem())},
      {"detach null", list.Detach(nullptr) != nullptr || list.Remove(nullptr)},
      {"detach loose item", list.Detach(&loose) != nullptr || list.pop(&loose)},
      {"detach other list's ends",
       list.Detach(other.GetFirstItem()) != nullptr || list.pop(other.GetLastItem())},
      {"anchor of other list", list.push_before(9, other.GetLastItem()) != nullptr ||
                                   list.push_after(9, other.GetFirstItem()) != nullptr},
      {"pop through other list's iterator", list.pop(foreign)},
      {"pop empty", empty.pop_front() || empty.pop_back()},
      {"iterators", list.AttachIterator(nullptr) || list.DetachIterator(&foreign)},
  };
  for (const auto& r : rows) {
    SCOPED_TRACE(r.what);
    EXPECT_FALSE(r.done);
  }
  list.ItemRemoved(nullptr);
  EXPECT_TRUE(Values(list) == values && Values(other) == values && foreign.Get() == 1);
  EXPECT_EQ(0, empty.front() + empty.back());  // a default value, not a fault
  kiBaseListForwardIterator none(nullptr);
  EXPECT_FALSE(none.Next());
}

}  // namespace
