// The owner of an adopted window, here a game, writes the window's hints. The back end overrides
// `_MOTIF_WM_HINTS` to remove the window's controls, and later restores the owner's value.
#include <gmock/gmock.h>

#include <array>
#include <atomic>
#include <thread>

#include "Tests/Support/X11/X11Test.h"

namespace vel::test {
namespace {

constexpr PixelRect kGameFrame{200, 150, 640, 400};
// The bits of a style mask are title 1, close 2, miniaturise 4 and resize 8.
constexpr NSWindowStyleMask kAllControls = 15;
constexpr std::string_view kMotifHints = "_MOTIF_WM_HINTS";
constexpr std::string_view kNormalHints = "WM_NORMAL_HINTS";

class X11StyleOwner : public X11Test {
 protected:
  // The first three fields are sets of bits:
  // - the flags: has functions 1, has decorations 2
  // - the functions: resize 2, move 4, minimise 8, maximise 16, close 32
  // - the decorations: border 2, resize handles 4, title 8, menu 16, minimise 32, maximise 64
  // A set of functions or decorations that contains 1 is inverted.
  Property motifHints(std::vector<std::uint32_t> fields) {
    return Property::ofNumbers(client.atom(kMotifHints), fields);
  }
  // The flags are 16 (has a minimum size) and 32 (has a maximum size). The user cannot resize a
  // window whose minimum is equal to its maximum.
  static Property sizeHints(std::uint32_t flags, std::uint32_t minimum, std::uint32_t maximum) {
    std::array<std::uint32_t, 18> fields{flags};
    fields[5] = fields[6] = minimum;
    fields[7] = fields[8] = maximum;
    return Property::ofNumbers(XCB_ATOM_WM_SIZE_HINTS, fields);
  }
  // Adopts the window and overrides the hints.
  void cover() {
    handle = adopt(game).handle;
    system().setStyleMask(handle, NSWindowStyleMaskTitled);
    deliver();
  }
  // Restores the hints.
  void uncover() {
    system().setStyleMask(handle, kAllControls);
    deliver();
  }
  [[nodiscard]] bool hasNoControls() const {
    const auto hints = client.numbers(game, kMotifHints);
    return (hints.at(0) & 1U) == 1 && hints.at(1) == 4;
  }

  xcb_window_t game = client.openGameWindow(kGameFrame, 0);
  WindowHandle handle = WindowHandle::None;
};

TEST_F(X11StyleOwner, TheBackEndReportsHintsThatTheOwnerWritesAfterTheAdoption) {
  handle = adopt(game).handle;
  client.setProperty(game, kNormalHints, sizeHints(16 | 32, 500, 500));
  deliver();
  EXPECT_TRUE(reports.contains(reportLine("style", handle) + " 7"));
  client.setProperty(game, kNormalHints, sizeHints(16 | 32, 500, 900));
  deliver();
  EXPECT_TRUE(reports.contains(reportLine("style", handle) + " 15"));
  EXPECT_EQ(reports.count("style"), 2);
}

TEST_F(X11StyleOwner, OverridingRemovesControlsThatTheOwnerAddsAfterTheAdoption) {
  const Property hintsWithoutControls = motifHints({1, 4, 0, 0, 0});
  client.setProperty(game, kMotifHints, hintsWithoutControls);
  handle = adopt(game).handle;
  client.setProperty(game, kMotifHints, std::nullopt);  // the window has all controls
  deliver();
  ASSERT_TRUE(reports.contains(reportLine("style", handle) + " 15"));
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  deliver();
  EXPECT_TRUE(hasNoControls());
  uncover();
  EXPECT_EQ(client.property(game, kMotifHints), std::nullopt);
}

TEST_F(X11StyleOwner, RestoringKeepsHintsThatTheOwnerWroteJustBeforeTheOverride) {
  // The style mask of these hints is `NSWindowStyleMaskTitled`.
  const Property hintsAtAdoption = motifHints({3, 4, 26, 0, 0});
  client.setProperty(game, kMotifHints, hintsAtAdoption);
  handle = adopt(game).handle;
  const Property ownersHints = motifHints({3, 4 | 8, 26, 0, 0});
  client.setProperty(game, kMotifHints, ownersHints);
  system().setStyleMask(handle, NSWindowStyleMaskBorderless);
  deliver();
  EXPECT_EQ(client.numbers(game, kMotifHints), (std::vector<std::uint32_t>{3, 4, 0, 0, 0}));
  // The window had this mask at the adoption. So setting the mask restores the owner's hints.
  system().setStyleMask(handle, NSWindowStyleMaskTitled);
  deliver();
  EXPECT_EQ(client.property(game, kMotifHints), ownersHints);
}

TEST_F(X11StyleOwner, ControlsStayRemovedAfterTheOwnerWritesHints) {
  cover();
  for (const auto& ownersHints :
       {std::optional(motifHints({3, 62, 126, 0, 0})), std::optional<Property>()}) {
    client.setProperty(game, kMotifHints, ownersHints);
    client.setProperty(game, kNormalHints, sizeHints(16 | 32, 100, 1000));
    deliver();
    EXPECT_TRUE(hasNoControls());
  }
  uncover();
  EXPECT_EQ(client.property(game, kMotifHints), std::nullopt);
  EXPECT_EQ(client.property(game, kNormalHints), sizeHints(16 | 32, 100, 1000));
}

TEST_F(X11StyleOwner, RestoringKeepsTheOwnersEditOfTheOverriddenValue) {
  client.setProperty(game, kMotifHints, motifHints({2, 0, 2 | 4 | 8, 0, 0}));
  cover();
  auto hints = client.numbers(game, kMotifHints);
  hints[2] &= ~8U;  // the owner removes the title
  client.setProperty(game, kMotifHints, motifHints(hints));
  deliver();
  EXPECT_TRUE(hasNoControls());
  uncover();
  EXPECT_EQ(client.property(game, kMotifHints), motifHints({2, 0, 2 | 4, 0, 0}));
}

TEST_F(X11StyleOwner, RestoringKeepsTheDecorationsThatTheOwnerReplaced) {
  cover();
  auto hints = client.numbers(game, kMotifHints);
  hints[0] |= 2U;
  hints[2] = 0;  // no decorations
  client.setProperty(game, kMotifHints, motifHints(hints));
  deliver();
  EXPECT_TRUE(hasNoControls());
  uncover();
  EXPECT_EQ(client.property(game, kMotifHints), motifHints({2, 0, 0, 0, 0}));
}

TEST_F(X11StyleOwner, RestoringKeepsAValueThatIsNotBasedOnTheOverride) {
  struct Values {
    std::optional<Property> valueBefore;
    Property valueWhileCovered;
  };
  const std::array values{// Qt writes the second value for a frameless window.
                          Values{motifHints({3, 62, 126, 0, 0}), motifHints({2, 1, 0, 0, 0})},
                          // The second value allows no resizing.
                          Values{std::nullopt, motifHints({3, 44, 58, 0, 0})}};
  for (const auto& [valueBefore, valueWhileCovered] : values) {
    client.setProperty(game, kMotifHints, valueBefore);
    cover();
    client.setProperty(game, kMotifHints, valueWhileCovered);
    deliver();
    uncover();
    EXPECT_EQ(client.property(game, kMotifHints), valueWhileCovered);
    system().releaseWindow(handle);
  }
}

TEST_F(X11StyleOwner, RestoringKeepsHintsThatTheOwnerWroteJustBeforeASecondStyleMask) {
  cover();
  const Property ownersMotifHints = motifHints({2, 0, 2 | 8, 0, 0});
  client.setProperty(game, kMotifHints, ownersMotifHints);
  system().setStyleMask(handle, NSWindowStyleMaskTitled | NSWindowStyleMaskClosable);
  deliver();
  uncover();
  EXPECT_EQ(client.property(game, kMotifHints), ownersMotifHints);
}

TEST_F(X11StyleOwner, AnUnfinishedRestoringKeepsHintsThatTheOwnerWrites) {
  startManager(Manager::Openbox);
  deliverFor(0.3);
  cover();
  system().setStyleMask(handle, kAllControls);
  // To delete the property, the back end first writes a value that allows everything.
  ASSERT_EQ(client.property(game, kMotifHints), motifHints({3, 1, 1, 0, 0}));
  const Property ownersMotifHints = motifHints({2, 0, 2 | 8, 0, 0});
  client.setProperty(game, kMotifHints, ownersMotifHints);
  deliverFor(0.5);
  EXPECT_EQ(client.property(game, kMotifHints), ownersMotifHints);
}

TEST_F(X11StyleOwner, TheAddedHintsAreDeletedAfterAnInterruptedRestoring) {
  startManager(Manager::Openbox);
  deliverFor(0.3);
  cover();
  system().setStyleMask(handle, kAllControls);
  system().setStyleMask(handle, NSWindowStyleMaskTitled);  // interrupts the restoring
  deliverFor(0.5);
  EXPECT_TRUE(hasNoControls());
  system().setStyleMask(handle, kAllControls);
  EXPECT_TRUE(waitFor([&] { return client.property(game, kMotifHints) == std::nullopt; }));
}

TEST_F(X11StyleOwner, DestroyingTheBackEndRestoresTheHintsWithinASecond) {
  startManager(Manager::Openbox);
  deliverFor(0.3);
  cover();
  const Nanoseconds startTime = steadyNow();
  takeSystem() = nullptr;
  EXPECT_LT(steadyNow() - startTime, kNanosecondsPerSecond);
  EXPECT_EQ(client.property(game, kMotifHints), std::nullopt);
}

TEST_F(X11StyleOwner, RestoringReportsHintsThatTheOwnerWroteDuringTheOverride) {
  cover();
  client.setProperty(game, kMotifHints, motifHints({1, 4 | 8 | 32, 0, 0, 0}));
  deliver();
  EXPECT_EQ(reports.count("style"), 0);
  uncover();
  EXPECT_TRUE(reports.contains(reportLine("style", handle) + " 7"));
}

TEST_F(X11StyleOwner, OverridingAddsNoFunctionsOrDecorations) {
  client.setProperty(game, kMotifHints, motifHints({3, 2 | 8 | 32, 8, 0, 0}));
  handle = adopt(game).handle;
  ASSERT_EQ(reports.count("style"), 0);
  system().setStyleMask(handle, kAllControls & ~NSWindowStyleMaskClosable);
  deliver();
  EXPECT_EQ(client.numbers(game, kMotifHints), (std::vector<std::uint32_t>{3, 2 | 8, 8, 0, 0}));
  system().setStyleMask(handle, NSWindowStyleMaskTitled | NSWindowStyleMaskResizable);
  deliver();
  EXPECT_EQ(client.numbers(game, kMotifHints), (std::vector<std::uint32_t>{3, 2, 8, 0, 0}));
}

TEST_F(X11StyleOwner, OverridingAddsNoTitle) {
  client.setProperty(game, kMotifHints, motifHints({2, 0, 0, 0, 0}));
  cover();
  EXPECT_EQ(client.numbers(game, kMotifHints), (std::vector<std::uint32_t>{3, 4, 0, 0, 0}));
}

TEST_F(X11StyleOwner, OverridingDoesNotChangeSizeHintsThatPreventResizing) {
  const Property ownersMotifHints = motifHints({1, 4, 0, 7});
  const Property ownersSizeHints = sizeHints(16 | 32, 500, 500);
  client.setProperty(game, kMotifHints, ownersMotifHints);
  client.setProperty(game, kNormalHints, ownersSizeHints);
  handle = adopt(game).handle;
  system().setStyleMask(handle, NSWindowStyleMaskTitled | NSWindowStyleMaskResizable);
  deliver();
  EXPECT_NE(client.property(game, kMotifHints), ownersMotifHints);
  EXPECT_EQ(client.property(game, kNormalHints), ownersSizeHints);
}

TEST_F(X11StyleOwner, OverridingLosesNoConcurrentWriteOfTheOwner) {
  handle = adopt(game).handle;
  // In each round, the owner writes a new value while the back end sets style masks.
  constexpr std::uint32_t kRounds = 400;
  std::atomic<std::uint32_t> round = 0;
  std::atomic<std::uint32_t> writtenRound = 0;
  std::thread writer([&] {
    XClient owner(server.display());
    for (std::uint32_t nextRound = 1; nextRound <= kRounds; ++nextRound) {
      round.wait(nextRound - 1);
      const Property hints = motifHints({1, 62, 0, nextRound, 0});
      xcb_change_property(owner.connection(), XCB_PROP_MODE_REPLACE, game, hints.type, hints.type,
                          32, 5, hints.bytes.data());
      xcb_flush(owner.connection());
      writtenRound = nextRound;
      writtenRound.notify_one();
    }
    owner.waitForServer();
  });
  std::uint32_t lostCount = 0;
  for (std::uint32_t nextRound = 1; nextRound <= kRounds; ++nextRound) {
    round = nextRound;
    round.notify_one();
    for (const NSWindowStyleMask mask : {7U, 3U, 1U, 3U, 7U, 3U, 1U}) {
      system().setStyleMask(handle, mask);
    }
    writtenRound.wait(nextRound - 1);
    deliver();
    uncover();
    lostCount +=
        client.property(game, kMotifHints) == motifHints({1, 62, 0, nextRound, 0}) ? 0U : 1U;
  }
  writer.join();
  EXPECT_EQ(lostCount, 0U);
}

}  // namespace
}  // namespace vel::test
