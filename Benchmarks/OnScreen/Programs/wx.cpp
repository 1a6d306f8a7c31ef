// wxWidgets: a splash screen and a timer.
#include <wx/app.h>
#include <wx/bitmap.h>
#include <wx/dcmemory.h>
#include <wx/splash.h>
#include <wx/timer.h>

#include "Benchmarks/OnScreen/Programs/stamps.h"

namespace {

Arguments arguments;

class Splash final : public wxApp {
 public:
  bool OnInit() override {
    stamp_called = stamp_now();
    wxBitmap picture(arguments.width, arguments.height);
    {
      wxMemoryDC canvas(picture);
      canvas.SetBackground(*wxWHITE_BRUSH);
      canvas.Clear();
    }
    // A splash screen takes no place of its own; every program's is in the middle.
    splash_ = new wxSplashScreen(picture, wxSPLASH_CENTRE_ON_SCREEN | wxSPLASH_NO_TIMEOUT, 0,
                                 nullptr, wxID_ANY, wxPoint(arguments.x, arguments.y),
                                 wxSize(arguments.width, arguments.height), wxBORDER_NONE);
    stamp_returned = stamp_now();
    timer_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) {
      stamp_tick();
      if (stamp_tick_count >= arguments.tenths) {
        stamp_down = stamp_now();
        timer_.Stop();
        splash_->Destroy();
        ExitMainLoop();
      }
    });
    timer_.Start(100);
    return true;
  }

 private:
  wxSplashScreen* splash_ = nullptr;
  wxTimer timer_;
};

}  // namespace

wxIMPLEMENT_APP_NO_MAIN(Splash);

int main(int argc, char** argv) {
  arguments = arguments_of(argc, argv);
  int one = 1;
  const int status = wxEntry(one, argv);
  stamps_print();
  return status;
}
