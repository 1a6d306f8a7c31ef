// Hints that a game writes itself, before its window is covered and while it is.
#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <thread>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

constexpr PixelRect kGame{200, 150, 640, 400};
constexpr NSWindowStyleMask kEverything = 15;
constexpr std::string_view kMotif = "_MOTIF_WM_HINTS";
constexpr std::string_view kNormal = "WM_NORMAL_HINTS";

class X11StyleOwner : public X11Test {
 protected:
  Property motif(std::vector<std::uint32_t> fields) {
    return Property::ofNumbers(user.atom(kMotif), fields);
  }
  static Property sizes(std::uint32_t flags, std::uint32_t least, std::uint32_t greatest) {
    std::array<std::uint32_t, 18> fields{flags};
    fields[5] = fields[6] = least;
    fields[7] = fields[8] = greatest;
    return Property::ofNumbers(XCB_ATOM_WM_SIZE_HINTS, fields);
  }
  void cover() {
    handle = adopt(game).handle;
    system().setStyleMask(handle, NSWindowStyleMaskTitled);
    deliver();
  }
  void uncover() {
    system().setStyleMask(handle, kEverything);
    deliver();
  }
  [[nodiscard]] bool hasNoControls() const {
    const auto hints = user.numbers(game, kMotif);
    return (hints.at(0) & 1U) == 1 && hints.at(1) == 4;
  }

  xcb_window_t game = user.openGame(kGame, 0);
  WindowHandle handle = WindowHandle::None;
};

TEST_F(X11StyleOwner, IsHeardBeforeTheWindowIsCovered) {
  handle = adopt(game).handle;
  user.setProperty(game, kNormal, sizes(16 | 32, 500, 500));
  deliver();
  EXPECT_TRUE(reports.contains(line("style", handle) + " 7"));
  user.setProperty(game, kNormal, sizes(16 | 32, 500, 900));
  deliver();
  EXPECT_TRUE(reports.contains(line("style", handle) + " 15"));
  EXPECT_EQ(reports.count("style"), 2);
}

TEST_F(X11StyleOwner, LosesControlsThatItGaveItselfAfterItWasAdopted) {
  const Property nothing = motif({1, 4, 0, 0, 0});
  user.setProperty(game, kMotif, nothing);
  handle = adopt(game).handle;
  user.setProperty(game, kMotif, std::nullopt);
  deliver();
  ASSERT_TRUE(reports.contains(line("style", handle) + " 15"));
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  deliver();
  EXPECT_TRUE(hasNoControls());
  uncover();
  EXPECT_EQ(user.property(game, kMotif), std::nullopt);
}

TEST_F(X11StyleOwner, IsGivenBackWhatItWroteUnheardBeforeItWasCovered) {
  // At first what we would write, and then not.
  const Property restricted = motif({3, 4, 26, 0, 0});
  user.setProperty(game, kMotif, restricted);
  handle = adopt(game).handle;
  const Property theirs = motif({3, 4 | 8, 26, 0, 0});
  user.setProperty(game, kMotif, theirs);
  system().setStyleMask(handle, NSWindowStyleMaskBorderless);
  deliver();
  EXPECT_EQ(user.numbers(game, kMotif), (std::vector<std::uint32_t>{3, 4, 0, 0, 0}));
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  deliver();
  EXPECT_EQ(user.property(game, kMotif), theirs);
}

TEST_F(X11StyleOwner, StaysWithoutControlsWhateverItWritesMeanwhile) {
  cover();
  for (const auto& written :
       {std::optional(motif({3, 62, 126, 0, 0})), std::optional<Property>()}) {
    user.setProperty(game, kMotif, written);
    user.setProperty(game, kNormal, sizes(16 | 32, 100, 1000));
    deliver();
    EXPECT_TRUE(hasNoControls());
  }
  uncover();
  EXPECT_EQ(user.property(game, kMotif), std::nullopt);
  EXPECT_EQ(user.property(game, kNormal), sizes(16 | 32, 100, 1000));
}

TEST_F(X11StyleOwner, IsGivenBackWhatWasTakenAlsoWhereItChangesWhatItReadFromUs) {
  user.setProperty(game, kMotif, motif({2, 0, 2 | 4 | 8, 0, 0}));
  cover();
  auto decorations = user.numbers(game, kMotif);
  decorations[2] &= ~8U;  // no title
  user.setProperty(game, kMotif, motif(decorations));
  deliver();
  EXPECT_TRUE(hasNoControls());
  uncover();
  EXPECT_EQ(user.property(game, kMotif), motif({2, 0, 2 | 4, 0, 0}));
}

TEST_F(X11StyleOwner, IsGivenBackWhatItWroteUnheardBeforeAnotherChange) {
  cover();
  const Property theirMotif = motif({2, 0, 2 | 8, 0, 0});
  user.setProperty(game, kMotif, theirMotif);
  system().setStyleMask(handle, NSWindowStyleMaskTitled | NSWindowStyleMaskClosable);
  deliver();
  uncover();
  EXPECT_EQ(user.property(game, kMotif), theirMotif);
}

TEST_F(X11StyleOwner, KeepsHintsThatItWritesWhileTheWindowManagerReadsTheRestoredOnes) {
  startManager(Manager::Openbox);
  deliverFor(0.3);
  cover();
  system().setStyleMask(handle, kEverything);
  ASSERT_EQ(user.property(game, kMotif), motif({3, 1, 1, 0, 0}));
  const Property theirMotif = motif({2, 0, 2 | 8, 0, 0});
  user.setProperty(game, kMotif, theirMotif);
  deliverFor(0.5);
  EXPECT_EQ(user.property(game, kMotif), theirMotif);
}

TEST_F(X11StyleOwner, KeepsNoHintsIfItIsCoveredAgainWhileTheWindowManagerReadsTheRestoredOnes) {
  startManager(Manager::Openbox);
  deliverFor(0.3);
  cover();
  system().setStyleMask(handle, kEverything);
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  deliverFor(0.5);
  EXPECT_TRUE(hasNoControls());
  system().setStyleMask(handle, kEverything);
  EXPECT_TRUE(waitFor([&] { return user.property(game, kMotif) == std::nullopt; }));
}

TEST_F(X11StyleOwner, HasItsHintsBackWhenTheBackEndHasEnded) {
  startManager(Manager::Openbox);
  deliverFor(0.3);
  cover();
  const Nanoseconds start = steadyNow();
  takeSystem() = nullptr;
  EXPECT_LT(steadyNow() - start, kNanosecondsPerSecond);
  EXPECT_EQ(user.property(game, kMotif), std::nullopt);
}

TEST_F(X11StyleOwner, IsHeardAtTheEndWhereItWroteMeanwhile) {
  cover();
  user.setProperty(game, kMotif, motif({1, 4 | 8 | 32, 0, 0, 0}));
  deliver();
  EXPECT_EQ(reports.count("style"), 0);
  uncover();
  EXPECT_TRUE(reports.contains(line("style", handle) + " 7"));
}

TEST_F(X11StyleOwner, GetsNoFunctionAndNoDecorationThatItHadNot) {
  // Resizable, though not by maximising; miniaturisable and closable, with a title and no button.
  user.setProperty(game, kMotif, motif({3, 2 | 8 | 32, 8, 0, 0}));
  handle = adopt(game).handle;
  ASSERT_EQ(reports.count("style"), 0);
  system().setStyleMask(handle, kEverything & ~NSWindowStyleMaskClosable);
  deliver();
  EXPECT_EQ(user.numbers(game, kMotif), (std::vector<std::uint32_t>{3, 2 | 8, 8, 0, 0}));
  system().setStyleMask(handle, NSWindowStyleMaskTitled | NSWindowStyleMaskResizable);
  deliver();
  EXPECT_EQ(user.numbers(game, kMotif), (std::vector<std::uint32_t>{3, 2, 8, 0, 0}));
}

TEST_F(X11StyleOwner, GetsNoTitleThatItHadNot) {
  user.setProperty(game, kMotif, motif({2, 0, 0, 0, 0}));
  cover();
  EXPECT_EQ(user.numbers(game, kMotif), (std::vector<std::uint32_t>{3, 4, 0, 0, 0}));
}

TEST_F(X11StyleOwner, KeepsHintsThatGiveNothingToTakeAway) {
  const Property theirMotif = motif({1, 4, 0, 7});
  const Property theirSizes = sizes(16 | 32, 500, 500);
  user.setProperty(game, kMotif, theirMotif);
  user.setProperty(game, kNormal, theirSizes);
  handle = adopt(game).handle;
  system().setStyleMask(handle, NSWindowStyleMaskTitled | NSWindowStyleMaskResizable);
  deliver();
  EXPECT_NE(user.property(game, kMotif), theirMotif);  // the buttons have gone
  EXPECT_EQ(user.property(game, kNormal), theirSizes);
}

TEST_F(X11StyleOwner, LosesNothingOfWhatItWritesWhileItsHintsAreTakenOver) {
  handle = adopt(game).handle;
  constexpr std::uint32_t kRounds = 400;
  std::atomic<std::uint32_t> round = 0;
  std::atomic<std::uint32_t> written = 0;
  std::thread writer([&] {
    XClient owner(server.display());
    for (std::uint32_t next = 1; next <= kRounds; ++next) {
      round.wait(next - 1);
      const Property value = motif({1, 62, 0, next, 0});
      xcb_change_property(owner.get(), XCB_PROP_MODE_REPLACE, game, value.type, value.type, 32, 5,
                          value.bytes.data());
      xcb_flush(owner.get());
      written = next;
      written.notify_one();
    }
    owner.settle();
  });
  std::uint32_t lost = 0;
  for (std::uint32_t next = 1; next <= kRounds; ++next) {
    round = next;
    round.notify_one();
    for (const NSWindowStyleMask mask : {7U, 3U, 1U, 3U, 7U, 3U, 1U}) {
      system().setStyleMask(handle, mask);
    }
    written.wait(next - 1);
    deliver();
    uncover();
    lost += user.property(game, kMotif) == motif({1, 62, 0, next, 0}) ? 0U : 1U;
  }
  writer.join();
  EXPECT_EQ(lost, 0U);
}

}  // namespace
}  // namespace vel::test
