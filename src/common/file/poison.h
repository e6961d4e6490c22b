// Memory that may not be touched for now, so that AddressSanitizer tells of what does; without it
// these do nothing.
#pragma once

#if defined(__SANITIZE_ADDRESS__)
#define ZAT_POISON 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZAT_POISON 1
#endif
#endif
#if defined(ZAT_POISON)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(at, size) ((void)0)
#define ASAN_UNPOISON_MEMORY_REGION(at, size) ((void)0)
#endif
