#include "Host/Play/Trace/TraceLine.h"

#include <cstdio>

#include "Host/Play/Trace/JsonWriter.h"

namespace vel::host {

namespace {

constexpr NamedValue<LifeCycleMethod> kLifeCycleMethods[] = {
    {"viewWillAppear", LifeCycleMethod::WillAppear},
    {"viewDidAppear", LifeCycleMethod::DidAppear},
    {"viewWillDisappear", LifeCycleMethod::WillDisappear},
    {"viewDidDisappear", LifeCycleMethod::DidDisappear},
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

std::optional<std::string_view> nameOfContent(std::optional<ContentName> content) {
  return content ? std::optional(nameOf(*content, kContentNames)) : std::nullopt;
}

/// Writes the members of a trace line that depend on the kind of event.
class LineWriter {
 public:
  LineWriter(std::string& text, JsonObject& line) : text_(text), line_(line) {}

  void operator()(const trace::StepStart& step) { line_.member("do", step.name); }
  void operator()(const trace::Activation& activation) {
    writeReturnValue("activate:", activation.result);
  }
  void operator()(const trace::ContentDataResult& data) {
    writeReturnValue("contentDataForContentRequest:", nameOfContent(data.content));
  }
  void operator()(const trace::ContentViewResult& view) {
    writeReturnValue("contentViewForContentData:", nameOfContent(view.content));
  }
  void operator()(const trace::Registration& registration) {
    line_.member("registered", registration.engines);
  }
  void operator()(const trace::LogLine& log) { line_.member("log", log.text); }
  void operator()(const trace::StateChange& change) {
    line_.member("state", change.state).member("content", nameOf(change.content, kContentNames));
  }
  void operator()(const trace::HostCall& call) {
    line_.member("host", nameOf(call.operation, kViewOperations));
    if (call.returnValue) {
      line_.member("answer", *call.returnValue);
    }
  }
  void operator()(const trace::RecordedEvent& event) { line_.member("event", event.name); }
  void operator()(const trace::Tick& tick) { line_.member("tick", tick.timeLeft); }
  void operator()(const trace::KeyWindowChange& change) {
    line_.member(change.change == KeyStatusChange::ResignsKey ? "resignKey" : "becomeKey",
                 change.window);
  }
  void operator()(const trace::StyleMaskAssignment& assignment) {
    line_.member("styleMask", assignment.styleMask).member("window", assignment.window);
  }
  // The trace calls the controller of the launch screen's view "cover".
  void operator()(const trace::LifeCycleCall& call) {
    line_.member("cover", nameOf(call.method, kLifeCycleMethods));
  }
  void operator()(const trace::PresentationWindowChange& change) {
    using Change = trace::PresentationWindowChange::Change;
    line_.member("window", change.window)
        .member("is", change.change == Change::Opened ? "opened" : "closed");
  }
  void operator()(const trace::InspectionReport& report) {
    line_.beginMember("inspect");
    write(report.inspection);
  }
  void operator()(const trace::FatalError& error) { line_.member("fatal", error.reason); }

 private:
  template <class Value>
  void writeReturnValue(std::string_view operation, const Value& value) {
    line_.beginMember("answer");
    JsonObject(text_).member(operation, value);
  }

  template <class Value>
  void writeOptional(const std::optional<Value>& value) {
    if (value) {
      write(*value);
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
        .member("content", manager.hasContent)
        .member("tempContent", manager.hasTempContent)
        .member("appIsUnfocused", manager.appIsUnfocused)
        .member("eventWasSended", manager.eventWasSended)
        .member("launchScreenExpirationTimer", manager.hasLaunchScreenExpirationTimer)
        .member("launchScreenExpirationTimeLeft", manager.launchScreenExpirationTimeLeft)
        .member("launchScreenExpired", manager.launchScreenExpired)
        .member("launchShouldBeClosed", manager.launchShouldBeClosed);
  }

  void write(const Inspection::Configuration& configuration) {
    JsonObject(text_)
        .member("viewController", configuration.hasViewController)
        .member("skipMode", configuration.skipMode)
        .member("nextEventName", configuration.nextEventName)
        .member("expirationTimeInterval", configuration.expirationTimeInterval);
  }

  void write(const Inspection::Content& content) {
    JsonObject object(text_);
    object.member("state", content.state).beginMember("error");
    writeOptional(content.error);
    object.member("contentRequest", content.hasContentRequest);
  }

  void write(const Inspection::Error& error) {
    JsonObject(text_).member("domain", error.domain).member("code", error.code);
  }

  void write(const Inspection::Controller& controller) {
    JsonObject(text_)
        .member("presentationMode", controller.presentationMode)
        .member("appWindow", controller.appWindow)
        .member("appWindowStyleMask", hexadecimal(controller.appWindowStyleMask))
        .member("delegates", controller.delegateCount)
        .member("activityIndicator", controller.hasActivityIndicator)
        .member("window", controller.window)
        .member("presented", controller.presentedControllerCount);
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
  JsonObject& line_;  // appends to `text_`
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
