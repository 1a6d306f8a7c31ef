#include "LaunchScreen/Helpers/LaunchScreenConfiguration.h"

#include "Platform/Foundation/NSLog.h"

namespace vel {

Strong<LaunchScreenConfiguration> sDefaultConfiguration;

Strong<LaunchScreenConfiguration> LaunchScreenConfiguration::init() {
  return make<LaunchScreenConfiguration>();
}

Strong<LaunchScreenConfiguration> LaunchScreenConfiguration::defaultConfiguration() {
  return getDefaultConfiguration();
}

Strong<LaunchScreenConfiguration> LaunchScreenConfiguration::getDefaultConfiguration() {
  if (sDefaultConfiguration == nullptr) {
    sDefaultConfiguration = init();
  }
  return sDefaultConfiguration;
}

void LaunchScreenConfiguration::setDefaultConfiguration(
    Strong<LaunchScreenConfiguration> configuration) {
  if (configuration == nullptr) {
    NSLog("%@ (%s): Failed to set nil configuration!", staticClassName(),
          "+[LaunchScreenConfiguration setDefaultConfiguration:]");
    return;
  }
  sDefaultConfiguration.swap(configuration);  // releases the previous object after the assignment
}

}  // namespace vel
