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

// Inside a class with an identity its own operation has the name of the function.
class Asker : public Both {
  CORVIX_IDENTITY(Asker, 0xA4, 2, 3, 4, Both)

 public:
  template <class Interface, class Object>
  static Interface* ask(Object* object) {
    return query<Interface>(object);
  }
  ILeft* left() { return query<ILeft>(this); }
  const IRight* right() const { return query<IRight>(this); }
};

TEST(IdentityWalk, TheFunctionHasOneSpellingEverywhere) {
  Asker object;
  const Asker& constant = object;
  IRight* const right = &object;
  EXPECT_EQ(object.left(), &object);
  EXPECT_EQ(constant.right(), right);
  EXPECT_EQ(Asker::ask<ILeft>(right), &object);
  EXPECT_EQ(Asker::ask<INearly>(right), nullptr);
  EXPECT_EQ(Asker::ask<ILeft>(static_cast<IRight*>(nullptr)), nullptr);
  EXPECT_EQ(query<ILeft>(&constant), &object);
  EXPECT_EQ(query<const ILeft>(&object), &object);
  static_assert(std::is_same_v<decltype(query<ILeft>(&constant)), const ILeft*>);
  EXPECT_STREQ(Asker::classInfo().className(), "Asker");
  EXPECT_EQ(Asker::classInfo().classNameW(), std::wstring(L"Asker"));
}

TEST(IdentityWalk, MissEntersAndLeavesEveryClass) {
  BSmartObject object;
  Trace trace;
  EXPECT_EQ(object.query(INearly::classInfo(), &trace), nullptr);
  EXPECT_EQ(trace.text, "BSmartObject IBSmartObject IBRemoteRemovable IBTransportable ^ BNotifySender ^ ^ ^ ^");
  EXPECT_EQ(query<IBRTTISupport>(&object), nullptr) << "the mixin is no stop, although every class has it";
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
      {BNotifySender::classInfo(), static_cast<BNotifySender*>(&object),
       "Both BSmartObject IBSmartObject IBRemoteRemovable IBTransportable ^ BNotifySender"},
      {IBTransportable::classInfo(), static_cast<BSmartObject*>(&object),
       "Both BSmartObject IBSmartObject IBRemoteRemovable IBTransportable"},
      {IRight::classInfo(), static_cast<IRight*>(&object),
       "Both BSmartObject IBSmartObject IBRemoteRemovable IBTransportable ^ BNotifySender ^ ^ ^ ^ "
       "ILeft IBTransportable ^ ^ IRight"},
  };
  for (const HitRow& row : rows) {
    Trace trace;
    EXPECT_EQ(object.query(row.wanted, &trace), row.expected);
    EXPECT_EQ(trace.text, row.walk);
    EXPECT_EQ(ILeft::classInfo().query(&object, row.wanted, nullptr), row.expected) << "through any class";
    EXPECT_EQ(static_cast<ILeft&>(object).query(row.wanted), row.expected) << "through another interface";
    EXPECT_EQ(static_cast<IBRTTISupport&>(object).query(row.wanted), row.expected) << "through the mixin";
  }
}

// A match without an object leaves every class that is open, itself included.
TEST(IdentityWalk, MatchOnNullObjectIsBalanced) {
  EXPECT_EQ(ILeft::classInfo().query(nullptr, Both::classInfo(), nullptr), nullptr);
  Trace trace;
  EXPECT_EQ(identity::query(static_cast<BSmartObject*>(nullptr), IBRemoteRemovable::classInfo(), &trace), nullptr);
  EXPECT_EQ(trace.text, "BSmartObject(null) IBSmartObject(null) IBRemoteRemovable(null) ^ ^ ^");
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
