// UserDataTest.cpp - the kiUserData family: clones keep class and payload, own
// their strings and start uncounted; copies never carry a count.
#include <typeinfo>

#include <gtest/gtest.h>

#include "ki/containers/UserData.h"

namespace {

TEST(UserDataTest, ClonesKeepClassAndPayloadAndStartUncounted) {
  int target = 0;
  kiRef<kiUserData> rows[] = {new kiUserData, new kiUserData_uint32(4000000000u),
                              new kiUserData_VoidPtr(&target), new kiUserData_CString("one"),
                              new kiUserData_2CString("first", "second")};
  for (const kiRef<kiUserData>& source : rows) {
    const kiRef<kiUserData> clone = source->Clone();  // released at the end: no leak
    const kiUserData &a = *source, &b = *clone;
    SCOPED_TRACE(typeid(a).name());
    ASSERT_EQ(typeid(a), typeid(b));
    EXPECT_EQ(1, clone->_GetRefCount());
  }
  auto* n = static_cast<kiUserData_uint32*>(rows[1]->Clone());
  auto* p = static_cast<kiUserData_VoidPtr*>(rows[2]->Clone());
  auto* two = static_cast<kiUserData_2CString*>(rows[4]->Clone());
  EXPECT_TRUE(n->GetValue() == 4000000000u && p->GetPointer() == &target);
  // A clone may go to another thread: its strings share no block with the source.
  const auto& source = static_cast<const kiUserData_2CString&>(*rows[4]);
  EXPECT_STREQ("second", two->GetSecond().c_str());
  EXPECT_NE(source.GetFirst().c_str(), two->GetFirst().c_str());
  EXPECT_EQ(1, source.GetSecond().GetStringData()->refs);
  delete n;
  delete p;
  delete two;
}

TEST(UserDataTest, CopiesAreNewPayloads) {
  kiUserData_CString held("held");
  held.Retain();
  kiUserData_CString copy(held);
  EXPECT_EQ(0, copy._GetRefCount());
  copy.SetString("changed");
  held = copy;  // the payload moves over, the holder stays
  EXPECT_EQ(1, held._GetRefCount());
  EXPECT_STREQ("changed", held.GetString().c_str());
}

}  // namespace
