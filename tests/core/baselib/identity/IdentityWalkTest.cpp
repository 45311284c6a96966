#include <gtest/gtest.h>

#include <string>

#include "core/baselib/objects/Ref.h"

namespace corvix {
namespace {

class ILeft : public IBTransportable {
  CORVIX_IDENTITY(ILeft, 0xA1, 2, 3, 4, IBTransportable)
};

class IRight : public IBTransportable {
  CORVIX_IDENTITY(IRight, 0xA2, 2, 3, 4, IBTransportable)
};

class Both : public BSmartObject, public ILeft, public IRight {
  CORVIX_IDENTITY(Both, 0xA3, 2, 3, 4, BSmartObject, ILeft, IRight)
};

// Alike in all but the last word.
class INearly : public IBTransportable {
  CORVIX_IDENTITY(INearly, 0xA2, 2, 3, 5, IBTransportable)
};

class Trace final : public QueryVisitor {
 public:
  void enter(const stype_info& info, void* object) override {
    text += (text.empty() ? "" : " ") + std::string(info.className()) + (object ? "" : "(null)");
  }
  void leave() override { text += " ^"; }
  std::string text;
};

constexpr char kWholeWalk[] = "BSmartObject IBSmartObject IBRemoteRemovable IBTransportable ^ BNotifySender ^ ^ ^ ^";

TEST(IdentityWalk, MissEntersAndLeavesEveryClass) {
  BSmartObject object;
  Trace trace;
  EXPECT_EQ(object.query(INearly::classInfo(), &trace), nullptr);
  EXPECT_EQ(trace.text, kWholeWalk);
}

// The mixin is no stop of the walk, although every class has it.
TEST(IdentityWalk, DoesNotVisitTheMixin) {
  BSmartObject object;
  EXPECT_EQ(query<IBRTTISupport>(&object), nullptr);
}

struct HitRow {
  const stype_info& wanted;
  void* expected;
  const char* walk;
};

TEST(IdentityWalk, HitReturnsTheAdjustedPointerAndLeavesNothing) {
  Both object;
  const HitRow rows[] = {
      {Both::classInfo(), &object, "Both"},
      {IBSmartObject::classInfo(), static_cast<IBSmartObject*>(&object), "Both BSmartObject IBSmartObject"},
      {BNotifySender::classInfo(), static_cast<BNotifySender*>(&object),
       "Both BSmartObject IBSmartObject IBRemoteRemovable IBTransportable ^ BNotifySender"},
      {IBTransportable::classInfo(), static_cast<BSmartObject*>(&object),
       "Both BSmartObject IBSmartObject IBRemoteRemovable IBTransportable"},
      {IRight::classInfo(), static_cast<IRight*>(&object),
       "Both BSmartObject IBSmartObject IBRemoteRemovable IBTransportable ^ BNotifySender ^ ^ ^ ^ "
       "ILeft IBTransportable ^ ^ IRight"},
  };
  for (const HitRow& row : rows) {
    SCOPED_TRACE(row.wanted.className());
    Trace trace;
    EXPECT_EQ(object.query(row.wanted, &trace), row.expected);
    EXPECT_EQ(trace.text, row.walk);
    EXPECT_EQ(object.query(row.wanted), row.expected);
    EXPECT_EQ(static_cast<ILeft&>(object).query(row.wanted), row.expected) << "through another interface";
    EXPECT_EQ(static_cast<IBRTTISupport&>(object).query(row.wanted), row.expected) << "through the mixin";
  }
}

// A match without an object leaves every class that is open, itself included.
TEST(IdentityWalk, MatchOnNullObjectIsBalanced) {
  Trace trace;
  EXPECT_EQ(identity::query(static_cast<BSmartObject*>(nullptr), IBRemoteRemovable::classInfo(), &trace), nullptr);
  EXPECT_EQ(trace.text, "BSmartObject(null) IBSmartObject(null) IBRemoteRemovable(null) ^ ^ ^");
}

TEST(IdentityWalk, ForwarderAnswersNullForNull) {
  Both object;
  const stype_info& any = ILeft::classInfo();
  EXPECT_EQ(any.query(nullptr, Both::classInfo(), nullptr), nullptr);
  EXPECT_EQ(any.query(&object, IRight::classInfo(), nullptr), static_cast<IRight*>(&object));
}

TEST(IdentityWalk, NamesAndTypeAreTheMostDerivedClass) {
  Both object;
  EXPECT_STREQ(static_cast<IRight&>(object).typeInfo().className(), "Both");
  EXPECT_STREQ(static_cast<IBRTTISupport&>(object).typeInfo().classNameW(), L"Both");
}

TEST(Ref, CountsThroughAnInterfaceThatDoesNot) {
  auto object = make<Both>();
  Ref<ILeft> left = object.as<ILeft>();
  Ref<ILeft> copy = left;
  EXPECT_EQ(object->refCount(), 2u);
  left.reset();
  copy = nullptr;
  EXPECT_EQ(object->refCount(), 0u);
  EXPECT_FALSE(object.as<INearly>());
}

}  // namespace
}  // namespace corvix
