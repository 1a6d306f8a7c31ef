// A hint is a property of a window. The owner is the program that opened the window. The back end
// overrides a hint: it writes a value of its own. `HintOverride` then keeps the owner's value.
#include <gtest/gtest.h>

#include "Platform/WindowSystem/X11/HintOverride.h"

namespace vel::test {
namespace {

using x11::HintOverride;
using x11::HintValue;
using x11::Property;

// In most tests, only the first element of a hint is a set of bits. The other elements are numbers.
constexpr std::size_t kBitSetCount = 1;

HintValue hint(std::vector<std::uint32_t> elements) {
  return Property::ofNumbers(XCB_ATOM_WM_SIZE_HINTS, elements);
}

class HintOverrideTest : public testing::Test {
 protected:
  HintOverride hintOverride{hint({1, 100, 5}), kBitSetCount};
};

TEST_F(HintOverrideTest, StartsWithTheOwnersValue) {
  EXPECT_EQ(hintOverride.ownersValue(), hint({1, 100, 5}));
  EXPECT_EQ(hintOverride.currentValue(), hint({1, 100, 5}));
}

TEST_F(HintOverrideTest, KeepsTheOwnersValueWhenTheBackEndWrites) {
  EXPECT_TRUE(hintOverride.recordWrite(hint({3, 640, 5})));
  EXPECT_EQ(hintOverride.ownersValue(), hint({1, 100, 5}));
  EXPECT_EQ(hintOverride.currentValue(), hint({3, 640, 5}));
}

TEST_F(HintOverrideTest, RecordWriteReturnsFalseForTheCurrentValue) {
  EXPECT_FALSE(hintOverride.recordWrite(hint({1, 100, 5})));
  EXPECT_TRUE(hintOverride.recordWrite(hint({3, 640, 5})));
  EXPECT_FALSE(hintOverride.recordWrite(hint({3, 640, 5})));
}

TEST_F(HintOverrideTest, StoresEachWriteOfTheOwner) {
  hintOverride.recordCurrentValue(hint({8, 200, 6}));
  EXPECT_EQ(hintOverride.ownersValue(), hint({8, 200, 6}));
  EXPECT_TRUE(hintOverride.recordWrite(hint({10, 640, 6})));
  hintOverride.recordCurrentValue(hint({4, 300, 7}));
  EXPECT_EQ(hintOverride.ownersValue(), hint({4, 300, 7}));
  EXPECT_EQ(hintOverride.currentValue(), hint({4, 300, 7}));
}

TEST_F(HintOverrideTest, HasNoOwnersValueAfterTheOwnerDeletesTheHint) {
  EXPECT_TRUE(hintOverride.recordWrite(hint({3, 640, 5})));
  hintOverride.recordCurrentValue(std::nullopt);
  EXPECT_EQ(hintOverride.ownersValue(), std::nullopt);
}

TEST_F(HintOverrideTest, KeepsTheOwnersValueIfTheOwnerWritesAValueThatTheBackEndWrote) {
  EXPECT_TRUE(hintOverride.recordWrite(hint({3, 640, 5})));
  EXPECT_TRUE(hintOverride.recordWrite(hint({3, 800, 5})));
  hintOverride.recordCurrentValue(hint({3, 640, 5}));
  EXPECT_EQ(hintOverride.ownersValue(), hint({1, 100, 5}));
  EXPECT_EQ(hintOverride.currentValue(), hint({3, 640, 5}));
}

TEST_F(HintOverrideTest, RemembersThatTheHintWasMissingIfTheOwnerWritesAValueThatTheBackEndWrote) {
  HintOverride missingHint(std::nullopt, kBitSetCount);
  EXPECT_TRUE(missingHint.recordWrite(hint({3, 640, 5})));
  EXPECT_TRUE(missingHint.recordWrite(hint({3, 800, 5})));
  missingHint.recordCurrentValue(hint({3, 640, 5}));
  EXPECT_EQ(missingHint.ownersValue(), std::nullopt);
}

TEST_F(HintOverrideTest, RemovesTheBackEndsChangesFromAnEditedValue) {
  EXPECT_TRUE(hintOverride.recordWrite(hint({1 | 2, 640, 5})));
  // The owner sets another bit, changes the last number and appends a number.
  hintOverride.recordCurrentValue(hint({1 | 2 | 16, 640, 9, 11}));
  EXPECT_EQ(hintOverride.ownersValue(), hint({1 | 16, 100, 9, 11}));
}

// In the next two tests, all elements are sets of bits, as in _MOTIF_WM_HINTS. Bit 0 of the first
// element says that the second element is valid. Bit 1 says that the third element is valid.
TEST_F(HintOverrideTest, RemovesTheBackEndsChangesFromTheElementsThatTheOwnerHasNotReplaced) {
  HintOverride missingHint(std::nullopt, 3);
  EXPECT_TRUE(missingHint.recordWrite(hint({1 | 2, 4, 26})));
  missingHint.recordCurrentValue(hint({1 | 2, 4, 1}));
  EXPECT_EQ(missingHint.ownersValue(), hint({2, 0, 1}));
}

TEST_F(HintOverrideTest, StoresAnOwnersValueUnchangedIfTheOwnerHasReplacedEachElement) {
  HintOverride bitSets(hint({1 | 2, 62, 126}), 3);
  EXPECT_TRUE(bitSets.recordWrite(hint({1 | 2, 4, 26})));
  bitSets.recordCurrentValue(hint({2, 1, 0}));
  EXPECT_EQ(bitSets.ownersValue(), hint({2, 1, 0}));
}

TEST_F(HintOverrideTest, StoresAnOwnersValueUnchangedIfTheOwnerHasReplacedTheBackEndsNumber) {
  EXPECT_TRUE(hintOverride.recordWrite(hint({1 | 2, 640, 5})));
  hintOverride.recordCurrentValue(hint({1 | 2, 641, 5}));
  EXPECT_EQ(hintOverride.ownersValue(), hint({1 | 2, 641, 5}));
}

TEST_F(HintOverrideTest, StoresAnOwnersValueUnchangedIfItIsShorterThanTheBackEndsValue) {
  EXPECT_TRUE(hintOverride.recordWrite(hint({1 | 2, 640, 5})));
  hintOverride.recordCurrentValue(hint({1 | 2, 640}));
  EXPECT_EQ(hintOverride.ownersValue(), hint({1 | 2, 640}));
}

TEST_F(HintOverrideTest, RecognizesTheLastFourWritesOfTheBackEnd) {
  for (const std::uint32_t width : {600U, 610U, 620U, 630U, 640U}) {
    EXPECT_TRUE(hintOverride.recordWrite(hint({1 | 2, width, 5})));
  }
  HintOverride overrideCopy = hintOverride;
  hintOverride.recordCurrentValue(hint({1 | 2, 610, 9}));
  EXPECT_EQ(hintOverride.ownersValue(), hint({1, 100, 9}));
  overrideCopy.recordCurrentValue(hint({1 | 2, 600, 9}));
  EXPECT_EQ(overrideCopy.ownersValue(), hint({1 | 2, 600, 9}));
}

// In the next three tests, the owner may have written the hint before the back end's last write.
// `recordReplacedValue` records the value that this write replaced.
TEST_F(HintOverrideTest, StoresAnOwnersValueThatTheBackEndHasReplaced) {
  EXPECT_TRUE(hintOverride.recordWrite(hint({3, 640, 5})));
  hintOverride.recordReplacedValue(/*expectedValue=*/hint({1, 100, 5}), hint({8, 200, 6}));
  EXPECT_EQ(hintOverride.ownersValue(), hint({8, 200, 6}));
  EXPECT_EQ(hintOverride.currentValue(), hint({3, 640, 5}));
}

TEST_F(HintOverrideTest, KeepsTheOwnersValueIfTheBackEndHasReplacedTheExpectedValue) {
  EXPECT_TRUE(hintOverride.recordWrite(hint({3, 640, 5})));
  hintOverride.recordReplacedValue(/*expectedValue=*/hint({1, 100, 5}), hint({1, 100, 5}));
  EXPECT_EQ(hintOverride.ownersValue(), hint({1, 100, 5}));
}

TEST_F(HintOverrideTest, RemovesTheBackEndsChangesFromAnEditedValueThatTheBackEndHasReplaced) {
  EXPECT_TRUE(hintOverride.recordWrite(hint({3, 640, 5})));
  EXPECT_TRUE(hintOverride.recordWrite(hint({3, 800, 5})));
  hintOverride.recordReplacedValue(/*expectedValue=*/hint({3, 640, 5}), hint({3 | 16, 640, 9}));
  EXPECT_EQ(hintOverride.ownersValue(), hint({1 | 16, 100, 9}));
  // The owner's value stays the same when the owner writes an earlier value of the back end.
  EXPECT_TRUE(hintOverride.recordWrite(hint({3, 900, 5})));
  hintOverride.recordCurrentValue(hint({3, 800, 5}));
  EXPECT_EQ(hintOverride.ownersValue(), hint({1 | 16, 100, 9}));
}

TEST_F(HintOverrideTest, StoresAnOwnersValueUnchangedAfterForgetWrites) {
  EXPECT_TRUE(hintOverride.recordWrite(hint({3, 640, 5})));
  EXPECT_TRUE(hintOverride.recordWrite(hintOverride.ownersValue()));
  hintOverride.forgetWrites();
  hintOverride.recordCurrentValue(hint({3, 640, 5}));
  EXPECT_EQ(hintOverride.ownersValue(), hint({3, 640, 5}));
}

}  // namespace
}  // namespace vel::test
