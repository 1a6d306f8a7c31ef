// Includes every public header of the launch screen.
#pragma once

#include "HostInterfaces/ContentBroker.h"
#include "HostInterfaces/DictionaryRequest.h"
#include "HostInterfaces/MetricsCenter.h"
#include "LaunchScreen/Content/LaunchScreenContent.h"
#include "LaunchScreen/Helpers/LaunchScreenConfiguration.h"
#include "LaunchScreen/Helpers/LaunchScreenConstants.h"
#include "LaunchScreen/LaunchScreenManager.h"
#include "LaunchScreen/View/macOS/LaunchScreenViewControllerMac.h"
