#include "Tests/Support/CoverFixture.h"

namespace vel::test {

void CoverDelegate::record(CoverCall call, std::string_view text,
                           const Strong<LaunchScreenViewController>& controller) {
  lastController = controller;
  journal_->push_back(name_ + ": " + std::string(text));
  if (work_ && call == workCall_) {
    std::exchange(work_, nullptr)();
  }
}

void CoverDelegate::launchScreenControllerWillPresent(
    const Strong<LaunchScreenViewController>& controller) {
  record(CoverCall::WillPresent, "will present", controller);
}

bool CoverDelegate::canLaunchScreenControllerDismiss(
    const Strong<LaunchScreenViewController>& controller) {
  record(CoverCall::CanDismiss, "can dismiss", controller);
  return agrees;
}

void CoverDelegate::launchScreenControllerDidDismiss(
    const Strong<LaunchScreenViewController>& controller) {
  record(CoverCall::DidDismiss, "did dismiss", controller);
}

void CoverDelegate::onNext(CoverCall call, std::function<void()> work) {
  workCall_ = call;
  work_ = std::move(work);
}

void HostViewDelegate::record(std::string_view text, const Strong<ContentView>& contentView) {
  view = contentView;
  journal_->push_back(name_ + ": " + std::string(text));
}

void HostViewDelegate::contentViewWillAppear(const Strong<ContentView>& contentView) {
  record("will appear", contentView);
}

bool HostViewDelegate::canContentViewDisappear(const Strong<ContentView>& contentView) {
  record("can disappear", contentView);
  return agrees;
}

void HostViewDelegate::contentViewDidDisappear(const Strong<ContentView>& contentView) {
  record("did disappear", contentView);
}

void PlatformJournal::lifeCycleMethodCalled(NSViewController& controller, LifeCycleMethod method) {
  if (controller.className() != LaunchScreenViewController::staticClassName()) {
    return;
  }
  switch (method) {
    case LifeCycleMethod::WillAppear:
      return journal_->push_back("viewWillAppear");
    case LifeCycleMethod::DidAppear:
      return journal_->push_back("viewDidAppear");
    case LifeCycleMethod::WillDisappear:
      return journal_->push_back("viewWillDisappear");
    case LifeCycleMethod::DidDisappear:
      return journal_->push_back("viewDidDisappear");
  }
}

void PlatformJournal::styleMaskWasSet(NSWindow& /*window*/, std::uint64_t styleMask) {
  journal_->push_back("style " + std::to_string(styleMask));
  if (work_) {
    std::exchange(work_, nullptr)();
  }
}

void PlatformJournal::windowOpened(NSWindow& /*window*/) { journal_->push_back("window opened"); }

void PlatformJournal::windowClosed(NSWindow& /*window*/) { journal_->push_back("window closed"); }

CoverTest::CoverTest() {
  configuration().setExpirationTimeInterval(5);
  controller = LaunchScreenViewController::init();
}

Strong<CoverDelegate> CoverTest::addDelegate(
    std::string_view name, const Strong<LaunchScreenViewController>& launchScreenController) {
  auto delegate = make<CoverDelegate>(name, journal);
  launchScreenController->addDelegate(delegate);
  return delegate;
}

bool isTrackedCover(const Strong<NSView>& superView,
                    const Strong<LaunchScreenViewController>& controller) {
  return embedded_cover::superView == superView && embedded_cover::selfView == controller->view() &&
         embedded_cover::selfController == controller;
}

bool hasTrackedCover() {
  return embedded_cover::superView != nullptr || embedded_cover::selfView != nullptr ||
         embedded_cover::selfController != nullptr;
}

}  // namespace vel::test
