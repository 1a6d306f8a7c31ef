// Names, protocols and what an object responds to.
#include <gtest/gtest.h>

#include "Platform/Foundation/NSObject.h"
#include "Platform/Foundation/Protocol.h"

namespace vel::test {
namespace {

class Audience : public Protocol<Audience> {
 public:
  virtual void curtainRises() {}
  [[nodiscard]] virtual bool applauds() const { return false; }
  virtual void curtainFalls() {}
  /// Not optional.
  [[nodiscard]] virtual int seats() const = 0;

  template <class Adopter>
  using Optional = Operations<&Adopter::curtainRises, &Adopter::applauds, &Adopter::curtainFalls>;
};

class Critic : public Protocol<Critic> {
 public:
  virtual void writes() {}

  template <class Adopter>
  using Optional = Operations<&Adopter::writes>;
};

class Sleeper final : public Class<Sleeper, "Sleeper", NSObject, Audience> {
 public:
  [[nodiscard]] int seats() const override { return 1; }
};

class Enthusiast : public Class<Enthusiast, "Enthusiast", NSObject, Audience> {
 public:
  [[nodiscard]] int seats() const override { return 2; }
  [[nodiscard]] bool applauds() const override { return true; }
};

// Not final: what a subclass adds or leaves is seen.
class Subscriber final : public Class<Subscriber, "Subscriber", Enthusiast> {};

class Claqueur final : public Class<Claqueur, "Claqueur", Enthusiast> {
 public:
  void curtainFalls() override {}
};

class Reviewer : public Class<Reviewer, "Reviewer", NSObject, Audience, Critic> {
 public:
  [[nodiscard]] int seats() const override { return 1; }
  void curtainFalls() override {}
  void writes() override {}
};

class YoungReviewer final : public Class<YoungReviewer, "YoungReviewer", Reviewer> {
 public:
  void curtainRises() override {}
};

// Has the operations of an audience, and does not say that it is one.
class Passer final : public Class<Passer, "Passer"> {
 public:
  void curtainRises() {}
  [[nodiscard]] int seats() const { return 0; }
};

class Undecided final : public Class<Undecided, "Undecided", NSObject, Critic> {
 public:
  [[nodiscard]] OperationSet respondingOperations() const override { return {writes_ ? 1UL : 0UL}; }
  void setWrites(bool writes) { writes_ = writes; }

 private:
  bool writes_ = false;
};

TEST(ClassNameTest, IsWhatTheClassHeadSays) {
  EXPECT_EQ(make<Sleeper>()->className(), "Sleeper");
  EXPECT_EQ(Sleeper::staticClassName(), "Sleeper");
}

TEST(ClassNameTest, OfASubclassIsItsOwn) {
  const Strong<Enthusiast> subscriber = make<Subscriber>();
  EXPECT_EQ(subscriber->className(), "Subscriber");
}

TEST(ObjectTest, EqualsItselfAndNothingElse) {
  const auto object = make<Sleeper>();
  EXPECT_TRUE(object->isEqual(object.get()));
  EXPECT_FALSE(object->isEqual(make<Sleeper>().get()));
  EXPECT_FALSE(object->isEqual(nullptr));
}

TEST(ObjectTest, KnowsItself) {
  const auto object = make<Sleeper>();
  EXPECT_EQ(object->self(), object);
}

TEST(RespondsToTest, OperationThatTheClassOverrides) {
  EXPECT_TRUE(respondsTo<&Audience::applauds>(make<Enthusiast>()));
}

TEST(RespondsToTest, NoOperationThatTheClassLeavesAsItIs) {
  const auto sleeper = make<Sleeper>();
  EXPECT_FALSE(respondsTo<&Audience::curtainRises>(sleeper));
  EXPECT_FALSE(respondsTo<&Audience::applauds>(sleeper));
  EXPECT_FALSE(respondsTo<&Audience::curtainFalls>(sleeper));
  EXPECT_FALSE(respondsTo<&Audience::curtainRises>(make<Enthusiast>()));
  EXPECT_FALSE(respondsTo<&Audience::curtainFalls>(make<Enthusiast>()));
}

TEST(RespondsToTest, IsAskedThroughAReferenceToTheProtocol) {
  const Strong<Audience> audience = make<Enthusiast>();
  EXPECT_TRUE(respondsTo<&Audience::applauds>(audience));
  EXPECT_FALSE(respondsTo<&Audience::curtainFalls>(audience));
}

TEST(RespondsToTest, NoneRespondsToNothing) {
  EXPECT_FALSE(respondsTo<&Audience::applauds>(Strong<Audience>()));
}

TEST(RespondsToTest, EachProtocolOfAClassHasItsOwnOperations) {
  const auto reviewer = make<Reviewer>();
  EXPECT_TRUE(respondsTo<&Critic::writes>(reviewer));
  EXPECT_TRUE(respondsTo<&Audience::curtainFalls>(reviewer));
  EXPECT_FALSE(respondsTo<&Audience::curtainRises>(reviewer));
}

TEST(RespondsToTest, OperationThatASuperclassOverrides) {
  EXPECT_TRUE(respondsTo<&Audience::applauds>(make<Subscriber>()));
}

TEST(RespondsToTest, OperationThatOnlyASubclassOverrides) {
  EXPECT_TRUE(respondsTo<&Audience::curtainFalls>(make<Claqueur>()));
  EXPECT_TRUE(respondsTo<&Audience::applauds>(make<Claqueur>()));
  EXPECT_FALSE(respondsTo<&Audience::curtainRises>(make<Claqueur>()));
}

TEST(RespondsToTest, ASubclassOfAClassWithSeveralProtocolsKeepsThemApart) {
  const auto reviewer = make<YoungReviewer>();
  EXPECT_TRUE(respondsTo<&Audience::curtainRises>(reviewer));
  EXPECT_FALSE(respondsTo<&Audience::applauds>(reviewer));
  EXPECT_TRUE(respondsTo<&Audience::curtainFalls>(reviewer));
  EXPECT_TRUE(respondsTo<&Critic::writes>(reviewer));
}

TEST(RespondsToTest, AnObjectMayDecideAtRunTime) {
  const auto undecided = make<Undecided>();
  EXPECT_FALSE(respondsTo<&Critic::writes>(undecided));
  undecided->setWrites(true);
  EXPECT_TRUE(respondsTo<&Critic::writes>(undecided));
}

TEST(ConformsToTest, HoldsForADeclaredProtocol) {
  const Strong<NSObject> reviewer = make<Reviewer>();
  EXPECT_TRUE(conformsTo<Audience>(reviewer));
  EXPECT_TRUE(conformsTo<Critic>(reviewer));
  EXPECT_TRUE(conformsTo<Audience>(Strong<NSObject>(make<Subscriber>())));
}

TEST(ConformsToTest, HavingTheOperationsIsNotEnough) {
  EXPECT_FALSE(conformsTo<Audience>(Strong<NSObject>(make<Passer>())));
}

TEST(ConformsToTest, NoneConformsToNothing) {
  EXPECT_FALSE(conformsTo<Audience>(Strong<NSObject>()));
}

TEST(AsTest, AnswersTheObjectAsAnAdopter) {
  const Strong<NSObject> object = make<Enthusiast>();
  EXPECT_EQ(as<Audience>(object)->seats(), 2);
  EXPECT_EQ(as<Enthusiast>(object), object);
}

TEST(AsTest, AnswersNoneForAnythingElse) {
  const Strong<NSObject> object = make<Passer>();
  EXPECT_EQ(as<Audience>(object), nullptr);
  EXPECT_EQ(as<Enthusiast>(object), nullptr);
  EXPECT_EQ(as<Audience>(Strong<NSObject>()), nullptr);
}

}  // namespace
}  // namespace vel::test
