#include "Host/Play/Trace/TraceLine.h"

#include <cstdio>

#include "Host/Play/Trace/JsonWriter.h"

namespace vel::host {

namespace {

constexpr NamedValue<LifeCycleStep> kLifeCycleSteps[] = {
    {"viewWillAppear", LifeCycleStep::WillAppear},
    {"viewDidAppear", LifeCycleStep::DidAppear},
    {"viewWillDisappear", LifeCycleStep::WillDisappear},
    {"viewDidDisappear", LifeCycleStep::DidDisappear},
};

// Returns the time in seconds, with nine decimals.
std::string timeText(Nanoseconds time) {
  char text[40];
  std::snprintf(text, sizeof text, "%lld.%09lld",
                static_cast<long long>(time / kNanosecondsPerSecond),
                static_cast<long long>(time % kNanosecondsPerSecond));
  return text;
}

std::string hexadecimal(std::uint64_t number) {
  char text[20];
  std::snprintf(text, sizeof text, "%llx", static_cast<unsigned long long>(number));
  return text;
}

std::optional<std::string_view> contentName(std::optional<ContentName> content) {
  return content ? std::optional(nameOf(*content, kContents)) : std::nullopt;
}

/// Writes the members of a line that follow "t".
class LineWriter {
 public:
  LineWriter(std::string& text, JsonObject& line) : text_(text), line_(line) {}

  void operator()(const trace::StepStarted& step) { line_.member("do", step.name); }
  void operator()(const trace::Activated& activated) { writeAnswer("activate:", activated.answer); }
  void operator()(const trace::ContentDataAnswered& data) {
    writeAnswer("contentDataForContentRequest:", contentName(data.answer));
  }
  void operator()(const trace::ContentViewAnswered& view) {
    writeAnswer("contentViewForContentData:", contentName(view.answer));
  }
  void operator()(const trace::Registered& registered) {
    line_.member("registered", registered.engines);
  }
  void operator()(const trace::Logged& logged) { line_.member("log", logged.text); }
  void operator()(const trace::StateChanged& change) {
    line_.member("state", change.state).member("content", nameOf(change.content, kContents));
  }
  void operator()(const trace::HostCalled& called) {
    line_.member("host", nameOf(called.operation, kViewOperations));
    if (called.answer) {
      line_.member("answer", *called.answer);
    }
  }
  void operator()(const trace::EventRecorded& event) { line_.member("event", event.name); }
  void operator()(const trace::Ticked& tick) { line_.member("tick", tick.timeLeft); }
  void operator()(const trace::KeyChanged& change) {
    line_.member(change.change == KeyChange::Resigns ? "resignKey" : "becomeKey", change.window);
  }
  void operator()(const trace::StyleMaskSet& set) {
    line_.member("styleMask", set.styleMask).member("window", set.window);
  }
  void operator()(const trace::CoverStep& step) {
    line_.member("cover", nameOf(step.step, kLifeCycleSteps));
  }
  void operator()(const trace::PresentationWindow& window) {
    using Change = trace::PresentationWindow::Change;
    line_.member("window", window.window)
        .member("is", window.change == Change::Opened ? "opened" : "closed");
  }
  void operator()(const trace::Inspected& inspected) {
    line_.beginMember("inspect");
    write(inspected.inspection);
  }
  void operator()(const trace::Fatal& fatal) { line_.member("fatal", fatal.reason); }

 private:
  template <class Value>
  void writeAnswer(std::string_view operation, const Value& value) {
    line_.beginMember("answer");
    JsonObject(text_).member(operation, value);
  }

  template <class Part>
  void writeOptional(const std::optional<Part>& part) {
    if (part) {
      write(*part);
    } else {
      writeJson(text_, nullptr);
    }
  }

  void write(const Inspection& inspection) {
    JsonObject object(text_);
    object.beginMember("manager");
    write(inspection.manager);
    object.beginMember("configuration");
    write(inspection.configuration);
    object.beginMember("content");
    writeOptional(inspection.content);
    object.beginMember("controller");
    writeOptional(inspection.controller);
    object.beginMember("application");
    write(inspection.application);
  }

  void write(const Inspection::Manager& manager) {
    JsonObject(text_)
        .member("content", manager.content)
        .member("tempContent", manager.tempContent)
        .member("appIsUnfocused", manager.appIsUnfocused)
        .member("eventWasSended", manager.eventWasSended)
        .member("launchScreenExpirationTimer", manager.launchScreenExpirationTimer)
        .member("launchScreenExpirationTimeLeft", manager.launchScreenExpirationTimeLeft)
        .member("launchScreenExpired", manager.launchScreenExpired)
        .member("launchShouldBeClosed", manager.launchShouldBeClosed);
  }

  void write(const Inspection::Configuration& configuration) {
    JsonObject(text_)
        .member("viewController", configuration.viewController)
        .member("skipMode", configuration.skipMode)
        .member("nextEventName", configuration.nextEventName)
        .member("expirationTimeInterval", configuration.expirationTimeInterval);
  }

  void write(const Inspection::Content& content) {
    JsonObject object(text_);
    object.member("state", content.state).beginMember("error");
    writeOptional(content.error);
    object.member("contentRequest", content.contentRequest);
  }

  void write(const Inspection::Error& error) {
    JsonObject(text_).member("domain", error.domain).member("code", error.code);
  }

  void write(const Inspection::Controller& controller) {
    JsonObject(text_)
        .member("presentationMode", controller.presentationMode)
        .member("appWindow", controller.appWindow)
        .member("appWindowStyleMask", hexadecimal(controller.appWindowStyleMask))
        .member("delegates", controller.delegates)
        .member("activityIndicator", controller.activityIndicator)
        .member("window", controller.window)
        .member("presented", controller.presented);
  }

  void write(const Inspection::Application& application) {
    JsonObject object(text_);
    object.member("keyWindow", application.keyWindow)
        .member("mainWindow", application.mainWindow)
        .member("orderedWindows", application.orderedWindows)
        .member("modalWindow", application.modalWindow)
        .beginMember("styleMasks");
    JsonObject masks(text_);
    for (const auto& [window, mask] : application.styleMasks) {
      masks.member(window, mask);
    }
  }

  std::string& text_;
  JsonObject& line_;
};

}  // namespace

std::string traceText(const TraceLine& line) {
  std::string text;
  {
    JsonObject object(text);
    object.beginMember("t") += timeText(line.time);
    std::visit(LineWriter(text, object), line.event);
  }
  return text;
}

}  // namespace vel::host
