// Tests class names and protocols. A protocol is an abstract class. Its member functions are called
// operations and may be optional.
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

class SilentAudience final : public Class<SilentAudience, "SilentAudience", NSObject, Audience> {
 public:
  [[nodiscard]] int seats() const override { return 1; }
};

class ApplaudingAudience final
    : public Class<ApplaudingAudience, "ApplaudingAudience", NSObject, Audience> {
 public:
  [[nodiscard]] int seats() const override { return 2; }
  [[nodiscard]] bool applauds() const override { return true; }
};

class CriticInAudience final
    : public Class<CriticInAudience, "CriticInAudience", NSObject, Audience, Critic> {
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

class ConfigurableCritic final
    : public Class<ConfigurableCritic, "ConfigurableCritic", NSObject, Critic> {
 public:
  // Bit 0 stands for `writes`, the first optional operation of `Critic`.
  [[nodiscard]] OperationSet respondingOperations() const override {
    return {respondsToWrites_ ? 1UL : 0UL};
  }
  void setRespondsToWrites(bool respondsToWrites) { respondsToWrites_ = respondsToWrites; }

 private:
  bool respondsToWrites_ = false;
};

TEST(ClassNameTest, IsTheNameInTheTemplateArguments) {
  EXPECT_EQ(make<SilentAudience>()->className(), "SilentAudience");
  EXPECT_EQ(SilentAudience::staticClassName(), "SilentAudience");
}

TEST(ClassNameTest, ASubclassHasItsOwnName) {
  const Strong<Building> theatre = make<Theatre>();
  EXPECT_EQ(theatre->className(), "Theatre");
}

TEST(ObjectTest, EqualsOnlyItself) {
  const auto object = make<SilentAudience>();
  EXPECT_TRUE(object->isEqual(object.get()));
  EXPECT_FALSE(object->isEqual(make<SilentAudience>().get()));
  EXPECT_FALSE(object->isEqual(nullptr));
}

TEST(ObjectTest, SelfReturnsAStrongReferenceToTheObject) {
  const auto object = make<SilentAudience>();
  EXPECT_EQ(object->self(), object);
}

TEST(RespondsToTest, IsTrueForAnOperationThatTheClassOverrides) {
  EXPECT_TRUE(respondsTo<&Audience::applauds>(make<ApplaudingAudience>()));
}

TEST(RespondsToTest, IsFalseForAnOperationThatTheClassDoesNotOverride) {
  const auto audience = make<SilentAudience>();
  EXPECT_FALSE(respondsTo<&Audience::curtainRises>(audience));
  EXPECT_FALSE(respondsTo<&Audience::applauds>(audience));
  EXPECT_FALSE(respondsTo<&Audience::curtainFalls>(audience));
  EXPECT_FALSE(respondsTo<&Audience::curtainRises>(make<ApplaudingAudience>()));
  EXPECT_FALSE(respondsTo<&Audience::curtainFalls>(make<ApplaudingAudience>()));
}

TEST(RespondsToTest, WorksThroughAReferenceToTheProtocol) {
  const Strong<Audience> audience = make<ApplaudingAudience>();
  EXPECT_TRUE(respondsTo<&Audience::applauds>(audience));
  EXPECT_FALSE(respondsTo<&Audience::curtainFalls>(audience));
}

TEST(RespondsToTest, IsFalseForNull) {
  EXPECT_FALSE(respondsTo<&Audience::applauds>(Strong<Audience>()));
}

TEST(RespondsToTest, WorksForAClassWithTwoProtocols) {
  const auto critic = make<CriticInAudience>();
  EXPECT_TRUE(respondsTo<&Critic::writes>(critic));
  EXPECT_TRUE(respondsTo<&Audience::curtainFalls>(critic));
  EXPECT_FALSE(respondsTo<&Audience::curtainRises>(critic));
}

TEST(RespondsToTest, ASubclassMayAdoptAProtocolThatItsSuperclassDoesNot) {
  EXPECT_TRUE(respondsTo<&Critic::writes>(make<Theatre>()));
}

TEST(RespondsToTest, AnObjectMayDecideAtRunTimeWhetherItResponds) {
  const auto critic = make<ConfigurableCritic>();
  EXPECT_FALSE(respondsTo<&Critic::writes>(critic));
  critic->setRespondsToWrites(true);
  EXPECT_TRUE(respondsTo<&Critic::writes>(critic));
}

TEST(ConformsToTest, IsTrueForAProtocolThatTheClassAdopts) {
  const Strong<NSObject> critic = make<CriticInAudience>();
  EXPECT_TRUE(conformsTo<Audience>(critic));
  EXPECT_TRUE(conformsTo<Critic>(critic));
  EXPECT_TRUE(conformsTo<Critic>(Strong<Building>(make<Theatre>())));
}

TEST(ConformsToTest, IsFalseForAClassThatHasTheOperationsButDoesNotAdoptTheProtocol) {
  EXPECT_FALSE(conformsTo<Audience>(Strong<NSObject>(make<NonAdopter>())));
}

TEST(ConformsToTest, IsFalseForNull) { EXPECT_FALSE(conformsTo<Audience>(Strong<NSObject>())); }

TEST(AsTest, ReturnsAnObjectThatHasTheRequestedProtocolOrClass) {
  const Strong<NSObject> object = make<ApplaudingAudience>();
  EXPECT_EQ(as<Audience>(object)->seats(), 2);
  EXPECT_EQ(as<ApplaudingAudience>(object), object);
}

TEST(AsTest, ReturnsNullForAnyOtherObjectAndForNull) {
  const Strong<NSObject> object = make<NonAdopter>();
  EXPECT_EQ(as<Audience>(object), nullptr);
  EXPECT_EQ(as<ApplaudingAudience>(object), nullptr);
  EXPECT_EQ(as<Audience>(Strong<NSObject>()), nullptr);
}

}  // namespace
}  // namespace vel::test
