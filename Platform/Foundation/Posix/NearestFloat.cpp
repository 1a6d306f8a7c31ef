#include "Platform/Foundation/NearestFloat.h"

#include <cerrno>
#include <cfenv>
#include <cstdlib>
#include <locale>  // declares `newlocale`; on macOS, <clocale> does not
#include <string>
#include <system_error>

#include "Platform/Foundation/NonCopyable.h"

namespace vel {

namespace {

/// Sets this thread's locale and rounding mode: `strtof` then uses '.' as the decimal point and
/// rounds to the nearest float. The destructor restores the previous locale and rounding mode.
class ConversionScope : NonCopyable {
 public:
  ConversionScope() : previousLocale_(uselocale(cLocale())) { std::fesetround(FE_TONEAREST); }
  ~ConversionScope() {
    std::fesetround(previousRoundingMode_);
    uselocale(previousLocale_);
  }

 private:
  static locale_t cLocale() {
    // Never freed: other threads may read numbers while the process exits.
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    if (locale == nullptr) {
      throw std::system_error(errno, std::generic_category(), "newlocale");
    }
    return locale;
  }

  locale_t previousLocale_;
  int previousRoundingMode_ = std::fegetround();
};

}  // namespace

float nearestFloat(std::string_view number) {
  const std::string text(number);  // `strtof` needs a zero byte at the end
  const ConversionScope scope;
  return std::strtof(text.c_str(), nullptr);
}

}  // namespace vel
