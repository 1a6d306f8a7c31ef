// wxWidgets: a splash screen and a timer.
#include <wx/app.h>
#include <wx/bitmap.h>
#include <wx/dcmemory.h>
#include <wx/splash.h>
#include <wx/timer.h>

#include "Benchmarks/OnScreen/Programs/timestamps.h"

namespace {

Arguments arguments;

class SplashApplication final : public wxApp {
 public:
  bool OnInit() override {
    // Without this call, the program ends when it closes the first window.
    SetExitOnFrameDelete(false);
    if (arguments.mode == MODE_COLD) {
      showMeasuredWindow();
      return true;
    }
    splash_ = showWindow(wxSPLASH_NO_CENTRE, wxRect(FIRST_X, FIRST_Y, FIRST_WIDTH, FIRST_HEIGHT));
    pauseTimer_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { continueAfterPause(); });
    pauseTimer_.StartOnce(FIRST_MILLISECONDS);
    return true;
  }

 private:
  static wxSplashScreen* showWindow(long centringStyle, const wxRect& area) {
    wxBitmap picture(area.width, area.height);
    {
      wxMemoryDC canvas(picture);
      canvas.SetBackground(*wxWHITE_BRUSH);
      canvas.Clear();
    }
    return new wxSplashScreen(picture, centringStyle | wxSPLASH_NO_TIMEOUT, 0, nullptr, wxID_ANY,
                              area.GetPosition(), area.GetSize(), wxBORDER_NONE);
  }

  // Called twice: to close the first window, and then to show the measured window.
  void continueAfterPause() {
    if (splash_ != nullptr) {
      splash_->Destroy();
      splash_ = nullptr;
      pauseTimer_.StartOnce(PAUSE_MILLISECONDS);
    } else {
      show_start = read_clock();
      showMeasuredWindow();
    }
  }

  void showMeasuredWindow() {
    // A wxSplashScreen ignores its position. The other programs show their measured windows in the
    // middle of the screen, too.
    splash_ = showWindow(wxSPLASH_CENTRE_ON_SCREEN,
                         wxRect(arguments.x, arguments.y, arguments.width, arguments.height));
    show_end = read_clock();
    tickTimer_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { countTick(); });
    tickTimer_.Start(100);
  }

  void countTick() {
    record_tick();
    if (tick_count >= arguments.ticks) {
      hide_start = read_clock();
      tickTimer_.Stop();
      splash_->Destroy();
      ExitMainLoop();
    }
  }

  wxSplashScreen* splash_ = nullptr;
  wxTimer pauseTimer_;
  wxTimer tickTimer_;
};

}  // namespace

wxIMPLEMENT_APP_NO_MAIN(SplashApplication);

int main(int argc, char** argv) {
  arguments = parse_arguments(argc, argv);
  show_start = read_clock();
  int argumentCount = 1;
  const int status = wxEntry(argumentCount, argv);
  print_timestamps();
  return status;
}
