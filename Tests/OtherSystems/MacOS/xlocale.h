// Functions that libc++ uses. <xlocale.h> declares them on macOS. Linux does not declare them.
#pragma once

#include <locale.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
int asprintf_l(char** text, locale_t locale, const char* format, ...);
int snprintf_l(char* text, size_t size, locale_t locale, const char* format, ...);
int sscanf_l(const char* text, locale_t locale, const char* format, ...);
#ifdef __cplusplus
}
#endif
