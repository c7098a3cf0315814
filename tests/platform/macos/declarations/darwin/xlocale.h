// The functions that take a locale_t. musl declares most of them in the standard headers; these are the others that
// libc++ uses.
#pragma once

#include <locale.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

int asprintf_l(char** text, locale_t locale, const char* format, ...);
int snprintf_l(char* text, size_t size, locale_t locale, const char* format, ...);
int sscanf_l(const char* text, locale_t locale, const char* format, ...);
#if _LIBCPP_VERSION < 190000  // libc++ 19 has its own
long long strtoll_l(const char* text, char** end, int base, locale_t locale);
unsigned long long strtoull_l(const char* text, char** end, int base, locale_t locale);
#endif

#ifdef __cplusplus
}
#endif
