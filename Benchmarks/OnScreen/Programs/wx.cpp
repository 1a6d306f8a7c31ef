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
    pause_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { continueAfterPause(); });
    pause_.StartOnce(FIRST_MILLISECONDS);
    return true;
  }

 private:
  static wxSplashScreen* showWindow(long centring, const wxRect& place) {
    wxBitmap picture(place.width, place.height);
    {
      wxMemoryDC canvas(picture);
      canvas.SetBackground(*wxWHITE_BRUSH);
      canvas.Clear();
    }
    return new wxSplashScreen(picture, centring | wxSPLASH_NO_TIMEOUT, 0, nullptr, wxID_ANY,
                              place.GetPosition(), place.GetSize(), wxBORDER_NONE);
  }

  // Called twice: to close the first window, and then to show the measured window.
  void continueAfterPause() {
    if (splash_ != nullptr) {
      splash_->Destroy();
      splash_ = nullptr;
      pause_.StartOnce(PAUSE_MILLISECONDS);
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
    timer_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { countTick(); });
    timer_.Start(100);
  }

  void countTick() {
    record_tick();
    if (tick_count >= arguments.ticks) {
      hide_start = read_clock();
      timer_.Stop();
      splash_->Destroy();
      ExitMainLoop();
    }
  }

  wxSplashScreen* splash_ = nullptr;
  wxTimer pause_;
  wxTimer timer_;
};

}  // namespace

wxIMPLEMENT_APP_NO_MAIN(SplashApplication);

int main(int argc, char** argv) {
  arguments = parse_arguments(argc, argv);
  show_start = read_clock();
  int one = 1;
  const int status = wxEntry(one, argv);
  print_timestamps();
  return status;
}
