// Class names, protocols and optional operations.
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
  // This operation is not optional.
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

class Enthusiast final : public Class<Enthusiast, "Enthusiast", NSObject, Audience> {
 public:
  [[nodiscard]] int seats() const override { return 2; }
  [[nodiscard]] bool applauds() const override { return true; }
};

class Reviewer final : public Class<Reviewer, "Reviewer", NSObject, Audience, Critic> {
 public:
  [[nodiscard]] int seats() const override { return 1; }
  void curtainFalls() override {}
  void writes() override {}
};

class Building : public Class<Building, "Building"> {};

class Theatre final : public Class<Theatre, "Theatre", Building, Critic> {
 public:
  void writes() override {}
};

// Has operations of `Audience`, but does not adopt the protocol.
class NonAdopter final : public Class<NonAdopter, "NonAdopter"> {
 public:
  void curtainRises() {}
  [[nodiscard]] int seats() const { return 0; }
};

class RunTimeCritic final : public Class<RunTimeCritic, "RunTimeCritic", NSObject, Critic> {
 public:
  [[nodiscard]] OperationSet respondingOperations() const override { return {writes_ ? 1UL : 0UL}; }
  void setWrites(bool writes) { writes_ = writes; }

 private:
  bool writes_ = false;
};

TEST(ClassNameTest, IsTheNameInTheClassHead) {
  EXPECT_EQ(make<Sleeper>()->className(), "Sleeper");
  EXPECT_EQ(Sleeper::staticClassName(), "Sleeper");
}

TEST(ClassNameTest, ASubclassHasItsOwnName) {
  const Strong<Building> theatre = make<Theatre>();
  EXPECT_EQ(theatre->className(), "Theatre");
}

TEST(ObjectTest, EqualsOnlyItself) {
  const auto object = make<Sleeper>();
  EXPECT_TRUE(object->isEqual(object.get()));
  EXPECT_FALSE(object->isEqual(make<Sleeper>().get()));
  EXPECT_FALSE(object->isEqual(nullptr));
}

TEST(ObjectTest, SelfReturnsAStrongReferenceToTheObject) {
  const auto object = make<Sleeper>();
  EXPECT_EQ(object->self(), object);
}

TEST(RespondsToTest, IsTrueForAnOperationThatTheClassOverrides) {
  EXPECT_TRUE(respondsTo<&Audience::applauds>(make<Enthusiast>()));
}

TEST(RespondsToTest, IsFalseForAnOperationThatTheClassDoesNotOverride) {
  const auto sleeper = make<Sleeper>();
  EXPECT_FALSE(respondsTo<&Audience::curtainRises>(sleeper));
  EXPECT_FALSE(respondsTo<&Audience::applauds>(sleeper));
  EXPECT_FALSE(respondsTo<&Audience::curtainFalls>(sleeper));
  EXPECT_FALSE(respondsTo<&Audience::curtainRises>(make<Enthusiast>()));
  EXPECT_FALSE(respondsTo<&Audience::curtainFalls>(make<Enthusiast>()));
}

TEST(RespondsToTest, WorksThroughAReferenceToTheProtocol) {
  const Strong<Audience> audience = make<Enthusiast>();
  EXPECT_TRUE(respondsTo<&Audience::applauds>(audience));
  EXPECT_FALSE(respondsTo<&Audience::curtainFalls>(audience));
}

TEST(RespondsToTest, IsFalseForNull) {
  EXPECT_FALSE(respondsTo<&Audience::applauds>(Strong<Audience>()));
}

TEST(RespondsToTest, DistinguishesTheProtocolsOfAClass) {
  const auto reviewer = make<Reviewer>();
  EXPECT_TRUE(respondsTo<&Critic::writes>(reviewer));
  EXPECT_TRUE(respondsTo<&Audience::curtainFalls>(reviewer));
  EXPECT_FALSE(respondsTo<&Audience::curtainRises>(reviewer));
}

TEST(RespondsToTest, ASubclassMayAdoptAProtocolThatItsSuperclassDoesNot) {
  EXPECT_TRUE(respondsTo<&Critic::writes>(make<Theatre>()));
}

TEST(RespondsToTest, AnObjectMayDecideAtRunTimeWhetherItResponds) {
  const auto critic = make<RunTimeCritic>();
  EXPECT_FALSE(respondsTo<&Critic::writes>(critic));
  critic->setWrites(true);
  EXPECT_TRUE(respondsTo<&Critic::writes>(critic));
}

TEST(ConformsToTest, IsTrueForADeclaredProtocol) {
  const Strong<NSObject> reviewer = make<Reviewer>();
  EXPECT_TRUE(conformsTo<Audience>(reviewer));
  EXPECT_TRUE(conformsTo<Critic>(reviewer));
  EXPECT_TRUE(conformsTo<Critic>(Strong<Building>(make<Theatre>())));
}

TEST(ConformsToTest, IsFalseForAClassThatHasTheOperationsButDoesNotAdoptTheProtocol) {
  EXPECT_FALSE(conformsTo<Audience>(Strong<NSObject>(make<NonAdopter>())));
}

TEST(ConformsToTest, IsFalseForNull) { EXPECT_FALSE(conformsTo<Audience>(Strong<NSObject>())); }

TEST(AsTest, ReturnsTheObjectAsAnAdopter) {
  const Strong<NSObject> object = make<Enthusiast>();
  EXPECT_EQ(as<Audience>(object)->seats(), 2);
  EXPECT_EQ(as<Enthusiast>(object), object);
}

TEST(AsTest, ReturnsNullForAnObjectOfAnotherClass) {
  const Strong<NSObject> object = make<NonAdopter>();
  EXPECT_EQ(as<Audience>(object), nullptr);
  EXPECT_EQ(as<Enthusiast>(object), nullptr);
  EXPECT_EQ(as<Audience>(Strong<NSObject>()), nullptr);
}

}  // namespace
}  // namespace vel::test
