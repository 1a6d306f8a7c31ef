// LaunchScreenConfiguration, and the default configuration. The first call of
// `defaultConfiguration` creates the default. A host can replace the default, but not with null.
#include "LaunchScreen/Helpers/LaunchScreenConfiguration.h"
#include "Tests/Support/LaunchScreenHost.h"

namespace vel::test {
namespace {

using Configuration = LaunchScreenConfiguration;

constexpr auto kNullConfigurationLogLine =
    "LaunchScreenConfiguration (+[LaunchScreenConfiguration setDefaultConfiguration:]): "
    "Failed to set nil configuration!";

class ConfigurationTest : public VirtualPlatformTest {};

void expectInitialValues(const Configuration& configuration) {
  EXPECT_EQ(configuration.viewController(), nullptr);
  EXPECT_FALSE(configuration.skipMode());
  EXPECT_EQ(configuration.nextEventName(), nullptr);
  EXPECT_EQ(configuration.expirationTimeInterval(), 0.0);
}

TEST_F(ConfigurationTest, InitSetsAllPropertiesToNullZeroOrFalse) {
  const auto configuration = Configuration::init();
  ASSERT_NE(configuration, nullptr);
  expectInitialValues(*configuration);
}

TEST_F(ConfigurationTest, InitDoesNotCreateTheDefault) {
  const auto configuration = Configuration::init();
  EXPECT_EQ(sDefaultConfiguration, nullptr);
}

TEST_F(ConfigurationTest, TheClassNameIsLaunchScreenConfiguration) {
  EXPECT_EQ(Configuration::init()->className(), "LaunchScreenConfiguration");
}

TEST_F(ConfigurationTest, ThereIsNoDefaultBeforeTheFirstUse) {
  EXPECT_EQ(sDefaultConfiguration, nullptr);
}

TEST_F(ConfigurationTest, TheFirstUseCreatesTheDefaultWithInitialValues) {
  const auto configuration = Configuration::defaultConfiguration();
  ASSERT_NE(configuration, nullptr);
  expectInitialValues(*configuration);
  EXPECT_EQ(sDefaultConfiguration, configuration);
}

TEST_F(ConfigurationTest, EveryReadReturnsTheSameDefault) {
  const auto configuration = Configuration::defaultConfiguration();
  EXPECT_EQ(Configuration::defaultConfiguration(), configuration);
  EXPECT_EQ(Configuration::getDefaultConfiguration(), configuration);
}

TEST_F(ConfigurationTest, GetDefaultConfigurationAlsoCreatesTheDefault) {
  const auto configuration = Configuration::getDefaultConfiguration();
  ASSERT_NE(configuration, nullptr);
  expectInitialValues(*configuration);
  EXPECT_EQ(Configuration::defaultConfiguration(), configuration);
}

TEST_F(ConfigurationTest, AConfigurationSetBeforeTheFirstUseIsTheDefault) {
  const auto configuration = Configuration::init();
  Configuration::setDefaultConfiguration(configuration);
  EXPECT_EQ(Configuration::defaultConfiguration(), configuration);
}

TEST_F(ConfigurationTest, SettingNullKeepsTheDefaultAndLogsOneLine) {
  const auto configuration = Configuration::defaultConfiguration();
  Configuration::setDefaultConfiguration(nullptr);
  EXPECT_EQ(platform.log, std::vector<std::string>{kNullConfigurationLogLine});
  EXPECT_EQ(Configuration::defaultConfiguration(), configuration);
}

TEST_F(ConfigurationTest, SettingNullBeforeTheFirstUseChangesNothing) {
  Configuration::setDefaultConfiguration(nullptr);
  EXPECT_EQ(platform.log, std::vector<std::string>{kNullConfigurationLogLine});
  EXPECT_EQ(sDefaultConfiguration, nullptr);
  expectInitialValues(*Configuration::defaultConfiguration());
}

TEST_F(ConfigurationTest, SettingTheCurrentDefaultAgainChangesNothing) {
  const Weak<Configuration> configuration = Configuration::defaultConfiguration();
  configuration.lock()->setExpirationTimeInterval(4.5);
  Configuration::setDefaultConfiguration(configuration.lock());
  ASSERT_FALSE(configuration.expired());
  EXPECT_EQ(Configuration::defaultConfiguration(), configuration.lock());
  EXPECT_EQ(Configuration::defaultConfiguration()->expirationTimeInterval(), 4.5);
  EXPECT_TRUE(platform.log.empty());
}

TEST_F(ConfigurationTest, AReplacedDefaultKeepsItsValuesWhileACallerHoldsIt) {
  const auto previousConfiguration = Configuration::defaultConfiguration();
  previousConfiguration->setSkipMode(true);
  const auto configuration = Configuration::init();
  Configuration::setDefaultConfiguration(configuration);
  EXPECT_EQ(Configuration::defaultConfiguration(), configuration);
  EXPECT_FALSE(Configuration::defaultConfiguration()->skipMode());
  EXPECT_NE(previousConfiguration, configuration);
  EXPECT_TRUE(previousConfiguration->skipMode());
  EXPECT_TRUE(platform.log.empty());
}

TEST_F(ConfigurationTest, AReplacedDefaultIsDestroyedIfNoCallerHoldsIt) {
  const Weak<Configuration> previousConfiguration = Configuration::defaultConfiguration();
  Configuration::setDefaultConfiguration(Configuration::init());
  EXPECT_TRUE(previousConfiguration.expired());
}

TEST_F(ConfigurationTest, TheDefaultStaysAliveEvenIfNoCallerHoldsIt) {
  auto newConfiguration = Configuration::init();
  const Weak<Configuration> configuration = newConfiguration;
  Configuration::setDefaultConfiguration(std::move(newConfiguration));
  EXPECT_FALSE(configuration.expired());
}

TEST_F(ConfigurationTest, ACallerThatHoldsTheDefaultSeesLaterChanges) {
  const auto configuration = Configuration::defaultConfiguration();
  Configuration::defaultConfiguration()->setExpirationTimeInterval(7.0);
  EXPECT_EQ(configuration->expirationTimeInterval(), 7.0);
}

TEST_F(ConfigurationTest, PropertiesReturnTheValuesThatWereSet) {
  const auto configuration = Configuration::init();
  const auto hostController = make<HostController>();
  configuration->setViewController(hostController);
  configuration->setSkipMode(true);
  configuration->setExpirationTimeInterval(-2.5);
  EXPECT_EQ(configuration->viewController(), hostController);
  EXPECT_TRUE(configuration->skipMode());
  EXPECT_EQ(configuration->expirationTimeInterval(), -2.5);
  configuration->setViewController(nullptr);
  configuration->setSkipMode(false);
  EXPECT_EQ(configuration->viewController(), nullptr);
  EXPECT_FALSE(configuration->skipMode());
  EXPECT_TRUE(hostController->calls.empty());
}

TEST_F(ConfigurationTest, TheEventNameIsNotCopied) {
  const auto configuration = Configuration::init();
  const auto name = NSString::stringWithUTF8String("launch_end");
  configuration->setNextEventName(name);
  EXPECT_EQ(configuration->nextEventName().get(), name.get());
}

TEST_F(ConfigurationTest, AConfigurationOwnsItsControllerAndItsEventName) {
  auto configuration = Configuration::init();
  auto hostController = make<HostController>();
  auto name = NSString::stringWithUTF8String("launch_end");
  const Weak<HostController> weakController = hostController;
  const Weak<NSString> weakName = name;
  configuration->setViewController(std::move(hostController));
  configuration->setNextEventName(std::move(name));
  EXPECT_FALSE(weakController.expired());
  EXPECT_FALSE(weakName.expired());
  configuration = nullptr;
  EXPECT_TRUE(weakController.expired());
  EXPECT_TRUE(weakName.expired());
}

}  // namespace
}  // namespace vel::test
