// `send` calls an operation of an object that may be null.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>

#include "Platform/Foundation/Geometry.h"
#include "Platform/Foundation/Message.h"
#include "Platform/Foundation/NSArray.h"
#include "Platform/Foundation/NSObject.h"

namespace vel::test {
namespace {

class Player : public Class<Player, "Player"> {
 public:
  [[nodiscard]] std::int32_t points() const { return points_; }
  [[nodiscard]] bool isPlaying() const { return true; }
  [[nodiscard]] double speed() const { return 1.5; }
  [[nodiscard]] CGRect frame() const { return CGRectMake(1, 2, 3, 4); }
  [[nodiscard]] std::string_view nickname() const { return "Ace"; }
  [[nodiscard]] Strong<Player> partner() const { return partner_; }
  [[nodiscard]] NSArray<Player> rivals() const { return {partner_}; }
  void setPartner(const Strong<Player>& partner) { partner_ = partner; }
  [[nodiscard]] std::int32_t sum(std::int32_t left, std::int32_t right) const {
    return left + right;
  }
  void act(const std::function<void()>& work) {
    work();
    hasActed_ = true;
  }
  [[nodiscard]] bool hasActed() const { return hasActed_; }
  [[nodiscard]] const Strong<Player>& partnerReference() const { return partner_; }
  [[nodiscard]] std::int32_t& pointsReference() { return points_; }

 private:
  Strong<Player> partner_;
  std::int32_t points_ = 7;
  bool hasActed_ = false;
};

class Goalkeeper final : public Class<Goalkeeper, "Goalkeeper", Player> {};

const Strong<Player> kNull;

TEST(MessageTest, SendCallsTheOperation) {
  const auto player = make<Player>();
  EXPECT_EQ(send(player, &Player::points), 7);
  EXPECT_EQ(send(player, &Player::sum, 2, 3), 5);
  send(player, &Player::setPartner, make<Player>());
  EXPECT_NE(player->partner(), nullptr);
}

TEST(MessageTest, SendCallsAnInheritedOperation) {
  EXPECT_EQ(send(make<Goalkeeper>(), &Player::points), 7);
}

TEST(MessageTest, ACallOnNullReturnsTheZeroValueOfTheResultType) {
  EXPECT_EQ(send(kNull, &Player::points), 0);
  EXPECT_EQ(send(kNull, &Player::sum, 2, 3), 0);
  EXPECT_FALSE(send(kNull, &Player::isPlaying));
  EXPECT_EQ(send(kNull, &Player::speed), 0.0);
  EXPECT_EQ(send(kNull, &Player::frame), CGRectZero);
  EXPECT_TRUE(send(kNull, &Player::nickname).empty());
  EXPECT_EQ(send(kNull, &Player::partner), nullptr);
  EXPECT_TRUE(send(kNull, &Player::rivals).empty());
}

TEST(MessageTest, ACallOnNullDoesNotRunTheOperation) {
  bool isCalled = false;
  send(kNull, &Player::act, [&isCalled] { isCalled = true; });
  EXPECT_FALSE(isCalled);
}

TEST(MessageTest, ANullResultMayBeTheNextReceiver) {
  EXPECT_EQ(send(send(kNull, &Player::partner), &Player::points), 0);
  EXPECT_EQ(send(send(make<Player>(), &Player::partner), &Player::points), 0);
}

TEST(MessageTest, SendKeepsTheReceiverAliveDuringTheCall) {
  auto player = make<Player>();
  const Weak<Player> weakReference = player;
  bool isAliveDuringCall = false;
  send(player, &Player::act, [&] {
    player.reset();  // now only the call holds a reference
    isAliveDuringCall = !weakReference.expired();
  });
  EXPECT_TRUE(isAliveDuringCall);
  EXPECT_TRUE(weakReference.expired());
}

template <class Receiver, class Operation, class... Arguments>
concept CanSend = requires(const Strong<Receiver>& receiver, Operation operation,
                           Arguments... arguments) { send(receiver, operation, arguments...); };

TEST(MessageTest, SendDoesNotCompileIfTheResultIsAReference) {
  EXPECT_TRUE((CanSend<Player, decltype(&Player::partner)>));
  EXPECT_FALSE((CanSend<Player, decltype(&Player::partnerReference)>));
  EXPECT_FALSE((CanSend<Player, decltype(&Player::pointsReference)>));
}

TEST(MessageTest, SendDoesNotCompileIfTheObjectLacksTheOperation) {
  EXPECT_TRUE((CanSend<Goalkeeper, decltype(&Player::points)>));
  EXPECT_FALSE((CanSend<NSObject, decltype(&Player::points)>));
}

TEST(MessageTest, SendDoesNotCompileForWrongArguments) {
  using Sum = decltype(&Player::sum);
  EXPECT_TRUE((CanSend<Player, Sum, std::int32_t, std::int32_t>));
  EXPECT_FALSE((CanSend<Player, Sum, std::int32_t>));
  EXPECT_FALSE((CanSend<Player, Sum, std::int32_t, std::string>));
}

}  // namespace
}  // namespace vel::test
